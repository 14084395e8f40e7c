// The pictures of orva-fire tune: when each sensitivity reports, and the trade between delay and reports.
#ifndef ORVA_APPS_ORVA_FIRE_TUNE_CHART_H
#define ORVA_APPS_ORVA_FIRE_TUNE_CHART_H

#include <optional>
#include <string>
#include <vector>

namespace orva_fire {

// A stretch of time in seconds of one recording.
struct time_span {
    double from = 0, to = 0;
};

struct chart_clip {
    std::string name;
    double seconds = 0;
    std::vector<time_span> fires;                 // that people have noted
    std::vector<std::vector<time_span>> reports;  // for each step of the grades, the least sensitive first
};

// One step of the grades.
struct chart_step {
    std::string name;    // "68-73"
    bool usual = false;  // the one that the library takes by itself
    int reports = 0;     // over all recordings; with labels the false ones only
    std::optional<double>
        delay;  // median in seconds; of the noted fires, or else of the first report in each recording
};

struct tune_chart {
    std::vector<chart_clip> clips;
    std::vector<chart_step> steps;
    bool labelled = false;
};

// One SVG picture that needs no other file, readable on light and dark grounds.
std::string draw_tune_chart(const tune_chart& chart);

}  // namespace orva_fire

#endif
