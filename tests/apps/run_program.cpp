#include "tests/apps/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <stdexcept>

#include "tests/apps/seen_events.h"

extern char** environ;

namespace apps_test {
namespace {

void check(bool good, const char* what) {
    if (!good) throw std::runtime_error(std::string(what) + " failed");
}

struct ends {
    int read = -1, write = -1;
};

ends open_pipe() {
    std::array<int, 2> both{};
    check(pipe2(both.data(), O_CLOEXEC) == 0, "pipe");
    return {both[0], both[1]};
}

ends open_terminal() {
    ends result;
    check(openpty(&result.read, &result.write, nullptr, nullptr, nullptr) == 0, "openpty");
    fcntl(result.read, F_SETFD, FD_CLOEXEC);
    fcntl(result.write, F_SETFD, FD_CLOEXEC);
    return result;
}

pid_t spawn(const std::vector<std::string>& command, const program_setting& setting, int output, int errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!setting.folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, setting.folder.c_str());
    const char* input = setting.input.empty() ? "/dev/null" : setting.input.c_str();
    posix_spawn_file_actions_addopen(&actions, 0, input, O_RDONLY, 0);
    if (setting.closed_output) {
        posix_spawn_file_actions_addclose(&actions, 1);
    } else {
        posix_spawn_file_actions_adddup2(&actions, output, 1);
    }
    posix_spawn_file_actions_adddup2(&actions, errors, 2);
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    std::vector<char*> variables;
    for (char** entry = environ; *entry; ++entry) variables.push_back(*entry);
    for (const std::string& entry : setting.environment) variables.push_back(const_cast<char*>(entry.c_str()));
    variables.push_back(nullptr);
    pid_t child = -1;
    const int status = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    check(status == 0, arguments[0]);
    return child;
}

// Reads one descriptor that is ready. False at its end, which a terminal reports as an error.
bool read_some(int descriptor, std::string& text) {
    std::array<char, 4096> piece{};
    const ssize_t got = read(descriptor, piece.data(), piece.size());
    if (got <= 0) return false;
    text.append(piece.data(), static_cast<size_t>(got));
    return true;
}

// Lets incidents happen once their texts were said, each after the one before.
class course_of_events {
public:
    course_of_events(const program_setting& setting, pid_t child) : m_incidents(setting.incidents) {
        if (setting.until.empty()) return;
        const int signal = setting.signal;
        m_incidents.push_back({setting.until, [child, signal] { kill(child, signal); }});
    }

    void look_at(const program_result& result) {
        while (m_next < m_incidents.size()) {
            const incident& one = m_incidents[m_next];
            if (result.output.find(one.after) == std::string::npos &&
                result.errors.find(one.after) == std::string::npos) {
                return;
            }
            ++m_next;
            one.happens();
        }
    }

private:
    std::vector<incident> m_incidents;
    size_t m_next = 0;
};

// Closes the end of the output once the reader has had enough.
void read_both(int output, int errors, size_t enough, program_result& result, course_of_events course) {
    std::array<pollfd, 2> waiting{{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) break;
        bool stays = true;
        if (waiting[0].fd >= 0 && waiting[0].revents) stays = read_some(output, result.output);
        if (enough > 0 && result.output.size() >= enough) stays = false;
        if (waiting[0].fd >= 0 && !stays) {
            close(output);
            waiting[0].fd = -1;
        }
        if (waiting[1].revents && !read_some(errors, result.errors)) waiting[1].fd = -1;
        course.look_at(result);
    }
}

}  // namespace

program_result run_program(const std::vector<std::string>& command, const program_setting& setting) {
    const ends output = open_pipe();
    const ends errors = setting.error_terminal ? open_terminal() : open_pipe();
    const pid_t child = spawn(command, setting, output.write, errors.write);
    close(output.write);
    close(errors.write);
    program_result result;
    if (setting.reader_goes_away) close(output.read);
    read_both(setting.reader_goes_away ? -1 : output.read, errors.read, setting.reader_leaves_after, result,
              course_of_events(setting, child));
    close(errors.read);
    int status = 0;
    check(waitpid(child, &status, 0) == child, "waitpid");
    if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    keep_events(result.output);
    return result;
}

bool says(const program_result& result, const std::string& words) {
    return result.errors.find(words) != std::string::npos;
}

std::vector<nlohmann::json> json_lines(const std::string& text) {
    keep_events(text);
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
    return lines;
}

}  // namespace apps_test
