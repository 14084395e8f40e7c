// Row functions of the colour conversion and the fire-colour filter: the same bytes as CYuv420_Rgb and
// pre_process::color_filter. With vector instructions they have no tables and no branches; for processors without, see
// color_rows_scalar.cpp. Widths are even; the widest is 352.
#ifndef ORVA_FD_PREPROCESS_COLOR_ROWS_H
#define ORVA_FD_PREPROCESS_COLOR_ROWS_H

#include "imgproc/rows.h"
#if !ORVA_HAS_VECTORS
#include "preprocess/color_rows_scalar.h"
#endif

namespace orva_fd {

#if ORVA_HAS_VECTORS
// What a row of chroma pairs adds to and takes from the luma of two rows. Of each plus and minus one is zero. A value
// counts for two columns, so each 16-bit word holds the same byte twice; as_bytes reads them column by column.
struct color_offsets {
    uint16_t red_plus[k_widest_row / 2];
    uint16_t red_minus[k_widest_row / 2];
    uint16_t green_plus[k_widest_row / 2];
    uint16_t green_minus[k_widest_row / 2];
    uint16_t blue_plus[k_widest_row / 2];
    uint16_t blue_minus[k_widest_row / 2];
};
inline const unsigned char* as_bytes(const uint16_t* words) {
    return reinterpret_cast<const unsigned char*>(words);
}
#endif

// chroma: V,U pairs, width bytes.
void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets);

// Each colour is luma and its offset, held to 0..255. The three outputs are no inputs and do not overlap.
void convert_row(const unsigned char* luma, const color_offsets& offsets, unsigned char* blue, unsigned char* green,
                 unsigned char* red, int width);

#if ORVA_HAS_VECTORS
// The tests of pre_process::check_fire_pt on chroma: floors holds, twice in each word, what the luma of flame is above;
// 255 where the chroma is not that of flame.
void luma_floor_row(const unsigned char* chroma, int width, uint16_t* floors);

// The tests that need no product: pass = 1 where a pixel meets them, 0 elsewhere. Returns whether any does.
bool flame_tint_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                    const unsigned char* luma, const unsigned char* luma_floor, unsigned char* pass, int width);

// The saturation test, for pixels that met the others: clears pass where it fails.
void flame_saturation_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                          unsigned char* pass, int width);

// Clears the blocks of two mask rows in which too few set pixels pass. Returns whether anything is left.
bool filter_block_row(unsigned char* mask_top, unsigned char* mask_bottom, const unsigned char* pass_top,
                      const unsigned char* pass_bottom, int width);
#endif

}  // namespace orva_fd

#endif
