// Four pixels in a word of 32 bits, for processors without vector instructions: the first pixel in the lowest byte,
// so machines with the other byte order go byte by byte. Small processors cannot read a word at an odd address: words
// lie at multiples of four, and what lies before the first and behind the last one of a row goes byte by byte too.
#ifndef ORVA_FD_IMGPROC_WORDS_H
#define ORVA_FD_IMGPROC_WORDS_H

#include <cstdint>

namespace orva_fd {

const int k_word = 4;
const uint32_t k_all_set = 0xffffffffu;
const uint32_t k_low_bit = 0x01010101u;     // of each byte
const uint32_t k_top_bit = 0x80808080u;     // of each byte
const uint32_t k_even_bytes = 0x00ff00ffu;  // with room above them, for sums

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
const bool k_has_words = false;
#else
const bool k_has_words = true;
#endif

// A word in memory, which may be looked at as bytes too. Sanitizers see accesses by this type that lie beside a word.
typedef uint32_t __attribute__((__may_alias__)) stored_word;

inline uint32_t word_at(const unsigned char* bytes) {
    return *static_cast<const stored_word*>(static_cast<const void*>(bytes));
}
inline void put_word(unsigned char* bytes, uint32_t word) {
    *static_cast<stored_word*>(static_cast<void*>(bytes)) = word;
}

inline int bytes_above_multiple(const void* address) {
    return static_cast<int>(reinterpret_cast<uintptr_t>(address) % k_word);
}
inline bool is_aligned(const void* address) {
    return bytes_above_multiple(address) == 0;
}
inline bool lie_alike(const void* a, const void* b) {
    return bytes_above_multiple(a) == bytes_above_multiple(b);
}

// The columns of a row that are whole words, first to last - 1; with alike = false none are.
struct word_columns {
    word_columns(const unsigned char* row, int width, bool alike = true) : first(0), last(0) {
        const int before = (k_word - bytes_above_multiple(row)) % k_word;
        if (!k_has_words || !alike || before >= width) return;
        first = before;
        last = before + (width - before) / k_word * k_word;
    }
    int first;
    int last;
};

// 255 in each byte whose top bit is set in `tops`, which holds no other bits.
inline uint32_t whole_bytes(uint32_t tops) {
    return (tops << 1) - (tops >> 7);
}

// |a - b| of each byte: the differences modulo 256, those that borrowed negated.
inline uint32_t distances_of(uint32_t a, uint32_t b) {
    const uint32_t difference = ((a | k_top_bit) - (b & ~k_top_bit)) ^ (~(a ^ b) & k_top_bit);
    const uint32_t borrowed = ((~a & b) | (~(a ^ b) & difference)) & k_top_bit;
    return (difference ^ whole_bytes(borrowed)) + (borrowed >> 7);
}

// Which bytes of a word lie above a limit of 0 to 255: their top bits.
class byte_limit {
public:
    explicit byte_limit(int limit)
        : m_room(static_cast<uint32_t>(0x7f - (limit & 0x7f)) * k_low_bit), m_low(limit < 128 ? k_top_bit : 0) {}
    uint32_t above(uint32_t word) const {
        const uint32_t carried = (word & ~k_top_bit) + m_room;  // its top bit: the lower seven lie above the limit's
        return ((carried & word) & k_top_bit) | ((carried | word) & m_low);
    }

private:
    uint32_t m_room;
    uint32_t m_low;
};

// Two sums of 16 bits in one.
inline uint32_t byte_pairs(uint32_t word) {
    return (word & k_even_bytes) + ((word >> 8) & k_even_bytes);
}
inline uint32_t sum_of_pairs(uint32_t pairs) {
    return (pairs & 0xffff) + (pairs >> 16);
}

}  // namespace orva_fd

#endif
