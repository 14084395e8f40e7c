#include "apps/orva_fire/look_options.h"

#include <CLI/CLI.hpp>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

std::string check_tiles(const std::string& text) {
    try {
        (void)parse_tiles(text);
        return {};
    } catch (const usage_error& error) {
        return error.what();
    }
}

std::string check_rate(const std::string& text) {
    double rate = 0;
    if (CLI::detail::lexical_cast(text, rate) && rate > 0 && rate <= 1000) return {};
    return "a rate must be above 0 and at most 1000, not '" + text + "'";
}

CLI::Validator seconds_to(double most) {
    return CLI::Validator(CLI::Range(0.0, most)).description("");
}

// Evidence for a report takes 50 pictures; ages below a few seconds would make every report impossible.
std::string check_max_age(const std::string& text) {
    double seconds = 0;
    if (CLI::detail::lexical_cast(text, seconds) && (seconds == 0 || (seconds >= 5 && seconds <= 86400))) return {};
    return "an age is 0, or 5 to 86400 seconds, not '" + text + "'";
}

void add_seconds(CLI::App& app, const char* name, double& value, const CLI::Validator& check, const char* text) {
    app.add_option(name, value, text)->type_name("SECONDS")->capture_default_str()->check(check);
}

}  // namespace

void add_look_options(CLI::App& app, look_options& options, bool with_grade) {
    if (with_grade) {
        app.add_option("--grade", options.grade,
                       "sensitivity, 0 to 100; higher reports after less evidence (default: as 70)")
            ->type_name("GRADE")
            ->check(CLI::Validator(CLI::Range(0, 100)).description(""));
    }
    app.add_option("--fps", options.rate, "pass at most this many pictures a second to the detector, by time stamps")
        ->type_name("RATE")
        ->check(CLI::Validator(check_rate, ""));
    app.add_option("--tiles", options.tiles,
                   "look at overlapping tiles, COLUMNSxROWS, or auto for tiles of about 640 x 360; finds smaller fires "
                   "and costs as many times more")
        ->type_name("GRID")
        ->capture_default_str()
        ->check(CLI::Validator(check_tiles, ""));
    add_seconds(app, "--confirm", options.confirm, seconds_to(3600),
                "raise an event when new reports have covered this much of four times as long; 0: with the first one");
    add_seconds(app, "--cooldown", options.cooldown, seconds_to(86400),
                "end an event when nothing was reported for this long");
    add_seconds(app, "--max-age", options.max_age, CLI::Validator(check_max_age, ""),
                "let evidence grow no older than this; 0: keep it for ever, at half the cost of detection");
}

watch_settings watch_settings_of(const look_options& options) {
    watch_settings settings;
    settings.grade = options.grade;
    settings.tiles = parse_tiles(options.tiles);
    settings.max_age = options.max_age;
    return settings;
}

}  // namespace orva_fire
