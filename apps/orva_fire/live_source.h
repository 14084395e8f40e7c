// A camera that goes on for as long as it is wanted. A thread of its own reads and decodes, so that the caller is never
// kept waiting by the camera, nor the camera by the caller; lost connections are made anew.
#ifndef ORVA_APPS_ORVA_FIRE_LIVE_SOURCE_H
#define ORVA_APPS_ORVA_FIRE_LIVE_SOURCE_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "apps/orva_fire/input_address.h"
#include "apps/orva_fire/picture_source.h"
#include "apps/orva_fire/reconnect.h"
#include "apps/orva_fire/video_source.h"

namespace orva_fire {

struct live_settings {
    double patience = 10;    // seconds without a picture after which a connection counts as lost
    double first_pause = 1;  // seconds until it is tried again; doubles up to the longest
    double longest_pause = 30;
    bool reconnects = true;          // false: the end of the stream is the end of the source, as for a pipe
    size_t queue_bytes = 64u << 20;  // decoded pictures that wait for the caller
};

class live_source : public picture_source {
public:
    live_source(const input_address& address, const live_settings& settings);
    ~live_source() override;
    live_source(const live_source&) = delete;
    live_source& operator=(const live_source&) = delete;

    // Throws refused_error if the camera does not want the user at the first connection.
    bool next(source_picture& picture) override;
    double duration() const override { return 0; }
    double nominal_rate() const override;
    bool live() const override { return true; }
    int64_t dropped() const override;
    std::string problem() const override;
    std::vector<std::string> take_warnings() override;

private:
    using clock = std::chrono::steady_clock;

    void run();
    void read_connection();
    void read_pictures(video_source& source);
    void enqueue(source_picture picture);
    void pause(const std::string& reason);
    void warn(const std::string& text);
    bool ending() const;
    void pass_deadline_on(double seconds);
    bool past_deadline() const;

    const live_settings m_settings;
    input_address m_address;
    std::atomic<bool> m_closing{false};
    std::atomic<clock::rep> m_deadline{0};

    // Of the reading thread.
    back_off m_back_off;
    picture_size m_size;
    clock::time_point m_start;
    double m_last_seconds = 0;
    double m_last_interval = 0.04;
    bool m_gap = false;
    std::string m_last_reason;
    bool m_connected_before = false;

    mutable std::mutex m_lock;
    std::condition_variable m_arrived;
    // Under the lock.
    std::deque<source_picture> m_queue;
    size_t m_queued_bytes = 0;
    std::vector<std::string> m_warnings;
    std::string m_problem;
    std::string m_refusal;
    bool m_ended = false;
    int64_t m_dropped = 0;
    double m_rate = 25;

    // Of the caller.
    int64_t m_index = 0;
    double m_given_seconds = 0;
    clock::time_point m_given_at;

    std::thread m_thread;
};

}  // namespace orva_fire

#endif
