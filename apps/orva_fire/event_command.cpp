#include "apps/orva_fire/event_command.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "apps/orva_fire/error.h"

extern char** environ;

namespace orva_fire {
namespace {

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;

const size_t k_queue_limit = 100;
const auto k_look_around = 10ms;

std::vector<char*> pointers_to(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

bool is_password(const char* entry) {
    return std::strncmp(entry, "ORVA_FIRE_PASSWORD=", 19) == 0 ||
           std::strncmp(entry, "ORVA_FIRE_MQTT_PASSWORD=", 24) == 0;
}

// The program's environment and what is added, without passwords.
std::vector<std::string> environment_with(const std::vector<std::string>& added) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry; ++entry) {
        if (!is_password(*entry)) all.emplace_back(*entry);
    }
    all.insert(all.end(), added.begin(), added.end());
    return all;
}

// Starts the program in a process group of its own, with `input` as standard input and standard error as both outputs.
int start(const std::vector<std::string>& words, const std::vector<std::string>& environment, int input, pid_t& child) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    sigset_t none, normal;
    sigemptyset(&none);
    sigemptyset(&normal);
    sigaddset(&normal, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &normal);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const std::vector<char*> arguments = pointers_to(words), variables = pointers_to(environment);
    const int status = posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return status;
}

// Writes as much as the other end takes until the deadline. A program that does not read its input is none the worse.
void write_until(int descriptor, const std::string& text, clock::time_point deadline) {
    size_t done = 0;
    while (done < text.size() && clock::now() < deadline) {
        const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (errno == EAGAIN) {
            pollfd waiting = {descriptor, POLLOUT, 0};
            (void)poll(&waiting, 1, 100);
        } else if (errno != EINTR) {
            return;
        }
    }
}

// True if the child ended before the deadline.
bool wait_until(pid_t child, int& status, clock::time_point deadline) {
    while (true) {
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == child) return true;
        if (ended < 0 && errno != EINTR) return true;
        if (clock::now() >= deadline) return false;
        std::this_thread::sleep_for(k_look_around);
    }
}

}  // namespace

std::vector<std::string> split_command(const std::string& text) {
    std::vector<std::string> words;
    std::string word;
    bool in_word = false;
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\' && quote != '\'' && i + 1 < text.size()) {
            word += text[++i];
            in_word = true;
        } else if (quote == 0 && (c == '\'' || c == '"')) {
            quote = c;
            in_word = true;
        } else if (c == quote) {
            quote = 0;
        } else if (quote == 0 && std::strchr(" \t\n", c)) {
            if (in_word) words.push_back(std::exchange(word, {}));
            in_word = false;
        } else {
            word += c;
            in_word = true;
        }
    }
    if (quote != 0) throw usage_error(std::string("the command '") + text + "' has a quote that is not closed");
    if (in_word) words.push_back(word);
    if (words.empty()) throw usage_error("the command is empty");
    return words;
}

event_command::event_command(std::vector<std::string> words, double seconds, std::vector<std::string> environment)
    : m_words(std::move(words)),
      m_limit(std::chrono::duration_cast<clock::duration>(std::chrono::duration<double>(seconds))),
      m_environment(environment_with(environment)),
      m_thread([this] { work(); }) {}

event_command::~event_command() {
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_closing = true;
        m_queue.clear();
        m_changed.notify_all();
    }
    m_thread.join();
}

void event_command::send(const std::string& line, bool may_be_left_out) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_queue.size() >= k_queue_limit && may_be_left_out) return;
    m_queue.push_back(line);
    m_changed.notify_all();
}

void event_command::finish() {
    std::unique_lock<std::mutex> guard(m_lock);
    m_changed.wait_until(guard, clock::now() + 2 * m_limit, [this] { return m_queue.empty() && !m_busy; });
    if (!m_queue.empty()) {
        m_warnings.push_back("--on-event: " + std::to_string(m_queue.size()) + " events were not delivered in time");
    }
}

void event_command::work() {
    // A program that does not read its input must not end this one.
    sigset_t broken_pipe;
    sigemptyset(&broken_pipe);
    sigaddset(&broken_pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
    std::unique_lock<std::mutex> guard(m_lock);
    while (true) {
        m_changed.wait(guard, [this] { return m_closing || !m_queue.empty(); });
        if (m_queue.empty()) return;
        const std::string line = std::move(m_queue.front());
        m_queue.pop_front();
        m_busy = true;
        guard.unlock();
        deliver(line);
        guard.lock();
        m_busy = false;
        m_changed.notify_all();
    }
}

void event_command::deliver(const std::string& line) {
    const auto deadline = clock::now() + m_limit;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return warn(std::string("cannot be started: ") + std::strerror(errno));
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    pid_t child = -1;
    const int failed = start(m_words, m_environment, ends[0], child);
    close(ends[0]);
    if (failed == 0) write_until(ends[1], line + "\n", deadline);
    close(ends[1]);
    if (failed != 0) return warn(std::string("cannot be started: ") + std::strerror(failed));
    int status = 0;
    if (!wait_until(child, status, deadline)) {
        kill(-child, SIGKILL);
        (void)waitpid(child, &status, 0);
        return warn("took too long and was ended");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return warn(WIFEXITED(status) ? "ended with code " + std::to_string(WEXITSTATUS(status))
                                      : "was ended by signal " + std::to_string(WTERMSIG(status)));
    }
    const std::lock_guard<std::mutex> guard(m_lock);
    ++m_delivered;
}

void event_command::warn(const std::string& text) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_warnings.push_back("--on-event: '" + m_words[0] + "' " + text);
}

int event_command::delivered() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_delivered;
}

std::vector<std::string> event_command::take_warnings() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return std::exchange(m_warnings, {});
}

}  // namespace orva_fire
