// Pictures with known values, and what those values mean, worked out with plain floating point.
#ifndef ORVA_TESTS_APPS_PICTURES_H
#define ORVA_TESTS_APPS_PICTURES_H

#include <array>
#include <cstdint>

#include "apps/orva_fire/ffmpeg.h"

namespace apps_test {

// Red, green and blue from 0 to 255.
struct colour {
    double red, green, blue;
};

const colour k_white{255, 255, 255};
const colour k_black{0, 0, 0};
const colour k_orange{255, 128, 0};
const colour k_flame{255, 200, 120};
const colour k_blue{20, 40, 160};

// Luma, U and V as numbers of the given range and matrix, in steps of 8 bits.
using triple = std::array<double, 3>;
triple to_yuv(const colour& c, bool full_range, AVColorSpace matrix);
colour to_rgb(const triple& yuv, bool full_range, AVColorSpace matrix);

// A picture of one colour, of any planar, semi-planar or packed format. Range and matrix are set on it as tags.
orva_fire::frame_ptr flat_picture(AVPixelFormat format, int width, int height, const colour& c, AVColorRange range,
                                  AVColorSpace matrix);

// Paints one colour over a rectangle of a picture, by the picture's tags; unknown ones mean limited range and BT.601.
// Edges should be even.
void paint(AVFrame& picture, int x, int y, int width, int height, const colour& c);

// Sets one sample of one component, in the format's own depth; x and y count the component's samples, not pixels.
void set_component(AVFrame& picture, int x, int y, int component_index, int value);

// The value of one component of one pixel, in the format's own depth.
int component(const AVFrame& picture, int x, int y, int component_index);

}  // namespace apps_test

#endif
