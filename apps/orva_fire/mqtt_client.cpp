#include "apps/orva_fire/mqtt_client.h"

#include <signal.h>

#include <algorithm>
#include <utility>

namespace orva_fire {
namespace {

const int k_turn = 50;          // milliseconds; the longest that a message waits for the thread to look
const size_t k_in_flight = 20;  // messages that the broker has not confirmed; the others wait in bounds

std::chrono::steady_clock::duration to_duration(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
}

// Signals are for the thread that waits for them, and a broken connection is no reason to end.
void leave_signals_to_others() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace

mqtt_client::mqtt_client(const mqtt_settings& settings)
    : m_settings(settings),
      m_shown(settings.login.broker.shown()),
      m_pauses(settings.first_pause, settings.longest_pause),
      m_queue(settings.queue_limit),
      m_kept{{{settings.availability, "online"}}},
      m_thread([this] { work(); }) {}

mqtt_client::~mqtt_client() {
    if (m_thread.joinable()) close(0);
}

void mqtt_client::send(const mqtt_message& message, bool minor) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (!m_queue.add(message, minor) && !std::exchange(m_queue_overflowed, true)) {
        m_warnings.push_back("--mqtt: " + std::to_string(m_settings.queue_limit) + " lines wait for " + m_shown +
                             "; from now on lines are lost");
    }
}

void mqtt_client::keep(const mqtt_message& message) {
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto same_topic = std::find_if(m_kept.begin(), m_kept.end(), [&message](const kept_message& kept) {
        return kept.message.topic == message.topic;
    });
    if (same_topic == m_kept.end()) {
        m_kept.push_back({message});
    } else if (same_topic->message.text != message.text) {
        *same_topic = {message};
    }
}

int64_t mqtt_client::lost() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_queue.lost() + m_unsendable;
}

int64_t mqtt_client::delivered() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_delivered;
}

std::vector<std::string> mqtt_client::take_warnings() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return std::exchange(m_warnings, {});
}

void mqtt_client::warn(const std::string& text) {
    m_warnings.push_back("--mqtt: " + text);
}

void mqtt_client::finish() {
    if (!m_thread.joinable()) return;
    close(m_settings.farewell);
    const std::lock_guard<std::mutex> guard(m_lock);
    m_unsendable += static_cast<int64_t>(m_queue.size());
    while (!m_queue.empty()) (void)m_queue.take();
    const int64_t lost = m_queue.lost() + m_unsendable;
    if (lost > 0) warn(std::to_string(lost) + " lines of events did not reach " + m_shown);
}

void mqtt_client::close(double farewell) {
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_closing = true;
        m_deadline = clock::now() + to_duration(farewell);
        m_changed.notify_all();
    }
    m_thread.join();
}

void mqtt_client::work() {
    leave_signals_to_others();
    do {
        serve();
    } while (wait_for_turn());
}

// Waits before the next attempt to connect. False if there shall be none: one that has failed after the end has come is
// not repeated.
bool mqtt_client::wait_for_turn() {
    std::unique_lock<std::mutex> guard(m_lock);
    if (m_closing) return false;
    m_changed.wait_for(guard, to_duration(m_pauses.next()), [this] { return m_closing; });
    return !m_closing || clock::now() < m_deadline;
}

// One connection from its beginning to its end.
void mqtt_client::serve() {
    const auto opened = clock::now();
    m_connection =
        std::make_unique<mqtt_connection>(m_settings.login, mqtt_message{m_settings.availability, "offline"});
    bool greeted = false;
    bool alive = m_connection->open();
    while (alive && !gives_up(opened)) {
        alive = m_connection->run(k_turn);
        confirm();
        if (!m_connection->ready()) continue;
        if (!std::exchange(greeted, true)) greet();
        hand_over();
        if (may_leave()) return m_connection->close();
    }
    lose_connection();
}

// The broker has let this client in.
void mqtt_client::greet() {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_pauses.succeeded();
    if (!std::exchange(m_failed_before, false)) return;
    m_last_problem.clear();
    warn("connected to " + m_shown + "; " + std::to_string(m_queue.size()) + " lines waited, " +
         std::to_string(m_queue.lost()) + " were lost so far");
    m_queue_overflowed = false;
}

void mqtt_client::confirm() {
    const std::lock_guard<std::mutex> guard(m_lock);
    for (const int number : m_connection->take_confirmed()) {
        const auto message = std::find_if(m_in_flight.begin(), m_in_flight.end(),
                                          [number](const unconfirmed& sent) { return sent.number == number; });
        if (message == m_in_flight.end()) continue;
        if (!message->kept) ++m_delivered;
        m_in_flight.erase(message);
    }
    // Somebody else has said "offline" in its place: an older connection of this camera's that the broker took long to
    // give up, or another run for it that has ended, as of a drill.
    if (m_connection->take_overruled() && !m_goodbye) everything_is_due();
}

void mqtt_client::hand_over() {
    const std::lock_guard<std::mutex> guard(m_lock);
    hand_over_kept();
    while (!m_queue.empty() && m_in_flight.size() < k_in_flight) publish(m_queue.take(), false);
}

void mqtt_client::hand_over_kept() {
    for (kept_message& kept : m_kept) {
        if (m_in_flight.size() >= k_in_flight) return;
        if (std::exchange(kept.due, false)) publish(kept.message, true);
    }
}

void mqtt_client::publish(const mqtt_message& message, bool kept) {
    const int number = m_connection->publish(message, kept);
    if (number >= 0) {
        m_in_flight.push_back({number, kept, message});
    } else if (!kept) {
        ++m_unsendable;
    }
}

// True if the end has come and everything was confirmed, "offline" as the last.
bool mqtt_client::may_leave() {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (!m_closing || !m_queue.empty() || !m_in_flight.empty()) return false;
    if (m_goodbye) return true;
    m_goodbye = true;
    m_kept.front() = {{m_settings.availability, "offline"}};
    return false;
}

// Too late for what is left to be said, or the broker does not answer.
bool mqtt_client::gives_up(clock::time_point opened) const {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_closing && clock::now() >= m_deadline) return true;
    return !m_connection->ready() && clock::now() - opened > to_duration(m_settings.patience);
}

void mqtt_client::lose_connection() {
    const std::lock_guard<std::mutex> guard(m_lock);
    everything_is_due();
    // Whether the broker has got these, nobody knows; they are sent again.
    for (; !m_in_flight.empty(); m_in_flight.pop_back()) {
        if (!m_in_flight.back().kept) m_queue.put_back(m_in_flight.back().message);
    }
    const std::string problem = m_connection->problem().empty() ? "no answer" : m_connection->problem();
    m_connection.reset();
    m_failed_before = true;
    if (problem == std::exchange(m_last_problem, problem)) return;
    warn("no connection to " + m_shown + ": " + problem + "; events wait until there is one");
}

void mqtt_client::everything_is_due() {
    for (kept_message& kept : m_kept) kept.due = true;
}

}  // namespace orva_fire
