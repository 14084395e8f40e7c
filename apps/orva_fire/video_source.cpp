#include "apps/orva_fire/video_source.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/error.h"

extern "C" {
#include <libavutil/dict.h>
}

namespace orva_fire {
namespace {

const double k_fallback_rate = 25;
const double k_highest_rate = 1000;  // what lies above is the unit of the time stamps, taken for a rate
// Files state their length a little wrong; only what lacks more than both of these counts as cut short.
const double k_missing_seconds = 1;
const double k_missing_share = 0.05;

// Options that the libraries did not know are none that they need; the caller's are for one demuxer each.
struct option_list {
    explicit option_list(const std::map<std::string, std::string>& values) {
        for (const auto& [name, value] : values) av_dict_set(&list, name.c_str(), value.c_str(), 0);
    }
    ~option_list() { av_dict_free(&list); }
    option_list(const option_list&) = delete;
    option_list& operator=(const option_list&) = delete;

    AVDictionary* list = nullptr;
};

std::string at_seconds(double seconds) {
    char text[64];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

}  // namespace

video_source::video_source(const std::string& path) : video_source(file_address(path)) {}

video_source::video_source(const input_address& address, picture_size size)
    : m_address(address), m_packet(new_packet()), m_decoded(new_frame()) {
    silence_messages();
    open_container();
    open_decoder();
    open_filter(size);
}

void video_source::open_container() {
    AVFormatContext* input = avformat_alloc_context();
    if (!input) throw std::bad_alloc();
    if (m_address.prepare) m_address.prepare(*input);
    const AVInputFormat* format = m_address.format.empty() ? nullptr : av_find_input_format(m_address.format.c_str());
    option_list options(m_address.options);
    const int opened = avformat_open_input(&input, m_address.url.c_str(), format, &options.list);
    if (opened < 0) {
        const char* hint = opened == AVERROR_INVALIDDATA ? "; it is no video, or it is damaged or cut short" : "";
        if (opened == AVERROR_HTTP_UNAUTHORIZED)
            throw refused_error(m_address.name + " refused the user or the password");
        throw io_error("cannot read " + m_address.name + ": " + error_text(opened) + hint);
    }
    m_input.reset(input);
    const int known = avformat_find_stream_info(input, nullptr);
    if (known < 0) throw io_error("cannot read " + m_address.name + ": " + error_text(known));
}

void video_source::open_decoder() {
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index == AVERROR_DECODER_NOT_FOUND) throw io_error(m_address.name + ": there is no decoder for its video");
    if (index < 0) throw io_error(m_address.name + " has no video in it");
    // The other streams are read along and left aside: where they end belongs to the length that the file states.
    m_stream = m_input->streams[index];

