// Writes yuv420p pictures as H.264: into an mp4 file of fragments, which plays while it is still being loaded or
// written and holds what came before if it is cut, or as a stream for a player.
#ifndef ORVA_APPS_ORVA_FIRE_VIDEO_WRITER_H
#define ORVA_APPS_ORVA_FIRE_VIDEO_WRITER_H

#include <cstdint>
#include <memory>
#include <string>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_fire {

struct encoder_settings {
    const char* preset = "superfast";  // boxes on known pictures: speed before size
    int quality = 23;                  // constant rate factor, lower is better
    double rate = 25;                  // pictures a second, a hint only; every picture brings its own time
};

class video_writer {
public:
    // like: a picture with the size, range, colour and pixel aspect of all that will come.
    // Throws io_error that names the file.
    video_writer(const std::string& path, const AVFrame& like, const encoder_settings& settings);

    // A Matroska stream, coded without delay, into a descriptor that stays open and belongs to the caller.
    // name: for messages.
    video_writer(int descriptor, const std::string& name, const AVFrame& like, const encoder_settings& settings);

    // Adds one picture. seconds: growing from picture to picture.
    void write(const AVFrame& picture, double seconds);

    // Finishes the file. Without it, the file is finished by the destructor and errors go unseen.
    void close();

    ~video_writer();
    video_writer(const video_writer&) = delete;
    video_writer& operator=(const video_writer&) = delete;

private:
    struct output_closer {
        void operator()(AVFormatContext* output) const;
    };

    void start(const char* container, const std::string& url, const AVFrame& like, const encoder_settings& settings);
    void open_encoder(const AVFrame& like, const encoder_settings& settings);
    void open_file(const std::string& url);
    void write_packets();
    void check(int status, const char* what) const;

    const std::string m_name;  // for messages
    const bool m_stream_out;
    std::unique_ptr<AVFormatContext, output_closer> m_output;
    AVStream* m_stream = nullptr;
    codec_ptr m_encoder;
    packet_ptr m_packet;
    int64_t m_last_stamp = -1;
    bool m_header_written = false;
};

}  // namespace orva_fire

#endif
