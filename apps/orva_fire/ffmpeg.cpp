#include "apps/orva_fire/ffmpeg.h"

#include <new>

extern "C" {
#include <libavutil/error.h>
}

namespace orva_fire {

frame_ptr new_frame() {
    frame_ptr frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

packet_ptr new_packet() {
    packet_ptr packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    return packet;
}

frame_ptr new_picture(AVPixelFormat format, int width, int height) {
    frame_ptr frame = new_frame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return frame;
}

frame_ptr share_picture(const AVFrame& picture) {
    frame_ptr frame(av_frame_clone(&picture));
    if (!frame) throw std::bad_alloc();
    return frame;
}

std::string error_text(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

std::string file_url(const std::string& path) {
    return "file:" + path;
}

}  // namespace orva_fire
