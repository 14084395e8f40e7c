// Measurements that need more than one warm channel: cold channels, threads, the floor, starting, stages.
#ifndef ORVA_BENCH_CAMPAIGN_H
#define ORVA_BENCH_CAMPAIGN_H

#include <vector>

#include "bench/contenders.h"
#include "bench/measure.h"
#include "bench/scenes.h"

namespace bench {

struct percentiles {
    double mean;
    double p50;
    double p99;
    double p999;
};
percentiles percentiles_of(const std::vector<double>& values);

// `channels` channels in turn, each with frames of its own, so that a frame finds nothing of its channel in the cache.
// warm_rounds rounds come before the timed ones. Nanoseconds of each frame.
std::vector<double> play_cold(contender& who, const scene& s, int channels, int warm_rounds, int rounds);

// The floor of a frame with everything in the cache, and with the bytes of `channels` channels touched in turn.
double floor_warm_ns(const scene& s);
double floor_cold_ns(const scene& s, int channels);

// How much more two threads do than one, on `channels` channels shared out between them; one ratio for each attempt.
// The wall clock also sees locks, and whatever else the machine does; processor time sees caches and memory alone.
struct thread_gain {
    std::vector<double> by_wall_clock;
    std::vector<double> by_processor_time;
};
thread_gain two_threads(contender& who, const scene& s, int channels, int attempts);

// What a frame costs, and which part that is of another contender's frame in another scene, turn by turn.
struct weighed_frame {
    double ns;
    double share;
};
weighed_frame weigh(const part& frame, const part& against);

// Nanoseconds of opening a channel, and of initialising the library (which is initialised, and is
// again afterwards).
std::vector<double> time_open(contender& who, int times);
std::vector<double> time_init(const six_functions& functions, int times);

// Median nanoseconds of each stage; negative for one that never ended. Empty if the contender cannot tell stages apart.
std::vector<double> time_stages(contender& who, const scene& s, int frames);

}  // namespace bench

#endif
