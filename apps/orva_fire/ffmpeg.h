// Owners for the objects of the FFmpeg libraries, and the few helpers that everybody needs.
#ifndef ORVA_APPS_ORVA_FIRE_FFMPEG_H
#define ORVA_APPS_ORVA_FIRE_FFMPEG_H

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace orva_fire {

struct ffmpeg_deleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

using frame_ptr = std::unique_ptr<AVFrame, ffmpeg_deleter>;
using packet_ptr = std::unique_ptr<AVPacket, ffmpeg_deleter>;
using codec_ptr = std::unique_ptr<AVCodecContext, ffmpeg_deleter>;
using graph_ptr = std::unique_ptr<AVFilterGraph, ffmpeg_deleter>;
using scaler_ptr = std::unique_ptr<SwsContext, ffmpeg_deleter>;

// Empty objects; std::bad_alloc if they cannot be had.
frame_ptr new_frame();
packet_ptr new_packet();

// A picture with memory of its own, contents undefined. std::bad_alloc if it cannot be had.
frame_ptr new_picture(AVPixelFormat format, int width, int height);

// A second reference to the same pixels.
frame_ptr share_picture(const AVFrame& picture);

// The text for one of the libraries' negative error numbers.
std::string error_text(int error);

// Keeps the libraries' own messages off standard error for good; the programs say in their own words what is wrong.
void silence_messages();

// How many error messages demuxers have had for the calling thread since silence_messages. Some skip damaged parts of
// a file and tell nobody but the log.
int demuxer_errors();

// A path as the libraries must see it, so that a name with a colon is never taken for an address.
std::string file_url(const std::string& path);

}  // namespace orva_fire

#endif
