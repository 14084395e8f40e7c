// The colour conversion and the fire-colour filter of a pair of rows without vector instructions: four pixels in a
// word, and each block's tests in the order in which most blocks fail.
#include "preprocess/color_rows.h"

#if !ORVA_HAS_VECTORS

#include <cstring>

#include "imgproc/common.h"
#include "imgproc/words.h"
#include "preprocess/CYuv420_Rgb.h"

namespace orva_fd {

namespace {

// What the luma of a block is raised by.
struct block_offsets {
    explicit block_offsets(const unsigned char* pair)
        : blue(CYuv420_Rgb::m_table_fu2[pair[1]]),
          green(-CYuv420_Rgb::m_table_fu1[pair[1]] - CYuv420_Rgb::m_table_fv2[pair[0]]),
          red(CYuv420_Rgb::m_table_fv1[pair[0]]) {}
    int blue;
    int green;
    int red;
};

// Two numbers in the halves of a word. A negative one in the lower half borrows from the upper: sums with it are right
// again once both are 0 or more.
inline uint32_t halves(int low, int high) {
    return static_cast<uint32_t>(low) + (static_cast<uint32_t>(high) << 16);
}
inline int low_half(uint32_t pair) {
    return static_cast<int16_t>(pair & 0xffff);
}
inline int high_half(uint32_t pair) {
    return static_cast<int16_t>((pair - static_cast<uint32_t>(low_half(pair))) >> 16);
}

// Holds both halves to 0..255. They lie in -512..511: raised by 512, bit 9 is missing from the negative ones, and bit 8
// stands in what is too large.
uint32_t clipped_halves(uint32_t pair) {
    const uint32_t raised = pair + 0x02000200u;
    const uint32_t positive = (raised >> 9) & 0x00010001u;
    const uint32_t excessive = (raised >> 8) & 0x00010001u;
    return (raised | ((excessive << 8) - excessive)) & ((positive << 8) - positive);
}

// Four pixels of a colour from the luma of the first and third, that of the second and fourth, and an offset for each
// two.
inline uint32_t raised_by(uint32_t offsets, uint32_t even, uint32_t odd) {
    uint32_t first = even + offsets;
    uint32_t second = odd + offsets;
    if (((first | second) & ~k_even_bytes) != 0) {
        first = clipped_halves(first);
        second = clipped_halves(second);
    }
    return first | second << 8;
}
inline unsigned char raised_by(uint32_t offsets, int x, unsigned char luma) {
    const int offset = x % k_word < 2 ? low_half(offsets) : high_half(offsets);
    return static_cast<unsigned char>(limit_range(luma + offset, 0, 255));
}

// Most blocks fail by their chroma, most pixels of the others by red. The tests are those of
// pre_process::check_fire_pt, the last of them without its quotient, as in flame_saturation_row.
inline bool may_burn(const unsigned char* chroma) {
    return chroma[0] > chroma[1] && chroma[0] > 120;
}
inline bool burns(const pair_rows& rows, int i, int x, int u) {
    const int red = rows.red[i][x];
    if (red <= 150 || rows.luma[i][x] <= u + 30) return false;
    const int green = rows.green[i][x];
    const int blue = rows.blue[i][x];
    if (green <= blue || blue <= 80 || green <= 100 || red < green || red >= 2 * green) return false;
    const int sum = red + green + blue;
    return sum > 350 && 4500 * blue <= sum * (11 * red - 1305);
}

// Of n set pixels at least 0, 1, 1, 2, 3 must pass: none may fail, or one if two or more are set. A block without set
// pixels stays.
bool keeps_block(const pair_rows& rows, int x) {
    const int u = rows.chroma[x + 1];
    int set = 0;
    int failing = 0;
    for (int i = 0; i < 2; ++i) {
        for (int at = x; at < x + 2; ++at) {
            if (rows.mask[i][at] == 0) continue;
            ++set;
            if (!burns(rows, i, at, u) && ++failing > 1) return false;
        }
    }
    return failing == 0 || set > 1;
}

// These return whether anything is left.
bool filter_block(const pair_rows& rows, int x) {
    if (may_burn(rows.chroma + x) && keeps_block(rows, x)) {
        return (rows.mask[0][x] | rows.mask[0][x + 1] | rows.mask[1][x] | rows.mask[1][x + 1]) != 0;
    }
    for (int i = 0; i < 2; ++i) rows.mask[i][x] = rows.mask[i][x + 1] = 0;
    return false;
}
inline bool filter_two_blocks(const pair_rows& rows, int x) {
    const uint32_t top = word_at(rows.mask[0] + x);
    const uint32_t bottom = word_at(rows.mask[1] + x);
    const uint32_t set = top | bottom;
    if (set == 0) return false;
    const unsigned char* chroma = rows.chroma + x;
    uint32_t keep = 0;
    if (may_burn(chroma) && (set & 0xffff) != 0 && keeps_block(rows, x)) keep = 0xffff;
    if (may_burn(chroma + 2) && set > 0xffff && keeps_block(rows, x + 2)) keep |= 0xffff0000u;
    put_word(rows.mask[0] + x, top & keep);
    put_word(rows.mask[1] + x, bottom & keep);
    return (set & keep) != 0;
}

}  // namespace

void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets) {
    for (int i = 0; k_word * i < width; ++i) {
        const unsigned char* pair = chroma + k_word * i;
        const block_offsets left(pair);
        const block_offsets right(k_word * i + 2 < width ? pair + 2 : pair);
        offsets->blue[i] = halves(left.blue, right.blue);
        offsets->green[i] = halves(left.green, right.green);
        offsets->red[i] = halves(left.red, right.red);
    }
}

// The luma is the host's and may lie anywhere.
void convert_row(const unsigned char* luma, const color_offsets& offsets, unsigned char* blue, unsigned char* green,
                 unsigned char* red, int width) {
    alignas(uint32_t) unsigned char copy[k_widest_row];
    const bool has_words = k_has_words && is_aligned(blue) && is_aligned(green) && is_aligned(red);
    const int words = has_words ? width / k_word : 0;
    if (!is_aligned(luma)) {
        std::memcpy(copy, luma, static_cast<std::size_t>(width));
        luma = copy;
    }
    for (int i = 0; i < words; ++i) {
        const uint32_t pixels = word_at(luma + k_word * i);
        const uint32_t even = pixels & k_even_bytes;
        const uint32_t odd = (pixels >> 8) & k_even_bytes;
        put_word(blue + k_word * i, raised_by(offsets.blue[i], even, odd));
        put_word(green + k_word * i, raised_by(offsets.green[i], even, odd));
        put_word(red + k_word * i, raised_by(offsets.red[i], even, odd));
    }
    for (int x = k_word * words; x < width; ++x) {
        blue[x] = raised_by(offsets.blue[x / k_word], x, luma[x]);
        green[x] = raised_by(offsets.green[x / k_word], x, luma[x]);
        red[x] = raised_by(offsets.red[x / k_word], x, luma[x]);
    }
}

bool filter_pair_rows(const pair_rows& rows, int first, int last) {
    const bool has_words = k_has_words && is_aligned(rows.mask[0] + first) && is_aligned(rows.mask[1] + first);
    const int in_words = has_words ? first + (last - first) / k_word * k_word : first;
    bool left = false;
    for (int x = first; x < in_words; x += k_word) left = filter_two_blocks(rows, x) || left;
    for (int x = in_words; x < last; x += 2) left = filter_block(rows, x) || left;
    return left;
}

}  // namespace orva_fd

#endif
