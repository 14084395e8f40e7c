// The element "orvafire": GStreamer's calls on one side, a fire_watch on the other.
#ifndef ORVA_GST_ELEMENT_H
#define ORVA_GST_ELEMENT_H

#include <gst/gst.h>

namespace orva_gst {

// Makes the element known to a plug-in under its name.
bool register_element(GstPlugin* plugin);

}  // namespace orva_gst

#endif
