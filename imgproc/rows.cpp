#include "imgproc/rows.h"

#include "imgproc/bits.h"

namespace orva_fd {

namespace {

inline unsigned char distance(unsigned char a, unsigned char b) {
    return static_cast<unsigned char>(a > b ? a - b : b - a);
}

#if ORVA_HAS_VECTORS
// In the form in which sums of it become one instruction.
inline uint32_t distance_sum(unsigned char a, unsigned char b) {
    const int difference = a - b;
    return static_cast<uint32_t>(difference < 0 ? -difference : difference);
}
#endif

}  // namespace

ORVA_ROW_FUNCTION
void abs_diff_row(const unsigned char* a, const unsigned char* b, unsigned char* dst, int width) {
    for (int x = 0; x < width; ++x) dst[x] = distance(a[x], b[x]);
}

#if ORVA_HAS_VECTORS
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
// the columns are summed against a row of zeros.
ORVA_ROW_FUNCTION
uint32_t sum_held(const unsigned char* stack, int cap) {
    const unsigned char limit = static_cast<unsigned char>(cap);
    unsigned char zeros[k_widest_row];
    unsigned char column[k_widest_row];
    for (int x = 0; x < k_widest_row; ++x) {
        unsigned char sum = 0;
        for (int row = 0; row < k_stack_rows; ++row) {
            const unsigned char byte = stack[row * k_widest_row + x];
            sum = static_cast<unsigned char>(sum + (byte < limit ? byte : limit));
        }
        column[x] = sum;
        zeros[x] = 0;
    }
    uint32_t all = 0;
    for (int x = 0; x < k_widest_row; ++x) all += distance_sum(column[x], zeros[x]);
    return all;
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

ORVA_ROW_FUNCTION
void bits_row(const unsigned char* row, int width, uint64_t* bits) {
    unsigned char flags[k_widest_bits];
    for (int x = 0; x < width; ++x) flags[x] = row[x] != 0 ? 1 : 0;
    for (int x = width; x < k_widest_bits; ++x) flags[x] = 0;
    for (int word = 0; word < k_bit_words; ++word) bits[word] = bits_of_flags(flags + 64 * word, 64);
}

// The three rows are joined first: the columns then need two more steps instead of eight. Done in stretches that fit a
// small buffer, since images that are dilated alone may have any width. Neighbours are read through pointers of their
// own: of one pointer at three places, Clang carries bytes from column to column, which is no vector loop. The columns
// go in blocks of a register, the last of which may overlap the one before: a rest would take as long as the others.
ORVA_ROW_FUNCTION
void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below,
                unsigned char* __restrict dst, int width) {
    const int block = 32;
    unsigned char any[k_widest_row];
    const unsigned char* left = any;
    const unsigned char* middle = any + 1;
    const unsigned char* right = any + 2;
    for (int first = 0; first < width - 3; first += k_widest_row - 2) {
        const int length = width - first < k_widest_row ? width - first : k_widest_row;
        const int columns = length < width - first ? length - 2 : length - 3;
        const unsigned char* centre = row + first + 1;
        unsigned char* out = dst + first + 1;
        for (int i = 0; i < length; ++i) any[i] = above[first + i] | row[first + i] | below[first + i];
        for (int i = 0; columns >= block && i < columns; i += block) {
            const int at = i < columns - block ? i : columns - block;
            for (int x = at; x < at + block; ++x) {
                const unsigned char bits = left[x] | middle[x] | right[x];
                out[x] = static_cast<unsigned char>(centre[x] | ((bits & 1) != 0 ? 255 : 0));
            }
        }
        for (int x = 0; columns < block && x < columns; ++x) {
            const unsigned char bits = left[x] | middle[x] | right[x];
            out[x] = static_cast<unsigned char>(centre[x] | ((bits & 1) != 0 ? 255 : 0));
        }
    }
}
#endif  // the other form is in rows_scalar.cpp

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
