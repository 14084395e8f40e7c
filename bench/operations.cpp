// orva-bench-operations: single operations and frames through the static library's inner functions. Each operation's
// result is compared with the plain text's before it is timed.
#include <benchmark/benchmark.h>
#include <ext/stdio_filebuf.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "bench/painting.h"
#include "bench/scenes.h"
#include "channel/foreground_analysis.h"
#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/pre_process.h"
#define ORVA_PLAIN_NAMESPACE plain_o2
#include "bench/plain/plain.h"

namespace {

using bench::k_full_height;
using bench::k_full_width;

const std::size_t k_bytes = static_cast<std::size_t>(k_full_width * k_full_height);

// A working picture of one or three planes.
struct image {
    explicit image(std::size_t planes = 1) : bytes(planes * k_bytes), view() {
        view.width = static_cast<std::uint32_t>(k_full_width);
        view.height = static_cast<std::uint32_t>(k_full_height);
        for (std::size_t plane = 0; plane < planes; ++plane) {
            view.virt_addr[plane] = bytes.data() + plane * k_bytes;
            view.stride[plane] = view.width;
        }
    }
    image(const image& other) : image(other.bytes.size() / k_bytes) { bytes = other.bytes, copy_back(); }
    image& operator=(const image&) = delete;

    // After bytes were replaced: vectors of one size keep their memory, so the view stays; this says so.
    void copy_back() {
        for (std::size_t plane = 0; plane < bytes.size() / k_bytes; ++plane)
            view.virt_addr[plane] = bytes.data() + plane * k_bytes;
    }

    std::vector<unsigned char> bytes;
    fd_yuv_frame view;
};

// Two successive frames of a scene and every picture that the stages make of the second.
struct stages_of {
    explicit stages_of(const bench::scene& s) : first(s.frames[0]), second(s.frames[1]), luma(second.view()), rgb(3) {
        fd_yuv_frame before = first.view();
        plain_o2::difference(&luma, &before, &difference.view);
        limit = plain_o2::otsu(&difference.view, 20, 35);
        plain_o2::threshold(&difference.view, &motion.view, limit);
        plain_o2::dilate(&motion.view, &dilated.view);
        plain_o2::convert(&luma, &rgb.view);
        filtered.bytes = dilated.bytes;
        filtered.copy_back();
        plain_o2::colour_filter(&filtered.view, &rgb.view, &luma);
        plain_o2::dilate(&filtered.view, &mask.view);
        plain_o2::label(&mask.view, components);
    }

    bench::picture first;
    bench::picture second;
    fd_yuv_frame luma;
    image difference;
    image motion;
    image dilated;
    image rgb;
    image filtered;
    image mask;
    int limit;
    std::vector<plain_o2::component> components;
};

bench::scene named(const std::string& name) {
    for (const bench::painting& p : bench::constructed_paintings()) {
        if (p.name == name) return bench::paint(p, k_full_width, k_full_height);
    }
    std::fprintf(stderr, "no scene is called '%s'\n", name.c_str());
    std::exit(1);
}

bench::scene quiet() {
    return bench::quiet_scene(k_full_width, k_full_height);
}

bench::scene busy() {
    return bench::busy_scene(k_full_width, k_full_height, 60);
}

bool equal(const image& a, const image& b) {
    return a.bytes == b.bytes;
}

bool equal(const std::vector<orva_fd::con_info>& a, const std::vector<plain_o2::component>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0);
}

