// Flags in bytes, as row functions write them, to bits, which are looked at without a loop over all.
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

// One bit for each of up to 64 flags of 0 or 1, a multiple of eight; the product gathers eight of them in the top byte.
inline uint64_t bits_of_flags(const unsigned char* flags, int count) {
    uint64_t bits = 0;
    for (int i = 0; i < count; i += 8) bits |= (load_bytes(flags + i) * 0x0102040810204080u) >> 56 << i;
    return bits;
}

}  // namespace orva_fd

#endif
