#include "gst/draw.h"

#include <algorithm>
#include <array>

#include "apps/orva_fire/colour.h"

namespace orva_gst {
namespace {

using orva_fire::box;

const int k_rows_per_line_pixel = 180;  // lines of 2 pixels at 360 rows, 6 at 1080
const int k_edge = 2;

// The bytes of one colour for components 0, 1 and 2.
using ink = std::array<guint8, 3>;

struct rgb_colour {
    int red, green, blue;
};
const rgb_colour k_red{255, 32, 32}, k_yellow{255, 224, 32}, k_black{0, 0, 0};

ink mix(const rgb_colour& wanted, const orva_fire::picture_colour& meaning) {
    if (meaning.rgb) {
        return {static_cast<guint8>(wanted.red), static_cast<guint8>(wanted.green), static_cast<guint8>(wanted.blue)};
    }
    const orva_fire::yuv_colour yuv =
        orva_fire::yuv_of(wanted.red, wanted.green, wanted.blue, meaning.full_range, meaning.matrix);
    return {yuv.y, yuv.u, yuv.v};
}

// Fills one component of a rectangle that lies in the picture; a chroma sample that is partly inside counts as inside.
void fill_component(GstVideoFrame& picture, guint component, const box& where, guint8 value) {
    const GstVideoFormatInfo* format = picture.info.finfo;
    const auto shift_x = GST_VIDEO_FORMAT_INFO_W_SUB(format, component);
    const auto shift_y = GST_VIDEO_FORMAT_INFO_H_SUB(format, component);
    const int step = GST_VIDEO_FRAME_COMP_PSTRIDE(&picture, component);
    const int stride = GST_VIDEO_FRAME_COMP_STRIDE(&picture, component);
    const int left = where.x >> shift_x, right = (where.x + where.width - 1) >> shift_x;
    const int top = where.y >> shift_y, bottom = (where.y + where.height - 1) >> shift_y;
    for (int y = top; y <= bottom; ++y) {
        guint8* row = static_cast<guint8*>(GST_VIDEO_FRAME_COMP_DATA(&picture, component)) + gssize{stride} * y;
        for (int x = left; x <= right; ++x) row[gssize{step} * x] = value;
    }
}

void fill(GstVideoFrame& picture, int left, int top, int right, int bottom, const ink& colour) {
    const int width = GST_VIDEO_FRAME_WIDTH(&picture), height = GST_VIDEO_FRAME_HEIGHT(&picture);
    left = std::clamp(left, 0, width);
    top = std::clamp(top, 0, height);
    right = std::clamp(right, left, width);
    bottom = std::clamp(bottom, top, height);
    if (left == right || top == bottom) return;
    for (guint i = 0; i < colour.size(); ++i) {
        fill_component(picture, i, {left, top, right - left, bottom - top}, colour[i]);
    }
}

// A frame outside the box, `distance` pixels from it and `thickness` wide.
void draw_frame(GstVideoFrame& picture, const box& where, int distance, int thickness, const ink& colour) {
    const int left = where.x - distance, right = where.x + where.width + distance;
    const int top = where.y - distance, bottom = where.y + where.height + distance;
    fill(picture, left - thickness, top - thickness, right + thickness, top, colour);
    fill(picture, left - thickness, bottom, right + thickness, bottom + thickness, colour);
    fill(picture, left - thickness, top, left, bottom, colour);
    fill(picture, right, top, right + thickness, bottom, colour);
}

}  // namespace

void draw_boxes(GstVideoFrame& picture, const caps_colour& colour, const std::vector<drawn_box>& boxes) {
    const orva_fire::picture_colour meaning = orva_fire::colour_of(*view_of(picture, colour));
    const int line = std::max(2, GST_VIDEO_FRAME_HEIGHT(&picture) / k_rows_per_line_pixel);
    for (const drawn_box& b : boxes) {
        // The dark edges keep the line visible on flames, which are red and yellow themselves.
        draw_frame(picture, b.where, 0, line + 2 * k_edge, mix(k_black, meaning));
        draw_frame(picture, b.where, k_edge, line, mix(b.confirmed ? k_red : k_yellow, meaning));
    }
}

}  // namespace orva_gst
