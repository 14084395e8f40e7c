// What other elements and applications get to see: metas on buffers, and element messages.
#ifndef ORVA_GST_REPORT_H
#define ORVA_GST_REPORT_H

#include <gst/video/video.h>

#include <string>
#include <vector>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/geometry.h"
#include "gst/fire_watch.h"

namespace orva_gst {

// Adds one region-of-interest meta per box, with a structure "detection". buffer: writable.
void add_metas(GstBuffer* buffer, const std::vector<zone_state>& zones, orva_fire::picture_size size);

// The moment of a buffer on the clocks that an application may want to compare it with.
struct buffer_times {
    GstClockTime timestamp = GST_CLOCK_TIME_NONE;
    GstClockTime stream_time = GST_CLOCK_TIME_NONE;
    GstClockTime running_time = GST_CLOCK_TIME_NONE;
};

// The structure "orvafire" of an element message about the start or end of a report.
// reason: why it ended; not used for a start. The caller owns the structure.
GstStructure* message_structure(const orva_fire::fire_event& event, const std::string& zone,
                                orva_fire::picture_size size, const buffer_times& times, const char* reason);

}  // namespace orva_gst

#endif
