#include "tests/apps/fake_camera.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include "apps/orva_fire/ffmpeg.h"

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/mem.h>
}

namespace apps_test {
namespace {

const int k_packet_bytes = 1400;
const int k_look_around = 50;  // milliseconds

void check(bool good, const char* what) {
    if (!good) throw std::runtime_error(std::string("fake camera: ") + what + ": " + std::strerror(errno));
}

// The value of a header line of an RTSP request, or an empty text.
std::string header(const std::string& request, const std::string& name) {
    const size_t at = request.find("\r\n" + name + ": ");
    if (at == std::string::npos) return {};
    const size_t start = at + name.size() + 4;
    return request.substr(start, request.find("\r\n", start) - start);
}

// All bytes or none of use: false if the other end is gone or nobody reads for a while.
bool send_all(int client, const uint8_t* bytes, size_t size, const std::atomic<bool>& closing) {
    while (size > 0 && !closing) {
        pollfd waiting = {client, POLLOUT, 0};
        if (poll(&waiting, 1, k_look_around) == 0) continue;
        const ssize_t sent = send(client, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno == EAGAIN) continue;
        if (sent <= 0) return false;
        bytes += sent;
        size -= static_cast<size_t>(sent);
    }
    return size == 0;
}

bool send_text(int client, const std::string& text, const std::atomic<bool>& closing) {
    return send_all(client, reinterpret_cast<const uint8_t*>(text.data()), text.size(), closing);
}

struct wire {
    int client;
    const std::atomic<bool>* closing;
};

// One RTP or RTCP packet as the muxer hands it out, in the frame that RTSP puts around it on its own connection.
int write_packet(void* opaque, uint8_t* bytes, int size) {
    const auto* to = static_cast<wire*>(opaque);
    const bool control = bytes[1] >= 192 && bytes[1] <= 223;
    std::vector<uint8_t> framed = {'$', static_cast<uint8_t>(control), static_cast<uint8_t>(size >> 8),
                                   static_cast<uint8_t>(size & 255)};
    framed.insert(framed.end(), bytes, bytes + size);
    return send_all(to->client, framed.data(), framed.size(), *to->closing) ? size : AVERROR(EPIPE);
}

// A clip that is read, and the muxer that makes packets of it.
class packet_maker {
public:
    packet_maker(const std::string& clip, wire to) : m_to(to) {
        orva_fire::silence_messages();
        check(avformat_open_input(&m_input, clip.c_str(), nullptr, nullptr) >= 0, "clip");
        check(avformat_find_stream_info(m_input, nullptr) >= 0, "clip");
        check(avformat_alloc_output_context2(&m_output, nullptr, "rtp", nullptr) >= 0, "rtp");
        AVStream* stream = avformat_new_stream(m_output, nullptr);
        check(avcodec_parameters_copy(stream->codecpar, m_input->streams[0]->codecpar) >= 0, "rtp");
        stream->codecpar->codec_tag = 0;
        auto* buffer = static_cast<uint8_t*>(av_malloc(k_packet_bytes));
        m_output->pb = avio_alloc_context(buffer, k_packet_bytes, 1, &m_to, nullptr, write_packet, nullptr);
        m_output->pb->max_packet_size = k_packet_bytes;
    }
    ~packet_maker() {
        av_freep(&m_output->pb->buffer);
        avio_context_free(&m_output->pb);
        avformat_free_context(m_output);
        avformat_close_input(&m_input);
    }
    packet_maker(const packet_maker&) = delete;
    packet_maker& operator=(const packet_maker&) = delete;

    std::string description() {
        char text[4096] = {};
        check(av_sdp_create(&m_output, 1, text, sizeof text) >= 0, "sdp");
        return text;
    }

