// Random numbers that are the same everywhere, for scenes that are known by their seed.
#ifndef ORVA_TESTS_SUPPORT_XORSHIFT_SOURCE_H
#define ORVA_TESTS_SUPPORT_XORSHIFT_SOURCE_H

#include <algorithm>
#include <cstdint>

namespace support {

// Xorshift with 64 bits of state (G. Marsaglia, "Xorshift RNGs", 2003).
class xorshift_source {
public:
    explicit xorshift_source(std::uint64_t seed) : m_state(seed * 0x9E3779B97F4A7C15u + 0x2545F4914F6CDD1Du) {
        for (int i = 0; i < 8; ++i) bits();
    }

    std::uint32_t bits() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return static_cast<std::uint32_t>(m_state >> 32);
    }
    // 0 to limit - 1.
    int below(int limit) { return static_cast<int>(bits() % static_cast<std::uint32_t>(std::max(1, limit))); }
    // Both inclusive.
    int between(int low, int high) { return low + below(high - low + 1); }
    bool one_in(int n) { return n > 0 && below(n) == 0; }

private:
    std::uint64_t m_state;
};

}  // namespace support

#endif
