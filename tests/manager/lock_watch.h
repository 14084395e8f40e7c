// Watches the library's mutexes on every thread, through the linker's --wrap of pthread_mutex_lock and _unlock. Each
// thread keeps its own books and shares nothing but counters that order nothing, so that the thread sanitizer sees the
// library's own order only.
#ifndef ORVA_TESTS_MANAGER_LOCK_WATCH_H
#define ORVA_TESTS_MANAGER_LOCK_WATCH_H

#include <cstddef>

namespace lock_watch {

struct report {
    long locks = 0;
    long locked_twice = 0;       // by the thread that holds it: a deadlock
    long unlocked_unheld = 0;    // not locked, or by another thread
    long held_with_another = 0;  // two at once
    long threads_left_holding = 0;
};

// Watches the mutexes in this stretch of memory from now on, and starts the report anew.
void begin(const void* memory, std::size_t size);
report end();

// At the end of a thread's work: nothing may be held.
void end_of_thread();

}  // namespace lock_watch

#endif
