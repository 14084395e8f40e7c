#include "tests/fuzz/painted_frame.h"

#include <algorithm>
#include <cstring>

namespace fuzz {

namespace {

unsigned char to_byte(int value) {
    return static_cast<unsigned char>(std::max(0, std::min(255, value)));
}

}  // namespace

frame_shape read_shape(byte_source& input) {
    const int kind = input.below(64);
    frame_shape shape = {64, 48, 64};
    if (kind == 63) {
        shape.width = 352 - input.below(3);
        shape.height = 288 - input.below(3);
    } else if (kind >= 32) {
        shape.width = input.between(1, 80);
        shape.height = input.between(1, 60);
    } else if (kind >= 24) {
        shape.width = input.between(1, 200) + input.below(152);
        shape.height = input.between(1, 8);
    }
    const int even = shape.width + shape.width % 2;
    const int padding = input.below(48);
    shape.stride = padding < 16 ? (even + 15) / 16 * 16 + padding / 8 * 16 : padding < 32 ? even : even + padding - 32;
    return shape;
}

painting read_painting(byte_source& input) {
    painting style = {};
    const int kind = input.byte();
    style.random = kind % 16 == 15;
    style.colour = kind / 16 % 8 < 6 ? 0 : kind / 16 % 8 - 5;
    style.rhythm = kind % 3;
    style.background = input.below(220);
    style.noise = input.below(32) - 16;
    style.seed = input.byte();
    style.flames = input.below(14);
    style.place = input.byte();
    style.size = input.between(2, 40);
    style.swing = input.below(100);
    return style;
}

// stride * (height + (height + 1) / 2 + 1) bytes, as the header promises to its hosts.
painted_frame::painted_frame(frame_shape shape)
    : m_shape(shape),
      m_length(static_cast<std::size_t>(shape.stride * (shape.height + (shape.height + 1) / 2 + 1))),
      m_bytes(new unsigned char[m_length]),
      m_copy(m_length) {}

void painted_frame::paint_block(int x, int y, int luma, int u, int v) {
    if (x < 0 || y < 0 || x >= m_shape.width || y >= m_shape.height) return;
    for (int row = y; row < std::min(y + 2, m_shape.height); ++row) {
        for (int column = x; column < std::min(x + 2, m_shape.width); ++column) {
            m_bytes[static_cast<std::size_t>(row * m_shape.stride + column)] = to_byte(luma + row + column);
        }
    }
    const int pair = (m_shape.height + y / 2) * m_shape.stride + x / 2 * 2;
    m_bytes[static_cast<std::size_t>(pair)] = to_byte(v);
    m_bytes[static_cast<std::size_t>(pair + 1)] = to_byte(u);
}

// A square of 2 x 2 blocks, lighter when it is large, so that all of it moves from one frame to the next.
void painted_frame::paint_flame(const painting& style, int number, int index, noise_source& noise) {
    const int step = style.rhythm == 0   ? (number % 2) * 2 - 1
                     : style.rhythm == 1 ? number % 3 - 1
                                         : noise.between(-1, 1);
    const int size = std::max(2, style.size + style.size * style.swing * step / 100);
    const int x = (style.place / 16 * m_shape.width / 16 + index % 4 * m_shape.width / 4) % m_shape.width;
    const int y = (style.place % 16 * m_shape.height / 16 + index / 4 * m_shape.height / 4) % m_shape.height;
    for (int dy = -size / 2; dy < size / 2; dy += 2) {
        for (int dx = -size / 2; dx < size / 2; dx += 2) {
            const int luma = 190 + step * 30 + noise.below(24);
            const int u = style.colour == 0 ? 98 : style.colour == 1 ? 126 : noise.byte();
            const int v = style.colour == 0 ? 152 : style.colour == 1 ? 130 : noise.byte();
            paint_block((x + dx) / 2 * 2, (y + dy) / 2 * 2, luma, u, v);
        }
    }
}

void painted_frame::paint(const painting& style, int number) {
    noise_source noise(style.seed * 8192 + number);
    const std::size_t luma_bytes = static_cast<std::size_t>(m_shape.stride * m_shape.height);
    if (style.random) {
        for (std::size_t i = 0; i < m_length; ++i) m_bytes[i] = noise.byte();
    } else {
        std::memset(m_bytes.get(), style.background, luma_bytes);
        std::memset(m_bytes.get() + luma_bytes, 128, m_length - luma_bytes);
        for (std::size_t i = 0; style.noise > 0 && i < luma_bytes; ++i) {
            m_bytes[i] = to_byte(m_bytes[i] + noise.between(-style.noise, style.noise));
        }
        for (int i = 0; i < style.flames; ++i) paint_flame(style, number, i, noise);
    }
    std::memcpy(m_copy.data(), m_bytes.get(), m_length);
}

bool painted_frame::untouched() const {
    return std::memcmp(m_copy.data(), m_bytes.get(), m_length) == 0;
}

fd_yuv_frame painted_frame::view() {
    fd_yuv_frame frame = {};
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = static_cast<std::uint32_t>(m_shape.width);
    frame.height = static_cast<std::uint32_t>(m_shape.height);
    frame.reserved = -1;
    frame.virt_addr[0] = m_bytes.get();
    frame.virt_addr[1] = m_bytes.get() + m_shape.stride * m_shape.height;
    frame.stride[0] = frame.stride[1] = static_cast<std::uint32_t>(m_shape.stride);
    return frame;
}

}  // namespace fuzz
