// The tables. Each function measures one thing and prints it; what is wanted stands beside what was found.
#ifndef ORVA_BENCH_REPORT_H
#define ORVA_BENCH_REPORT_H

#include <cstdio>
#include <string>

#include "bench/cast.h"

namespace bench {

// What every table must say first.
void print_machine(FILE* out, const cast& everybody);

// Compares the library with the plain text on all scenes; false, with the difference, if they do not agree.
bool print_agreement(FILE* out, const cast& everybody, bool quick);

// False, with a line, for a library that must have been compiled without optimisation.
bool looks_optimised(FILE* out, const cast& everybody);

// Quiet, busy, worst scenes, allocations and sizes, in some seconds.
void print_quick(FILE* out, const cast& everybody);

// Everything, as Markdown; some minutes.
void print_full(FILE* out, const cast& everybody);

// One line of a table, for boards: date, processor, compiler and flags, version, microseconds of the quiet, the busy
// and the worst frame (and how many times as fast as plain), busy frames cold at p50 and p99, channels on a core.
void print_row(FILE* out, const cast& everybody);

// Draws cost against pixels, components and channels into an SVG file; false if it cannot be written.
bool write_plot(const std::string& path, const cast& everybody);

}  // namespace bench

#endif
