// api/ is what a host calls: each exported function checks, forwards to the manager and logs. No pixels, no locks.
#ifndef ORVA_FD_API_GLOBALOBJECT_H
#define ORVA_FD_API_GLOBALOBJECT_H

#include "manager/FireDetectionManager.h"

namespace orva_fd {

// The process's one instance of the library. Initialize and Destroy run alone.
class CGlobalObject {
public:
    // Created on first use, which is thread-safe; destroyed at process exit, open channels included.
    static CGlobalObject* Instance();

    bool& IsInited() { return m_inited; }

    // Opens the manager and fills the tables. Returns 0.
    int Initialize();

    // Refuses further calls, then stops all channels. Tables stay. Returns 0.
    int Destroy();

    CFireDetectionMngr* FireDetectionMan() { return &m_mngr; }

private:
    CGlobalObject();
    ~CGlobalObject();
    CGlobalObject(const CGlobalObject&) = delete;
    CGlobalObject& operator=(const CGlobalObject&) = delete;

    bool m_inited;
    CFireDetectionMngr m_mngr;
};

}  // namespace orva_fd

#endif
