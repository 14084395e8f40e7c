#include "apps/orva_fire/annotate.h"

#include <algorithm>
#include <cstring>

#include "apps/orva_fire/colour.h"

namespace orva_fire {
namespace {

const int k_rows_per_line_pixel = 180;  // lines of 2 pixels at 360 rows, 6 at 1080

int even_up(int value) {
    return (value + 1) / 2 * 2;
}

int line_width(int height) {
    return std::max(2, even_up(height / k_rows_per_line_pixel));
}

void fill_plane(AVFrame& picture, int plane, int left, int top, int right, int bottom, uint8_t value) {
    for (int y = top; y < bottom; ++y) {
        uint8_t* row = picture.data[plane] + static_cast<ptrdiff_t>(y) * picture.linesize[plane];
        std::memset(row + left, value, static_cast<size_t>(right - left));
    }
}

// The last column and row once more, where the size was rounded up to even.
void repeat_edges(AVFrame& picture, int width, int height) {
    if (picture.width > width) {
        for (int y = 0; y < height; ++y) {
            uint8_t* row = picture.data[0] + static_cast<ptrdiff_t>(y) * picture.linesize[0];
            row[width] = row[width - 1];
        }
    }
    if (picture.height > height) {
        const uint8_t* last = picture.data[0] + static_cast<ptrdiff_t>(height - 1) * picture.linesize[0];
        std::memcpy(picture.data[0] + static_cast<ptrdiff_t>(height) * picture.linesize[0], last,
                    static_cast<size_t>(picture.width));
    }
}

}  // namespace

void fill(AVFrame& picture, const box& where, int red, int green, int blue) {
    const int left = std::clamp(where.x, 0, picture.width);
    const int top = std::clamp(where.y, 0, picture.height);
    const int right = std::clamp(where.x + where.width, left, picture.width);
    const int bottom = std::clamp(where.y + where.height, top, picture.height);
    const picture_colour colour = colour_of(picture);
    const yuv_colour ink = yuv_of(red, green, blue, colour.full_range, colour.matrix);
    fill_plane(picture, 0, left, top, right, bottom, ink.y);
    fill_plane(picture, 1, left / 2, top / 2, (right + 1) / 2, (bottom + 1) / 2, ink.u);
    fill_plane(picture, 2, left / 2, top / 2, (right + 1) / 2, (bottom + 1) / 2, ink.v);
}

void draw_frame(AVFrame& picture, const box& where, int thickness, int red, int green, int blue) {
    const int left = where.x / 2 * 2 - thickness;
    const int top = where.y / 2 * 2 - thickness;
    const int right = even_up(where.x + where.width) + thickness;
    const int bottom = even_up(where.y + where.height) + thickness;
    fill(picture, {left, top, right - left, thickness}, red, green, blue);
    fill(picture, {left, bottom - thickness, right - left, thickness}, red, green, blue);
    fill(picture, {left, top, thickness, bottom - top}, red, green, blue);
    fill(picture, {right - thickness, top, thickness, bottom - top}, red, green, blue);
}

frame_ptr annotator::copy(const AVFrame& source) {
    picture_colour target = colour_of(source);
    if (target.rgb) target.full_range = false;
    target.rgb = false;
    target.format = AV_PIX_FMT_YUV420P;
    frame_ptr picture = new_picture(AV_PIX_FMT_YUV420P, even_up(source.width), even_up(source.height));
    m_scaler.convert(source, target, {source.width, source.height}, picture->data, picture->linesize);
    repeat_edges(*picture, source.width, source.height);
    picture->color_range = target.full_range ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    picture->colorspace = target.matrix;
    picture->color_primaries = source.color_primaries;
    picture->color_trc = source.color_trc;
    picture->chroma_location = source.chroma_location;
    picture->sample_aspect_ratio = source.sample_aspect_ratio;
    return picture;
}

frame_ptr annotator::paint(const AVFrame& source, const std::vector<box>& zones, const std::vector<box>& boxes) {
    frame_ptr picture = copy(source);
    const int thickness = line_width(picture->height);
    for (const box& zone : zones) draw_frame(*picture, zone, 2, 150, 150, 150);
    for (const box& b : boxes) {
        // A dark edge on both sides keeps the line visible on flames, which are red themselves.
        draw_frame(*picture, b, thickness + 4, 0, 0, 0);
        draw_frame(*picture, {b.x - 2, b.y - 2, b.width + 4, b.height + 4}, thickness, 255, 32, 32);
    }
    return picture;
}

}  // namespace orva_fire
