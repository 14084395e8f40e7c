// manager/ maps handles to channels: it hands out handles, owns the channel objects, and holds one lock per channel so
// that frames of different channels run side by side. It never looks at pixels.
#ifndef ORVA_FD_MANAGER_FIREDETECTIONMANAGER_H
#define ORVA_FD_MANAGER_FIREDETECTIONMANAGER_H

#include "channel/frame_process.h"
#include "manager/Handledispather.h"
#include "manager/Mutex.h"

namespace orva_fd {

// Init and Destroy run alone; the rest on any thread, as the public header says. Never holds two locks.
// Codes of a channel pass through unchanged.
class CFireDetectionMngr {
public:
    CFireDetectionMngr();

    // Opens the handle table. Returns 0; 4 if it is open already.
    int Init();

    // Stops every channel and closes the table. Returns 0.
    int Destroy();

    // Opens a channel and writes its handle. Returns 0; 6 without a channel object; 8 if no handle is free; 3 if the
    // handle's lock exists already: then the whole table is closed, and the other channels stay unreachable until the
    // next Init (deliberate: locks and flags have come apart).
    int Start(int& handle, fd_rect rect);

    // Closes a channel; handle in 0..127, open or not. Waits for its frame in progress. Returns 0.
    int Stop(int& handle);

    // Runs one frame on a channel. Returns 2 if none is open under the handle.
    int FireDetectionMain(int& handle, fd_yuv_frame frame, fd_result& result);

    // Sets a channel's grade. Returns 2 if none is open under the handle.
    int SetSensitiveGrade(int& handle, int grade);

    frame_process* newDetector();
    int delDetector(frame_process* p);  // 0; 7, with a line, for null

private:
    friend struct test_access;

    // The channel installed under a handle, null if there is none.
    frame_process*& installed(int h) ORVA_REQUIRES(m_detector_mutex[h]) { return m_detector[h]; }

    // Whether a channel was left behind under a handle that was just given out: nobody else may know it yet.
    bool is_left_over(int h) const ORVA_LOCKS_UNCHECKED { return m_detector[h] != nullptr; }

    CHandleDispather m_handles;
    CMutex m_detector_mutex[FD_MAX_CHANNELS];    // one exists while a channel is installed under its handle
    frame_process* m_detector[FD_MAX_CHANNELS];  // owned, each guarded by the lock of the same handle: see installed()
};

}  // namespace orva_fd

#endif
