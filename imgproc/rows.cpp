#include "imgproc/rows.h"

namespace orva_fd {

namespace {

inline unsigned char distance(unsigned char a, unsigned char b) {
    return static_cast<unsigned char>(a > b ? a - b : b - a);
}

// In the form in which sums of it become one instruction.
inline uint32_t distance_sum(unsigned char a, unsigned char b) {
    const int difference = a - b;
    return static_cast<uint32_t>(difference < 0 ? -difference : difference);
}

}  // namespace

ORVA_ROW_FUNCTION
void abs_diff_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width) {
    for (int x = 0; x < width; ++x) dst[x] = distance(a[x], b[x]);
}

ORVA_ROW_FUNCTION
void threshold_row(const unsigned char* src, unsigned char* dst, int width, int threshold) {
    const unsigned char limit = static_cast<unsigned char>(threshold);
    for (int x = 0; x < width; ++x) dst[x] = src[x] > limit ? 255 : 0;
}

ORVA_ROW_FUNCTION
void motion_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width, int threshold) {
    const unsigned char limit = static_cast<unsigned char>(threshold);
    for (int x = 0; x < width; ++x) dst[x] = distance(a[x], b[x]) > limit ? 255 : 0;
}

ORVA_ROW_FUNCTION
row_motion measure_motion_row(const unsigned char* a, const unsigned char* b, int width) {
    uint32_t sum = 0;
    unsigned char largest = 0;
    for (int x = 0; x < width; ++x) sum += distance_sum(a[x], b[x]);
    for (int x = 0; x < width; ++x) {
        const unsigned char d = distance(a[x], b[x]);
        largest = d > largest ? d : largest;
    }
    const row_motion motion = {sum, largest};
    return motion;
}

ORVA_ROW_FUNCTION
void excess_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width, int limit) {
    const unsigned char byte = static_cast<unsigned char>(limit);
    for (int x = 0; x < width; ++x) {
        const unsigned char d = distance(a[x], b[x]);
        dst[x] = static_cast<unsigned char>(d > byte ? d - byte : 0);
    }
}

// Compilers know the processor's instruction for a sum of absolute differences, but only between two rows of bytes: so
// sums of bytes are taken against a row of zeros.
ORVA_ROW_FUNCTION
void add_capped_sums(const unsigned char* stack, capped_sums* sums) {
#if defined(__SSE2__) || defined(__ARM_NEON)
    unsigned char zeros[k_widest_row];
    unsigned char column[k_widest_row];
    for (int x = 0; x < k_widest_row; ++x) zeros[x] = 0;
    for (int i = 0; i < k_caps; ++i) {
        const unsigned char cap = static_cast<unsigned char>(i + 1);
        for (int x = 0; x < k_widest_row; ++x) {
            unsigned char sum = 0;
            for (int row = 0; row < k_stack_rows; ++row) {
                const unsigned char byte = stack[row * k_widest_row + x];
                sum = static_cast<unsigned char>(sum + (byte < cap ? byte : cap));
            }
            column[x] = sum;
        }
        uint32_t held = 0;
        for (int x = 0; x < k_widest_row; ++x) held += distance_sum(column[x], zeros[x]);
        sums->held[i] += held;
    }
    uint32_t all = 0;
    for (int first = 0; first < k_stack_rows * k_widest_row; first += k_widest_row) {
        for (int x = 0; x < k_widest_row; ++x) all += distance_sum(stack[first + x], zeros[x]);
    }
    sums->all += all;
#else
    add_capped_sums_counted(stack, sums);
#endif
}

// Of a byte, one is held for each cap that it reaches, and for each lower one.
void add_capped_sums_counted(const unsigned char* stack, capped_sums* sums) {
    uint32_t histogram[256] = {};
    for (int i = 0; i < k_stack_rows * k_widest_row; ++i) ++histogram[stack[i]];
    uint32_t reached = 0;
    for (uint32_t byte = 255; byte > 0; --byte) {
        reached += histogram[byte];
        sums->all += reached;
        for (uint32_t i = byte - 1; i < static_cast<uint32_t>(k_caps); ++i) sums->held[i] += reached;
    }
}

ORVA_ROW_FUNCTION
uint32_t sum_row(const unsigned char* src, int width) {
    uint32_t sum = 0;
    for (int x = 0; x < width; ++x) sum += src[x];
    return sum;
}

// Sums of a stretch fit 16 bits, which holds twice as many in a register as 32.
ORVA_ROW_FUNCTION
void add_bright_row(const unsigned char* luma, const unsigned char* mask, int width, int limit, bright_counts* counts) {
    const int stretch = 240;
    const unsigned char byte = static_cast<unsigned char>(limit);
    for (int first = 0; first < width; first += stretch) {
        const int length = width - first < stretch ? width - first : stretch;
        uint16_t bright_sum = 0;
        unsigned char bright = 0;
        unsigned char fire = 0;
        for (int x = first; x < first + length; ++x) {
            bright = static_cast<unsigned char>(bright + (luma[x] > byte ? 1 : 0));
            fire = static_cast<unsigned char>(fire + (mask[x] & 1));
        }
        for (int x = first; x < first + length; ++x) {
            bright_sum = static_cast<uint16_t>(bright_sum + (luma[x] > byte ? luma[x] : 0));
        }
        counts->bright += bright;
        counts->bright_sum += bright_sum;
        counts->fire += fire;
    }
}

// The three rows are joined first: the columns then need two more steps instead of eight. Done in stretches that fit a
// small buffer, since images that are dilated alone may have any width.
ORVA_ROW_FUNCTION
void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
                int width) {
    unsigned char any[k_widest_row];
    for (int first = 0; first < width - 3; first += k_widest_row - 2) {
        const int length = width - 1 - first < k_widest_row ? width - 1 - first : k_widest_row;
        for (int i = 0; i < length; ++i) any[i] = above[first + i] | row[first + i] | below[first + i];
        for (int i = 1; i < length - 1; ++i) {
            const int bits = any[i - 1] | any[i] | any[i + 1];
            dst[first + i] = static_cast<unsigned char>(row[first + i] | -(bits & 1));
        }
    }
}

// No pipeline erodes: one version is enough.
void erode_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
               int width) {
    unsigned char all[k_widest_row];
    for (int first = 0; first < width - 3; first += k_widest_row - 2) {
        const int length = width - 1 - first < k_widest_row ? width - 1 - first : k_widest_row;
        for (int i = 0; i < length; ++i) all[i] = above[first + i] & row[first + i] & below[first + i];
        for (int i = 1; i < length - 1; ++i) {
            const int bits = all[i - 1] & all[i] & all[i + 1];
            dst[first + i] = static_cast<unsigned char>(row[first + i] & -(bits & 1));
        }
    }
}

}  // namespace orva_fd
