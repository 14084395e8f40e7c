// GStreamer's pictures as the modules of orva-fire want them: the same planes, seen through an AVFrame.
#ifndef ORVA_GST_FRAME_VIEW_H
#define ORVA_GST_FRAME_VIEW_H

#include <gst/video/video.h>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_gst {

// What a picture's numbers mean, as far as the caps say so.
struct caps_colour {
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
};

// Reads the caps' colorimetry from its text. What is not there stays open, for orva_fire::colour_of to fill in as for
// every other source of pictures; GstVideoInfo would guess the matrix by the height alone, and drop a range without
// matrix.
caps_colour colour_of_caps(const GstCaps* caps);

// Whether every row of a mapped picture lies in the memory that was mapped for it. A buffer may come with a layout of
// its own (GstVideoMeta), which nobody on its way holds against the memory.
bool lies_in_its_memory(const GstVideoFrame& picture);

// A frame that points at the planes of a mapped picture. It owns no pixels and is valid while the picture is mapped.
// The picture's format is one of the element's five.
orva_fire::frame_ptr view_of(const GstVideoFrame& picture, const caps_colour& colour);

}  // namespace orva_gst

#endif
