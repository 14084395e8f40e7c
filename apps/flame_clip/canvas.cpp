#include "apps/flame_clip/canvas.h"

namespace flame_clip {

void canvas::rectangle(point from, point to, rgb colour, float opacity, float softness) {
    shape(from, to, colour, opacity, softness,
          [&](point p) { return std::max(std::max(from.x - p.x, p.x - to.x), std::max(from.y - p.y, p.y - to.y)); });
}

void canvas::ellipse(point centre, float radius_x, float radius_y, rgb colour, float opacity, float softness) {
    const point from{centre.x - radius_x, centre.y - radius_y};
    const point to{centre.x + radius_x, centre.y + radius_y};
    shape(from, to, colour, opacity, softness, [&](point p) {
        // Along the line from the centre: how far the point lies beyond where that line leaves the ellipse.
        const float away = std::hypot((p.x - centre.x) / radius_x, (p.y - centre.y) / radius_y);
        if (away < 1e-4f) return -std::min(radius_x, radius_y);
        return (1 - 1 / away) * std::hypot(p.x - centre.x, p.y - centre.y);
    });
}

void canvas::limb(point from, point to, float radius_from, float radius_to, rgb colour, float opacity, float softness) {
    const float radius = std::max(radius_from, radius_to);
    const point low{std::min(from.x, to.x) - radius, std::min(from.y, to.y) - radius};
    const point high{std::max(from.x, to.x) + radius, std::max(from.y, to.y) + radius};
    const float dx = to.x - from.x, dy = to.y - from.y;
    const float length = std::max(dx * dx + dy * dy, 1e-9f);
    shape(low, high, colour, opacity, softness, [&](point p) {
        const float along = std::clamp(((p.x - from.x) * dx + (p.y - from.y) * dy) / length, 0.0f, 1.0f);
        const float away = std::hypot(p.x - from.x - along * dx, p.y - from.y - along * dy);
        return away - (radius_from + (radius_to - radius_from) * along);
    });
}

void canvas::glow(point centre, float radius, rgb light) {
    each({centre.x - radius, centre.y - radius}, {centre.x + radius, centre.y + radius},
         [&](rgb& pixel_value, point p) {
             const float away = std::hypot(p.x - centre.x, p.y - centre.y) / radius;
             if (away < 1) pixel_value = pixel_value + light * ((1 - away) * (1 - away));
         });
}

}  // namespace flame_clip
