// A program that runs for as long as a test likes.
#ifndef ORVA_TESTS_APPS_LIVE_PROGRAM_H
#define ORVA_TESTS_APPS_LIVE_PROGRAM_H

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace apps_test {

class live_program {
public:
    // environment: NAME=value, added to the caller's.
    explicit live_program(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});
    // Kills it if it still runs.
    ~live_program();
    live_program(const live_program&) = delete;
    live_program& operator=(const live_program&) = delete;

    // Waits until it says this on standard output or standard error, after its first `since` bytes; false if it does
    // not within two minutes, or ends.
    bool wait_until_it_says(const std::string& words, size_t since = 0);
    std::string said() const;

    // Sends a signal, waits for its end. The exit code, or -1 if the signal ended it.
    int end(int signal);

private:
    void listen();

    pid_t m_process = -1;
    int m_output = -1;
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::string m_said;
    bool m_over = false;
    std::thread m_thread;
};

}  // namespace apps_test

#endif