    m_decoder.reset(avcodec_alloc_context3(codec));
    if (!m_decoder) throw std::bad_alloc();
    m_decoder->pkt_timebase = m_stream->time_base;
    // Decoding in several threads holds pictures back, as many as there are threads.
    m_decoder->thread_count = m_address.live ? 1 : 0;
    int status = avcodec_parameters_to_context(m_decoder.get(), m_stream->codecpar);
    if (status >= 0) status = avcodec_open2(m_decoder.get(), codec, nullptr);
    if (status < 0) throw io_error("cannot decode " + m_address.name + " (" + codec->name + "): " + error_text(status));
}

void video_source::open_filter(picture_size size) {
    const uint8_t* data = av_stream_get_side_data(m_stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    const auto* matrix = reinterpret_cast<const int32_t*>(data);
    if (has_odd_angle(matrix)) {
        m_warnings.push_back("the video asks to be turned by an angle that is no quarter turn; it is left as it is");
    }
    m_filter = std::make_unique<picture_filter>(m_stream->time_base, upright_filters(matrix), size);
}

double video_source::nominal_rate() const {
    const AVRational rate = av_guess_frame_rate(m_input.get(), m_stream, nullptr);
    const bool known = rate.num > 0 && rate.den > 0 && av_q2d(rate) < k_highest_rate;
    return known ? av_q2d(rate) : k_fallback_rate;
}

double video_source::duration() const {
    if (m_stream->duration != AV_NOPTS_VALUE && m_stream->duration > 0) {
        return static_cast<double>(m_stream->duration) * av_q2d(m_stream->time_base);
    }
    if (m_input->duration != AV_NOPTS_VALUE && m_input->duration > 0) {
        return static_cast<double>(m_input->duration) / AV_TIME_BASE;
    }
    return 0;
}

bool video_source::next(source_picture& picture) {
    double seconds = 0;
    while (!m_filter->pull(picture.frame, seconds)) {
        if (m_drained) return false;
        feed_filter();
    }
    look_at_colour(*picture.frame);
    if (m_index == 0) m_first_seconds = seconds;
    seconds -= m_first_seconds;
    // Joined recordings repeat or turn back their time stamps; everything behind here counts on growing ones.
    if (m_index > 0 && seconds <= m_last_seconds) seconds = m_last_seconds + 1 / nominal_rate();
    m_last_seconds = seconds;
    picture.seconds = seconds;
    picture.index = m_index++;
    return true;
}

// One step: a decoded picture goes on to the filter, or the decoder is fed, or the end is passed on.
void video_source::feed_filter() {
    const int status = avcodec_receive_frame(m_decoder.get(), m_decoded.get());
    if (status == AVERROR(EAGAIN)) {
        feed_decoder();
    } else if (status == AVERROR_EOF) {
        m_filter->finish();
        m_drained = true;
    } else if (status == AVERROR(ENOMEM)) {
        throw std::bad_alloc();
    } else if (status < 0) {
        note_damage();
    } else {
        // A picture without a time stamp repeats the one before; next() then counts on by the stated rate.
        if (m_decoded->best_effort_timestamp != AV_NOPTS_VALUE) m_last_stamp = m_decoded->best_effort_timestamp;
        m_decoded->pts = m_last_stamp;
        if (m_decoded->decode_error_flags != 0 || (m_decoded->flags & AV_FRAME_FLAG_CORRUPT)) note_damage();
        frame_ptr picture = new_frame();
        av_frame_move_ref(picture.get(), m_decoded.get());
        m_filter->push(std::move(picture));
    }
}

void video_source::feed_decoder() {
    const int errors = demuxer_errors();
    const int read = av_read_frame(m_input.get(), m_packet.get());
    if (demuxer_errors() != errors) note_damage();
    if (read == AVERROR(EAGAIN)) {
        wait_a_little();
        return;
    }
    if (read < 0) {
        end_of_packets(read);
        return;
    }
    note_end(*m_packet);
    if (m_packet->stream_index == m_stream->index) {
        if (m_packet->flags & AV_PKT_FLAG_CORRUPT) note_damage();
        const int sent = avcodec_send_packet(m_decoder.get(), m_packet.get());
        if (sent == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (sent < 0) note_damage();
    }
    av_packet_unref(m_packet.get());
}

// A device that is not to be waited for has no picture yet.
void video_source::wait_a_little() {
    const AVIOInterruptCB& asked = m_input->interrupt_callback;
    if (asked.callback && asked.callback(asked.opaque)) {
        end_of_packets(AVERROR_EXIT);
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void video_source::end_of_packets(int status) {
    if (status != AVERROR_EOF) {
        m_ended_early = "reading stopped (" + error_text(status) + ")";
    } else {
        look_for_truncation();
    }
    // The empty packet that makes the decoder hand out what it holds back.
    (void)avcodec_send_packet(m_decoder.get(), nullptr);
}

// Remembers the latest moment that packets cover, of this stream and of all. Some containers state a length that counts
// from 0 and others one that counts from the first picture, so the later of the two readings is kept.
void video_source::note_end(const AVPacket& packet) {
    const int64_t stamp = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    if (stamp == AV_NOPTS_VALUE) return;
    const AVStream& stream = *m_input->streams[packet.stream_index];
    const int64_t start = stream.start_time != AV_NOPTS_VALUE ? std::min<int64_t>(0, stream.start_time) : 0;
    const double end = static_cast<double>(stamp + packet.duration - start) * av_q2d(stream.time_base);
    if (&stream == m_stream) m_stream_end = std::max(m_stream_end, end);
    m_file_end = std::max(m_file_end, end);
}

void video_source::note_damage() {
    if (m_damaged++ == 0) m_first_damage = m_last_seconds;
}

bool video_source::index_reaches_beyond_file() const {
    const int64_t size = m_input->pb ? avio_size(m_input->pb) : -1;
    if (size <= 0) return false;
    for (int i = 0; i < avformat_index_get_entries_count(m_stream); ++i) {
        const AVIndexEntry* entry = avformat_index_get_entry(m_stream, i);
        if (entry->pos + entry->size > size) return true;
    }
    return false;
}

// A transport stream consists of packets of one size; 192 and 204 bytes are its variants.
bool video_source::ends_inside_a_packet() const {
    const int64_t size = m_input->pb ? avio_size(m_input->pb) : -1;
    if (size <= 0 || std::strcmp(m_input->iformat->name, "mpegts") != 0) return false;
    return size % 188 != 0 && size % 192 != 0 && size % 204 != 0;
}

void video_source::look_for_truncation() {
    if (index_reaches_beyond_file() || ends_inside_a_packet()) {
        m_ended_early = "the file is cut short";
        return;
    }
    // Only lengths that the file states count; guesses from the bit rate or from the last time stamp do not.
    if (m_input->duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return;
    if (m_stream->duration != AV_NOPTS_VALUE) {
        compare_with_stated(static_cast<double>(m_stream->duration) * av_q2d(m_stream->time_base), m_stream_end);
    } else if (m_input->duration != AV_NOPTS_VALUE) {
        compare_with_stated(static_cast<double>(m_input->duration) / AV_TIME_BASE, m_file_end);
    }
}

void video_source::compare_with_stated(double stated, double held) {
    const double missing = stated - held;
    if (missing > k_missing_seconds && missing > stated * k_missing_share) {
        m_ended_early = "the file is cut short (it states " + at_seconds(stated) + ")";
    }
}

std::string video_source::problem() const {
    std::string text;
    if (!m_ended_early.empty()) text = m_ended_early + ", read up to " + at_seconds(m_last_seconds);
    if (m_damaged > 0) {
        if (!text.empty()) text += "; ";
        text += "damaged at " + std::to_string(m_damaged) + (m_damaged == 1 ? " place" : " places") + ", first near " +
                at_seconds(m_first_damage);
    }
    return text.empty() ? text : m_address.name + ": " + text;
}

void video_source::look_at_colour(const AVFrame& picture) {
    if (m_colour_seen) return;
    m_colour_seen = true;
    const std::string warning = colour_warning(picture);
    if (!warning.empty()) m_warnings.push_back(warning);
}

std::vector<std::string> video_source::take_warnings() {
    return std::exchange(m_warnings, {});
}

}  // namespace orva_fire
