// The one place where a build's choice shows in the code: whether the IVE accelerator and its memory zone are there.
// The build sets ORVA_IVE_ENABLED to 1 and adds the files that call the vendor's libraries, or leaves both out. It sets
// ORVA_IVE_VENDOR_HEADERS to 1 too if the vendor's own headers are to be used (see hisi_sdk.h).
#ifndef ORVA_FD_BACKEND_ACCELERATOR_H
#define ORVA_FD_BACKEND_ACCELERATOR_H

#ifndef ORVA_IVE_ENABLED
#define ORVA_IVE_ENABLED 0
#endif
#ifndef ORVA_IVE_VENDOR_HEADERS
#define ORVA_IVE_VENDOR_HEADERS 0
#endif

namespace orva_fd {

const bool k_has_accelerator = ORVA_IVE_ENABLED != 0;

}  // namespace orva_fd

#endif
