// Repeatable randomness: the same seed gives the same numbers on every machine.
#ifndef ORVA_APPS_FLAME_CLIP_NOISE_H
#define ORVA_APPS_FLAME_CLIP_NOISE_H

#include <cstdint>

namespace flame_clip {

// Scrambles a number; the base of everything random here.
inline uint32_t scramble(uint32_t x) {
    x ^= x >> 16;
    x *= 0x7feb352du;
    x ^= x >> 15;
    x *= 0x846ca68bu;
    return x ^ (x >> 16);
}

class noise {
public:
    explicit noise(uint32_t seed) : m_seed(scramble(seed + 0x9e3779b9u)) {}

    // A number from 0 to 1 for a grid point.
    float at(int x, int y = 0, int z = 0) const { return in_row(row(y, layer(z)), x); }

    // Smooth between grid points, 0 to 1.
    float smooth_at(float x, float y = 0, float z = 0) const;

    // Several octaves of it, 0 to 1 and mostly near 0.5.
    float cloud(float x, float y, float z, int octaves) const;

private:
    uint32_t layer(int z) const { return scramble(static_cast<uint32_t>(z) * 0xcb1ab31fu ^ m_seed); }
    static uint32_t row(int y, uint32_t in_layer) {
        return scramble(static_cast<uint32_t>(y) * 0xd8163841u ^ in_layer);
    }
    static float in_row(uint32_t in_row, int x) {
        return static_cast<float>(scramble(static_cast<uint32_t>(x) * 0x8da6b343u ^ in_row) >> 8) / 16777215.0f;
    }

    uint32_t m_seed;
};

}  // namespace flame_clip

#endif
