#include <algorithm>

#include "bench/campaign.h"
#include "bench/check.h"
#include "bench/machine.h"
#include "bench/memory.h"
#include "bench/painting.h"
#include "bench/report.h"
#include "bench/search.h"

namespace bench {

namespace {

const int k_channels = FD_MAX_CHANNELS;
const double k_frames_per_second = 25;
const double k_named_bytes = 4 * 101376 + 101376 + 3052;  // the working pictures of a channel
const plan k_plan = {60, 15, 6, 40, 4e9};

const double k_compare_limit_ns = 5e7;

double us(double ns) {
    return ns / 1e3;
}

void print_ratio_rows(FILE* out, const cast& everybody, const scene& s, double cycles, double against_plain,
                      double against_opencv) {
    const std::vector<contender*> all = everybody.all();
    const std::vector<timing> times = measure(all, s, k_plan);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double ns = median(times[i].frames_ns);
        std::fprintf(out, "| %s | %s | %.1f | %.1f to %.1f | %.2f | %.2f |", s.name.c_str(), all[i]->name().c_str(),
                     us(ns), us(quantile(times[i].frames_ns, 0.25)), us(quantile(times[i].frames_ns, 0.75)),
                     ns / s.pixels(), ns * cycles / s.pixels());
        if (i == 0) {
            std::fprintf(out, " | |\n");
            continue;
        }
        const spread r = ratio(times[i], times[0]);
        std::fprintf(out, " %.2f (%.2f to %.2f) |", r.mid, r.low, r.high);
        if (i == 1) std::fprintf(out, " %.0f", against_plain);
        if (i == 3) std::fprintf(out, " %.0f", against_opencv);
        std::fprintf(out, " |\n");
    }
}

void print_frames(FILE* out, const cast& everybody, double cycles) {
    std::fprintf(
        out,
        "\n### A frame of 352 x 288, warm\n\nMedians over %d frames, the contenders in turn; beside them half of "
        "all frames. The ratio says how many times as fast the library is, turn by turn; beside it half of the "
        "turns.\n\n| scene | who | us | half of the frames | ns/pixel | cycles/pixel | library is faster by | "
        "wanted |\n|---|---|---|---|---|---|---|---|\n",
        k_plan.blocks * k_plan.timed);
    print_ratio_rows(out, everybody, quiet_scene(k_full_width, k_full_height), cycles, 9, 5);
    print_ratio_rows(out, everybody, busy_scene(k_full_width, k_full_height, 60), cycles, 6, 4);
}

const char* const k_stage_words[k_stage_count] = {
    "difference",         "threshold search", "threshold", "dilation of motion", "conversion to RGB",   "colour filter",
    "dilation of colour", "copy of the mask", "labelling", "copy of the luma",   "merging, brightness", "history"};

void print_stages_of(FILE* out, const cast& everybody, const scene& s) {
    std::vector<contender*> all = {&everybody.doors(), &everybody.plain_o2(), &everybody.plain_o3()};
    if (everybody.opencv() != nullptr) all.push_back(everybody.opencv());
    std::vector<std::vector<double>> columns;
    std::fprintf(out, "\n| %s, us |", s.name.c_str());
    for (contender* who : all) {
        std::fprintf(out, " %s |", who->name().c_str());
        columns.push_back(time_stages(*who, s, 300));
    }
    std::fprintf(out, "\n|---|");
    for (std::size_t i = 0; i < all.size(); ++i) std::fprintf(out, "---|");
    std::fprintf(out, "\n");
    for (std::size_t stage = 0; stage < k_stage_count; ++stage) {
        std::fprintf(out, "| %s |", k_stage_words[stage]);
        for (const std::vector<double>& column : columns) {
            if (column[stage] < 0) {
                std::fprintf(out, " in the row above |");
            } else {
                std::fprintf(out, " %.1f |", us(column[stage]));
            }
        }
        std::fprintf(out, "\n");
    }
    std::fprintf(out, "| sum |");
    for (const std::vector<double>& column : columns) {
        double sum = 0;
        for (double ns : column) sum += std::max(0.0, ns);
        std::fprintf(out, " %.1f |", us(sum));
    }
    std::fprintf(out, "\n");
}

void print_stages(FILE* out, const cast& everybody) {
    std::fprintf(
        out,
        "\n### Stage by stage\n\nEach stage through the door that it has in the library, one after the other; the "
        "library's frame joins stages, so it costs less than their sum. Not OpenCV's in OpenCV's column: the last "
        "two colour tests, on the pixels that pass the others, and merging, brightness and history, which are "
        "the plain text's at -O3. Its threshold search writes the thresholded picture too.\n");
    print_stages_of(out, everybody, quiet_scene(k_full_width, k_full_height));
    print_stages_of(out, everybody, busy_scene(k_full_width, k_full_height, 60));
}

struct weighed_painting {
    painting what;
    weighed_frame frame;
};

// As many fresh paintings as there are seeds: the one that costs most. Results are compared on the way.
weighed_painting worst_fresh(FILE* out, const cast& everybody, const scene& quiet, std::uint64_t first_seed,
                             int seeds) {
    weighed_painting worst = {{}, {0, 0}};
    for (int i = 0; i < seeds; ++i) {
        random_source random(first_seed + static_cast<std::uint64_t>(i));
        painting p = random_painting(random);
        for (int k = 0; k < 4; ++k) p = changed_painting(p, random);
        const scene s = paint(p, k_full_width, k_full_height);
        const agreement a = compare(everybody.library(), everybody.plain_o2(), s, 54, k_compare_limit_ns);
        if (!a.same) std::fprintf(out, "| %s: %s | | |\n", to_text(p).c_str(), a.difference.c_str());
        const weighed_frame frame = weigh({&everybody.library(), &s}, {&everybody.plain_o2(), &quiet});
        if (frame.share > worst.frame.share) worst = {p, frame};
    }
    return worst;
}

void print_worst(FILE* out, const cast& everybody, int fresh_seeds) {
    const scene quiet = quiet_scene(k_full_width, k_full_height);
    std::fprintf(
        out,
        "\n### The worst frames\n\nThe library's frames of these scenes and plain's quiet frame in turn. Allowed "
        "is 0.8 of that.\n\n| scene | us | of plain's quiet frame |\n|---|---|---|\n");
    std::vector<weighed_painting> all;
    for (const std::vector<painting>& group : {found_paintings(), constructed_paintings()}) {
        for (const painting& p : group) {
            const scene s = paint(p, k_full_width, k_full_height);
            all.push_back({p, weigh({&everybody.library(), &s}, {&everybody.plain_o2(), &quiet})});
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const weighed_painting& a, const weighed_painting& b) {
        return a.frame.share > b.frame.share;
    });
    for (const weighed_painting& one : all)
        std::fprintf(out, "| %s | %.1f | %.3f |\n", one.what.name.c_str(), us(one.frame.ns), one.frame.share);
    const std::uint64_t first_seed = static_cast<std::uint64_t>(now_ns() / 1000000 % 1000000);
    const weighed_painting worst = worst_fresh(out, everybody, quiet, first_seed, fresh_seeds);
    std::fprintf(out, "| worst of %d fresh seeds from %llu | %.1f | %.3f |\n", fresh_seeds,
                 static_cast<unsigned long long>(first_seed), us(worst.frame.ns), worst.frame.share);
    std::fprintf(out, "\nThe worst fresh one is `%s`.\n", to_text(worst.what).c_str());
}

void print_cold_row(FILE* out, contender& who, const scene& s, double cycles) {
    const plan alone = {60, 1, 0, 300, 20e9};
    const double warm = median(measure({&who}, s, alone)[0].frames_ns);
    const double floors[2] = {floor_warm_ns(s), floor_cold_ns(s, k_channels)};
    const percentiles cold = percentiles_of(play_cold(who, s, k_channels, 52, 40));
    std::fprintf(
        out, "| %s | %s | %.1f | %.2f | %.2f | %.1f | %.1f | %.1f | %.1f | %.1f | %.2f | %.2f | %.1f | %.1f | %.0f |\n",
        s.name.c_str(), who.name().c_str(), us(warm), warm / s.pixels(), warm * cycles / s.pixels(), us(floors[0]),
        warm / floors[0], us(cold.p50), us(cold.p99), us(cold.p999), cold.p50 / s.pixels(),
        cold.p50 * cycles / s.pixels(), us(floors[1]), cold.p50 / floors[1], 1e9 / (k_frames_per_second * cold.mean));
}

void print_cold(FILE* out, const cast& everybody, double cycles) {
    std::fprintf(
        out,
        "\n### Warm and cold, and the floor\n\nCold: %d channels in turn, so that a frame finds nothing of its "
        "channel in the cache. Floor: frame and previous luma read once, previous luma written once, at the "
        "bandwidth measured here, warm and cold. Channels: how many at %.0f frames a second fit on one core, "
        "cold, by the mean.\n\n"
        "| scene | who | warm us | ns/pixel | cycles/pixel | floor us | times floor | cold p50 us | p99 | p99.9 | "
        "ns/pixel | cycles/pixel | cold floor us | times floor | channels |\n"
        "|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n",
        k_channels, k_frames_per_second);
    const scene scenes[] = {quiet_scene(k_full_width, k_full_height), busy_scene(k_full_width, k_full_height, 60)};
    for (const scene& s : scenes) {
        print_cold_row(out, everybody.library(), s, cycles);
        print_cold_row(out, everybody.plain_o2(), s, cycles);
    }
    const thread_gain gain = two_threads(everybody.library(), scenes[1], k_channels, 9);
    std::fprintf(out,
                 "\nTwo threads with half of the %d busy channels each do %.2f times as much as one by the wall clock "
                 "(median of %zu attempts, the best %.2f), %.2f times by processor time; wanted 1.9.\n",
                 k_channels, median(gain.by_wall_clock), gain.by_wall_clock.size(), quantile(gain.by_wall_clock, 1),
                 median(gain.by_processor_time));
}

// Requests in the frames from the first to the 60th, and bytes live after them.
heap_use heap_of_frames(contender& who, const scene& s) {
    const heap_use before = heap_now();
    const int handle = who.open();
    const heap_use opened = heap_now();
    fd_result result;
    for (std::size_t i = 0; i < 60; ++i) who.play(handle, s.frame(i), &result);
    const heap_use played = heap_now();
    who.close(handle);
    return {played.requests - opened.requests, played.live_bytes - before.live_bytes};
}

void print_sizes(FILE* out, const cast& everybody) {
    const heap_use quiet = heap_of_frames(everybody.library(), quiet_scene(k_full_width, k_full_height));
    heap_use most = heap_of_frames(everybody.library(), busy_scene(k_full_width, k_full_height, 60));
    for (const painting& p : constructed_paintings()) {
        const heap_use one = heap_of_frames(everybody.library(), paint(p, k_full_width, k_full_height));
        most.requests = std::max(most.requests, one.requests);
        most.live_bytes = std::max(most.live_bytes, one.live_bytes);
    }
    const double above = (static_cast<double>(most.live_bytes) - k_named_bytes) / (1024 * 1024);
    const library_file file = inspect_library(everybody.library_path());
    std::fprintf(out, "\n### Memory, start, size\n\n| | | wanted |\n|---|---|---|\n");
    std::fprintf(out, "| heap requests in the first 60 frames, quiet | %lld | 0 |\n",
                 static_cast<long long>(quiet.requests));
    std::fprintf(out, "| the same, busy and worst scenes, the most | %lld | 0 |\n",
                 static_cast<long long>(most.requests));
    std::fprintf(out, "| bytes of a channel after 60 frames, the most | %lld | |\n",
                 static_cast<long long>(most.live_bytes));
    std::fprintf(out, "| of it above the four working buffers | %.2f MiB | at most 0.75 MiB |\n", above);
    std::fprintf(out, "| start of a channel, median | %.1f us | under 200 us |\n",
                 us(median(time_open(everybody.library(), 300))));
    std::fprintf(out, "| first Init of the process, and median of 100 more | %.1f us, %.1f us | under 1000 us |\n",
                 us(everybody.first_init_ns()), us(median(time_init(everybody.library_functions(), 100))));
    std::fprintf(out, "| code of the library | %zu bytes | under 102400 bytes |\n", file.code_bytes);
}

}  // namespace

