// orva-bench: plays scenes through any liborva_fd.so beside the plain text and OpenCV, and prints what it costs.
#include <cstdio>
#include <cstring>

#include "bench/check.h"
#include "bench/contenders.h"
#include "bench/measure.h"
#include "bench/plain/plain.h"
#include "bench/scenes.h"

namespace {

const double k_ms = 1e6;

void print_row(FILE* out, const bench::scene& s, const std::vector<bench::contender*>& all, std::size_t fast) {
    const bench::plan p = {60, 10, 4, 30, 250 * k_ms};
    const std::vector<bench::timing> times = bench::measure(all, s, p);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bench::spread r = bench::ratio(times[i], times[fast]);
        std::fprintf(out, "%-8s %-22s %9.1f us  %6.2f ns/pixel  %6.2f x library (%.2f to %.2f)\n", s.name.c_str(),
                     all[i]->name().c_str(), bench::median(times[i].frames_ns) / 1e3,
                     bench::median(times[i].frames_ns) / s.pixels(), r.mid, r.low, r.high);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--library") == 0 && i + 1 < argc) path = argv[++i];
    }
    if (path == nullptr) {
        std::fprintf(stderr, "usage: orva-bench --library PATH --quick\n");
        return 2;
    }
    FILE* out = bench::silence_standard_output();
    std::vector<std::unique_ptr<bench::contender>> owned;
    owned.push_back(bench::make_contender("library", bench::load_library(path)));
    owned.push_back(bench::make_contender("plain -O2", plain_o2::functions));
    owned.push_back(bench::make_contender("plain -O3 native", plain_o3::functions));
    owned.push_back(bench::make_opencv_contender());
    std::vector<bench::contender*> all;
    for (const std::unique_ptr<bench::contender>& who : owned) {
        if (who) all.push_back(who.get());
    }
    const bench::scene scenes[] = {bench::quiet_scene(352, 288), bench::busy_scene(352, 288, 60)};
    for (const bench::scene& s : scenes) {
        const bench::agreement a = bench::compare(*all[0], *all[1], s, 120, 3000 * k_ms);
        std::fprintf(out, "%s: %d frames compared, %d with boxes: %s\n", s.name.c_str(), a.frames, a.frames_with_boxes,
                     a.same ? "same" : a.difference.c_str());
        if (!a.same) return 1;
        print_row(out, s, all, 0);
    }
    return 0;
}
