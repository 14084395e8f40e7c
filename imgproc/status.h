// Status codes that never reach a host; those that do are in the public header.
#ifndef ORVA_FD_IMGPROC_STATUS_H
#define ORVA_FD_IMGPROC_STATUS_H

#include "ORVA_FireDetection.h"

namespace orva_fd {

enum inner_status {
    k_not_fire = 4,               // a candidate box is not fire; shares its number with FD_PLATFORM_FAILED
    k_no_software_path = 5,       // a colour conversion that only the accelerator has
    k_accelerator_timed_out = 12  // the engine was reset; the job is submitted again
};

}  // namespace orva_fd

#endif
