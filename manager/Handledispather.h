// The table of handles: which of the numbers from 0 are taken.
#ifndef ORVA_FD_MANAGER_HANDLEDISPATHER_H
#define ORVA_FD_MANAGER_HANDLEDISPATHER_H

#include "manager/Mutex.h"

namespace orva_fd {

// Any thread between Init and Close, which must run alone. The lock is held for one look or one change at a time.
class CHandleDispather {
public:
    CHandleDispather();

    // Makes handles 0 to num - 1 usable and free. False, with two lines, if the table is open already; num is taken all
    // the same (deliberate). Runs alone, hence unchecked.
    bool Init(int num) ORVA_LOCKS_UNCHECKED;

    // False for a free handle, and with a line for one out of range.
    bool IsHandleBusy(int h);

    // Takes the lowest free handle. Returns 0; 8, with a line and h unchanged, if none is free.
    int CreateHandle(int& h);

    // Frees a handle; one out of range prints a line (false).
    bool DestroyHandle(int h);

    // Frees all handles, without the lock (deliberate), and closes the table.
    void Close() ORVA_LOCKS_UNCHECKED;

private:
    friend struct test_access;

    bool in_range(int h) const { return h >= 0 && h < m_handle_num; }

    CMutex m_mutex;
    unsigned char m_busy[1000] ORVA_GUARDED_BY(m_mutex);
    int m_handle_num;
};

}  // namespace orva_fd

#endif
