// All sensitivities at once: one decoded and converted picture goes to a channel for each of the 18 distinct
// thresholds.
#ifndef ORVA_APPS_ORVA_FIRE_GRADE_SWEEP_H
#define ORVA_APPS_ORVA_FIRE_GRADE_SWEEP_H

#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/aged_channel.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/tiling.h"
#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

// Grades with one meaning: a report needs `needed` of 50 stored frames.
struct grade_step {
    int first, last;  // grades
    int needed;
};

// The 18 steps from grade 0 to 100.
std::vector<grade_step> grade_steps();

class grade_sweep {
public:
    // size: of the pictures. tiles and max_age of the settings are used, their grade is not.
    // Throws usage_error if that needs more channels than the library has.
    grade_sweep(picture_size size, const watch_settings& settings);
    ~grade_sweep();

    // Passes one picture; returns an answer for each step. seconds: as for zone_watcher.
    std::vector<zone_answer> observe(const AVFrame& picture, double seconds);

private:
    struct tile_state;

    std::vector<box> m_tiles;
    std::vector<std::unique_ptr<tile_state>> m_states;
    age_plan m_plan;
};

}  // namespace orva_fire

#endif
