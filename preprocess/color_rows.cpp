#include "preprocess/color_rows.h"

namespace orva_fd {

namespace {

inline unsigned char above_zero(int value) {
    return static_cast<unsigned char>(value > 0 ? value : 0);
}
inline unsigned char below_zero(int value) {
    return static_cast<unsigned char>(value < 0 ? -value : 0);
}

// dst holds each byte of src twice.
inline void double_bytes(const unsigned char* src, unsigned char* dst, int count) {
    for (int i = 0; i < count; ++i) {
        dst[2 * i] = src[i];
        dst[2 * i + 1] = src[i];
    }
}

// One value for each chroma pair, before it is given to both columns.
struct pair_offsets {
    unsigned char red_plus[k_widest_row / 2];
    unsigned char red_minus[k_widest_row / 2];
    unsigned char green_plus[k_widest_row / 2];
    unsigned char green_minus[k_widest_row / 2];
    unsigned char blue_plus[k_widest_row / 2];
    unsigned char blue_minus[k_widest_row / 2];
    unsigned char luma_floor[k_widest_row / 2];
};

}  // namespace

// The coefficients are 359, 183, 88 and 454 of 256. A whole 256 leaves the shift, so that every product fits 16 bits:
// (c * 359) >> 8 = c + ((c * 103) >> 8), and (c * 454) >> 8 = c + ((c * 198) >> 8), also for negative c.
ORVA_ROW_FUNCTION
void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets) {
    const int pairs = width / 2;
    pair_offsets half;
    for (int i = 0; i < pairs; ++i) {
        const short v = static_cast<short>(chroma[2 * i] - 128);
        const short u = static_cast<short>(chroma[2 * i + 1] - 128);
        const short red = static_cast<short>(v + static_cast<short>(static_cast<short>(v * 103) >> 8));
        const short green = static_cast<short>(static_cast<short>(static_cast<short>(u * 88) >> 8) +
                                               static_cast<short>(static_cast<short>(v * 183) >> 8));
        const short blue = static_cast<short>(u + static_cast<short>(static_cast<short>(u * 198) >> 8));
        half.red_plus[i] = above_zero(red);
        half.red_minus[i] = below_zero(red);
        half.green_plus[i] = below_zero(green);  // green is taken away
        half.green_minus[i] = above_zero(green);
        half.blue_plus[i] = above_zero(blue);
        half.blue_minus[i] = below_zero(blue);
    }
    // Flame has V above U, V above 120, and luma above U + 30.
    for (int i = 0; i < pairs; ++i) {
        const unsigned char v = chroma[2 * i];
        const unsigned char u = chroma[2 * i + 1];
        const unsigned char highest = u > 225 ? 225 : u;
        const unsigned char refuse_by_u = v > u ? 0 : 255;
        const unsigned char refuse_by_v = v > 120 ? 0 : 255;
        half.luma_floor[i] = static_cast<unsigned char>((highest + 30) | refuse_by_u | refuse_by_v);
    }
    double_bytes(half.red_plus, offsets->red_plus, pairs);
    double_bytes(half.red_minus, offsets->red_minus, pairs);
    double_bytes(half.green_plus, offsets->green_plus, pairs);
    double_bytes(half.green_minus, offsets->green_minus, pairs);
    double_bytes(half.blue_plus, offsets->blue_plus, pairs);
    double_bytes(half.blue_minus, offsets->blue_minus, pairs);
    double_bytes(half.luma_floor, offsets->luma_floor, pairs);
}

// Saturating arithmetic in bytes. One of plus and minus is zero, so clipping after each step is clipping the sum.
ORVA_ROW_FUNCTION
void convert_row(const unsigned char* luma, const unsigned char* plus, const unsigned char* minus, unsigned char* dst,
                 int width) {
    for (int x = 0; x < width; ++x) {
        const unsigned char room = static_cast<unsigned char>(255 - luma[x]);
        const unsigned char raised = static_cast<unsigned char>(luma[x] + (plus[x] < room ? plus[x] : room));
        dst[x] = static_cast<unsigned char>(raised - (minus[x] < raised ? minus[x] : raised));
    }
}

// The rule of check_fire_pt without division. Its last test, round(2^20 * 3b / s) <= table[r] with s = r + g + b, holds
// exactly when 4500 * b <= s * (11 * r - 1305): that is 3b / s <= 1 - 1.1 * (255 - r) / 150 times 1500 * s, and over
// all r, g, b that pass the other tests no quotient lies so close to its bound that the rounding decides (a test walks
// all of them).
ORVA_ROW_FUNCTION
void fire_color_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                    const unsigned char* luma, const unsigned char* luma_floor, unsigned char* pass, int width) {
    for (int x = 0; x < width; ++x) {
        const unsigned char r = red[x];
        const unsigned char g = green[x];
        const unsigned char b = blue[x];
        const unsigned char beyond_green = static_cast<unsigned char>(r - g);
        pass[x] = static_cast<unsigned char>((r >= g) & (g > b) & (b > 80) & (r > 150) & (g > 100) &
                                             (beyond_green < g) & (luma[x] > luma_floor[x]));
    }
    for (int x = 0; x < width; ++x) {
        const short sum = static_cast<short>(red[x] + green[x] + blue[x]);
        const short scale = static_cast<short>(11 * red[x] - 1305);
        const short b = blue[x];
        pass[x] = static_cast<unsigned char>(pass[x] & (sum > 350) & (4500 * b <= sum * scale));
    }
}

// Of n set pixels at least 0, 1, 1, 2, 3 must pass: none may fail, or one if two or more are set.
ORVA_ROW_FUNCTION
bool filter_block_row(unsigned char* mask_top, unsigned char* mask_bottom, const unsigned char* pass_top,
                      const unsigned char* pass_bottom, int width) {
    unsigned char set[k_widest_row];
    unsigned char failing[k_widest_row];
    for (int x = 0; x < width; ++x) {
        const unsigned char top = mask_top[x] != 0 ? 1 : 0;
        const unsigned char bottom = mask_bottom[x] != 0 ? 1 : 0;
        set[x] = static_cast<unsigned char>(top + bottom);
        failing[x] = static_cast<unsigned char>((top & ~pass_top[x]) + (bottom & ~pass_bottom[x]));
    }
    unsigned char keep[k_widest_row];
    for (int i = 0; i < width / 2; ++i) {
        const unsigned char n = static_cast<unsigned char>(set[2 * i] + set[2 * i + 1]);
        const unsigned char f = static_cast<unsigned char>(failing[2 * i] + failing[2 * i + 1]);
        const unsigned char allowed = n > 1 ? 1 : 0;
        const unsigned char all = f <= allowed ? 255 : 0;
        keep[2 * i] = all;
        keep[2 * i + 1] = all;
    }
    unsigned char left = 0;
    for (int x = 0; x < width; ++x) {
        mask_top[x] &= keep[x];
        mask_bottom[x] &= keep[x];
        left |= mask_top[x] | mask_bottom[x];
    }
    return left != 0;
}

}  // namespace orva_fd
