// Source pictures with boxes drawn in, as 8-bit yuv420p with the range and matrix that the source has.
#ifndef ORVA_APPS_ORVA_FIRE_ANNOTATE_H
#define ORVA_APPS_ORVA_FIRE_ANNOTATE_H

#include <vector>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {

class annotator {
public:
    // A copy of the picture in which each zone has a thin grey frame and each box a thick red one. The source may have
    // any format; odd sizes grow by one repeated column or row, since the coded video needs even ones.
    frame_ptr paint(const AVFrame& source, const std::vector<box>& zones, const std::vector<box>& boxes);

private:
    frame_ptr copy(const AVFrame& source);

    scaler m_scaler;
};

// Fills a rectangle of a yuv420p picture; what lies outside the picture is left out. Even edges give clean colours.
void fill(AVFrame& picture, const box& where, int red, int green, int blue);

// Draws a frame around a rectangle: its inner edge is the rectangle, its lines are `thickness` pixels wide.
void draw_frame(AVFrame& picture, const box& where, int thickness, int red, int green, int blue);

}  // namespace orva_fire

#endif
