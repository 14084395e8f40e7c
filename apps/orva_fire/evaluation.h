// How well fire is found in labelled recordings: by the program as it is set, and by the library's bare answers beside
// it.
#ifndef ORVA_APPS_ORVA_FIRE_EVALUATION_H
#define ORVA_APPS_ORVA_FIRE_EVALUATION_H

#include <string>
#include <vector>

#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/labels.h"
#include "apps/orva_fire/scoring.h"
#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

struct evaluation_settings {
    watch_settings watch;
    confirm_settings confirm;
    double rate = 0;               // pictures a second at most; 0: all
    std::vector<double> confirms;  // seconds with which the same reports are confirmed too
    std::vector<int> grades;       // at which the library's bare answers are judged too, on the whole picture
};

// What one way of looking made of one recording, and so on for each way: first the program, then the program with other
// confirmation, then the grades.
struct clip_evaluation {
    labelled_clip clip;
    std::string problem;  // why the recording was not read to its end, or not at all; empty if it was
    std::vector<clip_score> scores;
};

// The names of the ways: "program", "confirm 1 s", "grade 0" and so on.
std::vector<std::string> evaluated_ways(const evaluation_settings& settings);

// Plays one recording. One that cannot be read has a problem and, if there was no picture, no scores; nothing is thrown
// for it. Throws usage_error if the settings ask for more channels than there are.
clip_evaluation evaluate_clip(const labelled_clip& clip, const evaluation_settings& settings);

// Totals of one way over the recordings that satisfy the condition.
total_score sum_up(const std::vector<clip_evaluation>& clips, size_t way, bool tuning, bool testing);

// All of it as text for people, and as one JSON object.
std::string evaluation_text(const std::vector<clip_evaluation>& clips, const evaluation_settings& settings);
std::string evaluation_json(const std::vector<clip_evaluation>& clips, const evaluation_settings& settings);

}  // namespace orva_fire

#endif
