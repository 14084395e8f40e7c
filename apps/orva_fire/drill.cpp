#include "apps/orva_fire/drill.h"

#include <algorithm>

#include "apps/orva_fire/colour.h"

namespace orva_fire {
namespace {

const uint32_t k_seed = 8;
const float k_flame_height = 0.62f;  // of the part it is painted into, which it overshoots in gusts
const float k_foot = 0.94f;

flame_clip::point foot_of(const box& where) {
    return {0.5f * static_cast<float>(where.width) / static_cast<float>(where.height), k_foot};
}

uint8_t to_byte(float value) {
    return static_cast<uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255 + 0.5f);
}

picture_colour rgb_colour() {
    picture_colour colour;
    colour.format = AV_PIX_FMT_RGB24;
    colour.rgb = true;
    colour.full_range = true;
    colour.matrix = AVCOL_SPC_RGB;
    return colour;
}

// The pixels of a part of a yuv420p picture, without memory of its own.
struct part_view {
    part_view(AVFrame& picture, const box& where) {
        for (int plane = 0; plane < 3; ++plane) {
            const int step = plane == 0 ? 1 : 2;
            planes[plane] =
                picture.data[plane] + static_cast<ptrdiff_t>(where.y / step) * picture.linesize[plane] + where.x / step;
            strides[plane] = picture.linesize[plane];
        }
    }
    uint8_t* planes[4] = {};
    int strides[4] = {};
};

frame_ptr frame_of(const part_view& view, const AVFrame& picture, const box& where) {
    frame_ptr frame = new_frame();
    std::copy(view.planes, view.planes + 4, frame->data);
    std::copy(view.strides, view.strides + 4, frame->linesize);
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = where.width;
    frame->height = where.height;
    frame->color_range = picture.color_range;
    frame->colorspace = picture.colorspace;
    return frame;
}

void read_canvas(const AVFrame& rgb, flame_clip::canvas& canvas) {
    for (int y = 0; y < rgb.height; ++y) {
        const uint8_t* row = rgb.data[0] + static_cast<ptrdiff_t>(y) * rgb.linesize[0];
        for (int x = 0; x < rgb.width; ++x) {
            const auto share = [&](int i) { return static_cast<float>(row[3 * x + i]) / 255; };
            canvas.at(x, y) = {share(0), share(1), share(2)};
        }
    }
}

void write_canvas(const flame_clip::canvas& canvas, AVFrame& rgb) {
    for (int y = 0; y < rgb.height; ++y) {
        uint8_t* row = rgb.data[0] + static_cast<ptrdiff_t>(y) * rgb.linesize[0];
        for (int x = 0; x < rgb.width; ++x) {
            const flame_clip::rgb& pixel = canvas.at(x, y);
            row[3 * x] = to_byte(pixel.r);
            row[3 * x + 1] = to_byte(pixel.g);
            row[3 * x + 2] = to_byte(pixel.b);
        }
    }
}

}  // namespace

box place_of_flame(const box& part) {
    const int size = std::max(16, std::min(part.width, part.height) * 2 / 5 / 2 * 2);
    const int side = std::min(size, std::min(part.width, part.height) / 2 * 2);
    return {(part.x + (part.width - side) / 2) / 2 * 2, (part.y + (part.height - side) / 2) / 2 * 2, side, side};
}

flame_painter::flame_painter(const box& where) : m_where(where), m_flame(k_seed, foot_of(where), k_flame_height) {}

frame_ptr flame_painter::paint(const AVFrame& source, double age) {
    frame_ptr picture = m_annotator.paint(source, {}, {});
    // The part takes the same way with and without a flame, so that its beginning changes nothing beside it.
    const part_view view(*picture, m_where);
    const frame_ptr part = frame_of(view, *picture, m_where);
    const frame_ptr rgb = new_picture(AV_PIX_FMT_RGB24, m_where.width, m_where.height);
    m_to_rgb.convert(*part, rgb_colour(), {m_where.width, m_where.height}, rgb->data, rgb->linesize);
    flame_clip::canvas canvas(m_where.width, m_where.height);
    read_canvas(*rgb, canvas);
    if (age > 0) (void)m_flame.paint(canvas, static_cast<float>(age));
    write_canvas(canvas, *rgb);
    m_from_rgb.convert(*rgb, colour_of(*part), {m_where.width, m_where.height}, view.planes, view.strides);
    return picture;
}

drill_source::drill_source(std::unique_ptr<picture_source> source, std::function<box(picture_size)> place)
    : m_source(std::move(source)), m_place(std::move(place)) {}

bool drill_source::next(source_picture& picture) {
    if (!m_source->next(picture)) return false;
    if (!picture.frame) return true;
    if (!m_painter) {
        m_painter = std::make_unique<flame_painter>(m_place({picture.frame->width, picture.frame->height}));
    }
    picture.frame = m_painter->paint(*picture.frame, m_burning ? picture.seconds - k_drill_onset : 0);
    return true;
}

}  // namespace orva_fire
