// A POSIX mutex that knows whether it exists. Working without one is logged and never fatal.
#ifndef ORVA_FD_MANAGER_MUTEX_H
#define ORVA_FD_MANAGER_MUTEX_H

#include <pthread.h>

#include "manager/thread_annotations.h"

namespace orva_fd {

// Not recursive. Create and Close must not run while another thread uses the object.
class ORVA_CAPABILITY CMutex {
public:
    CMutex() : m_created(false), m_lock() {}

    bool Create();  // false, with a line, if it exists already
    bool Close();   // false, with a line, if it does not exist
    bool Exists() const { return m_created; }

    // These two are what locking is made of.
    // Wait locks; if there is no mutex, prints a warning and goes on unlocked (false).
    bool Wait() ORVA_ACQUIRE() ORVA_LOCKS_UNCHECKED;
    // Release unlocks, 0; if there is no mutex, prints a warning and returns 2.
    int Release() ORVA_RELEASE() ORVA_LOCKS_UNCHECKED;

private:
    friend struct test_access;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    bool m_created;
    pthread_mutex_t m_lock;
};

// Holds a mutex for a scope. With null it prints a line and locks nothing.
class ORVA_SCOPED_CAPABILITY CAutoMutex {
public:
    explicit CAutoMutex(CMutex* m) ORVA_ACQUIRE(m) ORVA_LOCKS_UNCHECKED;
    ~CAutoMutex() ORVA_RELEASE() ORVA_LOCKS_UNCHECKED;

private:
    CAutoMutex(const CAutoMutex&) = delete;
    CAutoMutex& operator=(const CAutoMutex&) = delete;

    CMutex* m_mutex;
};

}  // namespace orva_fd

#endif
