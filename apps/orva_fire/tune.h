// orva-fire tune SOURCE|FOLDER: what each sensitivity would report in recordings, to choose one.
#ifndef ORVA_APPS_ORVA_FIRE_TUNE_H
#define ORVA_APPS_ORVA_FIRE_TUNE_H

#include <string>
#include <vector>

#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/grade_sweep.h"
#include "apps/orva_fire/labels.h"
#include "apps/orva_fire/scoring.h"
#include "apps/orva_fire/tune_chart.h"

namespace orva_fire {

struct tune_options {
    std::string source;  // a recording or a folder of them
    std::string labels;  // manifest; empty: nothing is known about fires
    std::string chart;   // file for the picture (SVG); empty: none
    watch_settings watch;
    confirm_settings confirm;
    double rate = 0;  // pictures a second at most; 0: all
};

// What every step of the grades reported in one recording.
struct tuned_clip {
    labelled_clip clip;
    double seconds = 0;
    std::string problem;
    std::vector<std::vector<time_span>> reports;  // for each step, as its events
    std::vector<clip_score> scores;               // for each step; of use with labels only
};

tuned_clip tune_clip(const labelled_clip& clip, const tune_options& options);

// The table for people, and the picture.
std::string tune_text(const std::vector<tuned_clip>& clips, bool labelled);
tune_chart tune_chart_of(const std::vector<tuned_clip>& clips, bool labelled);

// Plays all recordings and prints the table. Returns 0; k_exit_io if one could not be read whole.
// Throws usage_error and io_error.
int run_tune(const tune_options& options);

// The subcommand: argv[0] is its name. Returns the exit code.
int tune_command(int argc, const char* const* argv);

}  // namespace orva_fire

#endif
