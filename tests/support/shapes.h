// The shapes and contents over which a fast loop is compared with its plain twin.
#ifndef ORVA_TESTS_SUPPORT_SHAPES_H
#define ORVA_TESTS_SUPPORT_SHAPES_H

#include <string>
#include <vector>

#include "tests/reference/ref_pixels.h"
#include "tests/support/images.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"

namespace support {

struct shape {
    int width;
    int height;
    int stride;
    int offset;
};

inline std::string text_of(const shape& s) {
    return std::to_string(s.width) + " x " + std::to_string(s.height) + ", stride " + std::to_string(s.stride) +
           ", offset " + std::to_string(s.offset);
}

// Widths around every vector length, heights around every border rule, each with four strides and four start offsets.
inline std::vector<shape> all_shapes() {
    std::vector<int> widths;
    for (int width = 0; width <= 40; ++width) widths.push_back(width);
    widths.insert(widths.end(), {63, 64, 65, 351, 352});
    std::vector<shape> shapes;
    for (const int width : widths) {
        for (const int height : {0, 1, 2, 3, 17, 288}) {
            for (const int stride : {width, width + 1, width + 15, 384}) {
                for (const int offset : {0, 1, 3, 15}) shapes.push_back({width, height, stride, offset});
            }
        }
    }
    return shapes;
}

inline grey_image make_image(const shape& s) {
    return grey_image(s.width, s.height, s.stride, s.offset);
}

enum class content { zero, full, ramp, checks, bit_pairs, noise };

// Fills padding like pixels, so that a loop that reads it is found out.
inline void fill(grey_image& image, content what, random_source& random) {
    if (what == content::noise) {
        random.fill(image.data(), image.length());
        return;
    }
    for (std::size_t i = 0; i < image.length(); ++i) {
        std::size_t value = 0;
        if (what == content::full) value = 255;
        if (what == content::ramp) value = i & 255;
        if (what == content::checks) value = (i & 1) != 0 ? 255 : 0;
        if (what == content::bit_pairs) value = (i & 4) != 0 ? 254 : 1;
        image.data()[i] = static_cast<unsigned char>(value);
    }
}

struct content_row : named_row {
    content what;
};

inline std::vector<content_row> all_contents() {
    return {{{"all 0"}, content::zero},    {{"all 255"}, content::full},        {{"a ramp"}, content::ramp},
            {{"checks"}, content::checks}, {{"254 and 1"}, content::bit_pairs}, {{"noise"}, content::noise}};
}

inline ref::plane plane_of(grey_image& image) {
    return {image.data(), image.width(), image.height(), image.stride()};
}

// The same block with other pixels and the same padding and guards: what the twin writes into, so that neither side can
// pass by writing nothing.
inline grey_image with_other_pixels(const grey_image& image) {
    grey_image other = image;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) other.at(x, y) = static_cast<unsigned char>(~image.at(x, y));
    }
    return other;
}

}  // namespace support

#endif