    void send() {
        if (avformat_write_header(m_output, nullptr) < 0) return;
        const orva_fire::packet_ptr packet = orva_fire::new_packet();
        bool connected = true;
        while (connected && av_read_frame(m_input, packet.get()) >= 0) {
            av_packet_rescale_ts(packet.get(), m_input->streams[0]->time_base, m_output->streams[0]->time_base);
            connected = av_write_frame(m_output, packet.get()) >= 0 && m_output->pb->error >= 0;
            av_packet_unref(packet.get());
        }
        (void)av_write_trailer(m_output);
    }

private:
    wire m_to;
    AVFormatContext* m_input = nullptr;
    AVFormatContext* m_output = nullptr;
};

std::string basic_token(const std::string& user, const std::string& password) {
    const std::string both = user + ":" + password;
    std::vector<char> coded(AV_BASE64_SIZE(both.size()));
    av_base64_encode(coded.data(), static_cast<int>(coded.size()), reinterpret_cast<const uint8_t*>(both.data()),
                     static_cast<int>(both.size()));
    return "Basic " + std::string(coded.data());
}

}  // namespace

fake_camera::fake_camera(const camera_plan& plan) : m_plan(plan) {
    listen_at(0);
    m_thread = std::thread([this] { serve(); });
}

fake_camera::~fake_camera() {
    if (m_thread.joinable()) switch_off();
}

std::string fake_camera::address(const std::string& user) const {
    return "rtsp://" + (user.empty() ? "" : user + "@") + "127.0.0.1:" + std::to_string(m_port) + "/live";
}

void fake_camera::listen_at(int port) {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    check(m_listener >= 0, "socket");
    const int yes = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port = htons(static_cast<uint16_t>(port));
    check(bind(m_listener, reinterpret_cast<sockaddr*>(&place), sizeof place) == 0, "bind");
    check(listen(m_listener, 8) == 0, "listen");
    socklen_t size = sizeof place;
    check(getsockname(m_listener, reinterpret_cast<sockaddr*>(&place), &size) == 0, "getsockname");
    m_port = ntohs(place.sin_port);
}

void fake_camera::switch_off() {
    m_closing = true;
    m_thread.join();
    close(m_listener);
}

void fake_camera::switch_on() {
    m_closing = false;
    listen_at(m_port);
    m_thread = std::thread([this] { serve(); });
}

void fake_camera::serve() {
    while (!m_closing) {
        pollfd waiting = {m_listener, POLLIN, 0};
        if (poll(&waiting, 1, k_look_around) <= 0) continue;
        const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) continue;
        talk(client);
        close(client);
    }
}

bool fake_camera::read_request(int client, std::string& request) const {
    request.clear();
    while (!m_closing && request.find("\r\n\r\n") == std::string::npos) {
        pollfd waiting = {client, POLLIN, 0};
        if (poll(&waiting, 1, k_look_around) == 0) continue;
        char piece[2048];
        const ssize_t got = recv(client, piece, sizeof piece, 0);
        if (got <= 0) return false;
        request.append(piece, static_cast<size_t>(got));
    }
    return !m_closing;
}

std::string fake_camera::answer(const std::string& request, bool& plays) const {
    const std::string number = "\r\nCSeq: " + header(request, "CSeq") + "\r\n";
    const std::string method = request.substr(0, request.find(' '));
    if (method == "OPTIONS") return "RTSP/1.0 200 OK" + number + "Public: DESCRIBE, SETUP, PLAY, TEARDOWN\r\n\r\n";
    if (!m_plan.user.empty() && header(request, "Authorization") != basic_token(m_plan.user, m_plan.password)) {
        return "RTSP/1.0 401 Unauthorized" + number + "WWW-Authenticate: Basic realm=\"camera\"\r\n\r\n";
    }
    if (method == "DESCRIBE") {
        const std::string text = packet_maker(m_plan.clip, {-1, &m_closing}).description();
        return "RTSP/1.0 200 OK" + number + "Content-Base: " + address() + "/\r\nContent-Type: application/sdp\r\n" +
               "Content-Length: " + std::to_string(text.size()) + "\r\n\r\n" + text;
    }
    if (method == "SETUP") {
        return "RTSP/1.0 200 OK" + number + "Session: 1\r\nTransport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n\r\n";
    }
    plays = method == "PLAY";
    return "RTSP/1.0 200 OK" + number + "Session: 1\r\n\r\n";
}

void fake_camera::talk(int client) {
    std::string request;
    while (read_request(client, request)) {
        bool plays = false;
        if (!send_text(client, answer(request, plays), m_closing)) return;
        if (!plays) continue;
        ++m_viewers;
        packet_maker(m_plan.clip, {client, &m_closing}).send();
        if (m_plan.then == after_clip::hang_up) return;
    }
}

}  // namespace apps_test
