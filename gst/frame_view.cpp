#include "gst/frame_view.h"

#include <algorithm>
#include <cstdlib>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace orva_gst {
namespace {

AVPixelFormat pixel_format(GstVideoFormat format) {
    switch (format) {
        case GST_VIDEO_FORMAT_NV21:
            return AV_PIX_FMT_NV21;
        case GST_VIDEO_FORMAT_NV12:
            return AV_PIX_FMT_NV12;
        case GST_VIDEO_FORMAT_I420:
            return AV_PIX_FMT_YUV420P;
        case GST_VIDEO_FORMAT_YUY2:
            return AV_PIX_FMT_YUYV422;
        case GST_VIDEO_FORMAT_BGRx:
            return AV_PIX_FMT_BGR0;
        default:
            return AV_PIX_FMT_NONE;
    }
}

AVColorSpace matrix_of(GstVideoColorMatrix matrix) {
    switch (matrix) {
        case GST_VIDEO_COLOR_MATRIX_RGB:
            return AVCOL_SPC_RGB;
        case GST_VIDEO_COLOR_MATRIX_FCC:
            return AVCOL_SPC_FCC;
        case GST_VIDEO_COLOR_MATRIX_BT709:
            return AVCOL_SPC_BT709;
        case GST_VIDEO_COLOR_MATRIX_BT601:
            return AVCOL_SPC_SMPTE170M;
        case GST_VIDEO_COLOR_MATRIX_SMPTE240M:
            return AVCOL_SPC_SMPTE240M;
        case GST_VIDEO_COLOR_MATRIX_BT2020:
            return AVCOL_SPC_BT2020_NCL;
        default:
            return AVCOL_SPC_UNSPECIFIED;
    }
}

AVColorRange range_of(GstVideoColorRange range) {
    switch (range) {
        case GST_VIDEO_COLOR_RANGE_0_255:
            return AVCOL_RANGE_JPEG;
        case GST_VIDEO_COLOR_RANGE_16_235:
            return AVCOL_RANGE_MPEG;
        default:
            return AVCOL_RANGE_UNSPECIFIED;
    }
}

// Strides may be negative: then the rows lie before the first one.
bool plane_lies_in_memory(const GstVideoFrame& picture, int plane) {
    const AVPixelFormat format = pixel_format(GST_VIDEO_FRAME_FORMAT(&picture));
    const gint64 row = av_image_get_linesize(format, GST_VIDEO_FRAME_WIDTH(&picture), plane);
    const gint64 rows = GST_VIDEO_FRAME_COMP_HEIGHT(&picture, plane);
    const gint64 stride = GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane);
    if (row <= 0 || rows <= 0 || std::llabs(stride) < row) return false;
    const GstMapInfo& memory = picture.meta ? picture.map[plane] : picture.map[0];
    const gint64 first = static_cast<const guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&picture, plane)) - memory.data;
    const gint64 last = first + stride * (rows - 1);
    return std::min(first, last) >= 0 && std::max(first, last) + row <= static_cast<gint64>(memory.size);
}

}  // namespace

bool lies_in_its_memory(const GstVideoFrame& picture) {
    const int planes = static_cast<int>(GST_VIDEO_FRAME_N_PLANES(&picture));
    for (int plane = 0; plane < planes; ++plane) {
        if (!plane_lies_in_memory(picture, plane)) return false;
    }
    return true;
}

caps_colour colour_of_caps(const GstCaps* caps) {
    const char* text = gst_structure_get_string(gst_caps_get_structure(caps, 0), "colorimetry");
    GstVideoColorimetry colorimetry = {};
    if (!text || !gst_video_colorimetry_from_string(&colorimetry, text)) return {};
    return {range_of(colorimetry.range), matrix_of(colorimetry.matrix)};
}

orva_fire::frame_ptr view_of(const GstVideoFrame& picture, const caps_colour& colour) {
    orva_fire::frame_ptr view = orva_fire::new_frame();
    view->format = pixel_format(GST_VIDEO_FRAME_FORMAT(&picture));
    view->width = GST_VIDEO_FRAME_WIDTH(&picture);
    view->height = GST_VIDEO_FRAME_HEIGHT(&picture);
    view->color_range = colour.range;
    view->colorspace = colour.matrix;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&picture); ++plane) {
        view->data[plane] = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&picture, plane));
        view->linesize[plane] = GST_VIDEO_FRAME_PLANE_STRIDE(&picture, plane);
    }
    return view;
}

}  // namespace orva_gst
