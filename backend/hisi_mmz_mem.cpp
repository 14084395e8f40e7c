#include "backend/hisi_mmz_mem.h"

#include <cstdio>

#include "backend/accelerator.h"
#include "backend/memory_zone.h"
#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "hisi_mmz_mem";
enum log_line { k_line_alloc_failed = 41, k_line_flush_failed = 66 };

}  // namespace

hisi_mmz_mem::hisi_mmz_mem() : m_phys_addr(0), m_virt_addr(nullptr), m_size(0) {}

hisi_mmz_mem::~hisi_mmz_mem() {
    if (m_size != 0) free_mmz();
}

int hisi_mmz_mem::alloc_mmz(unsigned int size, bool cached) {
    if (m_size >= size) return FD_OK;
    if (m_size != 0) free_mmz();
    const int code = zone_alloc(&m_phys_addr, &m_virt_addr, size, cached);
    if (code != 0) {
        // Whatever the platform left in the addresses is not a buffer and must not be released.
        m_phys_addr = 0;
        m_virt_addr = nullptr;
        log_error(k_file, "alloc_mmz", k_line_alloc_failed);
        std::printf("HI_MPI_SYS_MmzAlloc failed, ret = %x\n", static_cast<unsigned int>(code));
        return FD_PLATFORM_FAILED;
    }
    m_size = size;
    return FD_OK;
}

int hisi_mmz_mem::flush_mmz(unsigned int size) {
    const unsigned int length = size == 0 || size > m_size ? m_size : size;
    if (length == 0) return FD_OK;
    const int code = zone_flush(m_phys_addr, m_virt_addr, length);
    if (code != 0) {
        log_error(k_file, "flush_mmz", k_line_flush_failed);
        std::printf("HI_MPI_SYS_MmzFlushCache failed, ret = %x\n", static_cast<unsigned int>(code));
        return FD_PLATFORM_FAILED;
    }
    return FD_OK;
}

void hisi_mmz_mem::free_mmz() {
    // Ordinary memory has no physical address; a zone's buffer without one was never handed over.
    const bool held = m_virt_addr != nullptr && (m_phys_addr != 0 || !k_has_accelerator);
    if (held) {
        zone_free(m_phys_addr, m_virt_addr);
        m_phys_addr = 0;
        m_virt_addr = nullptr;
    }
    m_size = 0;
}

}  // namespace orva_fd
