// A flame that every stage accepts, and whose boxes can be worked out by hand.
//
// Two squares take turns around one centre: one of 24 pixels and luma 200 in odd frames, one of 40 pixels and luma 240
// in even ones, both with chroma U 100, V 160, on grey of luma 40. Every pixel of the current square moves, by 40 at
// least, and has the colour of flame; dilation widens it by one pixel on each side. So the components are squares of 26
// and 42 pixels, with areas 676 and 1764.
#ifndef ORVA_TESTS_SUPPORT_SCENE_H
#define ORVA_TESTS_SUPPORT_SCENE_H

#include "tests/support/images.h"

namespace support {

const int k_flame_u = 100;
const int k_flame_v = 160;
const int k_background_luma = 40;

inline bool flame_is_small(int frame_number) {
    return frame_number % 2 == 1;
}

// Adds the flame of frame `number`, counted from 1, whose larger square begins at (x, y), both even.
inline void paint_flame(nv21_picture& picture, int number, int x, int y) {
    if (flame_is_small(number)) {
        picture.paint(x + 8, y + 8, 24, 24, 200, k_flame_u, k_flame_v);
    } else {
        picture.paint(x, y, 40, 40, 240, k_flame_u, k_flame_v);
    }
}

inline void paint_flame_frame(nv21_picture& picture, int number, int x, int y) {
    picture.paint_all(k_background_luma, 128, 128);
    paint_flame(picture, number, x, y);
}

// The first report, in frame 51: 26 small squares and 25 large ones.
//   left: (26 * (x + 7) + 25 * (x - 1) + 26) / 51 = x + (157 + 26) / 51 = x + 3; top likewise
//   width: (26 * 26 + 25 * 42 + 26) / 51 = 1752 / 51 = 34; height likewise
const int k_first_report = 51;
const int k_report_shift = 3;
const int k_report_size = 34;

}  // namespace support

#endif
