// What color_rows.h declares for processors without vector instructions only.
#ifndef ORVA_FD_PREPROCESS_COLOR_ROWS_SCALAR_H
#define ORVA_FD_PREPROCESS_COLOR_ROWS_SCALAR_H

#include "imgproc/rows.h"

namespace orva_fd {

// What a row of chroma pairs raises the luma of two rows by: numbers from -227 to 226, two in each word, the second 16
// bits higher. Each counts for two columns.
struct color_offsets {
    uint32_t blue[k_widest_row / 4];
    uint32_t green[k_widest_row / 4];
    uint32_t red[k_widest_row / 4];
};

// Two rows of a picture with their mask, their chroma and their colours.
struct pair_rows {
    unsigned char* mask[2];
    const unsigned char* chroma;
    const unsigned char* luma[2];
    const unsigned char* blue[2];
    const unsigned char* green[2];
    const unsigned char* red[2];
};

// Clears the blocks of columns first, which is even, to last - 1 in which too few set pixels have the colour of flame.
// Returns whether anything is left.
bool filter_pair_rows(const pair_rows& rows, int first, int last);

}  // namespace orva_fd

#endif
