// The options that say how a picture is looked at and what is made of the answers; the same for every subcommand.
#ifndef ORVA_APPS_ORVA_FIRE_LOOK_OPTIONS_H
#define ORVA_APPS_ORVA_FIRE_LOOK_OPTIONS_H

#include <optional>
#include <string>

#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/zone_watcher.h"

namespace CLI {
class App;
}

namespace orva_fire {

struct look_options {
    std::optional<int> grade;
    double rate = 0;
    std::string tiles = "auto";  // see docs/detection.md for what tiles find and cost
    double confirm = k_default_confirm;
    double cooldown = k_default_cooldown;
    double max_age = k_default_max_age;
};

// Adds --grade, --fps, --tiles, --confirm, --cooldown and --max-age with their defaults. with_grade: false leaves
// --grade out, for programs that try all grades.
void add_look_options(CLI::App& app, look_options& options, bool with_grade = true);

// What they mean.
watch_settings watch_settings_of(const look_options& options);

}  // namespace orva_fire

#endif
