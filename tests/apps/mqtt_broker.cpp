#include "tests/apps/mqtt_broker.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <stdexcept>

extern char** environ;

namespace apps_test {
namespace {

// Below the ports that this system gives to outgoing connections, so that one that was free stays so.
int some_port() {
    std::random_device source;
    return std::uniform_int_distribution<int>(20000, 32000)(source);
}

pid_t spawn(const std::string& config, int log) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, log, 2);
    const std::string program = MOSQUITTO_PROGRAM;
    char* const words[] = {const_cast<char*>(program.c_str()), const_cast<char*>("-c"),
                           const_cast<char*>(config.c_str()), nullptr};
    pid_t process = -1;
    const int failed = posix_spawn(&process, words[0], &actions, nullptr, words, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::runtime_error("cannot start " + program);
    return process;
}

// True once the broker has said that it runs; false if it has ended.
bool says_that_it_runs(int log) {
    std::string text;
    char piece[256];
    while (text.find(" running") == std::string::npos) {
        const ssize_t got = read(log, piece, sizeof piece);
        if (got <= 0) return false;
        text.append(piece, static_cast<size_t>(got));
    }
    return true;
}

}  // namespace

mqtt_broker::mqtt_broker(const std::string& more) : m_more(more) {
    for (int attempts = 0; attempts < 50 && m_port == 0; ++attempts) {
        const int port = some_port();
        if (start_at(port)) m_port = port;
    }
    if (m_port == 0) throw std::runtime_error("the broker does not start");
}

mqtt_broker::~mqtt_broker() {
    stop();
}

std::string mqtt_broker::address(const std::string& user, const std::string& prefix) const {
    return "mqtt://" + (user.empty() ? "" : user + "@") + "127.0.0.1:" + std::to_string(m_port) +
           (prefix.empty() ? "" : "/" + prefix);
}

bool mqtt_broker::start_at(int port) {
    const std::string config = m_folder.file("broker.conf");
    write_file(config,
               "listener " + std::to_string(port) + " 127.0.0.1\n" +
                   "user root\nlog_dest stderr\nlog_type information\nlog_type error\nconnection_messages false\n"
                   "persistence true\npersistence_location " +
                   m_folder.path() + "/\n" + m_more + "\n");
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    m_process = spawn(config, ends[1]);
    close(ends[1]);
    m_log = ends[0];
    if (says_that_it_runs(m_log)) return true;
    stop();
    return false;
}

void mqtt_broker::start() {
    if (!start_at(m_port)) throw std::runtime_error("the broker does not start again");
}

void mqtt_broker::freeze() {
    kill(m_process, SIGSTOP);
}

void mqtt_broker::crash() {
    kill(m_process, SIGKILL);
    stop();
}

void mqtt_broker::stop() {
    if (m_process < 0) return;
    // More than once: it forgets a signal that comes just after it has said that it runs.
    while (kill(m_process, SIGTERM) == 0 && waitpid(m_process, nullptr, WNOHANG) == 0) usleep(10000);
    close(m_log);
    m_process = -1;
}

}  // namespace apps_test
