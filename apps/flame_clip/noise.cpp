#include "apps/flame_clip/noise.h"

#include <cmath>

namespace flame_clip {
namespace {

float ease(float t) {
    return t * t * (3 - 2 * t);
}

float between(float a, float b, float t) {
    return a + (b - a) * t;
}

}  // namespace

float noise::smooth_at(float x, float y, float z) const {
    const int ix = static_cast<int>(std::floor(x)), iy = static_cast<int>(std::floor(y)),
              iz = static_cast<int>(std::floor(z));
    const float fx = ease(x - static_cast<float>(ix));
    const float fy = ease(y - static_cast<float>(iy));
    const float fz = ease(z - static_cast<float>(iz));
    const auto in_layer = [&](int depth) {
        const uint32_t mixed = layer(depth), upper = row(iy, mixed), lower = row(iy + 1, mixed);
        return between(between(in_row(upper, ix), in_row(upper, ix + 1), fx),
                       between(in_row(lower, ix), in_row(lower, ix + 1), fx), fy);
    };
    return between(in_layer(iz), in_layer(iz + 1), fz);
}

float noise::cloud(float x, float y, float z, int octaves) const {
    float sum = 0, weight = 0.5f, weights = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * smooth_at(x, y, z);
        weights += weight;
        weight /= 2;
        x = x * 2.03f + 17.1f;
        y = y * 2.03f + 5.3f;
        z = z * 1.7f + 3.7f;
    }
    return sum / weights;
}

}  // namespace flame_clip
