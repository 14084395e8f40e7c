// Plain versions of what the accelerator does, one pixel after the other, for comparison with the stand-in and through
// it with the library. Shares nothing with the stand-in but the rules.
#ifndef ORVA_TESTS_FAKES_TWIN_ENGINE_H
#define ORVA_TESTS_FAKES_TWIN_ENGINE_H

#include <vector>

#include "tests/reference/ref_label.h"
#include "tests/reference/ref_pixels.h"

namespace twin {

void sub(const ref::plane& a, const ref::plane& b, const ref::plane& dst);
void threshold(const ref::plane& src, const ref::plane& dst, int low);

// 3 x 3 over every pixel that has eight neighbours; the border is the source's. src and dst differ.
void dilate(const ref::plane& src, const ref::plane& dst);

// BT.709, studio range in, 0 to 255 out; exact, then rounded to the nearest.
ref::bgr convert_pixel(int y, int u, int v);
void convert_image(const ref::yuv_view& src, const ref::rgb_view& dst);

// Components that touch by edge or corner, in the order of their first pixels, without those of `first_area` pixels and
// fewer; with more than 254 left, without those of first_area + step and fewer, and so on. Pixels become the number of
// the component's slot, counted from 1; the others 0. With n components left, the i-th (from 1) has slot i * 254 / n.
void label(const ref::plane& img, int first_area, int step, std::vector<ref::component>& out);

}  // namespace twin

#endif
