// People who walk through the scene: warm-coloured and moving, but no fire.
#ifndef ORVA_APPS_FLAME_CLIP_PEOPLE_H
#define ORVA_APPS_FLAME_CLIP_PEOPLE_H

#include "apps/flame_clip/canvas.h"

namespace flame_clip {

struct person_look {
    rgb jacket;
    rgb trousers;
    rgb hair;
    bool striped = false;  // reflecting stripes on a work jacket
};

// feet: between the feet on the floor. height in picture heights. stride: how far the walk has gone, in steps; facing:
// -1 to the left, 1 to the right, 0 to the camera and standing.
void paint_person(canvas& picture, point feet, float height, float stride, float facing, const person_look& look);

}  // namespace flame_clip

#endif