void print_full(FILE* out, const cast& everybody) {
    const double cycles = cycles_per_ns();
    print_frames(out, everybody, cycles);
    print_stages(out, everybody);
    print_worst(out, everybody, 200);
    print_cold(out, everybody, cycles);
    print_sizes(out, everybody);
}

void print_row(FILE* out, const cast& everybody) {
    contender& who = everybody.library();
    const scene quiet = quiet_scene(k_full_width, k_full_height);
    const scene busy = busy_scene(k_full_width, k_full_height, 60);
    const plan p = {60, 4, 4, 80, 20e9};
    const std::vector<contender*> both = {&who, &everybody.plain_o2()};
    const std::vector<timing> quiet_times = measure(both, quiet, p);
    const std::vector<timing> busy_times = measure(both, busy, p);
    double worst = 0;
    for (const std::vector<painting>& group : {found_paintings(), constructed_paintings()}) {
        for (const painting& one : group)
            worst = std::max(worst, cost_of(who, paint(one, k_full_width, k_full_height), 2e9));
    }
    const percentiles cold = percentiles_of(play_cold(who, busy, 32, 52, 20));
    const library_file file = inspect_library(everybody.library_path());
    std::fprintf(
        out,
        "| %s | %s, %.2f cycles/ns | %s, %s | %d.%d.%d | %.1f (%.2f x) | %.1f (%.2f x) | %.1f | %.1f, %.1f | %.0f |\n",
        today().c_str(), processor_name().c_str(), cycles_per_ns(), file.compiler.c_str(), build_flags().c_str(),
        ORVA_FD_VERSION_MAJOR, ORVA_FD_VERSION_MINOR, ORVA_FD_VERSION_PATCH, us(median(quiet_times[0].frames_ns)),
        ratio(quiet_times[1], quiet_times[0]).mid, us(median(busy_times[0].frames_ns)),
        ratio(busy_times[1], busy_times[0]).mid, us(worst), us(cold.p50), us(cold.p99),
        1e9 / (k_frames_per_second * cold.mean));
}

}  // namespace bench
