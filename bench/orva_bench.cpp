// orva-bench: plays scenes through any liborva_fd.so beside the plain text and OpenCV, and prints what it costs.
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/cast.h"
#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/report.h"

namespace {

struct options {
    std::string library;
    bool quick = false;
};

int usage() {
    std::fprintf(stderr,
                 "usage: orva-bench --library PATH [--quick]\n"
                 "  --library PATH  the liborva_fd.so to measure\n"
                 "  --quick         a short table in some seconds\n");
    return 2;
}

bool read_options(int argc, char** argv, options* o) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--library" && i + 1 < argc) {
            o->library = argv[++i];
        } else if (word == "--quick") {
            o->quick = true;
        } else {
            return false;
        }
    }
    return !o->library.empty();
}

}  // namespace

int main(int argc, char** argv) {
    options o;
    if (!read_options(argc, argv, &o)) return usage();
    std::string reason;
    if (!bench::build_may_be_timed(&reason)) {
        std::fprintf(stderr, "refused: %s\n", reason.c_str());
        return 3;
    }
    FILE* out = bench::silence_standard_output();
    bench::cast everybody(o.library);
    bench::print_machine(out, everybody);
    if (!bench::print_agreement(out, everybody, o.quick)) return 1;
    bench::print_quick(out, everybody);
    return 0;
}
