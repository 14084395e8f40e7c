// Timing: frames played by several contenders in turn, and what is made of the times.
#ifndef ORVA_BENCH_MEASURE_H
#define ORVA_BENCH_MEASURE_H

#include <cstdint>
#include <cstdio>
#include <vector>

#include "bench/contenders.h"
#include "bench/scenes.h"

namespace bench {

// Wall clock, for limits and for the shortest pieces.
std::int64_t now_ns();

// Processor time of the calling thread, for frames: what other programs take of the machine does not count.
std::int64_t spent_ns();

// What lies between two looks at that clock, its own cost left out.
double spent_since_ns(std::int64_t before);

// Turns standard output, where libraries print their lines, to the null device for good. Returns a stream to what was
// standard output before.
FILE* silence_standard_output();

// The value below which `share` of the values lie; 0 for none.
double quantile(std::vector<double> values, double share);
inline double median(const std::vector<double>& values) {
    return quantile(values, 0.5);
}

struct timing {
    std::vector<double> frames_ns;
    std::vector<double> block_medians_ns;  // one for each of the contender's turns
};

struct plan {
    int warm_up;      // frames before anything is timed; 60 fill a history
    int blocks;       // turns of each contender
    int settle;       // frames of a turn that are not timed: they bring the contender's pictures back into the cache
    int timed;        // frames of a turn that are
    double limit_ns;  // a contender's turn ends early when it took that long
};

// Plays the scene with every contender in turn, on one channel each. The contenders take turns so that whatever slows
// the machine down for a while meets them all.
std::vector<timing> measure(const std::vector<contender*>& contenders, const scene& s, const plan& p);

// The same with a scene for each contender.
struct part {
    contender* who;
    const scene* what;
};
std::vector<timing> measure(const std::vector<part>& parts, const plan& p);

// Ratio of two contenders' times, turn by turn.
struct spread {
    double low;  // quarter of the turns are below
    double mid;
    double high;  // quarter of the turns are above
};
spread ratio(const timing& slow, const timing& fast);

}  // namespace bench

#endif
