// The plug-in's record for GStreamer.
#include "gst/element.h"

#define PACKAGE "orva_fd"

namespace {

gboolean initialise(GstPlugin* plugin) {
    return orva_gst::register_element(plugin);
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, orvafire, "Finds fire in the pictures of a fixed camera",
                  initialise, ORVA_GST_VERSION, "MIT/X11", "orva_fd", "orva_fd")
