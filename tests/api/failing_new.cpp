#include "tests/api/failing_new.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct state {
    bool on = false;
    bool paused = false;
    failing_new::kind which = failing_new::kind::any;
    long first = 0;
    long count = 0;
    long requests = 0;
    long failures = 0;
};

state current;
std::atomic<long> live{0};

bool fails(failing_new::kind asked) {
    if (!current.on || current.paused || (current.which != failing_new::kind::any && current.which != asked))
        return false;
    ++current.requests;
    if (current.requests < current.first || current.requests - current.first >= current.count) return false;
    ++current.failures;
    return true;
}

void* obtain(std::size_t size) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) ++live;
    return block;
}

void* obtain_or_throw(std::size_t size) {
    void* block = fails(failing_new::kind::throwing) ? nullptr : obtain(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void give_back(void* block) {
    if (block == nullptr) return;
    --live;
    std::free(block);
}

}  // namespace

namespace failing_new {

plan::plan(kind which, long first, long count) {
    current = state();
    current.which = which;
    current.first = first;
    current.count = count;
    current.on = true;
}

plan::~plan() {
    current.on = false;
}

long plan::requests() const {
    return current.requests;
}

long plan::failures() const {
    return current.failures;
}

pause::pause(bool paused) : m_before(current.paused) {
    current.paused = paused;
}

pause::~pause() {
    current.paused = m_before;
}

long live_blocks() {
    return live;
}

}  // namespace failing_new

void* operator new(std::size_t size) {
    return obtain_or_throw(size);
}
void* operator new[](std::size_t size) {
    return obtain_or_throw(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return fails(failing_new::kind::nothrow) ? nullptr : obtain(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return fails(failing_new::kind::nothrow) ? nullptr : obtain(size);
}
void operator delete(void* block) noexcept {
    give_back(block);
}
void operator delete[](void* block) noexcept {
    give_back(block);
}
void operator delete(void* block, std::size_t) noexcept {
    give_back(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    give_back(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    give_back(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    give_back(block);
}
