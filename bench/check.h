// Results before times: whoever is timed must first give the plain text's answers.
#ifndef ORVA_BENCH_CHECK_H
#define ORVA_BENCH_CHECK_H

#include <string>

#include "bench/contenders.h"
#include "bench/scenes.h"

namespace bench {

struct agreement {
    bool same;
    std::string difference;  // what differs, and in which frame
    int frames;
    int frames_with_boxes;
};

// Plays the scene's frames with both and compares codes, results (whole records) and printed text of every frame.
// Stops early after limit_ns. Standard output is redirected while it runs and restored after.
agreement compare(contender& one, contender& other, const scene& s, int frames, double limit_ns);

}  // namespace bench

#endif
