#include "gst/picture_copy.h"

#include "apps/orva_fire/error.h"

namespace orva_gst {
namespace {

bool fits(const AVFrame& frame, const AVFrame& source) {
    return frame.format == source.format && frame.width == source.width && frame.height == source.height;
}

}  // namespace

AVFrame& picture_copier::spare_frame(const AVFrame& source) {
    if (!m_frames.empty() && !fits(*m_frames.front(), source)) m_frames.clear();
    for (const orva_fire::frame_ptr& frame : m_frames) {
        if (av_frame_is_writable(frame.get())) return *frame;
    }
    m_frames.push_back(orva_fire::new_picture(static_cast<AVPixelFormat>(source.format), source.width, source.height));
    return *m_frames.back();
}

const AVFrame& picture_copier::copy(const AVFrame& source) {
    AVFrame& frame = spare_frame(source);
    const int status = av_frame_copy(&frame, &source);
    if (status < 0) throw orva_fire::io_error("a picture could not be copied: " + orva_fire::error_text(status));
    frame.color_range = source.color_range;
    frame.colorspace = source.colorspace;
    return frame;
}

}  // namespace orva_gst
