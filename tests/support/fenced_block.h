// Memory that ends at a page which may not be touched: a read or write one byte too far ends the process.
#ifndef ORVA_TESTS_SUPPORT_FENCED_BLOCK_H
#define ORVA_TESTS_SUPPORT_FENCED_BLOCK_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>

namespace support {

class fenced_block {
public:
    explicit fenced_block(std::size_t length)
        : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), m_length(length) {
        m_mapped = (length + m_page - 1) / m_page * m_page + m_page;
        m_start = mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m_start == MAP_FAILED) throw std::runtime_error("no memory for a fenced block");
        if (mprotect(static_cast<unsigned char*>(m_start) + m_mapped - m_page, m_page, PROT_NONE) != 0) {
            throw std::runtime_error("the fence could not be put up");
        }
    }
    ~fenced_block() { munmap(m_start, m_mapped); }
    fenced_block(const fenced_block&) = delete;
    fenced_block& operator=(const fenced_block&) = delete;

    // The first byte; the last one lies directly before the fence.
    unsigned char* data() { return static_cast<unsigned char*>(m_start) + m_mapped - m_page - m_length; }

    // Turns writing off as well: for input.
    void make_read_only() { mprotect(m_start, m_mapped - m_page, PROT_READ); }

private:
    std::size_t m_page;
    std::size_t m_length;
    std::size_t m_mapped = 0;
    void* m_start = nullptr;
};

}  // namespace support

#endif
