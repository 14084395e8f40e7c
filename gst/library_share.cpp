#include "gst/library_share.h"

#include <mutex>
#include <string>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"

namespace orva_gst {

void share_library() {
    static std::mutex lock;
    static bool ready = false;
    const std::lock_guard<std::mutex> guard(lock);
    if (ready) return;
    const int status = ORVA_FireDetection_Init();
    // A host that was first is as good as being first.
    ready = status == FD_OK || status == FD_ALREADY_INITIALISED;
    if (!ready) throw orva_fire::io_error("the detector refused: Init returned " + std::to_string(status));
}

}  // namespace orva_gst
