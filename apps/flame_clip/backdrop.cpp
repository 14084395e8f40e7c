#include "apps/flame_clip/backdrop.h"

#include "apps/flame_clip/noise.h"

namespace flame_clip {
namespace {

const int k_finer = 2;  // painted at twice the size and scaled down, so that thin lines stay calm

rgb grey(float level) {
    return {level, level, level};
}

rgb wall_colour(point p, const noise& grain) {
    const float block_w = 0.105f, block_h = 0.052f;
    const int row = static_cast<int>(std::floor(p.y / block_h));
    const float shift = row % 2 ? block_w / 2 : 0;
    const int column = static_cast<int>(std::floor((p.x + shift) / block_w));
    const float in_x = p.x + shift - static_cast<float>(column) * block_w;
    const float in_y = p.y - static_cast<float>(row) * block_h;
    const float joint = 0.0035f;
    const float tone = 0.93f + 0.1f * grain.at(column, row, 1) + 0.12f * (grain.cloud(p.x * 30, p.y * 30, 0, 3) - 0.5f);
    const rgb block = rgb{0.345f, 0.35f, 0.36f} * tone;
    return in_x < joint || in_y < joint ? block * 0.8f : block;
}

rgb floor_colour(point p, const noise& grain, float middle) {
    const float depth = 1 / (p.y - k_floor_line + 0.12f);
    const float across = (p.x - middle) * depth;
    const float tone = 0.85f + 0.3f * grain.cloud(across * 5, depth * 5, 2, 4);
    const rgb slab = rgb{0.30f, 0.29f, 0.28f} * tone;
    const float joint_x = std::fabs(across - std::round(across / 2.2f) * 2.2f) / depth;
    const float joint_y = std::fabs(depth - std::round(depth / 1.3f) * 1.3f) / (depth * depth);
    return std::min(joint_x, joint_y) < 0.0022f ? slab * 0.72f : slab;
}

void paint_room(canvas& picture, const noise& grain) {
    const float aspect = picture.aspect();
    picture.each({0, 0}, {aspect, 1}, [&](rgb& pixel, point p) {
        pixel = p.y < k_floor_line ? wall_colour(p, grain) : floor_colour(p, grain, aspect / 2);
        const float shade = 0.72f + 0.28f * smooth(0, 0.5f, p.y) - 0.25f * smooth(0.75f, 1.05f, p.y);
        pixel = pixel * shade;
    });
    picture.rectangle({0, k_floor_line - 0.012f}, {aspect, k_floor_line + 0.004f}, {0.17f, 0.17f, 0.18f});
    // Yellow marking on the floor: one of the things that are warm in colour and do not burn.
    picture.limb({0.02f * aspect, 0.995f}, {0.30f * aspect, k_floor_line + 0.03f}, 0.009f, 0.004f,
                 {0.62f, 0.52f, 0.16f}, 0.75f);
}

void paint_door(canvas& picture, const noise& grain) {
    const float left = 0.36f * picture.aspect(), right = 0.60f * picture.aspect();
    const float top = 0.16f, bottom = k_floor_line;
    picture.rectangle({left - 0.018f, top - 0.05f}, {right + 0.018f, bottom}, {0.20f, 0.21f, 0.23f});
    picture.each({left, top}, {right, bottom}, [&](rgb& pixel, point p) {
        if (p.x < left || p.x > right || p.y < top || p.y > bottom) return;
        const float slat = (p.y - top) / 0.026f;
        const float in_slat = slat - std::floor(slat);
        const float tone =
            0.8f + 0.35f * std::sin(in_slat * 3.1416f) + 0.06f * (grain.cloud(p.x * 20, p.y * 60, 5, 2) - 0.5f);
        pixel = rgb{0.33f, 0.38f, 0.42f} * tone;
    });
    picture.rectangle({left, bottom - 0.03f}, {right, bottom - 0.012f}, {0.14f, 0.14f, 0.15f});
}

void paint_window(canvas& picture) {
    const float left = 0.82f * picture.aspect(), right = 0.95f * picture.aspect();
    picture.rectangle({left - 0.014f, 0.106f}, {right + 0.014f, 0.354f}, {0.16f, 0.16f, 0.17f});
    picture.each({left, 0.12f}, {right, 0.34f}, [&](rgb& pixel, point p) {
        if (p.x < left || p.x > right || p.y < 0.12f || p.y > 0.34f) return;
        pixel = mix({0.16f, 0.23f, 0.38f}, {0.62f, 0.50f, 0.46f}, smooth(0.12f, 0.38f, p.y));
    });
    const float middle = (left + right) / 2;
    picture.rectangle({middle - 0.005f, 0.12f}, {middle + 0.005f, 0.34f}, {0.16f, 0.16f, 0.17f});
    picture.rectangle({left, 0.225f}, {right, 0.233f}, {0.16f, 0.16f, 0.17f});
}

void paint_carton(canvas& picture, point from, point to, rgb colour) {
    picture.rectangle(from, to, colour);
    picture.rectangle(from, {to.x, from.y + 0.006f}, colour * 1.18f);
    picture.rectangle({to.x - 0.006f, from.y}, to, colour * 0.8f);
    const float middle = (from.x + to.x) / 2;
    picture.rectangle({middle - 0.006f, from.y}, {middle + 0.006f, to.y}, colour * 1.1f, 0.6f);
}

rgb carton_colour(float shade) {
    return rgb{0.46f, 0.35f, 0.23f} * (0.75f + 0.4f * shade);
}

void paint_shelf(canvas& picture, const noise& grain) {
    const float left = 0.035f * picture.aspect(), right = 0.30f * picture.aspect();
    const float levels[] = {0.28f, 0.43f, 0.585f};
    picture.rectangle({left, 0.15f}, {right, 0.60f}, grey(0.08f), 0.55f, 0.02f);
    for (int level = 0; level < 3; ++level) {
        float x = left + 0.015f;
        for (int i = 0; x < right - 0.09f; ++i) {
            const float width = 0.055f + 0.06f * grain.at(i, level, 10),
                        height = 0.06f + 0.055f * grain.at(i, level, 11);
            if (grain.at(i, level, 12) > 0.18f) {
                paint_carton(picture, {x, levels[level] - height}, {x + width, levels[level]},
                             carton_colour(grain.at(i, level, 13)));
            }
            x += width + 0.008f;
        }
        picture.rectangle({left, levels[level]}, {right, levels[level] + 0.012f}, {0.24f, 0.32f, 0.46f});
    }
    for (const float x : {left, right - 0.012f})
        picture.rectangle({x, 0.13f}, {x + 0.012f, 0.64f}, {0.20f, 0.28f, 0.42f});
}

void paint_heap(canvas& picture) {
    const point foot{k_heap_x * picture.aspect(), k_heap_y};
    picture.ellipse({foot.x, foot.y + 0.055f}, 0.20f, 0.035f, grey(0.04f), 0.6f, 0.05f);
    paint_carton(picture, {foot.x - 0.15f, foot.y - 0.05f}, {foot.x - 0.01f, foot.y + 0.06f}, carton_colour(0.15f));
    paint_carton(picture, {foot.x - 0.005f, foot.y - 0.03f}, {foot.x + 0.13f, foot.y + 0.065f}, carton_colour(0.0f));
    paint_carton(picture, {foot.x - 0.075f, foot.y + 0.0f}, {foot.x + 0.055f, foot.y + 0.08f}, carton_colour(0.3f));
}

void paint_light(canvas& picture) {
    const float aspect = picture.aspect();
    picture.each({0, 0}, {aspect, 1}, [&](rgb& pixel, point p) {
        const float wash =
            std::exp(-(std::pow((p.x - 0.30f * aspect) / 0.55f, 2.0f) + std::pow((p.y - 0.1f) / 0.6f, 2.0f)));
        const float pool =
            std::exp(-(std::pow((p.x - 0.42f * aspect) / 0.6f, 2.0f) + std::pow((p.y - 0.85f) / 0.16f, 2.0f)));
        pixel = pixel * (0.78f + 0.5f * wash + 0.35f * pool);
    });
}

canvas scaled_down(const canvas& fine) {
    canvas result(fine.width() / k_finer, fine.height() / k_finer);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            rgb sum;
            for (int i = 0; i < k_finer * k_finer; ++i) {
                sum = sum + fine.at(x * k_finer + i % k_finer, y * k_finer + i / k_finer);
            }
            result.at(x, y) = sum * (1.0f / (k_finer * k_finer));
        }
    }
    return result;
}

}  // namespace

canvas paint_backdrop(int width, int height, uint32_t seed) {
    canvas picture(width * k_finer, height * k_finer);
    const noise grain(seed);
    paint_room(picture, grain);
    paint_door(picture, grain);
    paint_window(picture);
    paint_shelf(picture, grain);
    paint_heap(picture);
    paint_light(picture);
    return scaled_down(picture);
}

}  // namespace flame_clip
