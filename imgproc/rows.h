// Row functions: contiguous bytes and a width, without calls or early exits, so that the compiler turns each loop into
// vector instructions. Planes, strides and borders are their callers' business. Outputs may be inputs unless said
// otherwise.
#ifndef ORVA_FD_IMGPROC_ROWS_H
#define ORVA_FD_IMGPROC_ROWS_H

#include <cstdint>

// On x86 with the GNU loader each row function exists twice, and the one for AVX2 is taken where the processor has it.
// The thread sanitizer's runtime is not ready yet when the loader makes that choice.
#if defined(__x86_64__) && defined(__gnu_linux__) && defined(__GLIBC__) && !defined(__clang__) && \
    !defined(__SANITIZE_THREAD__) && !defined(ORVA_BASELINE_ONLY)
#define ORVA_ROW_FUNCTION __attribute__((target_clones("avx2", "default")))
#else
#define ORVA_ROW_FUNCTION
#endif

namespace orva_fd {

// Rows are at most this wide.
const int k_widest_row = 352;

// dst = |a - b|.
void abs_diff_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width);

// dst = 255 where src is above threshold, 0 elsewhere. threshold: 0 to 255.
void threshold_row(const unsigned char* src, unsigned char* dst, int width, int threshold);

// dst = 255 where |a - b| is above threshold, 0 elsewhere.
void motion_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width, int threshold);

// Sum and largest of |a - b|.
struct row_motion {
    uint32_t sum;
    unsigned char largest;
};
row_motion measure_motion_row(const unsigned char* a, const unsigned char* b, int width);

// What Otsu's search over k_tail_first .. k_tail_first + k_tail_length - 1 needs to know of differences in that range:
// how many lie above each threshold, and the sum of those at or below the first.
const int k_tail_first = 20;
const int k_tail_length = 16;
struct motion_tail {
    uint32_t above[k_tail_length];
    uint32_t sum_at_or_below_first;
};
void add_motion_tail_row(const unsigned char* a, const unsigned char* b, int width, motion_tail* tail);

// 3 x 3 dilation of columns 1 to width - 3: dst = 255 where the lowest bit of any of the nine bytes is set, the byte of
// row elsewhere. width at least 4. dst must not be an input.
void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
                int width);

// The same for erosion: 0 where the lowest bit of any of the nine bytes is clear.
void erode_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
               int width);

}  // namespace orva_fd

#endif
