// Random numbers for tests, from a seed that is printed.
#ifndef ORVA_TESTS_SUPPORT_RANDOM_H
#define ORVA_TESTS_SUPPORT_RANDOM_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace support {

// Takes a fresh seed, or the one in ORVA_TEST_SEED, and prints it, so that a failure can be run again.
class random_source {
public:
    random_source() : m_seed(chosen_seed()), m_engine(m_seed) { std::fprintf(stderr, "ORVA_TEST_SEED=%u\n", m_seed); }

    unsigned seed() const { return m_seed; }

    // 0 to limit - 1.
    int below(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned>(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    unsigned char byte() { return static_cast<unsigned char>(below(256)); }

    // Noise from a random place in one long stretch of it, which is quicker than a number for each byte.
    void fill(unsigned char* bytes, std::size_t length) {
        if (m_noise.empty()) {
            m_noise.resize(1 << 20);
            for (unsigned char& value : m_noise) value = byte();
        }
        if (length > m_noise.size() / 2) std::abort();
        const int start = below(static_cast<int>(m_noise.size() - length));
        if (length > 0) std::memcpy(bytes, m_noise.data() + start, length);
    }

private:
    static unsigned chosen_seed() {
        const char* given = std::getenv("ORVA_TEST_SEED");
        if (given != nullptr) return static_cast<unsigned>(std::strtoul(given, nullptr, 10));
        return std::random_device{}();
    }

    unsigned m_seed;
    std::mt19937 m_engine;
    std::vector<unsigned char> m_noise;
};

}  // namespace support

#endif
