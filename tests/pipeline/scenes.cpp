#include "tests/pipeline/scenes.h"

#include <algorithm>

namespace scenes {

namespace {

int clamp_byte(int value) {
    return std::max(0, std::min(255, value));
}

}  // namespace

void frame_block::shape(picture_size size) {
    m_size = size;
    const int rows = size.height + (size.height + 1) / 2 + 1;
    m_bytes.assign(static_cast<std::size_t>(size.stride * rows), 0);
}

unsigned char* frame_block::luma(int x, int y) {
    return m_bytes.data() + y * m_size.stride + x;
}

unsigned char* frame_block::chroma(int x, int y) {
    return m_bytes.data() + (m_size.height + y / 2) * m_size.stride + x / 2 * 2;
}

fd_yuv_frame frame_block::view() {
    fd_yuv_frame frame = {};
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = static_cast<uint32_t>(m_size.width);
    frame.height = static_cast<uint32_t>(m_size.height);
    frame.reserved = -1;
    frame.stride[0] = frame.stride[1] = static_cast<uint32_t>(m_size.stride);
    frame.virt_addr[0] = m_bytes.data();
    frame.virt_addr[1] = m_bytes.data() + m_size.height * m_size.stride;
    return frame;
}

player::player(const settings& scene, std::uint64_t seed) : m_scene(scene), m_random(seed) {
    for (int i = 0; i < scene.flames; ++i) {
        const int x = scene.in_rows ? 100 + i % 5 * 200 : m_random.between(80, 920);
        const int y = scene.in_rows ? 100 + i / 5 * 250 : m_random.between(80, 920);
        m_flames.push_back({x, y, scene.radius});
    }
}

int player::grade() {
    if (m_scene.grade_period == 0 || m_frame % m_scene.grade_period != 0) return -1;
    return m_random.between(0, 104);  // a few too high, which must be refused
}

fd_yuv_frame player::next() {
    const std::size_t turn = static_cast<std::size_t>(m_frame / std::max(1, m_scene.size_period));
    const picture_size size = m_scene.sizes[turn % m_scene.sizes.size()];
    const picture_size old = m_block.size();
    if (size.width != old.width || size.height != old.height || size.stride != old.stride) {
        m_block.shape(size);
        m_still.clear();
    }
    draw_background();
    const bool burning = m_scene.off == 0 || m_frame % (m_scene.on + m_scene.off) < m_scene.on;
    if (burning) {
        for (flame& f : m_flames) draw_flame(f);
    }
    draw_salt();
    ++m_frame;
    const fd_yuv_frame frame = m_block.view();
    return m_random.one_in(m_scene.refused_period) ? spoilt(frame) : frame;
}

// A still scene of flat patches, drawn once for each picture size; luma noise comes on top of it in every frame.
void player::draw_background() {
    std::vector<unsigned char>& bytes = m_block.bytes();
    if (m_still.empty()) {
        m_still.resize(bytes.size());
        const std::size_t luma_bytes = static_cast<std::size_t>(m_block.size().height * m_block.size().stride);
        int level = m_scene.background;
        for (std::size_t i = 0; i < m_still.size(); ++i) {
            if (i % 37 == 0) level = m_scene.background + m_random.between(-12, 12);
            m_still[i] = static_cast<unsigned char>(i < luma_bytes ? clamp_byte(level) : m_random.between(122, 132));
        }
    }
    bytes = m_still;
    if (m_scene.noise == 0) return;
    const std::size_t luma_bytes = static_cast<std::size_t>(m_block.size().height * m_block.size().stride);
    for (std::size_t i = 0; i < luma_bytes; ++i) {
        bytes[i] = static_cast<unsigned char>(clamp_byte(bytes[i] + m_random.between(-m_scene.noise, m_scene.noise)));
    }
}

void player::set_pixel(int x, int y, int luma, int u, int v) {
    const picture_size size = m_block.size();
    if (x < 0 || y < 0 || x >= size.width || y >= size.height) return;
    *m_block.luma(x, y) = static_cast<unsigned char>(clamp_byte(luma));
    unsigned char* pair = m_block.chroma(x, y);
    pair[0] = static_cast<unsigned char>(v);
    if (pair + 1 < m_block.bytes().data() + m_block.bytes().size()) pair[1] = static_cast<unsigned char>(u);
}

// An ellipse of flickering, fire-coloured texture; its radius changes from frame to frame.
void player::draw_flame(flame& f) {
    const picture_size size = m_block.size();
    f.radius += f.radius * m_scene.growth / 1000;
    f.x = std::max(
        20, std::min(980, f.x + m_random.between(-m_scene.drift, m_scene.drift) * 1000 / std::max(1, size.width)));
    const int burst = m_scene.burst_period > 0 && m_frame % m_scene.burst_period == 0 ? 5 : 1;
    const int percent = (100 + m_random.between(-m_scene.flicker, m_scene.flicker)) * burst;
    const int ry = std::max(2, f.radius * size.height / 1000 * percent / 100);
    const int rx = std::max(2, ry * 2 / 3);
    const int cx = f.x * size.width / 1000;
    const int cy = f.y * size.height / 1000;
    for (int y = -ry; y <= ry; ++y) {
        for (int x = -rx; x <= rx; ++x) {
            if (x * x * ry * ry + y * y * rx * rx > rx * rx * ry * ry) continue;
            // Red 180..255, green below it, blue above 80: the middle of the range that counts as flame.
            set_pixel(cx + x, cy + y, m_random.between(140, 235), m_random.between(84, 96), m_random.between(146, 156));
        }
    }
}

void player::draw_salt() {
    const picture_size size = m_block.size();
    for (int i = 0; i < m_scene.salt; ++i) {
        const int x = m_random.below(size.width);
        const int y = m_random.below(size.height);
        for (int k = 0; k < 4; ++k)
            set_pixel(x + k % 2, y + k / 2, m_random.between(100, 255), m_random.between(80, 100), 150);
    }
}

// One thing of a frame made so that it must be refused.
fd_yuv_frame player::spoilt(fd_yuv_frame frame) {
    switch (m_random.below(7)) {
        case 0:
            frame.format = static_cast<fd_pixel_format>(m_random.bits() | 1u);
            break;
        case 1:
            frame.width = 353 + m_random.bits() % 5u;
            break;
        case 2:
            frame.height = 289 + m_random.bits() % 5u;
            break;
        case 3:
            frame.virt_addr[0] = nullptr;
            break;
        case 4:
            frame.virt_addr[1] = nullptr;
            break;
        case 5:
            frame.width = 0;
            break;
        default:
            frame.height = 0;
            break;
    }
    return frame;
}

fd_rect whole_picture() {
    return {0, 1, 0, 1, 1, 1, 1, 1};
}

namespace {

// A flame before a still, slightly noisy scene; rows below change what they name.
settings base(const char* name, int frames) {
    settings s;
    s.name = name;
    s.frames = frames;
    s.sizes = {{128, 96, 128}};
    s.size_period = 1;
    s.region = whole_picture();
    s.flames = 1;
    s.in_rows = false;
    s.radius = 110;
    s.flicker = 40;
    s.burst_period = 0;
    s.growth = 0;
    s.drift = 0;
    s.noise = 4;
    s.background = 70;
    s.salt = 0;
    s.on = 1;
    s.off = 0;
    s.grade_period = 0;
    s.refused_period = 0;
    return s;
}

template <typename change_function>
settings changed(const char* name, int frames, change_function change) {
    settings s = base(name, frames);
    change(s);
    return s;
}

}  // namespace

std::vector<settings> named_scenes() {
    return {
        changed("one flame, full size", 150,
                [](settings& s) {
                    s.sizes = {{352, 288, 352}};
                }),
        changed("one flame", 300, [](settings&) {}),
        changed("a flame that grows", 300,
                [](settings& s) {
                    s.radius = 40;
                    s.growth = 8;
                }),
        changed("several flames", 300,
                [](settings& s) {
                    s.sizes = {{320, 240, 320}};
                    s.flames = 7;
                    s.radius = 45;
                }),
        changed("fifteen flames", 200,
                [](settings& s) {
                    s.sizes = {{352, 288, 352}};
                    s.flames = 15;
                    s.radius = 26;
                }),
        changed("twenty flames in rows", 150,
                [](settings& s) {
                    s.sizes = {{352, 288, 352}};
                    s.flames = 20;
                    s.in_rows = true;
                    s.radius = 28;
                }),
        changed("a flame that bursts now and then", 400,
                [](settings& s) {
                    s.radius = 50;
                    s.flicker = 5;
                    s.burst_period = 6;
                    s.grade_period = 50;
                }),
        changed("sizes that change every few frames", 400,
                [](settings& s) {
                    s.sizes = {{128, 96, 128}, {176, 144, 176}, {120, 90, 128}, {128, 96, 144}};
                    s.size_period = 7;
                }),
        changed("sizes that change every hundred frames", 500,
                [](settings& s) {
                    s.sizes = {{128, 96, 128}, {176, 144, 176}};
                    s.size_period = 100;
                }),
        changed("odd size, odd stride", 300,
                [](settings& s) {
                    s.sizes = {{127, 95, 129}};
                }),
        changed("odd size, aligned stride", 300,
                [](settings& s) {
                    s.sizes = {{127, 95, 128}};
                }),
        changed("largest odd size", 100,
                [](settings& s) {
                    s.sizes = {{351, 287, 352}};
                }),
        changed("stride that is no multiple of 16", 300,
                [](settings& s) {
                    s.sizes = {{128, 96, 136}};
                }),
        changed("region in the middle", 300,
                [](settings& s) {
                    s.sizes = {{176, 144, 176}};
                    s.region = {250, 1000, 250, 1000, 500, 1000, 500, 1000};
                    s.flames = 4;
                }),
        changed("region with odd edges", 300,
                [](settings& s) {
                    s.sizes = {{176, 144, 180}};
                    s.region = {21, 176, 7, 144, 131, 176, 101, 144};
                    s.flames = 4;
                }),
        changed("region of another picture's size", 300,
                [](settings& s) {
                    s.sizes = {{176, 144, 176}};
                    s.region = {100, 704, 100, 576, 500, 704, 400, 576};
                    s.flames = 3;
                }),
        changed("grades that change", 500,
                [](settings& s) {
                    s.grade_period = 9;
                    s.flames = 2;
                }),
        changed("flame that goes out and comes back", 600,
                [](settings& s) {
                    s.on = 70;
                    s.off = 30;
                }),
        changed("flame with short pauses", 600,
                [](settings& s) {
                    s.on = 12;
                    s.off = 8;
                }),
        changed("flame that moves on", 400, [](settings& s) { s.drift = 6; }),
        changed("steady light", 300, [](settings& s) { s.flicker = 0; }),
        changed("light that comes and goes wildly", 400,
                [](settings& s) {
                    s.flicker = 95;
                    s.radius = 60;
                }),
        changed("flame before a bright wall", 300, [](settings& s) { s.background = 180; }),
        changed("flame before a very bright wall", 300, [](settings& s) { s.background = 200; }),
        changed("strong sensor noise", 300, [](settings& s) { s.noise = 30; }),
        changed("salt", 200,
                [](settings& s) {
                    s.salt = 60;
                    s.flames = 0;
                }),
        changed("salt and flames", 300,
                [](settings& s) {
                    s.salt = 12;
                    s.flames = 2;
                }),
        changed("much salt, full size", 70,
                [](settings& s) {
                    s.sizes = {{352, 288, 352}};
                    s.salt = 500;
                }),
        changed("frames that are refused", 400, [](settings& s) { s.refused_period = 4; }),
        changed("nothing moves", 80,
                [](settings& s) {
                    s.noise = 0;
                    s.flames = 0;
                }),
        changed("smallest pictures", 200,
                [](settings& s) {
                    s.sizes = {{2, 2, 2}, {1, 1, 2}, {4, 3, 4}, {3, 2, 16}, {16, 16, 16}, {8, 40, 9}, {40, 3, 40}};
                    s.size_period = 3;
                }),
    };
}

settings random_scene(std::uint64_t seed) {
    random_source random(seed ^ 0x5CE4E5u);
    settings s = base("", 300);
    s.name = "random scene " + std::to_string(seed);
    const int sizes = random.between(1, 3);
    s.sizes.clear();
    for (int i = 0; i < sizes; ++i) {
        const int width = random.between(40, 180);
        const int height = random.between(32, 144);
        const int strides[] = {(width + 15) / 16 * 16, width + width % 2, width + random.between(1, 40) + 1};
        s.sizes.push_back({width, height, strides[random.below(3)]});
    }
    s.size_period = random.one_in(2) ? random.between(1, 12) : random.between(60, 200);
    if (random.one_in(3)) {
        const int x = random.below(500);
        const int y = random.below(500);
        s.region = {static_cast<uint16_t>(x),
                    1000,
                    static_cast<uint16_t>(y),
                    1000,
                    static_cast<uint16_t>(random.between(200, 1000 - x)),
                    1000,
                    static_cast<uint16_t>(random.between(200, 1000 - y)),
                    1000};
    }
    s.flames = random.between(1, 6);
    s.radius = random.between(30, 160);
    s.flicker = random.between(5, 70);
    s.growth = random.one_in(4) ? random.between(1, 8) : 0;
    s.drift = random.one_in(3) ? random.between(1, 5) : 0;
    s.noise = random.between(0, 12);
    s.background = random.between(20, 160);
    s.salt = random.one_in(4) ? random.between(1, 25) : 0;
    if (random.one_in(2)) {
        s.on = random.between(10, 120);
        s.off = random.between(1, 40);
    }
    s.grade_period = random.one_in(3) ? random.between(5, 90) : 0;
    s.refused_period = random.one_in(4) ? random.between(3, 30) : 0;
    return s;
}

}  // namespace scenes
