#include "apps/orva_fire/picture_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {
namespace {

const int k_quantiser = 4;  // 1 is best, 31 smallest

std::string coded(const AVFrame& picture, AVCodecID id, const char* name) {
    const AVCodec* codec = avcodec_find_encoder(id);
    if (!codec) throw io_error(std::string("this system's FFmpeg libraries have no encoder for ") + name);
    const codec_ptr encoder(avcodec_alloc_context3(codec));
    if (!encoder) throw std::bad_alloc();
    encoder->width = picture.width;
    encoder->height = picture.height;
    encoder->pix_fmt = static_cast<AVPixelFormat>(picture.format);
    encoder->color_range = picture.color_range;
    encoder->time_base = av_make_q(1, 1);
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->global_quality = k_quantiser * FF_QP2LAMBDA;
    const packet_ptr packet = new_packet();
    int status = avcodec_open2(encoder.get(), codec, nullptr);
    if (status >= 0) status = avcodec_send_frame(encoder.get(), &picture);
    if (status >= 0) status = avcodec_send_frame(encoder.get(), nullptr);
    if (status >= 0) status = avcodec_receive_packet(encoder.get(), packet.get());
    if (status < 0) throw io_error("a picture could not be coded: " + error_text(status));
    return std::string(reinterpret_cast<const char*>(packet->data), static_cast<size_t>(packet->size));
}

}  // namespace

std::string jpeg_bytes(const AVFrame& picture, picture_size size) {
    picture_colour target;
    target.format = AV_PIX_FMT_YUV420P;
    target.full_range = true;
    target.matrix = AVCOL_SPC_SMPTE170M;
    const frame_ptr converted = new_picture(AV_PIX_FMT_YUVJ420P, size.width, size.height);
    scaler().convert(picture, target, size, converted->data, converted->linesize);
    converted->color_range = AVCOL_RANGE_JPEG;
    converted->quality = k_quantiser * FF_QP2LAMBDA;
    converted->pts = 0;
    return coded(*converted, AV_CODEC_ID_MJPEG, "JPEG");
}

std::string png_bytes(const AVFrame& picture) {
    return coded(picture, AV_CODEC_ID_PNG, "PNG");
}

std::string thumbnail(const AVFrame& picture, int most_columns) {
    picture_size size{picture.width, picture.height};
    if (size.width > most_columns) {
        size = {most_columns, std::max(1, static_cast<int>(1L * size.height * most_columns / size.width))};
    }
    return jpeg_bytes(picture, size);
}

void save_bytes(const std::string& path, const std::string& bytes) {
    const std::string unfinished = path + ".part";
    const auto fail = [&] {
        const std::string why = std::strerror(errno);
        std::remove(unfinished.c_str());
        throw io_error("cannot write '" + path + "': " + why);
    };
    std::FILE* file = std::fopen(unfinished.c_str(), "wb");
    if (!file) fail();
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed || std::rename(unfinished.c_str(), path.c_str()) != 0) fail();
}

}  // namespace orva_fire
