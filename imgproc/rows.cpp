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

// Each count runs over stretches short enough for a byte, which keeps 32 counters in one vector register.
ORVA_ROW_FUNCTION
void add_motion_tail_row(const unsigned char* a, const unsigned char* b, int width, motion_tail* tail) {
    const int stretch = 192;
    unsigned char d[k_widest_row];
    for (int x = 0; x < width; ++x) d[x] = distance(a[x], b[x]);
    for (int k = 0; k < k_tail_length; ++k) {
        const unsigned char limit = static_cast<unsigned char>(k_tail_first + k);
        for (int first = 0; first < width; first += stretch) {
            const int length = width - first < stretch ? width - first : stretch;
            unsigned char count = 0;
            for (int i = 0; i < length; ++i) count = static_cast<unsigned char>(count + (d[first + i] > limit ? 1 : 0));
            tail->above[k] += count;
        }
    }
    uint32_t sum = 0;
    for (int x = 0; x < width; ++x) sum += d[x] > k_tail_first ? 0 : d[x];
    tail->sum_at_or_below_first += sum;
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

ORVA_ROW_FUNCTION
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
