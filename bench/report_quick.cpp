#include <algorithm>

#include "bench/campaign.h"
#include "bench/check.h"
#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "bench/painting.h"
#include "bench/report.h"

namespace bench {

namespace {

const double k_ms = 1e6;
const double k_worst_share = 0.8;  // of plain's quiet frame, what the worst frame may cost

// A library that is that many times slower than the plain text was compiled without optimisation.
const double k_unoptimised = 2;

struct wanted {
    double against_plain;
    double against_opencv;
};

void print_frame(FILE* out, const cast& everybody, const scene& s, wanted least) {
    const plan p = {60, 10, 4, 30, 100 * k_ms};
    const std::vector<contender*> all = everybody.all();
    const std::vector<timing> times = measure(all, s, p);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double ns = median(times[i].frames_ns);
        std::fprintf(out, "%-6s %-18s %8.1f us %6.2f ns/px", s.name.c_str(), all[i]->name().c_str(), ns / 1e3,
                     ns / s.pixels());
        if (i != 0) {
            const spread r = ratio(times[i], times[0]);
            std::fprintf(out, "   library is %5.2f x as fast (%.2f..%.2f)", r.mid, r.low, r.high);
        }
        if (i == 1) std::fprintf(out, ", wanted %.0f", least.against_plain);
        if (i == 3) std::fprintf(out, ", wanted %.0f", least.against_opencv);
        std::fprintf(out, "\n");
    }
}

void print_worst(FILE* out, const cast& everybody) {
    std::vector<painting> paintings = constructed_paintings();
    const std::vector<painting> found = found_paintings();
    paintings.insert(paintings.end(), found.begin(), found.end());
    const scene quiet = quiet_scene(k_full_width, k_full_height);
    std::vector<std::pair<weighed_frame, std::string>> costs;
    for (const painting& one : paintings) {
        const scene s = paint(one, k_full_width, k_full_height);
        costs.push_back({weigh({&everybody.library(), &s}, {&everybody.plain_o2(), &quiet}), one.name});
    }
    std::sort(costs.begin(), costs.end(), [](const auto& a, const auto& b) { return a.first.share > b.first.share; });
    for (const auto& cost : costs) {
        std::fprintf(out, "worst  %8.1f us  %7.3f of plain's quiet frame (%.1f allowed)  %s\n", cost.first.ns / 1e3,
                     cost.first.share, k_worst_share, cost.second.c_str());
    }
}

void print_memory(FILE* out, const cast& everybody) {
    const scene s = busy_scene(k_full_width, k_full_height, 60);
    contender& who = everybody.library();
    const heap_use before = heap_now();
    const int handle = who.open();
    const heap_use opened = heap_now();
    fd_result result;
    for (std::size_t i = 0; i < 60; ++i) who.play(handle, s.frame(i), &result);
    const heap_use played = heap_now();
    who.close(handle);
    std::fprintf(out, "heap   %lld requests in 60 busy frames, %lld bytes a channel after Start, %lld after them\n",
                 static_cast<long long>(played.requests - opened.requests),
                 static_cast<long long>(opened.live_bytes - before.live_bytes),
                 static_cast<long long>(played.live_bytes - before.live_bytes));
}

}  // namespace

void print_machine(FILE* out, const cast& everybody) {
    const library_file file = inspect_library(everybody.library_path());
    const std::string path = everybody.library_path();
    std::fprintf(out, "- machine: %s, %d processors, %s, %.2f cycles/ns\n", processor_name().c_str(), processor_count(),
                 operating_system().c_str(), cycles_per_ns());
    std::fprintf(out, "- compiler: %s; flags: %s\n", build_compiler().c_str(), build_flags().c_str());
    std::fprintf(out, "- library: %s, version %d.%d.%d, %zu bytes of code, by %s\n",
                 path.substr(path.rfind('/') + 1).c_str(), ORVA_FD_VERSION_MAJOR, ORVA_FD_VERSION_MINOR,
                 ORVA_FD_VERSION_PATCH, file.code_bytes, file.compiler.c_str());
}

bool print_agreement(FILE* out, const cast& everybody, bool quick) {
    std::vector<scene> scenes = {quiet_scene(k_full_width, k_full_height), busy_scene(k_full_width, k_full_height, 60)};
    for (const painting& one : constructed_paintings()) scenes.push_back(paint(one, k_full_width, k_full_height));
    for (const painting& one : found_paintings()) scenes.push_back(paint(one, k_full_width, k_full_height));
    int frames = 0;
    for (const scene& s : scenes) {
        const agreement a = compare(everybody.library(), everybody.plain_o2(), s, 70, (quick ? 60 : 2000) * k_ms);
        frames += a.frames;
        if (a.same) continue;
        std::fprintf(out, "The library does not give the plain text's results: %s\n", a.difference.c_str());
        return false;
    }
    std::fprintf(out, "- results: as the plain text's on %d frames of %zu scenes\n", frames, scenes.size());
    return true;
}

bool looks_optimised(FILE* out, const cast& everybody) {
    const plan p = {5, 3, 2, 10, 1000 * k_ms};
    const scene s = quiet_scene(k_full_width, k_full_height);
    const std::vector<timing> times = measure({&everybody.library(), &everybody.plain_o2()}, s, p);
    const double slower = ratio(times[0], times[1]).mid;
    if (slower < k_unoptimised) return true;
    std::fprintf(out, "refused: the library takes %.1f times as long as the plain text at -O2; is it optimised?\n",
                 slower);
    return false;
}

void print_quick(FILE* out, const cast& everybody) {
    print_frame(out, everybody, quiet_scene(k_full_width, k_full_height), {9, 5});
    print_frame(out, everybody, busy_scene(k_full_width, k_full_height, 60), {6, 4});
    print_worst(out, everybody);
    print_memory(out, everybody);
}

}  // namespace bench
