#include "apps/orva_fire/ffmpeg.h"

#include <new>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace orva_fire {
namespace {

thread_local int t_demuxer_errors = 0;

bool comes_from_demuxer(void* sender) {
    if (!sender) return false;
    const AVClass* type = *static_cast<const AVClass* const*>(sender);
    if (!type) return false;
    const AVClassCategory category = type->get_category ? type->get_category(sender) : type->category;
    return category == AV_CLASS_CATEGORY_DEMUXER;
}

void count_message(void* sender, int level, const char*, va_list) {
    if (level <= AV_LOG_ERROR && comes_from_demuxer(sender)) ++t_demuxer_errors;
}

}  // namespace

void silence_messages() {
    av_log_set_callback(count_message);
}

int demuxer_errors() {
    return t_demuxer_errors;
}

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
