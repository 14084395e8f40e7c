#include "apps/flame_clip/scene.h"

#include "apps/flame_clip/backdrop.h"
#include "apps/flame_clip/people.h"

namespace flame_clip {
namespace {

const float k_flame_height = 0.34f;

point heap(const scene_settings& settings) {
    return {k_heap_x * static_cast<float>(settings.width) / static_cast<float>(settings.height), k_heap_y};
}

// A walk to and fro between two ends: how far from the first one, which way, and all laps so far.
struct pacing {
    float share, facing, laps;
};

pacing pace(float laps) {
    const float in_lap = laps - std::floor(laps);
    if (in_lap < 0.5f) return {in_lap * 2, 1, laps};
    return {2 - in_lap * 2, -1, laps};
}

}  // namespace

scene::scene(const scene_settings& settings)
    : m_settings(settings),
      m_noise(settings.seed),
      m_backdrop(paint_backdrop(settings.width, settings.height, settings.seed)),
      m_flame(settings.seed + 1, heap(settings), k_flame_height),
      m_picture(settings.width, settings.height) {}

void scene::paint_lamps(float time) {
    const float aspect = m_picture.aspect();
    // A fluorescent tube that is not quite steady.
    const float hum = 0.97f + 0.03f * m_noise.smooth_at(time * 9, 3.5f);
    const point tube{0.30f * aspect, 0.055f};
    m_picture.glow(tube, 0.5f, rgb{0.16f, 0.17f, 0.17f} * hum);
    m_picture.limb({tube.x - 0.16f, tube.y}, {tube.x + 0.16f, tube.y}, 0.011f, 0.011f, rgb{1, 1, 0.98f} * hum);
    // A warm bulb beside the door.
    const point bulb{0.655f * aspect, 0.20f};
    m_picture.glow(bulb, 0.24f, rgb{0.34f, 0.24f, 0.10f});
    m_picture.ellipse(bulb, 0.016f, 0.018f, {1, 0.93f, 0.72f}, 1, 0.01f);
    // An amber lamp over the door that blinks once a second.
    const float lit =
        smooth(0.55f, 0.62f, time - std::floor(time)) * (1 - smooth(0.9f, 0.97f, time - std::floor(time)));
    const point amber{0.48f * aspect, 0.125f};
    m_picture.glow(amber, 0.07f, rgb{0.35f, 0.20f, 0.04f} * lit);
    m_picture.ellipse(amber, 0.010f, 0.010f, mix({0.30f, 0.18f, 0.06f}, {1, 0.70f, 0.30f}, lit), 1, 0.006f);
}

void scene::paint_people(float time) {
    const float aspect = m_picture.aspect();
    const person_look worker{{0.80f, 0.36f, 0.10f}, {0.16f, 0.18f, 0.25f}, {0.78f, 0.70f, 0.22f}, true};
    const person_look visitor{{0.55f, 0.11f, 0.12f}, {0.20f, 0.20f, 0.23f}, {0.14f, 0.10f, 0.08f}, false};

    const pacing back = pace(time * 0.16f + m_noise.at(1, 2, 3));
    const float worker_x = aspect * (0.20f + 0.34f * back.share);
    paint_person(m_picture, {worker_x, k_floor_line + 0.10f}, 0.30f, back.laps * 14, back.facing, worker);

    // In the foreground, but never before the heap: nothing hides the flame.
    const pacing front = pace(time * 0.085f + m_noise.at(4, 5, 6));
    const float visitor_x = aspect * (0.07f + 0.46f * front.share);
    paint_person(m_picture, {visitor_x, 0.985f}, 0.50f, front.laps * 20, front.facing, visitor);
}

// The flame's light on walls and floor: strongest beside it, warm, and wavering.
void scene::light_room(float strength) {
    if (strength <= 0) return;
    const point source{heap(m_settings).x, k_heap_y - 0.12f};
    m_picture.each({0, 0}, {m_picture.aspect(), 1}, [&](rgb& pixel, point p) {
        const float dx = p.x - source.x, dy = (p.y - source.y) * 1.3f;
        const float reach = strength / (1 + 7 * (dx * dx + dy * dy));
        pixel = pixel * (rgb{1, 1, 1} + rgb{1.35f, 0.68f, 0.18f} * reach);
    });
}

void scene::paint_smoke(float age) {
    if (age <= 0) return;
    const point root = heap(m_settings);
    const float thick = 0.85f * smooth(0.5f, 6, age);
    m_picture.each({root.x - 0.35f, 0}, {root.x + 0.45f, root.y - 0.1f}, [&](rgb& pixel, point p) {
        const float up = root.y - 0.14f - p.y;
        if (up <= 0) return;
        const float drift = 0.10f * up + 0.12f * (m_noise.smooth_at(up * 3 - age * 0.8f, 51.5f) - 0.5f);
        const float spread = 0.05f + 0.22f * up;
        const float across = (p.x - root.x - drift) / spread;
        const float column = std::exp(-across * across) * smooth(0, 0.15f, up);
        if (thick * column < 0.02f) return;
        const float billow = m_noise.cloud(p.x * 7, p.y * 6 + age * 1.6f, age * 0.4f, 3);
        const float cover = thick * column * smooth(0.35f, 0.75f, billow);
        pixel = mix(pixel, {0.17f, 0.16f, 0.155f}, cover);
    });
}

void scene::add_grain(int index) {
    const uint32_t base = scramble(m_settings.seed * 7919u + static_cast<uint32_t>(index));
    uint32_t state = base | 1u;
    m_picture.each({0, 0}, {m_picture.aspect(), 1}, [&](rgb& pixel, point) {
        state = state * 1664525u + 1013904223u;
        const float speck = (static_cast<float>(state >> 24) + static_cast<float>((state >> 16) & 255u) - 255) / 255;
        const float level = 0.012f * speck;
        pixel = pixel + rgb{level, level, level};
    });
}

const canvas& scene::paint(double seconds, int index, std::optional<pixel_box>& truth) {
    const float time = static_cast<float>(seconds);
    const float age = m_settings.with_flame ? static_cast<float>(seconds - m_settings.onset) : 0;
    m_picture = m_backdrop;
    paint_lamps(time);
    light_room(m_flame.light(age));
    paint_people(time);
    paint_smoke(age);
    truth = m_flame.paint(m_picture, age);
    if (age > 0)
        m_picture.glow({heap(m_settings).x, k_heap_y - 0.1f}, 0.32f, rgb{0.16f, 0.075f, 0.015f} * m_flame.light(age));
    add_grain(index);
    return m_picture;
}

}  // namespace flame_clip
