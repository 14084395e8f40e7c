// Draws boxes into a picture of any of the element's formats.
#ifndef ORVA_GST_DRAW_H
#define ORVA_GST_DRAW_H

#include <gst/video/video.h>

#include <vector>

#include "apps/orva_fire/geometry.h"
#include "gst/frame_view.h"

namespace orva_gst {

struct drawn_box {
    orva_fire::box where;    // in pixels of the picture
    bool confirmed = false;  // red if it is, yellow if it is not yet
};

// Draws a frame around each box, with a dark edge on both sides, in the meaning that `colour` gives the numbers.
// picture: mapped for writing.
void draw_boxes(GstVideoFrame& picture, const caps_colour& colour, const std::vector<drawn_box>& boxes);

}  // namespace orva_gst

#endif
