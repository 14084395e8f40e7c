#include "preprocess/color_rows.h"

#include <cstring>

namespace orva_fd {

namespace {

struct chroma_pair {
    short v;
    short u;
};

// Both bytes at once, as a word of the width that the arithmetic has: bytes taken one by one would have to be sorted
// apart.
inline chroma_pair load_pair(const unsigned char* bytes) {
    uint16_t word;
    std::memcpy(&word, bytes, sizeof(word));
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    const chroma_pair pair = {static_cast<short>(word >> 8), static_cast<short>(word & 255)};
#else
    const chroma_pair pair = {static_cast<short>(word & 255), static_cast<short>(word >> 8)};
#endif
    return pair;
}

inline uint16_t twice(int byte) {
    return static_cast<uint16_t>(byte | byte << 8);
}
inline short above_zero(short value) {
    return value > 0 ? value : short(0);
}
inline short below_zero(short value) {
    return value < 0 ? static_cast<short>(-value) : short(0);
}
inline short scaled(short value, short factor) {
    return static_cast<short>(static_cast<short>(value * factor) >> 8);
}

inline unsigned char shifted(unsigned char luma, unsigned char plus, unsigned char minus) {
    const unsigned char room = static_cast<unsigned char>(255 - luma);
    const unsigned char raised = static_cast<unsigned char>(luma + (plus < room ? plus : room));
    return static_cast<unsigned char>(raised - (minus < raised ? minus : raised));
}

}  // namespace

// The coefficients are 359, 183, 88 and 454 of 256. A whole 256 leaves the shift, so that every product fits 16 bits:
// (c * 359) >> 8 = c + ((c * 103) >> 8), and (c * 454) >> 8 = c + ((c * 198) >> 8), also for negative c.
ORVA_ROW_FUNCTION
void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets) {
    const int pairs = width / 2;
    for (int i = 0; i < pairs; ++i) {
        const chroma_pair pair = load_pair(chroma + 2 * i);
        const short v = static_cast<short>(pair.v - 128);
        const short u = static_cast<short>(pair.u - 128);
        const short red = static_cast<short>(v + scaled(v, 103));
        const short green = static_cast<short>(scaled(u, 88) + scaled(v, 183));
        const short blue = static_cast<short>(u + scaled(u, 198));
        offsets->red_plus[i] = twice(above_zero(red));
        offsets->red_minus[i] = twice(below_zero(red));
        offsets->green_plus[i] = twice(below_zero(green));  // green is taken away
        offsets->green_minus[i] = twice(above_zero(green));
        offsets->blue_plus[i] = twice(above_zero(blue));
        offsets->blue_minus[i] = twice(below_zero(blue));
    }
}

// Flame has V above U, V above 120, and luma above U + 30.
ORVA_ROW_FUNCTION
void luma_floor_row(const unsigned char* chroma, int width, uint16_t* floors) {
    for (int i = 0; i < width / 2; ++i) {
        const chroma_pair pair = load_pair(chroma + 2 * i);
        const short v = pair.v;
        const short u = pair.u;
        const short least_luma = static_cast<short>(u > 225 ? 255 : u + 30);
        const short refuse_by_u = v > u ? short(0) : short(255);
        const short refuse_by_v = v > 120 ? short(0) : short(255);
        floors[i] = twice(least_luma | refuse_by_u | refuse_by_v);
    }
}

// Saturating arithmetic in bytes. One of plus and minus is zero, so clipping after each step is clipping the sum.
ORVA_ROW_FUNCTION
void convert_row(const unsigned char* luma, const color_offsets& offsets, unsigned char* __restrict blue,
                 unsigned char* __restrict green, unsigned char* __restrict red, int width) {
    const unsigned char* blue_plus = as_bytes(offsets.blue_plus);
    const unsigned char* blue_minus = as_bytes(offsets.blue_minus);
    const unsigned char* green_plus = as_bytes(offsets.green_plus);
    const unsigned char* green_minus = as_bytes(offsets.green_minus);
    const unsigned char* red_plus = as_bytes(offsets.red_plus);
    const unsigned char* red_minus = as_bytes(offsets.red_minus);
    for (int x = 0; x < width; ++x) {
        blue[x] = shifted(luma[x], blue_plus[x], blue_minus[x]);
        green[x] = shifted(luma[x], green_plus[x], green_minus[x]);
        red[x] = shifted(luma[x], red_plus[x], red_minus[x]);
    }
}

ORVA_ROW_FUNCTION
bool flame_tint_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                    const unsigned char* luma, const unsigned char* luma_floor, unsigned char* pass, int width) {
    unsigned char any = 0;
    for (int x = 0; x < width; ++x) {
        const unsigned char r = red[x];
        const unsigned char g = green[x];
        const unsigned char b = blue[x];
        const unsigned char beyond_green = static_cast<unsigned char>(r - g);
        const unsigned char meets = static_cast<unsigned char>((r >= g) & (g > b) & (b > 80) & (r > 150) & (g > 100) &
                                                               (beyond_green < g) & (luma[x] > luma_floor[x]));
        pass[x] = meets;
        any |= meets;
    }
    return any != 0;
}

// The test round(2^20 * 3b / s) <= table[r] with s = r + g + b holds exactly when 4500 * b <= s * (11 * r - 1305): that
// is 3b / s <= 1 - 1.1 * (255 - r) / 150 times 1500 * s, and over all r, g, b that meet the other tests no quotient
// lies so close to its bound that the rounding decides (a test walks all of them). The products are compared by halves
// of 16 bits, of which a register holds twice as many as of whole ones.
ORVA_ROW_FUNCTION
void flame_saturation_row(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                          unsigned char* pass, int width) {
    for (int x = 0; x < width; ++x) {
        const uint16_t sum = static_cast<uint16_t>(red[x] + green[x] + blue[x]);
        const uint16_t scale = static_cast<uint16_t>(11 * red[x] - 1305);  // not negative where red is above 150
        const uint16_t b = blue[x];
        const uint16_t factor = 4500;
        const uint16_t allowed_low = static_cast<uint16_t>(sum * scale);
        const short allowed_high = static_cast<short>(static_cast<uint32_t>(sum) * scale >> 16);
        const uint16_t blue_low = static_cast<uint16_t>(b * factor);
        const short blue_high = static_cast<short>(static_cast<uint32_t>(b) * factor >> 16);
        const short low_decides = allowed_low >= blue_low ? 1 : 0;  // where the high halves are equal
        const short room = static_cast<short>(allowed_high - blue_high + low_decides);
        const short room_if_bright = sum > 350 ? room : short(0);
        pass[x] = static_cast<unsigned char>(pass[x] & (room_if_bright > 0 ? 255 : 0));
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
