// orva-bench: plays scenes through any liborva_fd.so beside the plain text and OpenCV, and prints what it costs.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/cast.h"
#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/report.h"
#include "bench/search.h"

namespace {

struct options {
    std::string library;
    bool quick = false;
    bool row = false;
    std::string plot;
    double search_seconds = 0;
    unsigned long seed = 1;
};

int usage() {
    std::fprintf(stderr,
                 "usage: orva-bench --library PATH [--quick | --row | --plot FILE | --search SECONDS [--seed N]]\n"
                 "  --library PATH    the liborva_fd.so to measure; alone: all tables, as Markdown\n"
                 "  --quick           a short table in some seconds\n"
                 "  --row             one line for the table of boards\n"
                 "  --plot FILE       cost against pixels, components and channels, as SVG\n"
                 "  --search SECONDS  look for pictures that cost more than the known ones; print the worst ten\n");
    return 2;
}

bool read_options(int argc, char** argv, options* o) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--library" && i + 1 < argc) {
            o->library = argv[++i];
        } else if (word == "--quick") {
            o->quick = true;
        } else if (word == "--row") {
            o->row = true;
        } else if (word == "--plot" && i + 1 < argc) {
            o->plot = argv[++i];
        } else if (word == "--search" && i + 1 < argc) {
            o->search_seconds = std::atof(argv[++i]);
        } else if (word == "--seed" && i + 1 < argc) {
            o->seed = std::strtoul(argv[++i], nullptr, 10);
        } else {
            return false;
        }
    }
    return !o->library.empty();
}

int search(FILE* out, const bench::cast& everybody, const options& o) {
    for (const bench::ranked_painting& one :
         bench::search_worst(everybody.library(), o.search_seconds, o.seed, stderr)) {
        std::fprintf(out, "// %.1f us\n\"%s\",\n", one.cost_ns / 1e3, bench::to_text(one.what).c_str());
    }
    return 0;
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
    if (!o.row) bench::print_machine(out, everybody);
    if (!bench::looks_optimised(stderr, everybody)) return 3;
    if (o.search_seconds > 0) return search(out, everybody, o);
    if (!bench::print_agreement(o.row ? stderr : out, everybody, o.quick)) return 1;
    if (!o.plot.empty()) {
        if (bench::write_plot(o.plot, everybody)) return 0;
        std::fprintf(stderr, "%s cannot be written\n", o.plot.c_str());
        return 1;
    }
    if (o.quick) {
        bench::print_quick(out, everybody);
    } else if (o.row) {
        bench::print_row(out, everybody);
    } else {
        bench::print_full(out, everybody);
    }
    return 0;
}
