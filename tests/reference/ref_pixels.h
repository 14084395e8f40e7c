// Plain versions of the operations on pixels: one pixel after the other, straight from the rule, without tables.
#ifndef ORVA_TESTS_REFERENCE_REF_PIXELS_H
#define ORVA_TESTS_REFERENCE_REF_PIXELS_H

#include <array>
#include <cstdint>

#include "tests/reference/ref_log.h"

namespace ref {

// A view of bytes that belong to somebody else: `width` bytes in each of `height` rows that lie `stride` bytes apart.
struct plane {
    unsigned char* data = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;

    unsigned char& at(int x, int y) const { return data[static_cast<std::ptrdiff_t>(y) * stride + x]; }
};

// A region of the host's picture: luma, and chroma pairs (V, then U), each with a stride of its own.
struct yuv_view {
    plane luma;
    const unsigned char* chroma = nullptr;
    int chroma_stride = 0;

    // The chroma byte in column x of the row that belongs to luma row y.
    int chroma_at(int x, int y) const { return chroma[static_cast<std::ptrdiff_t>(y / 2) * chroma_stride + x]; }
};

// Blue, green and red plane. They may overlap in memory; all are stepped with the blue plane's stride.
struct rgb_view {
    plane blue;
    unsigned char* green = nullptr;
    unsigned char* red = nullptr;

    plane green_plane() const { return {green, blue.width, blue.height, blue.stride}; }
    plane red_plane() const { return {red, blue.width, blue.height, blue.stride}; }
};

// --- helpers of the frame records -----------------------------------------------------------------------------------

int get_stride(int width, int align);          // width rounded up to a multiple of align
int limit_range(int value, int min, int max);  // the lower bound is tested first

// --- difference, threshold, copy ------------------------------------------------------------------------------------

// dst = |a - b|. 7 and one log line if a and b differ in size (nothing is written); dst's size is not looked at.
int sub(const plane& a, const plane& b, const plane& dst, log_book& log);

// dst = 255 where src > thresh, else 0. 7 and one log line if an address is null. thresh lies in 0..255.
int threshold_binary(const plane& src, const plane& dst, int thresh, log_book& log);

// Otsu's threshold searched in t_min..t_max, over the image without margin_x columns and margin_y rows on each side.
int otsu_threshold(const plane& img, int margin_x, int margin_y, int t_min, int t_max);

// Copies `width` bytes of every row; padding stays.
void copy_rows(const plane& src, const plane& dst);

// --- morphology -----------------------------------------------------------------------------------------------------

// The row masks of a template: bit 0 stands for the column to the left, bit 8 for the middle, bit 16 for the right.
// Always returns 0; an unknown type is logged and leaves `mask` as it was.
int get_mask(int type, std::array<std::uint32_t, 3>& mask, log_book& log);

// Both copy stride * height bytes first and then set (or clear) pixels of rows 1..height-2 and columns 1..width-3.
// type: 0 to 4. src and dst are different images.
void dilate(const plane& src, const plane& dst, int type = 3);
void erode(const plane& src, const plane& dst, int type = 3);

// --- colour ---------------------------------------------------------------------------------------------------------

struct bgr {
    int blue, green, red;
};

// Full-range BT.601 in integers, each offset rounded towards minus infinity, each sum clipped to 0..255.
bgr convert_pixel(int y, int u, int v);

// Converts whole 2 x 2 blocks, also those that stick out over an odd edge, in raster order; within a block the pixels
// left to right, top to bottom, and for each pixel blue, green, red.
void convert_image(const yuv_view& src, const rgb_view& dst);

// The largest allowed 3 * min / (R + G + B), 20 fraction bits, for a red value. In single precision step by step.
int saturation_limit(int red);

// 1 if the pixel has the colour of fire, else 0.
int check_fire_pt(int r, int g, int b, int y, int u, int v);

// Clears the 2 x 2 blocks of the mask in which too few of the set pixels have the colour of fire.
void color_filter(const plane& mask, const rgb_view& rgb, const yuv_view& yuv);

}  // namespace ref

#endif
