// The parts that look at lists and masks, each beside its plain twin: labelling, morphology, merging, covering,
// verification and matching over the history, with the lines that they print.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "channel/box_merger.h"
#include "channel/foreground_analysis.h"
#include "imgproc/bwlabel_ccl.h"
#include "imgproc/morphology.h"
#include "imgproc/run_labeller.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/differences.h"
#include "tests/fuzz/printed_text.h"
#include "tests/reference/ref_boxes.h"
#include "tests/reference/ref_label.h"
#include "tests/reference/ref_pixels.h"

namespace {

using fuzz::byte_source;
using fuzz::differ;
using fuzz::expect_equal;
using fuzz::noise_source;
using orva_fd::con_info;

struct totals {
    long labelled = 0;
    long morphed = 0;
    long merged = 0;
    long analysed = 0;
    long reported = 0;
    ~totals() {
        std::fprintf(stderr, "parts: %ld images labelled, %ld dilated and eroded, %ld lists merged, ", labelled,
                     morphed, merged);
        std::fprintf(stderr, "%ld frames analysed, %ld of them with boxes\n", analysed, reported);
    }
};

totals all;

// One plane in a heap block of exactly stride * height bytes.
class heap_plane {
public:
    heap_plane(int width, int height, int stride)
        : m_width(width),
          m_height(height),
          m_stride(stride),
          m_length(static_cast<std::size_t>(stride * height)),
          m_bytes(new unsigned char[std::max<std::size_t>(m_length, 1)]()) {}

    heap_plane copy() const {
        heap_plane other(m_width, m_height, m_stride);
        std::memcpy(other.m_bytes.get(), m_bytes.get(), m_length);
        return other;
    }

