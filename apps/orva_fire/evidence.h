// What one channel sees in each picture and why it decides as it does, as plain numbers. A channel of its own is fed
// with the same pictures as the one that detects, and answers the same; the inner classes of the library tell it the
// rest.
#ifndef ORVA_APPS_ORVA_FIRE_EVIDENCE_H
#define ORVA_APPS_ORVA_FIRE_EVIDENCE_H

#include <memory>
#include <vector>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"

namespace orva_fire {

// Where a box of fire-coloured motion ended, in the order of the tests.
enum class verdict {
    covered,       // lies in a box at least as large
    too_small,     // fewer columns, rows or pixels than a candidate has
    too_dim,       // too few bright pixels, or too few of fire colour
    not_brighter,  // than its surround
    beyond_ten,    // a candidate, but ten others came before
    gathering,     // a candidate, but fewer than 50 frames are stored to compare with
    too_rare,      // found again in too few of them
    too_steady,    // its area hardly changes
    too_wild,      // its area changes by more than itself
    reported
};

const int k_stored_frames = 50;

// One box and everything that was measured of it; what its tests did not come to is 0. In pixels of the detector's
// picture.
struct box_evidence {
    box place;
    int area = 0;  // pixels of fire-coloured motion in it, over all components
    verdict ended = verdict::covered;

    int pixels = 0;  // of the box
    int bright = 0;  // of these, with a luma above 128
    int fire = 0;    // of these, fire-coloured motion
    int centre = 0;  // mean luma of the bright ones
    int around = 0;  // and of the surround

    int stored = 0;     // frames that it could be compared with
    int matched = 0;    // of these, in which it was found again
    int needed = 0;     // of these, in which it must be found
    double span = 0;    // seconds from the oldest of the matches to this picture
    int mean_area = 0;  // over the matches and itself
    int deviation = 0;  // mean distance from that
};

struct picture_evidence {
    moment at;
    picture_size size;                // of the detector's picture
    int changed = 0;                  // pixels whose luma differs by more than 20 from the picture before
    int mask = 0;                     // pixels of fire-coloured motion
    std::vector<box> components;      // connected parts of these
    std::vector<box_evidence> boxes;  // components merged, in the order in which they were judged
    int stored = 0;                   // frames with fire-coloured motion that were stored before this one
    int needed = 0;                   // of 50, at the grade that is set
    std::vector<box> answered;        // what the channel reports
    bool fresh = false;               // from this picture; otherwise it repeats what it holds
};

// How many of the 50 stored frames must hold a candidate at a grade of 0 to 100.
int frames_needed(int grade);

// The lowest grade at which so many are enough; -1 if none is.
int least_grade(int matched);

class evidence_channel {
public:
    // The library must be initialised. Throws io_error if the channel cannot be had.
    evidence_channel();
    ~evidence_channel();

    void set_grade(int grade);

    // Forgets all pictures, like a channel that is started anew.
    void restart();

    // Passes one picture. What is returned is valid until the next call.
    const picture_evidence& look(nv21_picture& picture, const moment& at);

private:
    class inner;
    std::unique_ptr<inner> m_inner;
};

}  // namespace orva_fire

#endif
