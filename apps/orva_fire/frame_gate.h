// Which pictures are passed to the detector. The library counts in frames, so a picture is passed once or not at all.
#ifndef ORVA_APPS_ORVA_FIRE_FRAME_GATE_H
#define ORVA_APPS_ORVA_FIRE_FRAME_GATE_H

#include "apps/orva_fire/ffmpeg.h"

namespace orva_fire {

// Thins pictures out to a rate by their time stamps. Never asks for a picture twice.
class rate_limiter {
public:
    // rate: pictures a second; 0 passes everything.
    explicit rate_limiter(double rate) : m_rate(rate) {}

    // seconds: strictly growing. True if the picture is to be passed on.
    bool passes(double seconds);

private:
    double m_rate;
    double m_due = 0;
    bool m_started = false;
};

// True if both have one size and format and no byte differs by more than the coding of a repeated picture may change.
bool same_picture(const AVFrame& a, const AVFrame& b);

// Finds pictures that only repeat the last one that was new. Cameras and converters fill gaps with them; they hold no
// evidence, but each would use up one frame of the time for which the library holds a result.
class repeat_finder {
public:
    bool repeats(const AVFrame& picture);

private:
    frame_ptr m_last;
};

}  // namespace orva_fire

#endif
