// A window on what a channel decides about each frame, for programs that explain it. Read only, and in the six
// functions' interface nowhere: only a program that links the static library can set one.
#ifndef ORVA_FD_CHANNEL_ANALYSIS_OBSERVER_H
#define ORVA_FD_CHANNEL_ANALYSIS_OBSERVER_H

#include <vector>

#include "imgproc/common.h"

namespace orva_fd {

// What became of a merged box, in the order of the tests.
enum box_verdict {
    box_covered,    // its centre lies in a box at least as large
    box_too_small,  // fewer columns, rows or pixels than a candidate has
    box_too_dim,    // too few bright pixels, or too few of fire colour
    box_not_brighter,
    box_is_candidate
};

// Counted before the verdict; what the tests did not come to is 0.
struct box_measures {
    int pixels;  // of the box
    int bright;  // of these, with a luma above 128
    int fire;    // of these, set in the mask
    int centre;  // mean luma of the bright ones
    int around;  // and of the surround
};

// How a candidate compares with the stored frames.
struct stability_measures {
    uint64_t lists;  // bit i: stored frame i, counted from the oldest, holds a match
    int count;       // of matches, the candidate included
    int more_than;   // what count must exceed
    int mean_area;   // over the matches
    int deviation;   // mean distance from it
    bool is_reported;
};

// Called in this order for each frame, on the thread that passes it. Arguments are valid during the call only.
class analysis_observer {
public:
    virtual void on_components(const fd_yuv_frame& mask, const std::vector<con_info>& components) = 0;
    virtual void on_merged(const std::vector<con_info>& boxes) = 0;
    virtual void on_verdict(const con_info& box, box_verdict verdict, const box_measures& measures) = 0;
    // Once 50 frames are stored, for the first ten candidates.
    virtual void on_stability(const con_info& candidate, const stability_measures& measures) = 0;

protected:
    ~analysis_observer() {}
};

}  // namespace orva_fd

#endif
