// A picture to paint on, in floating-point RGB from 0 to 1, and soft-edged shapes. Places are in units of the picture's
// height, so that a scene looks alike at every size: x runs from 0 to the aspect ratio, y from 0 at the top to 1.
#ifndef ORVA_APPS_FLAME_CLIP_CANVAS_H
#define ORVA_APPS_FLAME_CLIP_CANVAS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace flame_clip {

struct rgb {
    float r = 0, g = 0, b = 0;
};

inline rgb operator+(rgb a, rgb b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
inline rgb operator*(rgb a, rgb b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}
inline rgb operator*(rgb a, float f) {
    return {a.r * f, a.g * f, a.b * f};
}
inline rgb mix(rgb a, rgb b, float share) {
    return a * (1 - share) + b * share;
}

struct point {
    float x = 0, y = 0;
};

inline float smooth(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

class canvas {
public:
    canvas(int width, int height)
        : m_width(width), m_height(height), m_pixels(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    float aspect() const { return static_cast<float>(m_width) / static_cast<float>(m_height); }
    float pixel() const { return 1 / static_cast<float>(m_height); }

    rgb& at(int x, int y) {
        return m_pixels[static_cast<size_t>(y) * static_cast<size_t>(m_width) + static_cast<size_t>(x)];
    }
    const rgb& at(int x, int y) const { return const_cast<canvas*>(this)->at(x, y); }
    point place(int x, int y) const {
        return {(static_cast<float>(x) + 0.5f) * pixel(), (static_cast<float>(y) + 0.5f) * pixel()};
    }

    // Calls paint(pixel, place) for every pixel between two corners.
    template <typename Paint>
    void each(point from, point to, Paint paint) {
        const int left = std::max(0, static_cast<int>(std::floor(from.x / pixel())));
        const int top = std::max(0, static_cast<int>(std::floor(from.y / pixel())));
        const int right = std::min(m_width, static_cast<int>(std::ceil(to.x / pixel())));
        const int bottom = std::min(m_height, static_cast<int>(std::ceil(to.y / pixel())));
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) paint(at(x, y), place(x, y));
        }
    }

    // Lays a colour over the pixels of a shape. distance(place): how far outside the shape, negative inside.
    template <typename Distance>
    void shape(point from, point to, rgb colour, float opacity, float softness, Distance distance) {
        const float edge = std::max(softness, pixel());
        each({from.x - edge, from.y - edge}, {to.x + edge, to.y + edge}, [&](rgb& pixel_value, point p) {
            const float cover = smooth(edge / 2, -edge / 2, distance(p));
            if (cover > 0) pixel_value = mix(pixel_value, colour, cover * opacity);
        });
    }

    void rectangle(point from, point to, rgb colour, float opacity = 1, float softness = 0);
    void ellipse(point centre, float radius_x, float radius_y, rgb colour, float opacity = 1, float softness = 0);
    // A thick line with round ends whose thickness may change from one end to the other.
    void limb(point from, point to, float radius_from, float radius_to, rgb colour, float opacity = 1,
              float softness = 0);
    // Adds light that falls off around a centre.
    void glow(point centre, float radius, rgb light);

private:
    int m_width, m_height;
    std::vector<rgb> m_pixels;
};

}  // namespace flame_clip

#endif
