#include "preprocess/color_rows.h"

#if ORVA_HAS_VECTORS

#include <cstring>

namespace orva_fd {

namespace {

struct chroma_pair {
    short v;
    short u;
};

inline uint16_t load_word(const unsigned char* bytes) {
    uint16_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Both bytes at once, as a word of the width that the arithmetic has: bytes taken one by one would have to be sorted
// apart.
inline chroma_pair load_pair(const unsigned char* bytes) {
    const uint16_t word = load_word(bytes);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    const chroma_pair pair = {static_cast<short>(word >> 8), static_cast<short>(word & 255)};
#else
    const chroma_pair pair = {static_cast<short>(word & 255), static_cast<short>(word >> 8)};
#endif
    return pair;
}

// 1 in each byte of a word that is not zero: the addition carries into its top bit if any of the lower seven is set.
inline uint16_t non_zero_bytes(uint16_t word) {
    const uint16_t top_bits = static_cast<uint16_t>(((word & 0x7f7f) + 0x7f7f) | word);
    return static_cast<uint16_t>(top_bits >> 7 & 0x0101);
}
inline uint16_t sum_of_bytes(uint16_t word) {
    return static_cast<uint16_t>((word >> 8) + (word & 255));
}

inline uint16_t twice(int byte) {
    return static_cast<uint16_t>(byte | byte << 8);
}
inline short above_zero(short value) {
    return value > 0 ? value : short(0);
}
// (value * factor) >> 16, for which there is an instruction.
inline short upper_half(short value, short factor) {
    return static_cast<short>(static_cast<int>(value) * factor >> 16);
}

inline unsigned char shifted(unsigned char luma, unsigned char plus, unsigned char minus) {
    const unsigned char room = static_cast<unsigned char>(255 - luma);
    const unsigned char raised = static_cast<unsigned char>(luma + (plus < room ? plus : room));
    return static_cast<unsigned char>(raised - (minus < raised ? minus : raised));
}

}  // namespace

// The coefficients are 359, 183, 88 and 454 of 256. (c * k) >> 8 is (4c * 64k) >> 16, and both factors fit 16 bits.
ORVA_ROW_FUNCTION
void color_offsets_row(const unsigned char* chroma, int width, color_offsets* offsets) {
    const int pairs = width / 2;
    for (int i = 0; i < pairs; ++i) {
        const chroma_pair pair = load_pair(chroma + 2 * i);
        const short v = static_cast<short>((pair.v - 128) * 4);
        const short u = static_cast<short>((pair.u - 128) * 4);
        const short red = upper_half(v, 64 * 359);
        const short green = static_cast<short>(upper_half(u, 64 * 88) + upper_half(v, 64 * 183));
        const short blue = upper_half(u, 64 * 454);
        const short red_plus = above_zero(red);
        const short green_minus = above_zero(green);  // green is taken away
        const short blue_plus = above_zero(blue);
        offsets->red_plus[i] = twice(red_plus);
        offsets->red_minus[i] = twice(red_plus - red);
        offsets->green_plus[i] = twice(green_minus - green);
        offsets->green_minus[i] = twice(green_minus);
        offsets->blue_plus[i] = twice(blue_plus);
        offsets->blue_minus[i] = twice(blue_plus - blue);
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

// Of n set pixels at least 0, 1, 1, 2, 3 must pass: none may fail, or one if two or more are set. Two columns at once,
// as a word of two bytes.
ORVA_ROW_FUNCTION
bool filter_block_row(unsigned char* mask_top, unsigned char* mask_bottom, const unsigned char* pass_top,
                      const unsigned char* pass_bottom, int width) {
    uint16_t left = 0;
    for (int i = 0; i < width / 2; ++i) {
        const uint16_t top = load_word(mask_top + 2 * i);
        const uint16_t bottom = load_word(mask_bottom + 2 * i);
        const uint16_t set_top = non_zero_bytes(top);
        const uint16_t set_bottom = non_zero_bytes(bottom);
        const uint16_t failing_top = static_cast<uint16_t>(set_top & ~load_word(pass_top + 2 * i));
        const uint16_t failing_bottom = static_cast<uint16_t>(set_bottom & ~load_word(pass_bottom + 2 * i));
        const uint16_t allowed = sum_of_bytes(static_cast<uint16_t>(set_top + set_bottom)) > 1 ? 1 : 0;
        const uint16_t failing = sum_of_bytes(static_cast<uint16_t>(failing_top + failing_bottom));
        const uint16_t keep = failing > allowed ? 0 : 0xffff;
        const uint16_t kept_top = top & keep;
        const uint16_t kept_bottom = bottom & keep;
        std::memcpy(mask_top + 2 * i, &kept_top, sizeof(kept_top));
        std::memcpy(mask_bottom + 2 * i, &kept_bottom, sizeof(kept_bottom));
        left = static_cast<uint16_t>(left | kept_top | kept_bottom);
    }
    return left != 0;
}

}  // namespace orva_fd

#endif  // the other form is in color_rows_scalar.cpp
