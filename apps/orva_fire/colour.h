// What a decoded picture's numbers mean: range, matrix, and whether that is something the detector can use.
#ifndef ORVA_APPS_ORVA_FIRE_COLOUR_H
#define ORVA_APPS_ORVA_FIRE_COLOUR_H

#include <cstdint>
#include <string>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_fire {

struct picture_colour {
    AVPixelFormat format = AV_PIX_FMT_NONE;  // never one of the outdated "yuvj" names
    bool rgb = false;
    bool full_range = false;
    AVColorSpace matrix = AVCOL_SPC_SMPTE170M;  // one that the scaler knows
};

inline bool operator==(const picture_colour& a, const picture_colour& b) {
    return a.format == b.format && a.rgb == b.rgb && a.full_range == b.full_range && a.matrix == b.matrix;
}
inline bool operator!=(const picture_colour& a, const picture_colour& b) {
    return !(a == b);
}

// Reads the picture's tags. What they leave open is filled in as players do it: an unknown range is limited, an unknown
// matrix is BT.601 up to 576 rows and fewer than 1280 columns, BT.709 above. RGB is always full range.
picture_colour colour_of(const AVFrame& picture);

// The plain name of a pixel format: yuv420p for yuvj420p and so on.
AVPixelFormat plain_format(AVPixelFormat format);

// A sentence about colours that cannot be mapped (high dynamic range, unusual matrices), or empty.
std::string colour_warning(const AVFrame& picture);

// One colour as a luma and two chroma bytes.
struct yuv_colour {
    uint8_t y, u, v;
};

// The bytes of an 8-bit RGB colour under the given range and matrix.
yuv_colour yuv_of(int red, int green, int blue, bool full_range, AVColorSpace matrix);

}  // namespace orva_fire

#endif
