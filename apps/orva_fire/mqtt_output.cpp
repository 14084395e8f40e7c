#include "apps/orva_fire/mqtt_output.h"

namespace orva_fire {
namespace {

const std::chrono::seconds k_between_states(30);

}  // namespace

mqtt_output::mqtt_output(const mqtt_speaker& speaker, mqtt_sink& sink)
    : m_speaker(speaker), m_sink(sink), m_burning(speaker.zones.size(), false) {
    for (const mqtt_message& message : discovery_messages(m_speaker)) m_sink.keep(message);
    for (size_t zone = 0; zone < m_burning.size(); ++zone) tell_zone(zone);
    tell_state();
}

void mqtt_output::tell(const fire_event& event, const std::string& line,
                       const std::optional<int64_t>& wall_milliseconds) {
    m_sink.send({topic_of(m_speaker, "event"), line}, event.kind == event_kind::update);
    if (event.kind == event_kind::update) return;
    const bool starts = event.kind == event_kind::start;
    m_burning[event.zone] = starts;
    if (starts) {
        ++m_state.events;
        m_state.last_event = wall_milliseconds;
    }
    tell_zone(event.zone);
    tell_state();
}

void mqtt_output::tell(const trouble_event& event, const std::string& line) {
    m_sink.send({topic_of(m_speaker, "trouble"), line}, false);
    m_state.trouble = event.started ? trouble_name(event.reason) : "";
    tell_state();
}

void mqtt_output::count_picture(clock::time_point now) {
    ++m_state.pictures;
    if (!m_told) m_told = now;
    if (now - *m_told < k_between_states) return;
    m_told = now;
    tell_state();
}

void mqtt_output::tell_state() {
    m_state.burning.clear();
    for (size_t zone = 0; zone < m_burning.size(); ++zone) {
        if (m_burning[zone]) m_state.burning.push_back(m_speaker.zones[zone]);
    }
    m_state.lost = m_sink.lost();
    m_sink.keep({topic_of(m_speaker, "state"), state_text(m_speaker, m_state)});
}

void mqtt_output::tell_zone(size_t zone) {
    const std::string& name = m_speaker.zones[zone];
    m_sink.keep({zone_topic(m_speaker, name), zone_text(m_speaker, name, m_burning[zone])});
}

}  // namespace orva_fire
