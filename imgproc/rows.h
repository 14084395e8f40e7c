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

// Rows of a channel are at most this wide; so are the buffers inside row functions.
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

// Adds to sums[i] what sum_distance_row gives for value first + i, for i from 0 to count - 1. Processors without vector
// instructions count the bytes instead: one pass for all values. values: up to 256 in all.
void add_distance_sums(const unsigned char* src, int width, int first, int count, uint32_t* sums);
void add_distance_sums_counted(const unsigned char* src, int width, int first, int count, uint32_t* sums);

// Sum of |src - value|; value 0 gives the sum of the bytes. From sums for neighbouring values follow, without a
// histogram, how many bytes lie above a limit and what they sum up to; see bytes_above.
uint32_t sum_distance_row(const unsigned char* src, int width, int value);

struct byte_tail {
    uint32_t count;
    uint32_t sum;
};

// The bytes above limit among `count` bytes, whose distances from 0, limit and limit + 1 have the given sums. A byte
// above the limit is one nearer to limit + 1 than to limit, any other one farther away, so the two sums differ by twice
// the bytes above less all of them. And what the bytes above exceed the limit by is half of all signed and absolute
// distances together.
inline byte_tail bytes_above(uint32_t limit, uint32_t count, uint32_t from_zero, uint32_t from_limit,
                             uint32_t from_next) {
    const uint32_t above = (from_limit - from_next + count) / 2;
    const uint32_t excess = (from_limit + from_zero - limit * count) / 2;
    const byte_tail tail = {above, excess + limit * above};
    return tail;
}

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

// 3 x 3 dilation of columns 1 to width - 3: dst = 255 where the lowest bit of any of the nine bytes is set, the byte of
// row elsewhere. width at least 4. dst must not be an input.
void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
                int width);

// The same for erosion: 0 where the lowest bit of any of the nine bytes is clear.
void erode_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
               int width);

}  // namespace orva_fd

#endif
