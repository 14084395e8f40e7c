#include "backend/hisi_sdk.h"
#include "backend/memory_zone.h"

namespace orva_fd {

namespace {

const char k_block_name[] = "User";  // the driver's tables hold 16 bytes; a null zone name selects the default zone

}  // namespace

int zone_alloc(unsigned int* phys_addr, void** virt_addr, unsigned int size, bool cached) {
    return cached ? HI_MPI_SYS_MmzAlloc_Cached(phys_addr, virt_addr, k_block_name, nullptr, size)
                  : HI_MPI_SYS_MmzAlloc(phys_addr, virt_addr, k_block_name, nullptr, size);
}

int zone_flush(unsigned int phys_addr, void* virt_addr, unsigned int size) {
    return HI_MPI_SYS_MmzFlushCache(phys_addr, virt_addr, size);
}

void zone_free(unsigned int phys_addr, void* virt_addr) {
    (void)HI_MPI_SYS_MmzFree(phys_addr, virt_addr);  // deliberate: nobody could act on it
}

}  // namespace orva_fd
