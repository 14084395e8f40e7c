// The clips that programs are tried on: small, dark, with or without fire in them.
#ifndef ORVA_TESTS_APPS_EXAMPLE_CLIPS_H
#define ORVA_TESTS_APPS_EXAMPLE_CLIPS_H

#include <string>

#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"

namespace apps_test {

// Paints a square patch right of the middle whose size changes from picture to picture: in fire colour it is reported.
void paint_patch(int index, AVFrame& picture, const colour& drawn = k_flame);

// 320 x 240 pictures of such a patch on dark ground, 25 a second, in a file of that name in the folder. Matroska files
// are lossless, others H.264. Returns the file's path.
std::string burning_clip(const temporary_folder& folder, const std::string& name = "burning.mkv", int pictures = 80);

// How many pictures of a video can be read.
int pictures_in(const std::string& path);

}  // namespace apps_test

#endif
