#include "tests/manager/lock_watch.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>

namespace {

const char* first = nullptr;
const char* last = nullptr;

std::atomic<long> locks{0}, twice{0}, unheld{0}, with_another{0}, left{0};

// What this thread holds. More than two at once were reported before.
const int k_most_held = 4;
thread_local pthread_mutex_t* held[k_most_held];
thread_local int held_count = 0;

bool is_watched(const pthread_mutex_t* mutex) {
    const char* at = reinterpret_cast<const char*>(mutex);
    return at >= first && at < last;
}

void count(std::atomic<long>& counter) {
    counter.fetch_add(1, std::memory_order_relaxed);
}

void note_lock(pthread_mutex_t* mutex) {
    count(locks);
    if (std::find(held, held + held_count, mutex) != held + held_count) count(twice);
    if (held_count > 0) count(with_another);
    if (held_count < k_most_held) held[held_count++] = mutex;
}

void note_unlock(pthread_mutex_t* mutex) {
    pthread_mutex_t** const found = std::find(held, held + held_count, mutex);
    if (found == held + held_count) {
        count(unheld);
        return;
    }
    *found = held[--held_count];
}

}  // namespace

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (is_watched(mutex)) note_lock(mutex);
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    if (is_watched(mutex)) note_unlock(mutex);
    return __real_pthread_mutex_unlock(mutex);
}
}

namespace lock_watch {

void begin(const void* memory, std::size_t size) {
    for (std::atomic<long>* counter : {&locks, &twice, &unheld, &with_another, &left}) *counter = 0;
    first = static_cast<const char*>(memory);
    last = first + size;
}

report end() {
    first = last = nullptr;
    report seen;
    seen.locks = locks;
    seen.locked_twice = twice;
    seen.unlocked_unheld = unheld;
    seen.held_with_another = with_another;
    seen.threads_left_holding = left;
    return seen;
}

void end_of_thread() {
    if (held_count != 0) count(left);
}

}  // namespace lock_watch
