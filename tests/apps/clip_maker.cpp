#include "tests/apps/clip_maker.h"

#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/scaler.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/opt.h>
}

namespace apps_test {
namespace {

const int k_ticks = 90000;

void check(int status, const std::string& what) {
    if (status < 0) throw std::runtime_error(what + ": " + orva_fire::error_text(status));
}

struct output_closer {
    void operator()(AVFormatContext* output) const {
        if (output->pb) avio_closep(&output->pb);
        avformat_free_context(output);
    }
};
using output_ptr = std::unique_ptr<AVFormatContext, output_closer>;

orva_fire::codec_ptr open_encoder(const clip_recipe& recipe, bool global_header) {
    const AVCodec* codec = avcodec_find_encoder_by_name(recipe.codec);
    if (!codec) throw std::runtime_error(std::string("no encoder ") + recipe.codec);
    orva_fire::codec_ptr encoder(avcodec_alloc_context3(codec));
    encoder->width = recipe.width;
    encoder->height = recipe.height;
    encoder->pix_fmt = recipe.format;
    encoder->color_range = recipe.range;
    encoder->colorspace = recipe.matrix;
    encoder->color_trc = recipe.transfer;
    encoder->framerate = av_make_q(recipe.rate, 1);
    // Older codecs, and streams without time stamps, know only a steady rate.
    const bool any_time = std::string(recipe.codec) == "ffv1" ||
                          (std::string(recipe.codec) == "libx264" && recipe.path.find(".h264") == std::string::npos);
    encoder->time_base = any_time ? av_make_q(1, k_ticks) : av_make_q(1, recipe.rate);
    encoder->gop_size = 12;
    encoder->max_b_frames = 0;
    encoder->bit_rate = 4000000;
    encoder->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    if (recipe.interlaced) encoder->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    if (global_header) encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (std::string(recipe.codec) == "ffv1") {
        // Check sums, so that damage shows.
        encoder->level = 3;
        av_opt_set(encoder->priv_data, "slicecrc", "1", 0);
    }
    if (std::string(recipe.codec) == "libx264") {
        av_opt_set(encoder->priv_data, "preset", "ultrafast", 0);
        av_opt_set(encoder->priv_data, "crf", "12", 0);
    }
    check(avcodec_open2(encoder.get(), codec, nullptr), recipe.codec);
    return encoder;
}

void set_turn(AVStream& stream, int turn) {
    if (turn == 0) return;
    uint8_t* data = av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t));
    if (!data) throw std::bad_alloc();
    const double angle = turn * std::acos(-1.0) / 180;
    const auto cosine = static_cast<int32_t>(std::lround(std::cos(angle) * 65536));
    const auto sine = static_cast<int32_t>(std::lround(std::sin(angle) * 65536));
    const int32_t matrix[9] = {cosine, sine, 0, -sine, cosine, 0, 0, 0, 1 << 30};
    std::memcpy(data, matrix, sizeof matrix);
}

void write_packets(AVCodecContext& encoder, AVFormatContext& output, AVStream& stream) {
    const orva_fire::packet_ptr packet = orva_fire::new_packet();
    while (avcodec_receive_packet(&encoder, packet.get()) >= 0) {
        av_packet_rescale_ts(packet.get(), encoder.time_base, stream.time_base);
        packet->stream_index = stream.index;
        check(av_interleaved_write_frame(&output, packet.get()), "write");
    }
}

}  // namespace

temporary_folder::temporary_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "orva-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    m_path = name;
}

temporary_folder::~temporary_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<double> steady(int count, double rate) {
    std::vector<double> times;
    for (int i = 0; i < count; ++i) times.push_back(i / rate);
    return times;
}

void make_clip(const clip_recipe& recipe) {
    orva_fire::silence_messages();
    AVFormatContext* raw = nullptr;
    check(avformat_alloc_output_context2(&raw, nullptr, nullptr, recipe.path.c_str()), recipe.path);
    const output_ptr output(raw);
    output->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    const orva_fire::codec_ptr encoder = open_encoder(recipe, output->oformat->flags & AVFMT_GLOBALHEADER);
    AVStream* stream = avformat_new_stream(output.get(), nullptr);
    check(avcodec_parameters_from_context(stream->codecpar, encoder.get()), "parameters");
    stream->time_base = encoder->time_base;
    stream->avg_frame_rate = encoder->framerate;
    set_turn(*stream, recipe.turn);
    check(avio_open(&output->pb, recipe.path.c_str(), AVIO_FLAG_WRITE), recipe.path);
    // The index of an mp4 goes to the front, so that a file cut short can still be opened.
    AVDictionary* options = nullptr;
    if (recipe.index_first) av_dict_set(&options, "movflags", "+faststart", 0);
    const int status = avformat_write_header(output.get(), &options);
    av_dict_free(&options);
    check(status, "header");
    for (size_t i = 0; i < recipe.times.size(); ++i) {
        const orva_fire::frame_ptr picture = orva_fire::new_picture(recipe.format, recipe.width, recipe.height);
        picture->color_range = recipe.range;
        picture->colorspace = recipe.matrix;
        picture->color_trc = recipe.transfer;
        picture->interlaced_frame = recipe.interlaced;
        picture->top_field_first = recipe.interlaced;
        recipe.paint(static_cast<int>(i), *picture);
        picture->pts = std::llround(recipe.times[i] / av_q2d(encoder->time_base));
        check(avcodec_send_frame(encoder.get(), picture.get()), "encode");
        write_packets(*encoder, *output, *stream);
    }
    check(avcodec_send_frame(encoder.get(), nullptr), "encode");
    write_packets(*encoder, *output, *stream);
    check(av_write_trailer(output.get()), "trailer");
}

fire_pictures::fire_pictures(int width, int height, double onset)
    : m_scene([&] {
          flame_clip::scene_settings settings;
          settings.width = width;
          settings.height = height;
          settings.onset = onset;
          return settings;
      }()) {}

void fire_pictures::paint(double seconds, int index, AVFrame& picture) {
    std::optional<flame_clip::pixel_box> now;
    const flame_clip::canvas& painted = m_scene.paint(seconds, index, now);
    const orva_fire::frame_ptr raw = orva_fire::new_picture(AV_PIX_FMT_RGB24, painted.width(), painted.height());
    for (int y = 0; y < painted.height(); ++y) {
        for (int x = 0; x < painted.width(); ++x) {
            uint8_t* pixel = raw->data[0] + y * raw->linesize[0] + 3 * x;
            const flame_clip::rgb& value = painted.at(x, y);
            pixel[0] = static_cast<uint8_t>(std::clamp(value.r, 0.0f, 1.0f) * 255 + 0.5f);
            pixel[1] = static_cast<uint8_t>(std::clamp(value.g, 0.0f, 1.0f) * 255 + 0.5f);
            pixel[2] = static_cast<uint8_t>(std::clamp(value.b, 0.0f, 1.0f) * 255 + 0.5f);
        }
    }
    orva_fire::scaler().convert(*raw, orva_fire::colour_of(picture), {picture.width, picture.height}, picture.data,
                                picture.linesize);
    if (!now) return;
    if (!m_truth) m_truth = now;
    const int right = std::max(m_truth->x + m_truth->width, now->x + now->width);
    const int bottom = std::max(m_truth->y + m_truth->height, now->y + now->height);
    m_truth->x = std::min(m_truth->x, now->x);
    m_truth->y = std::min(m_truth->y, now->y);
    m_truth->width = right - m_truth->x;
    m_truth->height = bottom - m_truth->y;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace apps_test
