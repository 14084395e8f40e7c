#include "bench/check.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/measure.h"

namespace bench {

namespace {

// Standard output caught in memory.
class caught_output {
public:
    caught_output() : m_file(memfd_create("caught", 0)), m_before(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        if (m_file < 0 || m_before < 0 || dup2(m_file, STDOUT_FILENO) < 0) {
            std::perror("standard output cannot be caught");
            std::exit(1);
        }
    }
    ~caught_output() {
        std::fflush(stdout);
        dup2(m_before, STDOUT_FILENO);
        close(m_before);
        close(m_file);
    }

    // What was printed since the last call.
    std::string take() {
        std::fflush(stdout);
        const off_t size = lseek(m_file, 0, SEEK_END);
        std::string text(static_cast<std::size_t>(size), '\0');
        const ssize_t got = pread(m_file, &text[0], text.size(), 0);
        if (got != size || ftruncate(m_file, 0) != 0) std::abort();
        lseek(m_file, 0, SEEK_SET);
        return text;
    }

private:
    caught_output(const caught_output&) = delete;
    caught_output& operator=(const caught_output&) = delete;

    int m_file;
    int m_before;
};

struct answer {
    int code;
    fd_result result;
    std::string text;
};

answer ask(contender& who, int handle, const fd_yuv_frame& frame, const fd_result& before, caught_output& output) {
    answer a = {FD_OK, before, std::string()};
    a.code = who.play(handle, frame, &a.result);
    a.text = output.take();
    return a;
}

std::string difference_of(const answer& a, const answer& b) {
    if (a.code != b.code) return "codes differ: " + std::to_string(a.code) + " and " + std::to_string(b.code);
    if (a.result.count != b.result.count)
        return "counts differ: " + std::to_string(a.result.count) + " and " + std::to_string(b.result.count);
    if (std::memcmp(&a.result, &b.result, sizeof(a.result)) != 0) return "boxes differ";
    if (a.text != b.text) return "printed lines differ:\n" + a.text + "and:\n" + b.text;
    return std::string();
}

}  // namespace

agreement compare(contender& one, contender& other, const scene& s, int frames, double limit_ns) {
    caught_output output;
    agreement result = {true, std::string(), 0, 0};
    const int handles[2] = {one.open(), other.open()};
    output.take();
    fd_result before;
    std::memset(&before, 0x5A, sizeof(before));
    const std::int64_t begun = now_ns();
    for (int i = 0; i < frames && static_cast<double>(now_ns() - begun) < limit_ns; ++i) {
        const fd_yuv_frame frame = s.frame(static_cast<std::size_t>(i));
        const answer a = ask(one, handles[0], frame, before, output);
        const answer b = ask(other, handles[1], frame, before, output);
        result.difference = difference_of(a, b);
        ++result.frames;
        result.frames_with_boxes += a.result.count > 0 && a.code == FD_OK ? 1 : 0;
        if (result.difference.empty()) continue;
        result.same = false;
        result.difference = "scene '" + s.name + "', frame " + std::to_string(i) + ": " + result.difference;
        break;
    }
    one.close(handles[0]);
    other.close(handles[1]);
    return result;
}

}  // namespace bench
