// The still part of the scene: a store room with a shelf, a roller door, a window at dusk, and a heap of cardboard.
#ifndef ORVA_APPS_FLAME_CLIP_BACKDROP_H
#define ORVA_APPS_FLAME_CLIP_BACKDROP_H

#include <cstdint>

#include "apps/flame_clip/canvas.h"

namespace flame_clip {

// Where things stand, in picture heights from the left and the top.
const float k_floor_line = 0.56f;
const float k_heap_x = 0.72f;  // of the picture's width, so that narrow pictures show it too
const float k_heap_y = 0.80f;

canvas paint_backdrop(int width, int height, uint32_t seed);

}  // namespace flame_clip

#endif
