// A camera whose pictures the engine knows: flames that flicker in front of a still scene, drawn from a seed with
// integers only, in one block as the public header asks.
#ifndef ORVA_TESTS_FAKES_CAMERA_H
#define ORVA_TESTS_FAKES_CAMERA_H

#include <cstdint>
#include <vector>

#include "ORVA_FireDetection.h"

namespace fakes {

// Repeatable numbers; the same on every machine.
class dice {
public:
    explicit dice(std::uint32_t seed) : m_state(seed * 2654435761u + 1u) {}
    int below(int limit) { return static_cast<int>(bits() % static_cast<std::uint32_t>(limit)); }
    int between(int low, int high) { return low + below(high - low + 1); }
    bool one_in(int n) { return below(n) == 0; }

private:
    std::uint32_t bits() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state >> 2;
    }
    std::uint32_t m_state;
};

class camera {
public:
    // stride: 0 for the width rounded up to a multiple of 16. shift: bytes between the block's aligned start and the
    // picture, so that addresses are off by as much.
    camera(int width, int height, int stride, int shift, std::uint32_t seed);
    camera(const camera&) = delete;
    camera& operator=(const camera&) = delete;

    // Draws the next picture and returns its record. The picture stays until the next call.
    fd_yuv_frame next();

    std::vector<unsigned char>& bytes() { return m_bytes; }

    int flames = 1;
    bool noisy = true;  // luma noise of up to 6 to both sides
    bool burning = true;

protected:
    std::uint32_t m_phys_addr = 0;  // of the block

private:
    void draw_scene();
    void draw_flame(int centre_x, int centre_y, int radius);
    unsigned char& luma(int x, int y);
    unsigned char* chroma_pair(int x, int y);

    int m_width;
    int m_height;
    int m_stride;
    int m_shift;
    dice m_dice;
    std::vector<unsigned char> m_bytes;
    int m_frame = 0;
};

}  // namespace fakes

#endif
