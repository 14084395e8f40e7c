#include "apps/orva_fire/reasons.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace orva_fire {
namespace {

// The limits of the tests, as the library applies them.
const int k_min_width = 3;
const int k_min_height = 5;
const int k_min_area = 20;
const int k_min_fire = 20;
const double k_brighter = 1.05;
const double k_least_flicker = 1.0 / 6;

__attribute__((format(printf, 1, 2))) std::string words(const char* format, ...) {
    char text[256];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    return text;
}

// A value and its limit, with one digit more where they would look the same.
std::string against(double value, double limit, int digits, const char* unit, const char* between) {
    const std::string coarse = words("%.*f", digits, value);
    if (coarse == words("%.*f", digits, limit)) ++digits;
    return words("%.*f%s%s%.*f", digits, value, unit, between, digits, limit);
}

std::string shares(double share, double limit, const char* between) {
    return against(share * 100, limit * 100, 0, " %", between) + " %";
}

std::string too_small(const box_evidence& seen) {
    if (seen.place.width < k_min_width || seen.place.height < k_min_height) {
        return words("too small: %d x %d pixels, needs %d x %d", seen.place.width, seen.place.height, k_min_width,
                     k_min_height);
    }
    return words("too small: %d pixels of moving fire colour, needs %d", seen.area, k_min_area);
}

std::string too_dim(const box_evidence& seen) {
    const double pixels = std::max(seen.pixels, 1);
    if (seen.bright < seen.pixels / 8) {
        return "too few bright pixels: " + shares(seen.bright / pixels, 1.0 / 8, " of its box, needs ");
    }
    if (seen.fire < k_min_fire) return words("too few pixels of fire colour: %d, needs %d", seen.fire, k_min_fire);
    return "too few pixels of fire colour: " + shares(seen.fire / pixels, 1.0 / 16, " of its box, needs ");
}

std::string found_again(const box_evidence& seen) {
    std::string text = words("found again in %d of %d frames", seen.matched, seen.stored);
    if (seen.matched > 0) text += " over " + duration_text(seen.span);
    return text;
}

bool enough_flicker(const box_evidence& seen) {
    return seen.mean_area / 6 < seen.deviation && seen.deviation < seen.mean_area;
}

}  // namespace

const char* verdict_name(verdict ended) {
    static const char* const names[] = {"covered",   "too small", "too dim",    "not brighter", "beyond ten",
                                        "gathering", "too rare",  "too steady", "too wild",     "reported"};
    return names[static_cast<int>(ended)];
}

double brightness_ratio(const box_evidence& seen) {
    return seen.around > 0 ? 1.0 * seen.centre / seen.around : 0;
}

double flicker_share(const box_evidence& seen) {
    return seen.mean_area > 0 ? 1.0 * seen.deviation / seen.mean_area : 0;
}

std::string reason(const box_evidence& seen) {
    switch (seen.ended) {
        case verdict::covered:
            return "left out: it lies in a box at least as large";
        case verdict::too_small:
            return too_small(seen);
        case verdict::too_dim:
            return too_dim(seen);
        case verdict::not_brighter:
            return "hardly brighter than its surround: " +
                   against(brightness_ratio(seen), k_brighter, 2, " times", ", needs ");
        case verdict::beyond_ten:
            return "left out: ten other candidates came before it";
        case verdict::gathering:
            return words("evidence still gathering: %d of %d frames", seen.stored, k_stored_frames);
        case verdict::too_rare:
            return found_again(seen) + words(", needs %d", seen.needed);
        case verdict::too_steady:
            return "too steady: its area changes by " + shares(flicker_share(seen), k_least_flicker, ", needs ");
        case verdict::too_wild:
            return words("too wild: its area changes by %.0f %%, must stay below 100 %%", flicker_share(seen) * 100);
        default:
            return "taken for fire: " + found_again(seen) +
                   words(", area changes by %.0f %%", flicker_share(seen) * 100);
    }
}

std::string remedy(const box_evidence& seen) {
    if (seen.ended != verdict::too_rare) return "";
    const int grade = least_grade(seen.matched);
    if (grade < 0) return "too rare at any grade";
    if (!enough_flicker(seen)) {
        return words("at grade %d it would have been refused as %s", grade,
                     seen.deviation >= seen.mean_area ? "too wild" : "too steady");
    }
    return words("would have been reported at grade %d", grade);
}

// Stages one after the other; within the last, whichever test is further from being met.
double closeness(const box_evidence& seen) {
    const double flicker = flicker_share(seen);
    switch (seen.ended) {
        case verdict::covered:
        case verdict::too_small:
            return 0;
        case verdict::too_dim:
            return 0.05;
        case verdict::not_brighter:
            return 0.1 * std::min(1.0, brightness_ratio(seen) / k_brighter);
        case verdict::beyond_ten:
            return 0.1;
        case verdict::gathering:
            return 0.1 + 0.3 * seen.stored / k_stored_frames;
        case verdict::reported:
            return 1;
        default:
            break;
    }
    const double matched = std::min(1.0, 1.0 * seen.matched / std::max(seen.needed, 1));
    const double lively = flicker < 1 ? std::min(1.0, flicker / k_least_flicker) : 1 / flicker;
    return std::min(0.99, 0.5 + 0.5 * std::min(matched, lively));
}

std::string clock_text(double seconds) {
    const long long tenths = std::llround(std::max(seconds, 0.0) * 10);
    const long long whole = tenths / 10;
    const int tenth = static_cast<int>(tenths % 10);
    const int second = static_cast<int>(whole % 60), minute = static_cast<int>(whole / 60 % 60);
    if (whole >= 3600) return words("%lld:%02d:%02d.%d", whole / 3600, minute, second, tenth);
    return words("%d:%02d.%d", minute, second, tenth);
}

std::string duration_text(double seconds) {
    if (seconds < 10) return words("%.1f s", seconds);
    const long long whole = std::llround(seconds);
    if (whole < 60) return words("%lld s", whole);
    if (whole < 3600) return words("%lld min %lld s", whole / 60, whole % 60);
    return words("%lld h %lld min", whole / 3600, whole / 60 % 60);
}

}  // namespace orva_fire
