#include "apps/orva_fire/video_writer.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "apps/orva_fire/error.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/opt.h>
}

namespace orva_fire {
namespace {

const int k_ticks = 90000;         // a second; whole for all common rates
const double k_key_seconds = 2.0;  // a player can jump to one picture in this time

const AVCodec* find_h264() {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    return codec ? codec : avcodec_find_encoder(AV_CODEC_ID_H264);
}

}  // namespace

void video_writer::output_closer::operator()(AVFormatContext* output) const {
    if (output->pb) avio_closep(&output->pb);
    avformat_free_context(output);
}

void video_writer::check(int status, const char* what) const {
    if (status == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (status < 0) throw io_error("cannot write " + m_name + " (" + what + "): " + error_text(status));
}

video_writer::video_writer(const std::string& path, const AVFrame& like, const encoder_settings& settings)
    : m_name("'" + path + "'"), m_stream_out(false), m_packet(new_packet()) {
    start("mp4", file_url(path), like, settings);
}

video_writer::video_writer(int descriptor, const std::string& name, const AVFrame& like,
                           const encoder_settings& settings)
    : m_name(name), m_stream_out(true), m_packet(new_packet()) {
    start("matroska", "pipe:" + std::to_string(descriptor), like, settings);
}

void video_writer::start(const char* container, const std::string& url, const AVFrame& like,
                         const encoder_settings& settings) {
    AVFormatContext* output = nullptr;
    check(avformat_alloc_output_context2(&output, nullptr, container, url.c_str()), "container");
    m_output.reset(output);
    open_encoder(like, settings);
    open_file(url);
}

void video_writer::open_encoder(const AVFrame& like, const encoder_settings& settings) {
    const AVCodec* codec = find_h264();
    if (!codec) throw io_error("this system's FFmpeg libraries have no H.264 encoder (libx264)");
    m_encoder.reset(avcodec_alloc_context3(codec));
    m_stream = avformat_new_stream(m_output.get(), nullptr);
    if (!m_encoder || !m_stream) throw std::bad_alloc();

    AVCodecContext* encoder = m_encoder.get();
    encoder->width = like.width;
    encoder->height = like.height;
    encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder->time_base = av_make_q(1, k_ticks);
    encoder->framerate = av_d2q(settings.rate, 100000);
    encoder->gop_size = std::max(1, static_cast<int>(std::lround(settings.rate * k_key_seconds)));
    encoder->sample_aspect_ratio = like.sample_aspect_ratio;
    encoder->color_range = like.color_range;
    encoder->colorspace = like.colorspace;
    encoder->color_primaries = like.color_primaries;
    encoder->color_trc = like.color_trc;
    encoder->chroma_sample_location = like.chroma_location;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // Other encoders than x264 do not know these names; their defaults will do.
    (void)av_opt_set(encoder->priv_data, "preset", settings.preset, 0);
    (void)av_opt_set_double(encoder->priv_data, "crf", settings.quality, 0);
    if (m_stream_out) (void)av_opt_set(encoder->priv_data, "tune", "zerolatency", 0);
    check(avcodec_open2(encoder, codec, nullptr), "encoder");

    check(avcodec_parameters_from_context(m_stream->codecpar, encoder), "container");
    m_stream->time_base = encoder->time_base;
    m_stream->avg_frame_rate = encoder->framerate;
    m_stream->sample_aspect_ratio = like.sample_aspect_ratio;
}

void video_writer::open_file(const std::string& url) {
    check(avio_open(&m_output->pb, url.c_str(), AVIO_FLAG_WRITE), "open");
    // What is coded reaches the file or the player at once.
    m_output->flags |= AVFMT_FLAG_FLUSH_PACKETS;
    AVDictionary* options = nullptr;
    check(av_dict_set(&options, "movflags", "+frag_keyframe+delay_moov+default_base_moof", 0), "options");
    check(av_dict_set(&options, "live", "1", 0), "options");
    check(av_dict_set(&options, "cluster_time_limit", "100", 0), "options");
    const int status = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    check(status, "header");
    m_header_written = true;
}

void video_writer::write(const AVFrame& picture, double seconds) {
    const frame_ptr frame = share_picture(picture);
    frame->pts = std::max<int64_t>(m_last_stamp + 1, std::llround(seconds * k_ticks));
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    m_last_stamp = frame->pts;
    check(avcodec_send_frame(m_encoder.get(), frame.get()), "encode");
    write_packets();
}

void video_writer::write_packets() {
    while (true) {
        const int status = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return;
        check(status, "encode");
        av_packet_rescale_ts(m_packet.get(), m_encoder->time_base, m_stream->time_base);
        m_packet->stream_index = m_stream->index;
        check(av_interleaved_write_frame(m_output.get(), m_packet.get()), "write");
    }
}

void video_writer::close() {
    if (!m_header_written) return;
    m_header_written = false;
    check(avcodec_send_frame(m_encoder.get(), nullptr), "encode");
    write_packets();
    check(av_write_trailer(m_output.get()), "finish");
    check(avio_closep(&m_output->pb), "close");
}

video_writer::~video_writer() {
    try {
        close();
    } catch (const std::exception&) {
        // Somebody else's error is on its way; the file is as complete as it can be.
    }
}

}  // namespace orva_fire
