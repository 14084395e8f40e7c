// The row functions of a channel's frames without vector instructions: four pixels in a word, and early exits where
// most of a picture has nothing.
#include "imgproc/rows.h"

#if !ORVA_HAS_VECTORS

#include "imgproc/words.h"

namespace orva_fd {

namespace {

// Columns x to end - 1. Returns the first behind them.
int replace_columns(const unsigned char* luma, unsigned char* before, unsigned char* distances, int x, int end,
                    int limit, difference_counts* counts, bool* any) {
    for (; x < end; ++x) {
        const int value = luma[x] > before[x] ? luma[x] - before[x] : before[x] - luma[x];
        before[x] = luma[x];
        distances[x] = static_cast<unsigned char>(value);
        counts->sum += static_cast<uint32_t>(value);
        ++counts->of[value];
        *any = *any || value > limit;
    }
    return x;
}

inline void add_bright(unsigned char luma, unsigned char mask, int limit, bright_counts* counts) {
    if (luma > limit) {
        ++counts->bright;
        counts->bright_sum += luma;
    }
    counts->fire += mask & 1;
}

// One bit for each byte of a word that is not zero.
inline uint32_t set_bytes(uint32_t word) {
    const uint32_t tops = (((word & ~k_top_bit) + ~k_top_bit) | word) & k_top_bit;
    return (tops >> 7) * 0x01020408u >> 24;
}

struct three_rows {
    const unsigned char* above;
    const unsigned char* row;
    const unsigned char* below;
    uint32_t byte(int x) const { return static_cast<uint32_t>(above[x] | row[x] | below[x]); }
    uint32_t word(int x) const { return word_at(above + x) | word_at(row + x) | word_at(below + x); }
};

void dilate_columns(const three_rows& rows, unsigned char* dst, int x, int end) {
    if (x >= end) return;
    uint32_t left = rows.byte(x - 1);
    uint32_t middle = rows.byte(x);
    for (; x < end; ++x) {
        const uint32_t right = rows.byte(x + 1);
        dst[x] = ((left | middle | right) & 1) != 0 ? 255 : rows.row[x];
        left = middle;
        middle = right;
    }
}

// The words from column x on that lie before `last` and do not reach beyond `end`. Returns the first column behind
// them. The three rows are joined, and taken along from word to word.
int dilate_words(const three_rows& rows, unsigned char* dst, int x, int last, int end) {
    uint32_t before = rows.byte(x - 1);
    uint32_t centre = rows.word(x);
    for (; x < last && x + k_word <= end; x += k_word) {
        const uint32_t next = x + k_word < last ? rows.word(x + k_word) : rows.byte(x + k_word);
        uint32_t word = centre;  // right if all of its bits are set, and if none are nearby
        if (centre != k_all_set && (before | centre | next) != 0) {
            const uint32_t bits = before | centre << 8 | centre | centre >> 8 | next << 24;
            word = word_at(rows.row + x) | whole_bytes((bits & k_low_bit) << 7);
        }
        put_word(dst + x, word);
        before = centre >> 24;
        centre = next;
    }
    return x;
}

}  // namespace

void threshold_row(const unsigned char* src, unsigned char* dst, int width, int threshold) {
    const word_columns words(src, width, lie_alike(src, dst));
    const byte_limit limit(threshold);
    int x = 0;
    for (; x < words.first; ++x) dst[x] = src[x] > threshold ? 255 : 0;
    for (; x < words.last; x += k_word) put_word(dst + x, whole_bytes(limit.above(word_at(src + x))));
    for (; x < width; ++x) dst[x] = src[x] > threshold ? 255 : 0;
}

// Words in which no difference lies above the limit are not counted. Carries from byte to byte make none of them up:
// the lowest byte that carries lies above the limit itself. A row's sums fit 16 bits.
bool replace_row(const unsigned char* luma, unsigned char* before, unsigned char* distances, int width, int limit,
                 difference_counts* counts) {
    static_assert(k_widest_row / k_word * 2 * 255 < 65536, "half of a row's sum in 16 bits");
    const word_columns words(luma, width, lie_alike(luma, before) && lie_alike(luma, distances));
    const uint32_t room = static_cast<uint32_t>(127 - limit) * k_low_bit;
    uint32_t sums = 0;
    bool any = false;
    int x = replace_columns(luma, before, distances, 0, words.first, limit, counts, &any);
    for (; x < words.last; x += k_word) {
        const uint32_t pixels = word_at(luma + x);
        const uint32_t word = distances_of(pixels, word_at(before + x));
        put_word(before + x, pixels);
        put_word(distances + x, word);
        sums += byte_pairs(word);
        if ((((word + room) | word) & k_top_bit) == 0) continue;
        any = true;
        for (int i = 0; i < 32; i += 8) ++counts->of[word >> i & 255];
    }
    counts->sum += sum_of_pairs(sums);
    replace_columns(luma, before, distances, x, width, limit, counts, &any);
    return any;
}

uint32_t sum_row(const unsigned char* src, int width) {
    const int stretch = 128 * k_word;  // its sums fit 16 bits
    const word_columns words(src, width);
    uint32_t sum = 0;
    int x = 0;
    for (; x < words.first; ++x) sum += src[x];
    while (x < words.last) {
        const int end = words.last - x < stretch ? words.last : x + stretch;
        uint32_t sums = 0;
        for (; x < end; x += k_word) sums += byte_pairs(word_at(src + x));
        sum += sum_of_pairs(sums);
    }
    for (; x < width; ++x) sum += src[x];
    return sum;
}

void add_bright_row(const unsigned char* luma, const unsigned char* mask, int width, int limit, bright_counts* counts) {
    const int stretch = 128 * k_word;  // its sums fit 16 bits
    const word_columns words(luma, width, lie_alike(luma, mask));
    const byte_limit bound(limit);
    int x = 0;
    for (; x < words.first; ++x) add_bright(luma[x], mask[x], limit, counts);
    while (x < words.last) {
        const int end = words.last - x < stretch ? words.last : x + stretch;
        uint32_t bright = 0;
        uint32_t fire = 0;
        uint32_t sums = 0;
        for (; x < end; x += k_word) {
            const uint32_t pixels = word_at(luma + x);
            const uint32_t above = bound.above(pixels);
            fire += word_at(mask + x) & k_low_bit;
            if (above == 0) continue;
            bright += above >> 7;
            sums += byte_pairs(pixels & whole_bytes(above));
        }
        counts->bright += sum_of_pairs(byte_pairs(bright));
        counts->bright_sum += sum_of_pairs(sums);
        counts->fire += sum_of_pairs(byte_pairs(fire));
    }
    for (; x < width; ++x) add_bright(luma[x], mask[x], limit, counts);
}

// The bits of a word may lie in two of the results.
void bits_row(const unsigned char* row, int width, uint64_t* bits) {
    const word_columns words(row, width);
    for (int word = 0; word < k_bit_words; ++word) bits[word] = 0;
    int x = 0;
    for (; x < words.first; ++x) bits[0] |= static_cast<uint64_t>(row[x] != 0 ? 1 : 0) << x;
    for (; x < words.last; x += k_word) {
        const uint64_t set = set_bytes(word_at(row + x));
        if (set == 0) continue;
        bits[x / 64] |= set << x % 64;
        if (x % 64 > 64 - k_word) bits[x / 64 + 1] |= set >> (64 - x % 64);
    }
    for (; x < width; ++x) bits[x / 64] |= static_cast<uint64_t>(row[x] != 0 ? 1 : 0) << x % 64;
}

void dilate_row(const unsigned char* above, const unsigned char* row, const unsigned char* below, unsigned char* dst,
                int width) {
    const word_columns words(row, width, lie_alike(row, above) && lie_alike(row, below) && lie_alike(row, dst));
    const three_rows rows = {above, row, below};
    const int end = width - 2;
    const int first = words.first > 0 ? words.first : k_word;  // column 0 stays
    int x = 1;
    if (first < words.last && first + k_word <= end) {
        dilate_columns(rows, dst, x, first);
        x = dilate_words(rows, dst, first, words.last, end);
    }
    dilate_columns(rows, dst, x, end);
}

}  // namespace orva_fd

#endif
