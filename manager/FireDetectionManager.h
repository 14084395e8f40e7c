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
    int Init() ORVA_LOCKS_UNCHECKED;  // runs alone

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

    // What belongs to one handle.
    struct slot {
        slot() : mutex(), detector(nullptr) {}

        CMutex mutex;                                    // exists while a channel is installed
        frame_process* detector ORVA_GUARDED_BY(mutex);  // owned; null when none is installed
    };

    // Whether a channel was left behind in the slot of a handle that was just given out: nobody else may know it yet.
    static bool is_left_over(const slot& taken) ORVA_LOCKS_UNCHECKED { return taken.detector != nullptr; }

    CHandleDispather m_handles;
    slot m_slots[FD_MAX_CHANNELS];
};

}  // namespace orva_fd

#endif
