// Row functions of the colour conversion and the fire-colour filter: the same bytes as CYuv420_Rgb and
// pre_process::color_filter, without tables and branches. Widths are even; the widest is 352.
#ifndef ORVA_FD_PREPROCESS_COLOR_ROWS_H
#define ORVA_FD_PREPROCESS_COLOR_ROWS_H

#include "imgproc/rows.h"

namespace orva_fd {

// What a row of chroma pairs adds to and takes from the luma of two rows, one byte for each column. Of each pair of
// plus and minus one is zero.
struct color_offsets {
    unsigned char red_plus[k_widest_row];
    unsigned char red_minus[k_widest_row];
    unsigned char green_plus[k_widest_row];
    unsigned char green_minus[k_widest_row];
    unsigned char blue_plus[k_widest_row];
    unsigned char blue_minus[k_widest_row];
    unsigned char luma_floor[k_widest_row];  // luma of flame is above this; 255 where the chroma is not that of flame
};

// chroma: V,U pairs, width bytes.
void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets);

// dst = luma + plus - minus, held to 0..255 after each step.
void convert_row(const unsigned char* luma, const unsigned char* plus, const unsigned char* minus, unsigned char* dst,
                 int width);

// pass = 1 where pre_process::check_fire_pt accepts the pixel, 0 elsewhere.
void fire_color_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                    const unsigned char* luma, const unsigned char* luma_floor, unsigned char* pass, int width);

// Clears the blocks of two mask rows in which too few set pixels pass. Returns whether anything is left.
bool filter_block_row(unsigned char* mask_top, unsigned char* mask_bottom, const unsigned char* pass_top,
                      const unsigned char* pass_bottom, int width);

}  // namespace orva_fd

#endif
