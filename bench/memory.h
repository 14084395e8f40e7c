// Counts what is taken from the heap, by whichever library: the program's own malloc stands before the C library's.
#ifndef ORVA_BENCH_MEMORY_H
#define ORVA_BENCH_MEMORY_H

#include <cstdint>

namespace bench {

struct heap_use {
    std::int64_t requests;    // since the program began
    std::int64_t live_bytes;  // as handed out, rounding included
};
heap_use heap_now();

}  // namespace bench

#endif
