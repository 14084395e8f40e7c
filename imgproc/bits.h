// Bytes to bits: one bit for each byte that is not zero, to find those bytes without looking at each.
#ifndef ORVA_FD_IMGPROC_BITS_H
#define ORVA_FD_IMGPROC_BITS_H

#include <cstdint>
#include <cstring>

namespace orva_fd {

// Eight bytes, the first in the lowest bits on every machine.
inline uint64_t load_bytes(const unsigned char* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    word = __builtin_bswap64(word);
#endif
    return word;
}

// One bit for each of eight bytes, set where the byte is not zero. The addition carries into a byte's top bit if any of
// its lower seven is set; the product gathers the eight bits in the top byte.
inline uint64_t non_zero_bits(uint64_t word) {
    const uint64_t low_bits = 0x7f7f7f7f7f7f7f7fu;
    const uint64_t ones = ((((word & low_bits) + low_bits) | word) >> 7) & 0x0101010101010101u;
    return (ones * 0x0102040810204080u) >> 56;
}

// The bits of up to 64 bytes.
inline uint64_t foreground_bits(const unsigned char* row, int count) {
    uint64_t bits = 0;
    int x = 0;
    for (; x + 8 <= count; x += 8) {
        bits |= non_zero_bits(load_bytes(row + x)) << x;
    }
    for (; x < count; ++x) bits |= static_cast<uint64_t>(row[x] != 0) << x;
    return bits;
}

}  // namespace orva_fd

#endif
