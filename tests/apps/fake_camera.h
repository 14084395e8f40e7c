// A camera on this machine: an RTSP server over TCP that shows a clip, and that can be switched off, fall silent or
// refuse a user at will.
#ifndef ORVA_TESTS_APPS_FAKE_CAMERA_H
#define ORVA_TESTS_APPS_FAKE_CAMERA_H

#include <atomic>
#include <string>
#include <thread>

namespace apps_test {

enum class after_clip { hang_up, fall_silent };

struct camera_plan {
    std::string clip;                       // H.264; every connection sees it from its beginning, as fast as it can
    after_clip then = after_clip::hang_up;  // what happens when it is over
    std::string user, password;             // empty: everybody may look
};

class fake_camera {
public:
    // Listens on a free port of this machine.
    explicit fake_camera(const camera_plan& plan);
    ~fake_camera();
    fake_camera(const fake_camera&) = delete;
    fake_camera& operator=(const fake_camera&) = delete;

    // rtsp://127.0.0.1:PORT/live, with `user@` if one is given.
    std::string address(const std::string& user = "") const;

    // Hangs up and refuses connections until switched on again, at the same port.
    void switch_off();
    void switch_on();

    // Connections that came to see pictures, so far.
    int viewers() const { return m_viewers; }

private:
    void listen_at(int port);
    void serve();
    void talk(int client);
    bool read_request(int client, std::string& request) const;
    std::string answer(const std::string& request, bool& plays) const;

    const camera_plan m_plan;
    int m_port = 0;
    int m_listener = -1;
    std::atomic<bool> m_closing{false};
    std::atomic<int> m_viewers{0};
    std::thread m_thread;
};

}  // namespace apps_test

#endif
