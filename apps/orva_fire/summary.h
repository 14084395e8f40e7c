// The closing words of a run.
#ifndef ORVA_APPS_ORVA_FIRE_SUMMARY_H
#define ORVA_APPS_ORVA_FIRE_SUMMARY_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/stopwatch.h"

namespace orva_fire {

struct run_summary {
    int64_t frames = 0;    // read
    int64_t thinned = 0;   // left out by --fps
    int64_t repeated = 0;  // left out as repeats
    int64_t dropped = 0;   // never read, because the program was too slow for the camera
    double video_seconds = 0;
    stopwatch decode, convert, detect, output, whole;
    int reports = 0;
    std::optional<moment> first_report;

    int64_t passed() const { return frames - thinned - repeated; }
};

// Several lines, the last with its line end.
std::string summary_text(const run_summary& run);

}  // namespace orva_fire

#endif