// Times `operation` on so many pictures if `good`, and counts what it takes from the heap.
template <typename function>
void run(benchmark::State& state, bool good, function operation, int pictures = 1) {
    if (!good) {
        state.SkipWithError("the result is not the plain text's");
        return;
    }
    const bench::heap_use before = bench::heap_now();
    for (auto _ : state) {
        operation();
        benchmark::ClobberMemory();
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["per_pixel"] = benchmark::Counter(static_cast<double>(k_bytes) * pictures * iterations,
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    // Rounded, because the loop itself asks the heap for something now and then.
    state.counters["heap"] = std::round(static_cast<double>(bench::heap_now().requests - before.requests) / iterations);
}

void sub_352x288(benchmark::State& state) {
    stages_of s(quiet());
    fd_yuv_frame before = s.first.view();
    image out;
    orva_fd::sub(&s.luma, &before, &out.view);
    run(state, equal(out, s.difference), [&] { orva_fd::sub(&s.luma, &before, &out.view); });
}

void sub_352x288_in_place(benchmark::State& state) {
    stages_of s(quiet());
    image out;
    std::memcpy(out.bytes.data(), s.first.view().virt_addr[0], k_bytes);
    orva_fd::sub(&s.luma, &out.view, &out.view);
    run(state, equal(out, s.difference), [&] { orva_fd::sub(&s.luma, &out.view, &out.view); });
}

void otsu(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    run(state, orva_fd::getThreshVal_Otsu(&s.difference.view, 0, 0, 20, 35) == s.limit,
        [&] { benchmark::DoNotOptimize(orva_fd::getThreshVal_Otsu(&s.difference.view, 0, 0, 20, 35)); });
}

void threshold_352x288_in_place(benchmark::State& state) {
    stages_of s(quiet());
    image out(s.difference);
    orva_fd::threshold_binary(&out.view, &out.view, s.limit);
    run(state, equal(out, s.motion), [&] { orva_fd::threshold_binary(&out.view, &out.view, s.limit); });
}

void dilate(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    orva_fd::hisi_ive_func functions;
    image out;
    functions.do_dilate(&s.motion.view, &out.view, true);
    run(state, equal(out, s.dilated), [&] { functions.do_dilate(&s.motion.view, &out.view, true); });
}

void color_trans_352x288(benchmark::State& state) {
    stages_of s(busy());
    orva_fd::hisi_ive_func functions;
    image out(3);
    functions.do_color_trans(&s.luma, &out.view, orva_fd::color_trans_rgb, true);
    run(state, equal(out, s.rgb),
        [&] { functions.do_color_trans(&s.luma, &out.view, orva_fd::color_trans_rgb, true); });
}

// The filter works in place and clears what it has seen, so the mask is put back before each call; the copy is timed
// too.
void color_filter(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    orva_fd::pre_process stage;
    image out(s.dilated);
    stage.color_filter(&out.view, &s.rgb.view, &s.luma);
    run(state, equal(out, s.filtered), [&] {
        std::memcpy(out.bytes.data(), s.dilated.bytes.data(), k_bytes);
        stage.color_filter(&out.view, &s.rgb.view, &s.luma);
    });
}

void copy_352x288(benchmark::State& state) {
    stages_of s(quiet());
    orva_fd::hisi_ive_func functions;
    image out;
    functions.do_dma(&s.mask.view, &out.view, true);
    run(state, equal(out, s.mask), [&] { functions.do_dma(&s.mask.view, &out.view, true); });
}

void label(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    orva_fd::hisi_ive_func functions;
    std::vector<orva_fd::con_info> found;
    functions.do_ccl(&s.mask.view, nullptr, found, true);
    run(state, equal(found, s.components), [&] {
        found.clear();
        functions.do_ccl(&s.mask.view, nullptr, found, true);
    });
    state.counters["components"] = static_cast<double>(found.size());
}

// Stages up to the components, joined as a channel does it.
void pre_process(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    orva_fd::pre_process stage;
    stage.start();
    std::vector<orva_fd::con_info> found;
    fd_yuv_frame before = s.first.view();
    stage.set_frame(&before, found);
    found.clear();
    stage.set_frame(&s.luma, found);
    std::size_t number = 0;
    run(state, equal(found, s.components), [&] {
        fd_yuv_frame frame = played.frame(number++);
        found.clear();
        stage.set_frame(&frame, found);
    });
    stage.stop();
}

std::vector<orva_fd::con_info> shipped(const std::vector<plain_o2::component>& list) {
    std::vector<orva_fd::con_info> result(list.size());
    if (!list.empty()) std::memcpy(result.data(), list.data(), list.size() * sizeof(list[0]));
    return result;
}

// Merging, covering and the brightness test.
void boxes(benchmark::State& state, const bench::scene& played) {
    stages_of s(played);
    orva_fd::foreground_analysis analysis;
    const std::vector<orva_fd::con_info> components = shipped(s.components);
    std::vector<orva_fd::con_info> list;
    std::vector<orva_fd::con_info> fire;
    bool found = false;
    const auto once = [&] {
        list = components;
        fire.clear();
        analysis.get_fire_rects(&s.luma, &s.mask.view, &s.rgb.view, list, fire, found);
    };
    once();
    std::vector<plain_o2::component> expected;
    plain_o2::find_candidates(&s.luma, &s.mask.view, s.components, expected);
    run(state, equal(fire, expected) && equal(list, s.components), once);
}

// One frame of a channel after another, history full.
void frames(benchmark::State& state, const bench::scene& played, int channels) {
    std::vector<int> handles(static_cast<std::size_t>(channels));
    for (int& handle : handles) ORVA_FireDetection_Start(&handle, bench::whole_picture());
    fd_result result;
    std::size_t number = 0;
    const auto round = [&] {
        for (int handle : handles) ORVA_FireDetection_SetFrame(handle, played.frame(number), &result);
        ++number;
    };
    for (int i = 0; i < 55; ++i) round();
    run(state, true, round, channels);
    for (int handle : handles) ORVA_FireDetection_Stop(handle);
}

void add(const char* name, const std::function<void(benchmark::State&)>& body) {
    benchmark::RegisterBenchmark(name, body);
}

void add_all() {
    add("sub_352x288", sub_352x288);
    add("sub_352x288_in_place", sub_352x288_in_place);
    add("otsu_352x288_noise", [](benchmark::State& state) { otsu(state, quiet()); });
    add("otsu_352x288_motion", [](benchmark::State& state) { otsu(state, busy()); });
    add("threshold_352x288_in_place", threshold_352x288_in_place);
    add("dilate_352x288_sparse", [](benchmark::State& state) { dilate(state, quiet()); });
    add("dilate_352x288_dense", [](benchmark::State& state) { dilate(state, busy()); });
    add("color_trans_352x288", color_trans_352x288);
    add("color_filter_352x288_sparse", [](benchmark::State& state) { color_filter(state, quiet()); });
    add("color_filter_352x288_dense", [](benchmark::State& state) { color_filter(state, busy()); });
    add("copy_352x288", copy_352x288);
    add("label_352x288_sparse", [](benchmark::State& state) { label(state, quiet()); });
    add("label_352x288_noise", [](benchmark::State& state) { label(state, named("salt")); });
    add("label_352x288_specks", [](benchmark::State& state) { label(state, named("specks")); });
    add("pre_process_352x288_quiet", [](benchmark::State& state) { pre_process(state, quiet()); });
    add("pre_process_352x288_busy", [](benchmark::State& state) { pre_process(state, busy()); });
    add("boxes_352x288_busy", [](benchmark::State& state) { boxes(state, busy()); });
    add("boxes_352x288_unmerged", [](benchmark::State& state) { boxes(state, named("as many as stay unmerged")); });
    add("boxes_352x288_specks", [](benchmark::State& state) { boxes(state, named("specks")); });
    add("frame_352x288_quiet", [](benchmark::State& state) { frames(state, quiet(), 1); });
    add("frame_352x288_busy", [](benchmark::State& state) { frames(state, busy(), 1); });
    add("frame_352x288_history_full",
        [](benchmark::State& state) { frames(state, named("as many as stay unmerged, area changes"), 1); });
    add("frame_352x288_16_channels", [](benchmark::State& state) { frames(state, busy(), 16); });
}

}  // namespace

int main(int argc, char** argv) {
    std::string reason;
    if (!bench::build_may_be_timed(&reason)) {
        std::fprintf(stderr, "refused: %s\n", reason.c_str());
        return 3;
    }
    // Libraries print to standard output; the table goes to where it pointed before.
    FILE* out = bench::silence_standard_output();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::AddCustomContext("processor", bench::processor_name());
    benchmark::AddCustomContext("compiler", bench::build_compiler());
    benchmark::AddCustomContext("flags", bench::build_flags());
    plain_o2::fill_tables();
    ORVA_FireDetection_Init();
    add_all();
    __gnu_cxx::stdio_filebuf<char> buffer(fileno(out), std::ios::out);
    std::ostream table(&buffer);
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&table);
    reporter.SetErrorStream(&table);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    ORVA_FireDetection_UnInit();
    return 0;
}
