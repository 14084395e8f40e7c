// Whether a lock of the library is held, asked from outside while no call runs.
#ifndef ORVA_TESTS_SUPPORT_HELD_LOCKS_H
#define ORVA_TESTS_SUPPORT_HELD_LOCKS_H

#include <pthread.h>

#include "api/GlobalObject.h"
#include "tests/support/test_access.h"

namespace support {

inline bool is_held(orva_fd::CMutex& mutex) {
    if (!orva_fd::test_access::created(mutex)) return false;
    if (pthread_mutex_trylock(&orva_fd::test_access::native(mutex)) != 0) return true;
    pthread_mutex_unlock(&orva_fd::test_access::native(mutex));
    return false;
}

inline int held_locks() {
    using orva_fd::test_access;
    orva_fd::CFireDetectionMngr& manager = *orva_fd::CGlobalObject::Instance()->FireDetectionMan();
    int held = is_held(test_access::mutex(test_access::handles(manager)));
    for (int h = 0; h < FD_MAX_CHANNELS; ++h) held += is_held(test_access::detector_mutex(manager, h));
    return held;
}

}  // namespace support

#endif
