// What a table must say first: on which machine, by which compiler, with which flags.
#ifndef ORVA_BENCH_MACHINE_H
#define ORVA_BENCH_MACHINE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

std::string processor_name();
int processor_count();
std::string operating_system();
std::string today();  // year-month-day

// Compiler and flags of the plain text and of this build's library.
std::string build_compiler();
std::string build_flags();

// False in builds whose times mean nothing; reason receives why.
bool build_may_be_timed(std::string* reason);

// Clock rate, from a chain of additions that each wait for the one before: one cycle each. Best of some tries.
double cycles_per_ns();

struct library_file {
    std::size_t file_bytes;
    std::size_t code_bytes;  // sections that are executed
    std::string compiler;    // as the compiler noted it
};
// Reads an ELF file of this machine's width and byte order; all zero for anything else.
library_file inspect_library(const std::string& path);

}  // namespace bench

#endif
