// Connected components by flood fill.
#ifndef ORVA_TESTS_REFERENCE_REF_LABEL_H
#define ORVA_TESTS_REFERENCE_REF_LABEL_H

#include <cstdint>
#include <vector>

#include "tests/reference/ref_pixels.h"

namespace ref {

// One component: its pixel count and the edges of its box, all inclusive.
struct component {
    std::int32_t area = 0;
    std::int16_t left = 0;
    std::int16_t right = 0;
    std::int16_t top = 0;
    std::int16_t bottom = 0;
};

bool operator==(const component& a, const component& b);
inline bool operator!=(const component& a, const component& b) {
    return !(a == b);
}

// Labels the non-zero pixels that touch by an edge, numbers the groups by their first pixel in raster order, and enters
// them in `out`: it is resized to the number of groups, records that it held already are widened and not reset, new
// ones start with left 352, right 0, top 288, bottom 0, area 0. An image without any set pixel leaves `out` alone.
void label_components(const plane& img, std::vector<component>& out);

}  // namespace ref

#endif
