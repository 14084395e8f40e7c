// The library's one state in this process, shared by all elements and by a host that uses the library itself.
#ifndef ORVA_GST_LIBRARY_SHARE_H
#define ORVA_GST_LIBRARY_SHARE_H

namespace orva_gst {

// Initialises the library at the first call in this process, unless the host was first; later calls do nothing. It is
// never torn down here, since others may have channels open: the library's own exit handler does that.
// The library wants Init to run while no other call does. So a host that uses it itself initialises it before it starts
// its first element, and leaves it initialised as long as it has any.
// Any thread. Throws orva_fire::io_error if the library refuses; the next call tries again.
void share_library();

}  // namespace orva_gst

#endif
