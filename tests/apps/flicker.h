// The simplest picture in which the library reports fire: a patch of flame colour on grey whose size changes all the
// time.
#ifndef ORVA_TESTS_APPS_FLICKER_H
#define ORVA_TESTS_APPS_FLICKER_H

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"

namespace apps_test {

// A dark grey full-range picture without any fire.
orva_fire::frame_ptr still_picture(int width, int height);

// The same with a patch about a centre, for picture `index` of a steady fire. Its size runs through 7 values from half
// of `size` to all of it, so neither the library's frozen pictures nor the halves of a grid fall into step with it.
orva_fire::frame_ptr flicker_picture(int width, int height, int index, int centre_x, int centre_y, int size);
void add_flicker(AVFrame& picture, int index, int centre_x, int centre_y, int size);

}  // namespace apps_test

#endif
