// Where contiguous buffers come from: the chip's memory zone, or ordinary memory in a build without the accelerator.
// One of memory_zone_heap.cpp and memory_zone_mmz.cpp is in the build.
#ifndef ORVA_FD_BACKEND_MEMORY_ZONE_H
#define ORVA_FD_BACKEND_MEMORY_ZONE_H

namespace orva_fd {

// Obtains size bytes. Writes both addresses and returns 0, or returns the platform's code.
// Ordinary memory comes zero-filled, with physical address 0; the memory zone's is what it was.
int zone_alloc(unsigned int* phys_addr, void** virt_addr, unsigned int size, bool cached);

// Writes back and invalidates the processor's cache over the first size bytes. Returns 0 or the platform's code.
int zone_flush(unsigned int phys_addr, void* virt_addr, unsigned int size);

void zone_free(unsigned int phys_addr, void* virt_addr);

}  // namespace orva_fd

#endif
