#include "apps/orva_fire/snapshot.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <regex>

#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int k_jpeg_quantiser = 3;  // 1 is best, 31 smallest

packet_ptr encode(const AVFrame& picture) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    if (!codec) throw io_error("this system's FFmpeg libraries have no JPEG encoder");
    const codec_ptr encoder(avcodec_alloc_context3(codec));
    if (!encoder) throw std::bad_alloc();
    encoder->width = picture.width;
    encoder->height = picture.height;
    encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
    encoder->color_range = AVCOL_RANGE_JPEG;
    encoder->time_base = av_make_q(1, 1);
    encoder->sample_aspect_ratio = picture.sample_aspect_ratio;
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->global_quality = k_jpeg_quantiser * FF_QP2LAMBDA;
    packet_ptr packet = new_packet();
    int status = avcodec_open2(encoder.get(), codec, nullptr);
    if (status >= 0) status = avcodec_send_frame(encoder.get(), &picture);
    if (status >= 0) status = avcodec_send_frame(encoder.get(), nullptr);
    if (status >= 0) status = avcodec_receive_packet(encoder.get(), packet.get());
    if (status < 0) throw io_error("a snapshot could not be coded: " + error_text(status));
    return packet;
}

void save(const std::string& path, const AVPacket& packet) {
    const auto fail = [&path] { throw io_error("cannot write '" + path + "': " + std::strerror(errno)); };
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) fail();
    const auto size = static_cast<size_t>(packet.size);
    const bool written = std::fwrite(packet.data, 1, size, file) == size;
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) fail();
}

}  // namespace

void jpeg_writer::write(const std::string& path, const AVFrame& picture) {
    // JPEG files are full range and BT.601, whatever the video is.
    picture_colour target;
    target.format = AV_PIX_FMT_YUV420P;
    target.full_range = true;
    target.matrix = AVCOL_SPC_SMPTE170M;
    const frame_ptr converted = new_picture(AV_PIX_FMT_YUVJ420P, picture.width, picture.height);
    m_scaler.convert(picture, target, {picture.width, picture.height}, converted->data, converted->linesize);
    converted->color_range = AVCOL_RANGE_JPEG;
    converted->quality = k_jpeg_quantiser * FF_QP2LAMBDA;
    converted->pts = 0;
    save(path, *encode(*converted));
}

snapshot_taker::snapshot_taker(const std::string& folder, const std::string& run) : m_folder(folder), m_run(run) {
    if (!run.empty()) return;
    const std::regex ours("event-[0-9]{4,}-(start|largest)\\.jpg");
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (std::regex_match(entry.path().filename().string(), ours)) std::filesystem::remove(entry.path());
    }
}

std::string snapshot_taker::file_name(int id, const char* which) const {
    char name[64];
    std::snprintf(name, sizeof name, "%04d-%s.jpg", id, which);
    return "event-" + (m_run.empty() ? "" : m_run + "-") + name;
}

std::string snapshot_taker::take(const fire_event& event, const frame_ptr& picture) {
    if (event.grew) m_largest[event.id] = share_picture(*picture);
    std::string name;
    if (event.kind == event_kind::start) {
        name = file_name(event.id, "start");
        m_writer.write(m_folder + "/" + name, *picture);
    } else if (event.kind == event_kind::end) {
        name = file_name(event.id, "largest");
        m_writer.write(m_folder + "/" + name, *m_largest.at(event.id));
        m_largest.erase(event.id);
    }
    return name;
}

}  // namespace orva_fire
