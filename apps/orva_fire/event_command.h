// A program of the user's that is started for each event, with the event as a line of JSON on its standard input. It
// runs beside the detection, which never waits for it.
#ifndef ORVA_APPS_ORVA_FIRE_EVENT_COMMAND_H
#define ORVA_APPS_ORVA_FIRE_EVENT_COMMAND_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orva_fire {

// Splits a command into words at blanks. Words may be quoted with ' or ", and \ takes the next character as it is, but
// nothing is expanded: no shell ever sees it. Throws usage_error if a quote is not closed or there is no word.
std::vector<std::string> split_command(const std::string& text);

class event_command {
public:
    // words: program, sought along PATH, and its arguments. seconds: after which a run is killed, with what it started.
    // environment: NAME=value, added to the program's.
    event_command(std::vector<std::string> words, double seconds, std::vector<std::string> environment);
    // Waits for nothing; see finish().
    ~event_command();
    event_command(const event_command&) = delete;
    event_command& operator=(const event_command&) = delete;

    // Queues one event. One that may be left out is, if too many wait already.
    void send(const std::string& line, bool may_be_left_out);

    // Waits until all that was queued was delivered, at most twice the time that one run may take.
    void finish();

    // Runs that ended with 0, so far.
    int delivered() const;

    std::vector<std::string> take_warnings();

private:
    void work();
    void deliver(const std::string& line);
    void warn(const std::string& text);

    const std::vector<std::string> m_words;
    const std::chrono::steady_clock::duration m_limit;
    const std::vector<std::string> m_environment;

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::string> m_queue;
    bool m_busy = false;
    bool m_closing = false;
    int m_delivered = 0;
    std::vector<std::string> m_warnings;

    std::thread m_thread;
};

}  // namespace orva_fire

#endif
