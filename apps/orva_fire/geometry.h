// Sizes, boxes and regions: everything about where, nothing about pixels' values.
#ifndef ORVA_APPS_ORVA_FIRE_GEOMETRY_H
#define ORVA_APPS_ORVA_FIRE_GEOMETRY_H

#include <string>
#include <vector>

namespace orva_fire {

struct picture_size {
    int width = 0;
    int height = 0;
};

// A box in whole pixels; x and y are its upper left corner.
struct box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

inline bool operator==(const picture_size& a, const picture_size& b) {
    return a.width == b.width && a.height == b.height;
}
inline bool operator!=(const picture_size& a, const picture_size& b) {
    return !(a == b);
}
inline bool operator==(const box& a, const box& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}
inline bool operator!=(const box& a, const box& b) {
    return !(a == b);
}

inline long area(const box& b) {
    return static_cast<long>(b.width) * b.height;
}

// The largest box of a list by area, the first of equals; an empty box for an empty list.
box largest_box(const std::vector<box>& boxes);

// True if the boxes overlap; edges that only touch share no pixel.
bool share_a_pixel(const box& a, const box& b);

// Size in which the detector sees a picture: at most 352 x 288, never larger than the picture but for rounding, its
// aspect kept, even. The width becomes the next multiple of 16 where that changes the aspect by less than 3 %, since
// the library then takes the picture as it stands.
picture_size analysis_size(picture_size source);

// A region as the user wrote it: "X,Y,WIDTH,HEIGHT", each a whole number of pixels or a number with '%'.
struct region_value {
    double number = 0;
    bool percent = false;
};
struct region {
    region_value x, y, width, height;
};

// Throws usage_error if the text has another form.
region parse_region(const std::string& text);

// Places a region on a picture: in pixels, widened to even edges so that a cut falls between chroma samples.
// Throws usage_error if it does not lie in the picture or is smaller than 16 x 16 pixels.
box place_region(const region& wanted, picture_size picture);

// Maps a box from the detector's picture of a region to source pixels. Rounds outwards, stays in the region.
box to_source(const box& seen, picture_size analysis, const box& region);

// The same box in thousandths of the picture's width and height, edges rounded to the nearest.
box to_per_mille(const box& pixels, picture_size picture);

}  // namespace orva_fire

#endif
