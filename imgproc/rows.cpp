#include "imgproc/rows.h"

namespace orva_fd {

namespace {

inline unsigned char distance(unsigned char a, unsigned char b) {
    return static_cast<unsigned char>(a > b ? a - b : b - a);
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
    for (int x = 0; x < width; ++x) {
        const int signed_difference = a[x] - b[x];
        sum += static_cast<uint32_t>(signed_difference < 0 ? -signed_difference : signed_difference);
    }
    for (int x = 0; x < width; ++x) {
        const unsigned char d = distance(a[x], b[x]);
        largest = d > largest ? d : largest;
    }
    const row_motion motion = {sum, largest};
    return motion;
}

// Compilers know the processor's instruction for a sum of absolute differences, but only between two rows of bytes.
ORVA_ROW_FUNCTION
uint32_t sum_distance_row(const unsigned char* src, int width, int value) {
    unsigned char other[k_widest_row];
    const int filled = width < k_widest_row ? width : k_widest_row;
    for (int i = 0; i < filled; ++i) other[i] = static_cast<unsigned char>(value);
    uint32_t sum = 0;
    for (int first = 0; first < width; first += k_widest_row) {
        const int length = width - first < k_widest_row ? width - first : k_widest_row;
        for (int i = 0; i < length; ++i) {
            const int difference = src[first + i] - other[i];
            sum += static_cast<uint32_t>(difference < 0 ? -difference : difference);
        }
    }
    return sum;
}

void add_distance_sums_counted(const unsigned char* src, int width, int first, int count, uint32_t* sums) {
    uint32_t histogram[256] = {};
    for (int x = 0; x < width; ++x) ++histogram[src[x]];
    for (int i = 0; i < count; ++i) {
        for (int byte = 0; byte < 256; ++byte) {
            const int distance = byte < first + i ? first + i - byte : byte - first - i;
            sums[i] += histogram[byte] * static_cast<uint32_t>(distance);
        }
    }
}

void add_distance_sums(const unsigned char* src, int width, int first, int count, uint32_t* sums) {
#if defined(__SSE2__) || defined(__ARM_NEON)
    for (int i = 0; i < count; ++i) sums[i] += sum_distance_row(src, width, first + i);
#else
    add_distance_sums_counted(src, width, first, count, sums);
#endif
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
