// Reads the pictures of one video stream, mostly a file, one after the other: upright, progressive, each with its time.
#ifndef ORVA_APPS_ORVA_FIRE_VIDEO_SOURCE_H
#define ORVA_APPS_ORVA_FIRE_VIDEO_SOURCE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/input_address.h"
#include "apps/orva_fire/picture_filter.h"
#include "apps/orva_fire/picture_source.h"

namespace orva_fire {

class video_source : public picture_source {
public:
    // Opens a file. Throws io_error that names the file if there is no video to be read in it.
    explicit video_source(const std::string& path);

    // Opens any stream. size: of all pictures; of the first one if it is empty.
    explicit video_source(const input_address& address, picture_size size = {});

    bool next(source_picture& picture) override;
    double duration() const override;
    double nominal_rate() const override;
    std::string problem() const override;
    std::vector<std::string> take_warnings() override;

private:
    struct input_closer {
        void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
    };

    void open_container();
    void open_decoder();
    void open_filter(picture_size size);
    void feed_filter();
    void feed_decoder();
    void wait_a_little();
    void end_of_packets(int status);
    void note_end(const AVPacket& packet);
    void note_damage();
    void look_for_truncation();
    bool index_reaches_beyond_file() const;
    bool ends_inside_a_packet() const;
    void compare_with_stated(double stated, double held);
    void look_at_colour(const AVFrame& picture);

    const input_address m_address;
    std::unique_ptr<AVFormatContext, input_closer> m_input;
    AVStream* m_stream = nullptr;
    codec_ptr m_decoder;
    packet_ptr m_packet;
    frame_ptr m_decoded;
    std::unique_ptr<picture_filter> m_filter;

    int64_t m_last_stamp = 0;  // of the last decoded picture, in units of the stream
    double m_stream_end = 0;   // where the packets of this stream end, in seconds
    double m_file_end = 0;     // and those of all streams
    bool m_drained = false;

    int64_t m_index = 0;
    double m_first_seconds = 0;
    double m_last_seconds = 0;

    int64_t m_damaged = 0;
    double m_first_damage = 0;
    std::string m_ended_early;
    bool m_colour_seen = false;
    std::vector<std::string> m_warnings;
};

}  // namespace orva_fire

#endif
