// Messages to an MQTT broker, sent by a thread of its own: whoever has one to send never waits. A broker that goes away
// is connected anew for ever; what is to be sent waits meanwhile, in bounds.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_CLIENT_H
#define ORVA_APPS_ORVA_FIRE_MQTT_CLIENT_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "apps/orva_fire/mqtt_connection.h"
#include "apps/orva_fire/mqtt_queue.h"
#include "apps/orva_fire/mqtt_sink.h"
#include "apps/orva_fire/reconnect.h"

namespace orva_fire {

struct mqtt_settings {
    mqtt_login login;
    std::string availability;  // topic: "online", and "offline" after the end, whatever ends it
    size_t queue_limit = 1000;
    double first_pause = 1, longest_pause = 30;  // seconds between attempts to connect; the pause doubles
    double patience = 10;                        // seconds in which the broker must have answered
    double farewell = 5;                         // seconds given for what still waits at the end
};

class mqtt_client : public mqtt_sink {
public:
    explicit mqtt_client(const mqtt_settings& settings);
    // Without finish(), the connection is cut, and the broker says "offline".
    ~mqtt_client() override;
    mqtt_client(const mqtt_client&) = delete;
    mqtt_client& operator=(const mqtt_client&) = delete;

    void send(const mqtt_message& message, bool minor) override;
    void keep(const mqtt_message& message) override;
    int64_t lost() const override;

    // Sends what waits, says "offline" and hangs up; takes a few seconds at most. What was not confirmed by then counts
    // as lost.
    void finish();

    // Messages of send() that the broker has confirmed.
    int64_t delivered() const;

    std::vector<std::string> take_warnings();

private:
    using clock = std::chrono::steady_clock;

    // What the broker has not confirmed yet.
    struct unconfirmed {
        int number;
        bool kept;
        mqtt_message message;
    };

    struct kept_message {
        mqtt_message message;
        bool due = true;  // has not been handed to this connection
    };

    void work();
    bool wait_for_turn();
    void serve();
    void greet();
    void confirm();
    void hand_over();
    void hand_over_kept();
    void publish(const mqtt_message& message, bool kept);
    bool may_leave();
    bool gives_up(clock::time_point opened) const;
    void lose_connection();
    void everything_is_due();
    void warn(const std::string& text);
    void close(double farewell);

    const mqtt_settings m_settings;
    const std::string m_shown;                      // the broker, for messages
    std::unique_ptr<mqtt_connection> m_connection;  // only the thread looks at these five
    std::deque<unconfirmed> m_in_flight;            // in the order in which they were sent
    back_off m_pauses;
    bool m_failed_before = false;
    bool m_goodbye = false;

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    mqtt_queue m_queue;
    std::vector<kept_message> m_kept;
    bool m_queue_overflowed = false;
    bool m_closing = false;
    clock::time_point m_deadline;  // while closing
    int64_t m_delivered = 0, m_unsendable = 0;
    std::string m_last_problem;
    std::vector<std::string> m_warnings;

    std::thread m_thread;
};

}  // namespace orva_fire

#endif
