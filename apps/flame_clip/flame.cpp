#include "apps/flame_clip/flame.h"

#include <limits>

namespace flame_clip {
namespace {

const float k_growing_seconds = 5;
const float k_first_share = 0.35f;   // of the grown height, right after the onset
const float k_visible_cover = 0.4f;  // what covers less of a pixel does not count for the box
const float k_rise_per_second = 2.6f;

// From the glowing rim to the overexposed core, as a camera sees it.
rgb flame_colour(float heat) {
    const rgb rim{0.86f, 0.33f, 0.12f}, body{1.0f, 0.60f, 0.27f}, bright{1.0f, 0.83f, 0.48f}, core{1.0f, 0.96f, 0.80f};
    if (heat < 0.3f) return mix(rim, body, heat / 0.3f);
    if (heat < 0.62f) return mix(body, bright, (heat - 0.3f) / 0.32f);
    return mix(bright, core, std::min(1.0f, (heat - 0.62f) / 0.3f));
}

}  // namespace

flame::flame(uint32_t seed, point root, float height) : m_noise(seed), m_root(root), m_height(height) {}

flame::shape_now flame::shape(float age) const {
    const float grown = k_first_share + (1 - k_first_share) * smooth(0, k_growing_seconds, age);
    const float begun = smooth(0, 0.4f, age);
    // Slow swelling, and the quick puffing that every fire shows several times a second.
    const float slow = m_noise.smooth_at(age * 1.3f, 11.5f) - 0.5f;
    const float quick = m_noise.smooth_at(age * 6.0f, 23.5f) - 0.5f;
    const float gust = m_noise.smooth_at(age * 0.8f, 37.5f) - 0.5f;
    shape_now now;
    now.height = m_height * grown * begun * (1 + 0.6f * slow + 0.95f * quick);
    now.width = m_height * grown * begun * 0.36f * (1 - 0.3f * slow + 0.35f * quick);
    now.lean = 0.55f * gust;
    return now;
}

// 0 outside the flame, towards 1 in its core.
float flame::heat(point place, const shape_now& now, float age) const {
    const float up = (m_root.y - place.y) / now.height;
    if (up < -0.06f || up > 1.5f) return 0;
    const float scale = 1 / m_height;
    const float scroll = age * k_rise_per_second;
    const float x = (place.x - m_root.x) * scale;
    const float y = (m_root.y - place.y) * scale;
    const float sway = m_noise.smooth_at(x * 1.5f, y * 2.2f - scroll, age * 0.9f) - 0.5f;
    const float across = (place.x - m_root.x) / now.width - now.lean * up * up * 2 - sway * up * 1.2f;

    const float upward = std::max(0.0f, up);
    const float half_width = std::sqrt(std::min(1.0f, 0.45f + upward * 3)) * (1 - smooth(0.0f, 1.2f, upward)) + 0.12f;
    const float body = 1 - std::fabs(across) / half_width;
    const float most = body * 0.75f + 0.48f * (1.0f + 2.6f * upward);
    if (most <= 0) return 0;  // beyond the reach of any tongue; spares the costly part
    const float ragged = m_noise.cloud(x * 6, y * 4.5f - scroll * 2.0f, age * 1.6f, 4) - 0.52f;
    const float value = body * 0.75f + ragged * (1.0f + 2.6f * upward) - 0.12f * upward;
    const float foot = smooth(-0.06f, 0.04f, up) * (1 - smooth(0.85f, 1.25f, up));
    return std::clamp(value * foot, 0.0f, 1.0f);
}

std::optional<pixel_box> flame::paint(canvas& picture, float age) const {
    if (age <= 0) return std::nullopt;
    const shape_now now = shape(age);
    const float reach = now.width * 2 + now.height * 0.6f;
    int left = std::numeric_limits<int>::max(), top = left, right = -1, bottom = -1;
    const auto paint_pixel = [&](rgb& pixel, point p) {
        const float value = heat(p, now, age);
        const float cover = smooth(0.02f, 0.22f, value);
        if (cover <= 0) return;
        pixel = mix(pixel, flame_colour(value), cover);
        if (cover < k_visible_cover) return;
        const int x = static_cast<int>(p.x / picture.pixel()), y = static_cast<int>(p.y / picture.pixel());
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
    };
    picture.each({m_root.x - reach, m_root.y - now.height * 1.5f}, {m_root.x + reach, m_root.y + now.height * 0.1f},
                 paint_pixel);
    if (right < 0) return std::nullopt;
    return pixel_box{left, top, right - left + 1, bottom - top + 1};
}

float flame::light(float age) const {
    if (age <= 0) return 0;
    const shape_now now = shape(age);
    return std::min(1.2f, now.height / m_height);
}

}  // namespace flame_clip
