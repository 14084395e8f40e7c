// What the library prints, caught in memory: as quick as a million calls need, without a file or a descriptor.
#ifndef ORVA_TESTS_FUZZ_PRINTED_TEXT_H
#define ORVA_TESTS_FUZZ_PRINTED_TEXT_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// While it lives, stdout is a stream into memory. One at a time; messages of the test itself go to stderr.
class printed_text {
public:
    printed_text() : m_text(nullptr), m_size(0), m_own(stdout) {
        m_stream = open_memstream(&m_text, &m_size);
        if (m_stream == nullptr) std::abort();
        stdout = m_stream;
    }
    ~printed_text() {
        stdout = m_own;
        std::fclose(m_stream);
        std::free(m_text);
    }
    printed_text(const printed_text&) = delete;
    printed_text& operator=(const printed_text&) = delete;

    // What was printed since the last call.
    std::string take() {
        std::fflush(m_stream);
        std::string text(m_text, m_size);
        if (m_size > 0) std::rewind(m_stream);
        return text;
    }

private:
    char* m_text;
    std::size_t m_size;
    std::FILE* m_stream;
    std::FILE* m_own;
};

}  // namespace fuzz

#endif
