// A POSIX mutex that knows whether it exists. Working without one is logged and never fatal.
#ifndef ORVA_FD_MANAGER_MUTEX_H
#define ORVA_FD_MANAGER_MUTEX_H

#include <pthread.h>

namespace orva_fd {

// Not recursive. Create and Close must not run while another thread uses the object.
class CMutex {
public:
    CMutex() : m_created(false), m_lock() {}

    bool Create();  // false, with a line, if it exists already
    bool Wait();    // locks; if there is no mutex, prints a warning and goes on unlocked (false)
    int Release();  // unlocks, 0; if there is no mutex, prints a warning and returns 2
    bool Close();   // false, with a line, if it does not exist

private:
    friend struct test_access;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    bool m_created;
    pthread_mutex_t m_lock;
};

// Holds a mutex for a scope. With null it prints a line and locks nothing.
class CAutoMutex {
public:
    explicit CAutoMutex(CMutex* m);
    ~CAutoMutex();

private:
    CAutoMutex(const CAutoMutex&) = delete;
    CAutoMutex& operator=(const CAutoMutex&) = delete;

    CMutex* m_mutex;
};

}  // namespace orva_fd

#endif
