#include "bench/memory.h"

#include <errno.h>
#include <malloc.h>
#include <stdlib.h>

#include <atomic>

// The C library's own doors, behind the names that this file takes over.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<long> requests(0);  // as wide as every processor adds at once
std::atomic<long> live_bytes(0);

void* taken(void* block) {
    if (block == nullptr) return nullptr;
    requests.fetch_add(1, std::memory_order_relaxed);
    live_bytes.fetch_add(static_cast<long>(malloc_usable_size(block)), std::memory_order_relaxed);
    return block;
}

void given_back(void* block) {
    if (block == nullptr) return;
    live_bytes.fetch_sub(static_cast<long>(malloc_usable_size(block)), std::memory_order_relaxed);
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
    return taken(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
    return taken(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size) {
    given_back(block);
    return taken(__libc_realloc(block, size));
}

void free(void* block) {
    given_back(block);
    __libc_free(block);
}

void* memalign(size_t alignment, size_t size) {
    return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
    return taken(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    void* got = taken(__libc_memalign(alignment, size));
    if (got == nullptr) return ENOMEM;
    *block = got;
    return 0;
}

}  // extern "C"

namespace bench {

heap_use heap_now() {
    return {requests.load(std::memory_order_relaxed), live_bytes.load(std::memory_order_relaxed)};
}

}  // namespace bench
