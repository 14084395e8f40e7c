// Owner of one physically contiguous buffer, the only kind that the accelerator reads and writes.
#ifndef ORVA_FD_BACKEND_HISI_MMZ_MEM_H
#define ORVA_FD_BACKEND_HISI_MMZ_MEM_H

namespace orva_fd {

// Empty (size 0) or holding. Never copies contents. No locks: an object belongs to one channel.
class hisi_mmz_mem {
public:
    hisi_mmz_mem();
    ~hisi_mmz_mem();

    // Makes sure that at least size bytes are held. A buffer that is large enough stays; otherwise it is released first
    // and its contents are lost. cached: whether the processor may cache it, which then asks for flush_mmz around jobs.
    // Returns 0; 4 if the platform has no memory (two lines are printed, the object is empty).
    int alloc_mmz(unsigned int size, bool cached);

    // Writes back and invalidates the processor's cache over the first size bytes; all of them if size is 0 or too
    // large. Returns 0, also if nothing is held; 4 if the platform refuses (two lines are printed).
    int flush_mmz(unsigned int size);

    // Releases the buffer, if both addresses are there; size becomes 0 in every case.
    void free_mmz();

    unsigned int phys_addr() const { return m_phys_addr; }
    void* virt_addr() const { return m_virt_addr; }
    unsigned int size() const { return m_size; }

private:
    friend struct test_access;
    hisi_mmz_mem(const hisi_mmz_mem&) = delete;
    hisi_mmz_mem& operator=(const hisi_mmz_mem&) = delete;

    unsigned int m_phys_addr;  // as the accelerator sees it; 0 when nothing is held, and always in ordinary memory
    void* m_virt_addr;         // as the processor sees it
    unsigned int m_size;       // bytes held; the test of ownership
};

}  // namespace orva_fd

#endif
