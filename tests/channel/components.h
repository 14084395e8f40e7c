// Component records in tests: short to write, and readable when they differ.
#ifndef ORVA_TESTS_CHANNEL_COMPONENTS_H
#define ORVA_TESTS_CHANNEL_COMPONENTS_H

#include <string>
#include <vector>

#include "imgproc/common.h"
#include "tests/reference/ref_label.h"

namespace support {

// A box by its corner and size.
inline orva_fd::con_info box(int x, int y, int width, int height, int area) {
    const auto edge = [](int value) { return static_cast<int16_t>(value); };
    return {area, edge(x), edge(x + width - 1), edge(y), edge(y + height - 1)};
}

inline std::string text_of(const std::vector<orva_fd::con_info>& components) {
    std::string text;
    for (const orva_fd::con_info& c : components) {
        text += std::to_string(c.area) + ": " + std::to_string(c.left) + " to " + std::to_string(c.right) + ", " +
                std::to_string(c.top) + " to " + std::to_string(c.bottom) + "; ";
    }
    return text;
}

inline std::vector<ref::component> to_ref(const std::vector<orva_fd::con_info>& components) {
    std::vector<ref::component> same;
    for (const orva_fd::con_info& c : components) same.push_back({c.area, c.left, c.right, c.top, c.bottom});
    return same;
}

inline std::vector<orva_fd::con_info> from_ref(const std::vector<ref::component>& components) {
    std::vector<orva_fd::con_info> same;
    for (const ref::component& c : components) same.push_back({c.area, c.left, c.right, c.top, c.bottom});
    return same;
}

inline std::string text_of(const fd_rect& r) {
    return "(" + std::to_string(r.x) + "/" + std::to_string(r.x_ref) + ", " + std::to_string(r.y) + "/" +
           std::to_string(r.y_ref) + ", " + std::to_string(r.width) + "/" + std::to_string(r.width_ref) + ", " +
           std::to_string(r.height) + "/" + std::to_string(r.height_ref) + ")";
}

// The valid boxes of a result.
inline std::string text_of(const fd_result& result) {
    std::string text = std::to_string(result.count) + ":";
    for (int i = 0; i < result.count && i < FD_RESULT_MAX_RECTS; ++i) text += " " + text_of(result.rects[i]);
    return text;
}

}  // namespace support

#endif
