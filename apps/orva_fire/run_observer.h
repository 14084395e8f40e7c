// Everything that a run does to explain itself: evidence of every zone, explained pictures, the report. One object that
// the run feeds; without it the run costs what it did before.
#ifndef ORVA_APPS_ORVA_FIRE_RUN_OBSERVER_H
#define ORVA_APPS_ORVA_FIRE_RUN_OBSERVER_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/explain.h"
#include "apps/orva_fire/frame_choice.h"
#include "apps/orva_fire/report_builder.h"
#include "apps/orva_fire/zone_evidence.h"

namespace orva_fire {

// One zone of the run.
struct observed_zone {
    std::string name;
    zone_watcher* watcher;     // outlives the observer
    std::optional<int> grade;  // none: the library's own
};

struct observer_settings {
    std::string folder;                   // for report.html and explain/
    std::string source;                   // as it may be shown
    std::optional<frame_choice> explain;  // none: no picture is explained
    bool report = true;
    bool test = false;  // the events are those of a drill
};

class run_observer {
public:
    // log: where the library's lines go; outlives this.
    run_observer(const observer_settings& settings, const std::vector<observed_zone>& zones, picture_size source,
                 const library_output& log);

    // Before the watchers observe the picture of this moment.
    void set_moment(const moment& at);

    // An event, in the order of time: see report_builder::add.
    void add(const fire_event& event, const AVFrame& picture, const video_place& video);

    void start_trouble(const std::string& text, double seconds) { m_builder.start_trouble(text, seconds); }
    void end_trouble(double seconds) { m_builder.end_trouble(seconds); }

    // Writes what is to be written. about: what report_builder::finish asks for.
    void finish(report_data about);

private:
    void look(size_t zone, const zone_evidence::view& view);

    const observer_settings m_settings;
    const picture_size m_source;
    std::vector<std::string> m_names;
    report_builder m_builder;
    std::unique_ptr<explain_writer> m_explain;
    std::vector<std::unique_ptr<zone_evidence>> m_zones;
};

}  // namespace orva_fire

#endif
