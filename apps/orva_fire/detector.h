// The library behind two owners: the process-wide session, and a channel for one region of the source picture.
#ifndef ORVA_APPS_ORVA_FIRE_DETECTOR_H
#define ORVA_APPS_ORVA_FIRE_DETECTOR_H

#include <vector>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"
#include "apps/orva_fire/stopwatch.h"

namespace orva_fire {

// Initialises the library and tears it down. One at a time; channels must be gone before it.
class detector_session {
public:
    detector_session();
    ~detector_session();
    detector_session(const detector_session&) = delete;
    detector_session& operator=(const detector_session&) = delete;
};

class detector_channel {
public:
    // region: in source pixels, where this channel looks.
    // Throws io_error if the library opens no channel.
    explicit detector_channel(const box& region);
    ~detector_channel();
    detector_channel(const detector_channel&) = delete;
    detector_channel& operator=(const detector_channel&) = delete;

    // grade: 0 to 100.
    void set_grade(int grade);

    // Passes one source picture; returns the boxes that are reported for it, in source pixels.
    // The two watches run while it converts and while it detects.
    std::vector<box> analyse(const AVFrame& picture, stopwatch& converting, stopwatch& detecting);

    const box& region() const { return m_region; }

private:
    box m_region;
    nv21_converter m_converter;
    int m_handle = -1;
};

}  // namespace orva_fire

#endif
