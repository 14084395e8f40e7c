// A run as it is told over MQTT: its events, what is true now, and its counters.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_OUTPUT_H
#define ORVA_APPS_ORVA_FIRE_MQTT_OUTPUT_H

#include <chrono>
#include <optional>
#include <string>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/mqtt_messages.h"
#include "apps/orva_fire/mqtt_sink.h"
#include "apps/orva_fire/trouble.h"

namespace orva_fire {

class mqtt_output {
public:
    using clock = std::chrono::steady_clock;

    // Says who it is and that all is calm. sink: outlives this.
    mqtt_output(const mqtt_speaker& speaker, mqtt_sink& sink);

    // Each event, with its line of JSON. wall_milliseconds: of live sources.
    void tell(const fire_event& event, const std::string& line, const std::optional<int64_t>& wall_milliseconds);
    void tell(const trouble_event& event, const std::string& line);

    // One picture was seen. The counter is told now and then only.
    void count_picture(clock::time_point now = clock::now());

    // Tells the counters as they are at the end.
    void finish() { tell_state(); }

private:
    void tell_state();
    void tell_zone(size_t zone);

    const mqtt_speaker m_speaker;
    mqtt_sink& m_sink;
    mqtt_state m_state;
    std::vector<bool> m_burning;  // of each zone
    std::optional<clock::time_point> m_told;
};

}  // namespace orva_fire

#endif
