// One channel of the library that also says whether an answer is new or only repeated from an earlier picture.
#ifndef ORVA_APPS_ORVA_FIRE_FRESH_CHANNEL_H
#define ORVA_APPS_ORVA_FIRE_FRESH_CHANNEL_H

#include <cstdint>
#include <vector>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"

namespace orva_fire {

// How many pictures after a fresh report the library only repeats it, whatever they show.
const int k_frozen_pictures = 6;

// What the channel reports for one picture.
struct channel_answer {
    std::vector<box> boxes;  // in pixels of the picture that was passed
    bool fresh = false;      // this very picture made the boxes; false if they are held, or if there are none
};

// HOW A FRESH ANSWER IS KNOWN
//
// The library holds what it reports for up to 15 pictures. An answer that differs from the last one is certainly new,
// but the reverse does not hold: boxes are means over 50 pictures in whole pixels, so new ones are often equal to the
// old. What tells them apart is the size that each box carries as its reference: it is that of the frame in which the
// box was found, and a held box keeps it. So the frame is stated one row taller than it was at the last fresh report,
// or one row shorter again: a box with the size just stated is fresh, any other is held.
//
// The channel's region stays the same pixels all the while, or its hold would start again: with a region of h rows
// (even) and frames of h + 1 and h + 2 rows, the region becomes (h + 2) * h / (h + 1) = h rows, rounded down, on the
// way up, and (h + 1) * h / (h + 2) = h - 1 on the way down, which is then widened to even, that is h. The rows beyond
// the region are stated only; none of them exists or is read. Where there is no room for two more rows, the width does
// the same; a picture of 352 x 288 has room for neither and loses its last two rows.
class fresh_channel {
public:
    // seen: size of the pictures that will come, both numbers even as analysis_size makes them.
    // Throws io_error if the library opens no channel. The library must be initialised (detector_session).
    explicit fresh_channel(picture_size seen);
    ~fresh_channel();
    fresh_channel(const fresh_channel&) = delete;
    fresh_channel& operator=(const fresh_channel&) = delete;

    // The part of such a picture that is looked at, at its upper left corner.
    static picture_size looked_at(picture_size seen) { return choose_sizes(seen).region; }

    // grade: 0 to 100.
    void set_grade(int grade);

    // Passes one picture of the size given at the start. Throws io_error.
    channel_answer analyse(nv21_picture& picture);

private:
    // The two sizes that are stated in turn, and the region that is the same in both.
    struct stated_sizes {
        picture_size region, first, second;
    };
    static stated_sizes choose_sizes(picture_size seen);

    const stated_sizes m_sizes;
    picture_size m_stated;
    int m_handle = -1;
};

}  // namespace orva_fire

#endif
