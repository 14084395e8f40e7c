#include "apps/orva_fire/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const double k_aspect_tolerance = 0.03;
const int k_width_step = 16;
const int k_smallest_region = 16;

int nearest_multiple(double value, int step, int limit) {
    const int rounded = static_cast<int>(std::lround(value / step)) * step;
    return std::clamp(rounded, step, limit / step * step);
}

region_value parse_value(const std::string& text, const std::string& whole) {
    region_value value;
    char* end = nullptr;
    value.number = std::strtod(text.c_str(), &end);
    const std::string rest = end;
    value.percent = rest == "%";
    const bool whole_pixels = value.percent || value.number == std::floor(value.number);
    const bool plain_number = text.find_first_not_of("0123456789.%") == std::string::npos;
    if (text.empty() || end == text.c_str() || !(rest.empty() || value.percent) || !plain_number || !whole_pixels) {
        throw usage_error("region '" + whole + "': '" + text +
                          "' is neither a whole number of pixels nor a percentage like 12.5%");
    }
    return value;
}

double in_pixels(const region_value& value, int full) {
    return value.percent ? value.number * full / 100 : value.number;
}

// One axis of a region: first pixel and length, on even pixels where the picture allows.
struct span {
    int start, length;
};

span place_span(const region_value& start, const region_value& length, int full, const char* axis) {
    const double from = in_pixels(start, full);
    const double to = from + in_pixels(length, full);
    // Percentages that add up to 100 may miss it by rounding; half a pixel is not an error.
    if (to > full + 0.5) {
        throw usage_error(std::string("a region reaches beyond the picture's ") + axis + ": to " +
                          std::to_string(std::lround(to)) + " of " + std::to_string(full) + " pixels");
    }
    const int first = static_cast<int>(std::lround(from)) / 2 * 2;
    const int last = std::min((static_cast<int>(std::lround(to)) + 1) / 2 * 2, full);
    if (last - first < k_smallest_region) {
        throw usage_error(std::string("a region's ") + axis + " is " + std::to_string(std::max(0, last - first)) +
                          " pixels; it must be at least " + std::to_string(k_smallest_region));
    }
    return {first, last - first};
}

int per_mille(int pixels, int full) {
    return static_cast<int>(std::lround(1000.0 * pixels / full));
}

}  // namespace

box largest_box(const std::vector<box>& boxes) {
    box largest;
    for (const box& candidate : boxes) {
        if (area(candidate) > area(largest)) largest = candidate;
    }
    return largest;
}

bool share_a_pixel(const box& a, const box& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

picture_size analysis_size(picture_size source) {
    const double scale = std::min({1.0, static_cast<double>(FD_MAX_FRAME_WIDTH) / source.width,
                                   static_cast<double>(FD_MAX_FRAME_HEIGHT) / source.height});
    picture_size size;
    size.width = nearest_multiple(source.width * scale, 2, FD_MAX_FRAME_WIDTH);
    size.height = nearest_multiple(source.height * scale, 2, FD_MAX_FRAME_HEIGHT);

    const int stepped = nearest_multiple(source.width * scale, k_width_step, FD_MAX_FRAME_WIDTH);
    const double source_aspect = static_cast<double>(source.width) / source.height;
    const double stepped_aspect = static_cast<double>(stepped) / size.height;
    if (std::fabs(stepped_aspect / source_aspect - 1) < k_aspect_tolerance) size.width = stepped;
    return size;
}

region parse_region(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ',') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    if (parts.size() != 4) {
        throw usage_error("region '" + text +
                          "': expected X,Y,WIDTH,HEIGHT in pixels or percent, like 10%,20%,50%,50%");
    }
    region result;
    result.x = parse_value(parts[0], text);
    result.y = parse_value(parts[1], text);
    result.width = parse_value(parts[2], text);
    result.height = parse_value(parts[3], text);
    return result;
}

box place_region(const region& wanted, picture_size picture) {
    const span across = place_span(wanted.x, wanted.width, picture.width, "width");
    const span down = place_span(wanted.y, wanted.height, picture.height, "height");
    return {across.start, down.start, across.length, down.length};
}

box to_source(const box& seen, picture_size analysis, const box& region) {
    const auto floor_scaled = [](int value, int from, int to) { return value * to / from; };
    const auto ceil_scaled = [](int value, int from, int to) { return (value * to + from - 1) / from; };
    const int left = floor_scaled(seen.x, analysis.width, region.width);
    const int top = floor_scaled(seen.y, analysis.height, region.height);
    const int right = std::min(ceil_scaled(seen.x + seen.width, analysis.width, region.width), region.width);
    const int bottom = std::min(ceil_scaled(seen.y + seen.height, analysis.height, region.height), region.height);
    return {region.x + left, region.y + top, right - left, bottom - top};
}

box to_per_mille(const box& pixels, picture_size picture) {
    const int left = per_mille(pixels.x, picture.width);
    const int top = per_mille(pixels.y, picture.height);
    return {left, top, per_mille(pixels.x + pixels.width, picture.width) - left,
            per_mille(pixels.y + pixels.height, picture.height) - top};
}

}  // namespace orva_fire
