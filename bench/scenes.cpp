#include "bench/scenes.h"

#include <algorithm>

namespace bench {

namespace {

const int k_ring = 8;  // with the channel's own pictures, about what a second-level cache holds

int rounded_up(int value, int step) {
    return (value + step - 1) / step * step;
}

struct blob {
    int x;
    int y;
    int rx;
    int ry;
};

// A flickering, fire-coloured ellipse: luma changes from pixel to pixel, chroma from pair to pair.
void draw_blob(picture& p, random_source& random, const blob& b) {
    for (int y = std::max(0, b.y - b.ry); y <= std::min(p.height() - 1, b.y + b.ry); ++y) {
        for (int x = std::max(0, b.x - b.rx); x <= std::min(p.width() - 1, b.x + b.rx); ++x) {
            const int dx = x - b.x;
            const int dy = y - b.y;
            if (dx * dx * b.ry * b.ry + dy * dy * b.rx * b.rx > b.rx * b.rx * b.ry * b.ry) continue;
            p.set_luma(x, y, random.between(140, 235));
            p.set_chroma(x, y, random.between(84, 96), random.between(146, 156));
        }
    }
}

// Noise of a sensor: bell-shaped, too small for the threshold of motion.
int sensor_noise(random_source& random) {
    return random.between(-2, 2) + random.between(-2, 2) + random.between(-2, 2);
}

void draw_chroma(picture& p, random_source& random) {
    for (int y = 0; y < p.height(); y += 2) {
        for (int x = 0; x < p.width(); x += 2) p.set_chroma(x, y, random.between(124, 132), random.between(124, 132));
    }
}

// Patches of 6 x 6 pixels: moved by a few pixels, nearly all of the picture differs, as behind a panning camera.
void draw_patches(picture& p, random_source& random) {
    for (int y = 0; y < p.height(); y += 6) {
        for (int x = 0; x < p.width(); x += 6) {
            const int level = random.between(20, 250);
            for (int i = 0; i < 36; ++i) {
                if (x + i % 6 < p.width() && y + i / 6 < p.height())
                    p.set_luma(x + i % 6, y + i / 6, level + sensor_noise(random));
            }
        }
    }
}

}  // namespace

picture::picture(int width, int height)
    : m_width(width),
      m_height(height),
      m_stride(rounded_up(width, 16)),
      m_bytes(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height + (height + 1) / 2 + 1)) {
    const std::size_t luma_bytes = static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height);
    std::fill(m_bytes.begin() + static_cast<std::ptrdiff_t>(luma_bytes), m_bytes.end(),
              static_cast<unsigned char>(128));
}

std::size_t picture::at(int x, int y) const {
    return static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(y) + static_cast<std::size_t>(x);
}

void picture::set_luma(int x, int y, int luma) {
    m_bytes[at(x, y)] = static_cast<unsigned char>(std::max(0, std::min(255, luma)));
}

int picture::luma(int x, int y) const {
    return m_bytes[at(x, y)];
}

void picture::set_chroma(int x, int y, int u, int v) {
    const std::size_t pair = at(x / 2 * 2, m_height + y / 2);
    m_bytes[pair] = static_cast<unsigned char>(v);
    m_bytes[pair + 1] = static_cast<unsigned char>(u);
}

fd_yuv_frame picture::view() const {
    fd_yuv_frame frame = {};
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = static_cast<std::uint32_t>(m_width);
    frame.height = static_cast<std::uint32_t>(m_height);
    frame.reserved = -1;
    frame.stride[0] = frame.stride[1] = static_cast<std::uint32_t>(m_stride);
    frame.virt_addr[0] = const_cast<unsigned char*>(m_bytes.data());  // only read by those who get it
    frame.virt_addr[1] = frame.virt_addr[0] + at(0, m_height);
    return frame;
}

fd_rect whole_picture() {
    return {0, 1, 0, 1, 1, 1, 1, 1};
}

scene quiet_scene(int width, int height) {
    scene s = {"quiet", {}};
    random_source random(1);
    picture still(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) still.set_luma(x, y, 60 + (x / 32 * 7 + y / 24 * 13) % 50 + random.below(6));
    }
    draw_chroma(still, random);
    for (int i = 0; i < k_ring; ++i) {
        picture p = still;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) p.set_luma(x, y, still.luma(x, y) + sensor_noise(random));
        }
        const int ry = 18 * random.between(70, 130) / 100;
        draw_blob(p, random, {width / 2, height / 2, ry * 2 / 3, ry});
        s.frames.push_back(p);
    }
    return s;
}

scene busy_scene(int width, int height, int blobs) {
    scene s = {"busy", {}};
    random_source random(2);
    picture texture(width, height);
    draw_patches(texture, random);
    draw_chroma(texture, random);
    std::vector<blob> places;
    const int columns = 10;
    const int rows = (blobs + columns - 1) / columns;
    for (int i = 0; i < blobs; ++i) {
        places.push_back({(2 * (i % columns) + 1) * width / (2 * columns),
                          (2 * (i / columns) + 1) * height / (2 * rows), random.between(4, 7), random.between(5, 9)});
    }
    for (int i = 0; i < k_ring; ++i) {
        picture p = texture;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) p.set_luma(x, y, texture.luma((x + 5 * i) % width, (y + 3 * i) % height));
        }
        for (const blob& b : places) {
            const blob moved = {b.x + random.between(-3, 3), b.y + random.between(-3, 3), b.rx + random.below(3),
                                b.ry + random.below(4)};
            draw_blob(p, random, moved);
        }
        s.frames.push_back(p);
    }
    return s;
}

}  // namespace bench
