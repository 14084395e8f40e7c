// The detector's own pictures as pictures that people can look at.
#ifndef ORVA_APPS_ORVA_FIRE_DETECTOR_PICTURE_H
#define ORVA_APPS_ORVA_FIRE_DETECTOR_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"

namespace orva_fire {

// A copy as full-range yuv420p.
frame_ptr viewable(nv21_picture& picture);

// One plane of bytes, 0 black to 255 white, without gaps between its rows.
struct grey_picture {
    picture_size size;
    std::vector<uint8_t> bytes;
};

// Three bytes a pixel: red, green, blue.
struct colour_picture {
    picture_size size;
    std::vector<uint8_t> bytes;
};

struct ink {
    uint8_t red, green, blue;
};

colour_picture coloured(nv21_picture& picture);

// A line of one pixel around a box, just outside it; what lies outside the picture is left out.
void outline(colour_picture& picture, const box& where, ink colour);

// Writes a PNG file. Throws io_error that names it.
void write_png(const std::string& path, const grey_picture& picture);
void write_png(const std::string& path, const colour_picture& picture);

}  // namespace orva_fire

#endif
