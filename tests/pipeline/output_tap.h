// Standard output, taken away at descriptor level and handed out piece by piece.
#ifndef ORVA_TESTS_PIPELINE_OUTPUT_TAP_H
#define ORVA_TESTS_PIPELINE_OUTPUT_TAP_H

#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace scenes {

class output_tap {
public:
    output_tap() : m_file(std::tmpfile()), m_saved(-1) {
        std::fflush(stdout);
        m_saved = dup(1);
        if (m_file == nullptr || m_saved < 0 || dup2(fileno(m_file), 1) < 0) throw std::runtime_error("no output tap");
    }
    ~output_tap() {
        std::fflush(stdout);
        dup2(m_saved, 1);
        close(m_saved);
        std::fclose(m_file);
    }
    output_tap(const output_tap&) = delete;
    output_tap& operator=(const output_tap&) = delete;

    // What was written since the last call.
    std::string take() {
        std::fflush(stdout);
        const off_t size = lseek(1, 0, SEEK_CUR);
        std::string text(static_cast<std::size_t>(size), '\0');
        if (pread(1, &text[0], text.size(), 0) != size || ftruncate(1, 0) != 0)
            throw std::runtime_error("tap is broken");
        lseek(1, 0, SEEK_SET);
        return text;
    }

private:
    std::FILE* m_file;
    int m_saved;
};

}  // namespace scenes

#endif
