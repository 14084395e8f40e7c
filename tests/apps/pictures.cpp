#include "tests/apps/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace apps_test {
namespace {

struct weights {
    double red, blue;
};

weights weights_of(AVColorSpace matrix) {
    if (matrix == AVCOL_SPC_BT709) return {0.2126, 0.0722};
    if (matrix == AVCOL_SPC_BT2020_NCL) return {0.2627, 0.0593};
    return {0.299, 0.114};
}

bool is_full(const AVFrame& picture) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    return (description->flags & AV_PIX_FMT_FLAG_RGB) || picture.color_range == AVCOL_RANGE_JPEG ||
           std::strncmp(description->name, "yuvj", 4) == 0;
}

// Stores one value; x and y count samples of the component's plane. Formats of whole bytes, low byte first.
void set_component(AVFrame& picture, int x, int y, const AVComponentDescriptor& where, int value) {
    uint8_t* at = picture.data[where.plane] + static_cast<ptrdiff_t>(y) * picture.linesize[where.plane] +
                  static_cast<ptrdiff_t>(x) * where.step + where.offset;
    const int shifted = value << where.shift;
    at[0] = static_cast<uint8_t>(shifted & 255);
    if (where.depth > 8) at[1] = static_cast<uint8_t>(shifted >> 8);
}

}  // namespace

void set_component(AVFrame& picture, int x, int y, int component_index, int value) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    set_component(picture, x, y, description->comp[component_index], value);
}

triple to_yuv(const colour& c, bool full_range, AVColorSpace matrix) {
    const weights w = weights_of(matrix);
    const double luma = (w.red * c.red + (1 - w.red - w.blue) * c.green + w.blue * c.blue) / 255;
    const double u = (c.blue / 255 - luma) / (2 * (1 - w.blue));
    const double v = (c.red / 255 - luma) / (2 * (1 - w.red));
    if (full_range) return {255 * luma, 128 + 255 * u, 128 + 255 * v};
    return {16 + 219 * luma, 128 + 224 * u, 128 + 224 * v};
}

colour to_rgb(const triple& yuv, bool full_range, AVColorSpace matrix) {
    const weights w = weights_of(matrix);
    const double luma = full_range ? yuv[0] / 255 : (yuv[0] - 16) / 219;
    const double u = (yuv[1] - 128) / (full_range ? 255 : 224);
    const double v = (yuv[2] - 128) / (full_range ? 255 : 224);
    const double red = luma + 2 * (1 - w.red) * v;
    const double blue = luma + 2 * (1 - w.blue) * u;
    const double green = (luma - w.red * red - w.blue * blue) / (1 - w.red - w.blue);
    const auto in_range = [](double value) { return std::clamp(value, 0.0, 1.0) * 255; };
    return {in_range(red), in_range(green), in_range(blue)};
}

void paint(AVFrame& picture, int x, int y, int width, int height, const colour& c) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const bool rgb = description->flags & AV_PIX_FMT_FLAG_RGB;
    const triple yuv = to_yuv(c, is_full(picture), picture.colorspace);
    const triple values = rgb ? triple{c.red, c.green, c.blue} : yuv;
    for (int i = 0; i < description->nb_components; ++i) {
        const int depth = description->comp[i].depth;
        const int top = (1 << depth) - 1;
        // RGB spreads over the whole depth; luma and chroma gain fractional bits; alpha is opaque.
        const double wide = rgb ? values[std::min<size_t>(2, static_cast<size_t>(i))] * top / 255
                                : values[std::min<size_t>(2, static_cast<size_t>(i))] * (1 << (depth - 8));
        const int value = i == 3 ? top : static_cast<int>(std::clamp<long>(std::lround(wide), 0, top));
        const bool chroma = !rgb && (i == 1 || i == 2);
        const int shift_x = chroma ? description->log2_chroma_w : 0, shift_y = chroma ? description->log2_chroma_h : 0;
        const int from_x = x >> shift_x, columns = AV_CEIL_RSHIFT(x + width, shift_x) - from_x;
        const int from_y = y >> shift_y, rows = AV_CEIL_RSHIFT(y + height, shift_y) - from_y;
        for (int row = from_y; row < from_y + rows; ++row) {
            for (int column = from_x; column < from_x + columns; ++column) {
                set_component(picture, column, row, description->comp[i], value);
            }
        }
    }
}

orva_fire::frame_ptr flat_picture(AVPixelFormat format, int width, int height, const colour& c, AVColorRange range,
                                  AVColorSpace matrix) {
    orva_fire::frame_ptr picture = orva_fire::new_picture(format, width, height);
    picture->color_range = range;
    picture->colorspace = matrix;
    paint(*picture, 0, 0, width, height, c);
    return picture;
}

int component(const AVFrame& picture, int x, int y, int component_index) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const bool chroma = !(description->flags & AV_PIX_FMT_FLAG_RGB) && (component_index == 1 || component_index == 2);
    uint16_t value = 0;
    av_read_image_line(&value, const_cast<const uint8_t**>(picture.data), picture.linesize, description,
                       chroma ? x >> description->log2_chroma_w : x, chroma ? y >> description->log2_chroma_h : y,
                       component_index, 1, 0);
    return value;
}

}  // namespace apps_test
