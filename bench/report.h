// The tables. Each function measures one thing and prints it; what is wanted stands beside what was found.
#ifndef ORVA_BENCH_REPORT_H
#define ORVA_BENCH_REPORT_H

#include <cstdio>

#include "bench/cast.h"

namespace bench {

// What every table must say first.
void print_machine(FILE* out, const cast& everybody);

// Compares the library with the plain text on all scenes; false, with the difference, if they do not agree.
bool print_agreement(FILE* out, const cast& everybody, bool quick);

// Quiet, busy, worst scenes, allocations and sizes, in some seconds.
void print_quick(FILE* out, const cast& everybody);

}  // namespace bench

#endif
