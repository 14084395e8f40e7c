#include "apps/orva_fire/report_settings.h"

#include <cstdio>

namespace orva_fire {
namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string value_text(const region_value& value) {
    return number(value.number) + (value.percent ? "%" : "");
}

std::string regions_text(const std::vector<region>& regions) {
    std::string text;
    for (const region& r : regions) {
        if (!text.empty()) text += "; ";
        text += value_text(r.x) + "," + value_text(r.y) + "," + value_text(r.width) + "," + value_text(r.height);
    }
    return text.empty() ? "none" : text;
}

std::string tiles_text(const tile_grid& tiles) {
    if (tiles.automatic) return "auto";
    return std::to_string(tiles.columns) + "x" + std::to_string(tiles.rows);
}

std::string seconds_text(double seconds, const char* zero) {
    return seconds > 0 ? number(seconds) + " s" : zero;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> report_settings(const detect_options& options) {
    return {
        {"--grade", options.grade ? std::to_string(*options.grade) : "the library's own, as 70"},
        {"--zones", options.zones.empty() ? "none" : options.zones},
        {"--region", regions_text(options.regions)},
        {"--tiles", tiles_text(options.tiles)},
        {"--confirm", seconds_text(options.confirm.seconds, "0: the first report is an event")},
        {"--cooldown", seconds_text(options.confirm.cooldown, "0: an event ends with its last box")},
        {"--max-age", seconds_text(options.max_age, "0: evidence is kept for ever")},
        {"--fps", options.rate > 0 ? number(options.rate) : "all pictures"},
        {"trouble", options.watch_trouble ? "watched" : "not watched (--no-trouble)"},
    };
}

}  // namespace orva_fire
