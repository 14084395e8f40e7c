#include "tests/fakes/camera.h"

#include <algorithm>
#include <cstddef>

namespace fakes {

camera::camera(int width, int height, int stride, int shift, std::uint32_t seed)
    : m_width(width),
      m_height(height),
      m_stride(stride != 0 ? stride : (width + 15) / 16 * 16),
      m_shift(shift),
      m_dice(seed),
      m_bytes(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height + (height + 1) / 2 + 1) +
              static_cast<std::size_t>(shift)) {}

unsigned char& camera::luma(int x, int y) {
    return m_bytes[static_cast<std::size_t>(m_shift + y * m_stride + x)];
}

// V, then U.
unsigned char* camera::chroma_pair(int x, int y) {
    return &m_bytes[static_cast<std::size_t>(m_shift + (m_height + y / 2) * m_stride + x / 2 * 2)];
}

void camera::draw_scene() {
    // Everything in the block has a value, what lies beside the picture too.
    std::fill(m_bytes.begin(), m_bytes.end(), static_cast<unsigned char>(128));
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const int texture = 50 + (x / 8 + y / 8) % 3 * 12;
            luma(x, y) = static_cast<unsigned char>(texture + (noisy ? m_dice.between(-6, 6) : 0));
        }
    }
}

// An upright ellipse of fire-coloured 2 x 2 blocks, each with a luma of its own.
void camera::draw_flame(int centre_x, int centre_y, int radius) {
    const int half_width = std::max(radius * 2 / 3, 3);
    for (int y = std::max(centre_y - radius, 0) / 2 * 2; y < std::min(centre_y + radius, m_height - 1); y += 2) {
        for (int x = std::max(centre_x - half_width, 0) / 2 * 2; x < std::min(centre_x + half_width, m_width - 1);
             x += 2) {
            const int dx = (x - centre_x) * radius;
            const int dy = (y - centre_y) * half_width;
            if (dx * dx + dy * dy > radius * radius * half_width * half_width) continue;
            const int block = m_dice.between(165, 235);
            for (int pixel = 0; pixel < 4; ++pixel)
                luma(x + pixel % 2, y + pixel / 2) = static_cast<unsigned char>(block);
            unsigned char* pair = chroma_pair(x, y);
            pair[0] = static_cast<unsigned char>(m_dice.between(146, 154));
            pair[1] = static_cast<unsigned char>(m_dice.between(96, 104));
        }
    }
}

fd_yuv_frame camera::next() {
    ++m_frame;
    draw_scene();
    const int mean = std::max(std::min(m_width, m_height) / (4 + flames), 6);
    for (int flame = 0; flame < flames && burning; ++flame) {
        const int x = (2 * flame + 1) * m_width / (2 * flames);
        // One after the other: the order in which arguments are computed differs between processors.
        const int y = m_height / 2 + m_dice.between(-2, 2);
        const int radius = mean * m_dice.between(50, 150) / 100;
        draw_flame(x, y, radius);
    }
    fd_yuv_frame record = fd_yuv_frame();
    record.width = static_cast<std::uint32_t>(m_width);
    record.height = static_cast<std::uint32_t>(m_height);
    record.reserved = -1;
    const int offsets[2] = {m_shift, m_shift + m_height * m_stride};
    for (int plane = 0; plane < 2; ++plane) {
        if (m_phys_addr != 0) record.phys_addr[plane] = m_phys_addr + static_cast<std::uint32_t>(offsets[plane]);
        record.virt_addr[plane] = m_bytes.data() + offsets[plane];
        record.stride[plane] = static_cast<std::uint32_t>(m_stride);
    }
    return record;
}

}  // namespace fakes
