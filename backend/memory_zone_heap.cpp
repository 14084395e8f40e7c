#include <new>

#include "backend/memory_zone.h"

namespace orva_fd {

int zone_alloc(unsigned int* phys_addr, void** virt_addr, unsigned int size, bool) {
    *phys_addr = 0;
    *virt_addr = new (std::nothrow) unsigned char[size]();
    return *virt_addr != nullptr ? 0 : -1;
}

int zone_flush(unsigned int, void*, unsigned int) {
    return 0;
}

void zone_free(unsigned int, void* virt_addr) {
    delete[] static_cast<unsigned char*>(virt_addr);
}

}  // namespace orva_fd
