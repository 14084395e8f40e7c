// What every kind of source gives: pictures one after the other, each with its time.
#ifndef ORVA_APPS_ORVA_FIRE_PICTURE_SOURCE_H
#define ORVA_APPS_ORVA_FIRE_PICTURE_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_fire {

struct source_picture {
    frame_ptr frame;
    int64_t index = 0;                         // counts every picture of the source from 0
    double seconds = 0;                        // since the first picture; strictly growing
    bool after_gap = false;                    // a live source was interrupted before this picture
    std::optional<int64_t> wall_milliseconds;  // when it came, since 1970 in UTC; live sources only
};

class picture_source {
public:
    virtual ~picture_source() = default;

    // Reads the next picture. False at the end, whether the source was whole or not: see problem().
    // A live source that has had no picture for half a second gives one without a frame, and its time.
    // All pictures have the size of the first.
    virtual bool next(source_picture& picture) = 0;

    // Length in seconds that the source states; 0 if it states none.
    virtual double duration() const = 0;

    // Pictures a second that the source states; 25 if it states none.
    virtual double nominal_rate() const = 0;

    // True if the source goes on as long as its camera does.
    virtual bool live() const { return false; }

    // Pictures that were thrown away because the program was too slow for a live source.
    virtual int64_t dropped() const { return 0; }

    // After the end: what was wrong with the source, or empty if it was read whole.
    virtual std::string problem() const = 0;

    // Sentences that the user should see, gathered since the last call.
    virtual std::vector<std::string> take_warnings() = 0;
};

}  // namespace orva_fire

#endif