    ref::plane plane() const { return {m_bytes.get(), m_width, m_height, m_stride}; }
    fd_yuv_frame record() const {
        fd_yuv_frame frame = {};
        frame.width = static_cast<std::uint32_t>(m_width);
        frame.height = static_cast<std::uint32_t>(m_height);
        frame.virt_addr[0] = m_bytes.get();
        frame.stride[0] = static_cast<std::uint32_t>(m_stride);
        return frame;
    }
    unsigned char* bytes() const { return m_bytes.get(); }
    std::size_t length() const { return m_length; }
    bool equals(const heap_plane& other) const { return std::memcmp(bytes(), other.bytes(), m_length) == 0; }

private:
    int m_width;
    int m_height;
    int m_stride;
    std::size_t m_length;
    std::unique_ptr<unsigned char[]> m_bytes;
};

heap_plane read_plane(byte_source& input) {
    const bool large = input.byte() == 255;
    const int width = large ? 352 : input.between(1, 90);
    const int height = large ? 288 : input.between(1, 40);
    return heap_plane(width, height, width + input.below(18));
}

// Noise of a chosen density, bars, and the fuzzer's own bits.
void fill(const heap_plane& image, byte_source& input, bool any_value) {
    const int kind = input.below(4);
    const int density = input.byte();
    noise_source noise(input.word());
    int bits = 0;
    for (std::size_t i = 0; i < image.length(); ++i) {
        if (i % 8 == 0 && kind == 1) bits = input.byte();
        bool set = noise.byte() < density;
        if (kind == 1) set = (bits >> i % 8 & 1) != 0;
        if (kind == 2) set = i / static_cast<std::size_t>(density / 4 + 1) % 2 == 0;
        const unsigned char value = any_value ? noise.byte() : static_cast<unsigned char>(255);
        image.bytes()[i] = set ? value : static_cast<unsigned char>(0);
    }
}

std::vector<ref::component> twin_list(const std::vector<con_info>& list) {
    std::vector<ref::component> same;
    for (const con_info& c : list) same.push_back({c.area, c.left, c.right, c.top, c.bottom});
    return same;
}

void expect_same(const char* what, const std::vector<con_info>& got, const std::vector<ref::component>& wanted) {
    expect_equal(std::string(what) + ": the length", static_cast<long>(got.size()), static_cast<long>(wanted.size()));
    if (twin_list(got) != wanted) differ(what);
}

// --- labelling ------------------------------------------------------------------------------------------------------

std::vector<con_info> label_rows(orva_fd::run_labeller& labeller, const ref::plane& image, bool sparse,
                                 std::vector<con_info> out) {
    labeller.begin();
    for (int y = 0; y < image.height; ++y) {
        const unsigned char* row = &image.at(0, y);
        int first = 0, last = image.width;
        // As tight as can be, or the whole row.
        while (sparse && first < last && row[first] == 0) ++first;
        while (sparse && first < last && row[last - 1] == 0) --last;
        if (first < last || !sparse) labeller.add_row(row, first, last, y);
    }
    labeller.finish(out);
    return out;
}

void label(byte_source& input) {
    static orva_fd::run_labeller kept;
    const heap_plane image = read_plane(input);
    fill(image, input, input.below(4) == 0);
    std::vector<con_info> held;
    for (int i = input.below(12) - 8; i > 0; --i) held.push_back({input.byte(), 3, 9, 2, 7});
    std::vector<ref::component> wanted = twin_list(held);
    ref::label_components(image.plane(), wanted);

    std::vector<con_info> out = held;
    fd_yuv_frame record = image.record();
    orva_fd::bwlabel_ccl().do_comm_ccl(&record, out);
    expect_same("whole images labelled", out, wanted);
    const bool sparse = input.below(2) == 0;
    expect_same("rows labelled", label_rows(kept, image.plane(), sparse, held), wanted);
    orva_fd::run_labeller fresh;
    expect_same("rows labelled by a fresh object", label_rows(fresh, image.plane(), sparse, held), wanted);
    ++all.labelled;
}

// --- morphology -----------------------------------------------------------------------------------------------------

void morph(byte_source& input) {
    const heap_plane image = read_plane(input);
    fill(image, input, input.below(4) == 0);
    const heap_plane untouched = image.copy();
    orva_fd::morphology operations;
    for (const bool dilates : {true, false}) {
        const heap_plane got = image.copy(), wanted = image.copy();
        std::memset(got.bytes(), 0x11, got.length());
        std::memset(wanted.bytes(), 0x22, wanted.length());
        fd_yuv_frame source = image.record(), target = got.record();
        dilates ? operations.dilate(&source, &target) : operations.erode(&source, &target);
        dilates ? ref::dilate(image.plane(), wanted.plane()) : ref::erode(image.plane(), wanted.plane());
        if (!got.equals(wanted)) differ(dilates ? "a dilated image" : "an eroded image");
        if (!image.equals(untouched)) differ("the source of a dilation or erosion");
    }
    ++all.morphed;
}

// --- merging --------------------------------------------------------------------------------------------------------

con_info read_box(noise_source& noise, int width, int height, int largest) {
    const int left = noise.below(width), top = noise.below(height);
    const int right = std::min(width - 1, left + noise.below(largest));
    const int bottom = std::min(height - 1, top + noise.below(largest));
    const int area = 1 + noise.below((right - left + 1) * (bottom - top + 1));
    return {area, static_cast<std::int16_t>(left), static_cast<std::int16_t>(right), static_cast<std::int16_t>(top),
            static_cast<std::int16_t>(bottom)};
}

std::vector<con_info> read_boxes(byte_source& input, int most, int width, int height) {
    noise_source noise(input.word());
    const int largest = input.between(1, 40);
    const int few = input.below(16), many = input.byte() * most / 255;
    std::vector<con_info> boxes;
    for (int i = input.below(4) == 0 ? many : few; i > 0; --i) {
        boxes.push_back(read_box(noise, width, height, noise.below(8) == 0 ? 4 * largest : largest));
    }
    return boxes;
}

void merge(byte_source& input) {
    static orva_fd::box_merger kept;
    const int wide = input.below(3) == 0 ? 16383 : 352, high = input.below(3) == 0 ? 1000 : 288;
    std::vector<con_info> boxes = read_boxes(input, 400, wide, high);
    std::vector<ref::component> wanted = twin_list(boxes);
    ref::log_book unread;
    ref::merge_close(wanted, unread);
    std::vector<con_info> again = boxes;
    kept.merge(boxes);
    expect_same("boxes merged", boxes, wanted);
    orva_fd::box_merger fresh;
    fresh.merge(again);
    expect_same("boxes merged by a fresh object", again, wanted);
    ++all.merged;
}

// --- analysis over frames -------------------------------------------------------------------------------------------

// A region in the upper left of a picture, so that there is picture below it and to its right.
struct scene {
    heap_plane luma;
    heap_plane mask;
    fd_yuv_frame region;
    ref::plane twin_region;
};

scene read_scene(byte_source& input) {
    const int width = input.between(16, 120), height = input.between(16, 90);
    scene s = {heap_plane(width, height + height / 5 + 2, width + width / 5 + input.below(16) + 1),
               heap_plane(width, height, width), fd_yuv_frame(), ref::plane()};
    fill(s.luma, input, true);
    noise_source noise(input.byte());
    for (std::size_t i = 0; i < s.luma.length(); ++i) {
        s.luma.bytes()[i] = static_cast<unsigned char>(s.luma.bytes()[i] / 4 + (noise.below(4) != 0 ? 130 : 60));
    }
    fill(s.mask, input, input.below(4) == 0);
    s.region = s.luma.record();
    s.region.width = static_cast<std::uint32_t>(width);
    s.region.height = static_cast<std::uint32_t>(height);
    s.twin_region = s.luma.plane();
    s.twin_region.width = width;
    s.twin_region.height = height;
    return s;
}

// Boxes around one or more places, whose sizes change from frame to frame; now and then any.
std::vector<con_info> boxes_of_frame(noise_source& noise, int places, int swing, int width, int height) {
    std::vector<con_info> boxes;
    for (int i = 0; i < places; ++i) {
        const int x = width * (2 * (i % 4) + 1) / 8, y = height * (2 * (i / 4) + 1) / 8;
        const int half = 2 + noise.below(swing + 1);
        const int left = std::max(0, x - half), right = std::min(width - 1, x + half);
        const int top = std::max(0, y - half), bottom = std::min(height - 1, y + half);
        const int area = (right - left + 1) * (bottom - top + 1);
        boxes.push_back({std::max(1, area - noise.below(20)), static_cast<std::int16_t>(left),
                         static_cast<std::int16_t>(right), static_cast<std::int16_t>(top),
                         static_cast<std::int16_t>(bottom)});
    }
    return boxes;
}

void analyse(byte_source& input) {
    fuzz::printed_text printed;
    ref::log_book log;
    ref::analysis twin(log);
    orva_fd::foreground_analysis analysis;
    if (input.below(2) == 0) analysis.start();
    const scene s = read_scene(input);
    noise_source noise(input.word());
    const int places = input.below(13), swing = input.below(20);
    for (int frames = input.between(1, 120); frames > 0; --frames) {
        if (noise.below(40) == 0) {
            const int grade = noise.between(-2, 103);
            expect_equal("the code of set_sensitive", analysis.set_sensitive(grade), twin.set_sensitive(grade));
        }
        std::vector<con_info> boxes = boxes_of_frame(noise, places, swing, s.twin_region.width, s.twin_region.height);
        if (noise.below(12) == 0) boxes.push_back(read_box(noise, s.twin_region.width, s.twin_region.height, 30));
        if (noise.below(16) == 0) boxes.clear();
        std::vector<ref::component> twin_boxes = twin_list(boxes);
        fd_result result = {}, wanted = {};
        fd_yuv_frame region = s.region, mask = s.mask.record();
        const bool no_region = noise.below(100) == 0;
        const int code = analysis.set_frame(no_region ? nullptr : &region, &mask, nullptr, boxes, result);
        const int twin_code = twin.set_frame(no_region ? nullptr : &s.twin_region, s.mask.plane(), twin_boxes, wanted);
        expect_equal("the code of a frame's analysis", code, twin_code);
        expect_same("boxes of a frame", boxes, twin_boxes);
        expect_equal("the text of a frame's analysis", printed.take(), log.take_text());
        if (std::memcmp(&result, &wanted, sizeof result) != 0) differ("the result of a frame's analysis");
        ++all.analysed;
        if (result.count > 0) ++all.reported;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    byte_source input(bytes, size);
    while (!input.empty()) {
        switch (input.below(8)) {
            case 0:
            case 1:
                label(input);
                break;
            case 2:
            case 3:
                morph(input);
                break;
            case 4:
            case 5:
            case 6:
                merge(input);
                break;
            default:
                analyse(input);
                break;
        }
    }
    return 0;
}
