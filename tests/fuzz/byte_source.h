// The fuzzer's bytes, read as decisions. What lies behind the last byte reads as 0.
#ifndef ORVA_TESTS_FUZZ_BYTE_SOURCE_H
#define ORVA_TESTS_FUZZ_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

class byte_source {
public:
    byte_source(const std::uint8_t* bytes, std::size_t size) : m_at(bytes), m_left(size) {}

    bool empty() const { return m_left == 0; }

    int byte() {
        if (m_left == 0) return 0;
        --m_left;
        return *m_at++;
    }
    int word() {
        const int low = byte();
        return byte() << 8 | low;
    }
    int below(int limit) { return byte() % limit; }  // limit up to 256
    int between(int first, int last) { return first + below(last - first + 1); }
    bool one_in(int n) { return below(n) == n - 1; }

private:
    const std::uint8_t* m_at;
    std::size_t m_left;
};

// Repeatable noise, of which a few of the fuzzer's bytes choose the seed: xorshift with 32 bits of state.
class noise_source {
public:
    explicit noise_source(int seed) : m_state(static_cast<std::uint32_t>(seed) * 2654435761u + 0x9E3779B9u) {
        if (m_state == 0) m_state = 1;
    }
    std::uint32_t bits() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }
    int below(int limit) { return static_cast<int>((bits() >> 8) % static_cast<std::uint32_t>(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    unsigned char byte() { return static_cast<unsigned char>(bits() >> 13); }

private:
    std::uint32_t m_state;
};

}  // namespace fuzz

#endif
