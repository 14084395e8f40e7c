// A random search for pictures that cost much: paintings are changed stroke by stroke, and what is slower is kept.
#ifndef ORVA_BENCH_SEARCH_H
#define ORVA_BENCH_SEARCH_H

#include <cstdint>
#include <cstdio>
#include <vector>

#include "bench/contenders.h"
#include "bench/painting.h"

namespace bench {

painting random_painting(random_source& random);
painting changed_painting(const painting& p, random_source& random);

// Nanoseconds below which `share` of the contender's frames stay, the median as a rule; history full. Ends early after
// limit_ns.
double cost_of(contender& who, const scene& s, double limit_ns, double share = 0.5);

struct ranked_painting {
    painting what;
    double cost_ns;
};

// Searches for `seconds`, beginning with the paintings known so far. Returns the worst ten, the worst first, each
// descended from another beginning, so that they are different in kind. progress receives a line for each new worst.
std::vector<ranked_painting> search_worst(contender& who, double seconds, std::uint64_t seed, FILE* progress);

}  // namespace bench

#endif
