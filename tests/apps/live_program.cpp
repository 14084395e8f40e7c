#include "tests/apps/live_program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

extern char** environ;

namespace apps_test {

live_program::live_program(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    int from_it[2];
    if (pipe2(from_it, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, from_it[1], 1);
    posix_spawn_file_actions_adddup2(&actions, from_it[1], 2);
    std::vector<char*> words, variables;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    for (char** entry = environ; *entry; ++entry) variables.push_back(*entry);
    for (const std::string& entry : environment) variables.push_back(const_cast<char*>(entry.c_str()));
    variables.push_back(nullptr);
    const int failed = posix_spawn(&m_process, words[0], &actions, nullptr, words.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    close(from_it[1]);
    if (failed != 0) throw std::runtime_error("cannot start " + command[0]);
    m_output = from_it[0];
    m_thread = std::thread([this] { listen(); });
}

live_program::~live_program() {
    if (m_process >= 0) (void)end(SIGKILL);
}

void live_program::listen() {
    char piece[4096];
    ssize_t got;
    while ((got = read(m_output, piece, sizeof piece)) > 0) {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_said.append(piece, static_cast<size_t>(got));
        m_changed.notify_all();
    }
    const std::lock_guard<std::mutex> guard(m_lock);
    m_over = true;
    m_changed.notify_all();
}

bool live_program::wait_until_it_says(const std::string& words, size_t since) {
    std::unique_lock<std::mutex> guard(m_lock);
    const auto has_said_it = [&] { return m_said.find(words, since) != std::string::npos; };
    m_changed.wait_for(guard, std::chrono::minutes(2), [&] { return m_over || has_said_it(); });
    return has_said_it();
}

std::string live_program::said() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_said;
}

int live_program::end(int signal) {
    if (signal != 0) kill(m_process, signal);
    int status = 0;
    (void)waitpid(m_process, &status, 0);
    m_process = -1;
    m_thread.join();
    close(m_output);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace apps_test
