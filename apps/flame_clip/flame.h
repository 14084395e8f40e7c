// A flame: tongues that rise, lean and break off, growing from a first lick to a fire of the given size.
#ifndef ORVA_APPS_FLAME_CLIP_FLAME_H
#define ORVA_APPS_FLAME_CLIP_FLAME_H

#include <optional>

#include "apps/flame_clip/canvas.h"
#include "apps/flame_clip/noise.h"

namespace flame_clip {

// Whole pixels; x and y are the upper left corner.
struct pixel_box {
    int x = 0, y = 0, width = 0, height = 0;
};

class flame {
public:
    // root: middle of the flame's foot. height: of the grown flame, in picture heights.
    flame(uint32_t seed, point root, float height);

    // Paints the flame as it is `age` seconds after it began. Returns the box around what can be seen of it.
    std::optional<pixel_box> paint(canvas& picture, float age) const;

    // The light it sheds on its surroundings at that age, 0 to about 1; it wavers with the flame.
    float light(float age) const;

private:
    struct shape_now {
        float height, width, lean;
    };

    shape_now shape(float age) const;
    float heat(point place, const shape_now& now, float age) const;

    noise m_noise;
    point m_root;
    float m_height;
};

}  // namespace flame_clip

#endif
