// Row functions: contiguous bytes and a width, without calls or early exits, so that the compiler turns each loop into
// vector instructions; those that every frame needs have a second form in rows_scalar.cpp for processors that have
// none. Planes, strides and borders are their callers' business. Outputs may be inputs unless said otherwise.
#ifndef ORVA_FD_IMGPROC_ROWS_H
#define ORVA_FD_IMGPROC_ROWS_H

#include <cstdint>

#include "imgproc/vectors.h"
#if !ORVA_HAS_VECTORS
#include "imgproc/rows_scalar.h"
#endif

// On x86 with the GNU loader each row function exists twice, and the one for AVX2 is taken where the processor has it.
// The thread sanitizer's runtime is not ready yet when the loader makes that choice.
#if defined(__x86_64__) && defined(__gnu_linux__) && defined(__GLIBC__) && !defined(__clang__) && \
    !defined(__SANITIZE_THREAD__) && !defined(ORVA_BASELINE_ONLY) && ORVA_HAS_VECTORS
#define ORVA_ROW_FUNCTION __attribute__((target_clones("avx2", "default")))
#else
#define ORVA_ROW_FUNCTION
#endif

namespace orva_fd {

// Rows of a channel are at most this wide; so are the buffers inside row functions.
const int k_widest_row = 352;

// dst = |a - b|.
void abs_diff_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width);

// dst = 255 where src is above threshold, 0 elsewhere. threshold: 0 to 255.
void threshold_row(const unsigned char* src, unsigned char* dst, int width, int threshold);

#if ORVA_HAS_VECTORS
// dst = 255 where |a - b| is above threshold, 0 elsewhere.
void motion_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width, int threshold);

// Sum and largest of |a - b|.
struct row_motion {
    uint32_t sum;
    unsigned char largest;
};
row_motion measure_motion_row(const unsigned char* a, const unsigned char* b, int width);

// dst = what |a - b| exceeds limit by, 0 where it does not. limit: 0 to 255.
void excess_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width, int limit);

// A stack is k_stack_rows times k_widest_row bytes. Returns the sum of its bytes, each held to at most cap: 0 to 17, of
// which a column sums up to a byte.
const int k_stack_rows = 15;
uint32_t sum_held(const unsigned char* stack, int cap);
#endif

// Sum of the bytes. Made for short rows.
uint32_t sum_row(const unsigned char* src, int width);

// Of a row of a box: how many bytes of luma lie above limit, their sum, and how many bytes of mask have their lowest
// bit set.
struct bright_counts {
    uint32_t bright;
    uint32_t bright_sum;
    uint32_t fire;
};
void add_bright_row(const unsigned char* luma, const unsigned char* mask, int width, int limit, bright_counts* counts);

// One bit for each byte that is not zero, the first byte's in the lowest bit. Bits behind the width's are 0.
const int k_bit_words = 6;
const int k_widest_bits = 64 * k_bit_words;
void bits_row(const unsigned char* row, int width, uint64_t* bits);

// 3 x 3 dilation of columns 1 to width - 3: dst = 255 where the lowest bit of any of the nine bytes is set, the byte of
// row elsewhere; nothing is read or written of rows below four columns. dst must not be an input.
void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
                int width);

// The same for erosion: 0 where the lowest bit of any of the nine bytes is clear.
void erode_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
               int width);

}  // namespace orva_fd

#endif
