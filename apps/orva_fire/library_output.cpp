#include "apps/orva_fire/library_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

// Opens a file in place of descriptor 1.
void put_at_one(const std::string& path, int flags) {
    const int file = open(path.c_str(), flags, 0666);
    if (file < 0) throw io_error("cannot write '" + path + "': " + std::strerror(errno));
    dup2(file, STDOUT_FILENO);
    close(file);
}

void discard() {
    put_at_one("/dev/null", O_WRONLY);
}

bool is_writable(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

}  // namespace

void hold_standard_descriptors() {
    // open takes the lowest free number, so the gaps fill up in order.
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) (void)open("/dev/null", O_RDONLY);
    }
}

library_output::library_output(const std::string& log_path, int64_t limit) : m_limit(limit) {
    std::fflush(stdout);
    m_own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (log_path.empty()) {
        discard();
    } else {
        put_at_one(log_path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND);
        m_logging = true;
    }
}

library_output::~library_output() {
    std::fflush(stdout);
    if (m_own < 0) return;
    dup2(m_own, STDOUT_FILENO);
    close(m_own);
}

int library_output::own_output() const {
    return is_writable(m_own) ? m_own : -1;
}

library_output::pause::pause(const library_output& output) {
    if (!output.m_logging) return;
    std::fflush(stdout);
    m_log = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (m_log >= 0) discard();
}

library_output::pause::~pause() {
    if (m_log < 0) return;
    std::fflush(stdout);
    dup2(m_log, STDOUT_FILENO);
    close(m_log);
}

void library_output::check_limit() {
    if (!m_logging) return;
    std::fflush(stdout);
    struct stat status = {};
    if (fstat(STDOUT_FILENO, &status) != 0 || status.st_size < m_limit) return;
    std::printf("(the log ends here: it has reached its limit of %lld bytes)\n", static_cast<long long>(m_limit));
    std::fflush(stdout);
    discard();
    m_logging = false;
}

}  // namespace orva_fire
