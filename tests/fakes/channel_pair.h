// A channel of the library and its plain twin, given the same frames; every difference is a failure.
#ifndef ORVA_TESTS_FAKES_CHANNEL_PAIR_H
#define ORVA_TESTS_FAKES_CHANNEL_PAIR_H

#include <string>

#include "ORVA_FireDetection.h"
#include "channel/frame_process.h"
#include "tests/fakes/twin_channel.h"

namespace fakes {

// What many pairs have seen.
struct pair_totals {
    long frames = 0;
    long with_boxes = 0;
    long refused = 0;  // 4
    long engine_operations = 0;
    long software_operations = 0;
    long both_ways = 0;  // frames with operations of either kind

    void add(const pair_totals& other);
    std::string text() const;
};

class channel_pair {
public:
    explicit channel_pair(const fd_rect& region);
    ~channel_pair();
    channel_pair(const channel_pair&) = delete;
    channel_pair& operator=(const channel_pair&) = delete;

    // Gives both the frame. "" if codes, results, lines and the three working images agree, else what does not.
    std::string compare(const fd_yuv_frame& frame);
    void set_sensitive(int grade);

    int last_code() const { return m_code; }
    const fd_result& last_result() const { return m_result; }
    const std::string& last_text() const { return m_text; }
    pair_totals totals();
    orva_fd::frame_process& channel() { return m_channel; }
    twin::accelerated_channel& plain() { return *m_twin; }

private:
    std::string image_difference();

    orva_fd::frame_process m_channel;
    ref::log_book m_log;
    twin::accelerated_channel* m_twin = nullptr;
    int m_code = 0;
    fd_result m_result = fd_result();
    fd_result m_twin_result = fd_result();
    std::string m_text;
    pair_totals m_totals;
};

// A whole picture of any size.
inline fd_rect whole_picture() {
    return {0, 1, 0, 1, 1, 1, 1, 1};
}

}  // namespace fakes

#endif
