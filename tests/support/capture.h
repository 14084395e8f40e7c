// What a call writes to standard output, byte by byte, taken at the descriptor.
#ifndef ORVA_TESTS_SUPPORT_CAPTURE_H
#define ORVA_TESTS_SUPPORT_CAPTURE_H

#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace support {

// Leads descriptor 1 into a temporary file while it lives. Expectations belong outside: what they print would be
// caught.
class captured_output {
public:
    captured_output() : m_file(std::tmpfile()), m_saved(-1) {
        std::fflush(stdout);
        m_saved = dup(1);
        if (m_file == nullptr || m_saved < 0 || dup2(fileno(m_file), 1) < 0) {
            throw std::runtime_error("standard output cannot be captured");
        }
    }

    ~captured_output() {
        std::fflush(stdout);
        dup2(m_saved, 1);
        close(m_saved);
        std::fclose(m_file);
    }

    captured_output(const captured_output&) = delete;
    captured_output& operator=(const captured_output&) = delete;

    // Everything written so far.
    std::string text() const {
        std::fflush(stdout);
        std::string all;
        char piece[4096];
        for (;;) {
            const ssize_t got = pread(fileno(m_file), piece, sizeof piece, static_cast<off_t>(all.size()));
            if (got <= 0) return all;
            all.append(piece, static_cast<std::size_t>(got));
        }
    }

private:
    std::FILE* m_file;
    int m_saved;
};

template <class Call>
std::string output_of(Call&& call) {
    captured_output output;
    std::forward<Call>(call)();
    return output.text();
}

// A call's status together with the text that it printed.
struct outcome {
    int status;
    std::string text;
};

template <class Call>
outcome outcome_of(Call&& call) {
    captured_output output;
    const int status = std::forward<Call>(call)();
    return {status, output.text()};
}

}  // namespace support

#endif
