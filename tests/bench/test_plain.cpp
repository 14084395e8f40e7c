// What the library is measured against gives the library's answers: the plain text in both builds, on the benchmark's
// scenes and on sizes that are not the largest.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "bench/check.h"
#include "bench/contenders.h"
#include "bench/painting.h"
#include "bench/plain/plain.h"
#include "bench/scenes.h"

namespace {

const double k_limit_ns = 3e8;  // for one scene: merging makes some of the plain text's frames very slow

const bench::six_functions k_shipped = {ORVA_FireDetection_Init,
                                        ORVA_FireDetection_UnInit,
                                        ORVA_FireDetection_Start,
                                        ORVA_FireDetection_Stop,
                                        ORVA_FireDetection_SetFrame,
                                        ORVA_FireDetection_SetSensitiveGrade,
                                        nullptr};

std::vector<bench::scene> all_scenes() {
    std::vector<bench::scene> scenes;
    const int sizes[][2] = {{352, 288}, {176, 144}, {350, 286}, {64, 48}, {16, 8}, {2, 2}};
    for (const int* size : sizes) {
        scenes.push_back(bench::quiet_scene(size[0], size[1]));
        scenes.push_back(bench::busy_scene(size[0], size[1], size[0] / 6));
    }
    for (const std::vector<bench::painting>& group : {bench::constructed_paintings(), bench::found_paintings()}) {
        for (const bench::painting& p : group) scenes.push_back(bench::paint(p, 352, 288));
    }
    return scenes;
}

struct build_row {
    const char* name;
    const bench::six_functions* functions;
};

void PrintTo(const build_row& row, std::ostream* out) {
    *out << row.name;
}

class plain_builds : public testing::TestWithParam<build_row> {};

TEST_P(plain_builds, answer_as_the_library_does) {
    const auto shipped = bench::make_contender("library", k_shipped);
    const auto plain = bench::make_contender("plain", *GetParam().functions);
    int frames_with_boxes = 0;
    for (const bench::scene& s : all_scenes()) {
        const bench::agreement a = bench::compare(*shipped, *plain, s, 75, k_limit_ns);
        EXPECT_TRUE(a.same) << a.difference;
        EXPECT_GT(a.frames, 0) << s.name;
        frames_with_boxes += a.frames_with_boxes;
    }
    EXPECT_GT(frames_with_boxes, 50) << "nothing burns in the scenes";
}

INSTANTIATE_TEST_SUITE_P(, plain_builds,
                         testing::Values(build_row{"at_O2", &plain_o2::functions},
                                         build_row{"at_O3", &plain_o3::functions}),
                         [](const testing::TestParamInfo<build_row>& row) { return std::string(row.param.name); });

struct call_row {
    const char* name;
    int (*call)(const bench::six_functions& functions);
};

void PrintTo(const call_row& row, std::ostream* out) {
    *out << row.name;
}

int start_with(const bench::six_functions& f, fd_rect region) {
    int handle = -1;
    return f.start(&handle, region);
}

int frame_on(const bench::six_functions& f, int handle, std::uint32_t width) {
    fd_yuv_frame frame = bench::picture(16, 16).view();
    frame.width = width;
    fd_result result;
    return f.set_frame(handle, frame, &result);
}

const call_row k_calls[] = {
    {"init_again", [](const bench::six_functions& f) { return f.init(); }},
    {"start_without_a_handle", [](const bench::six_functions& f) { return f.start(nullptr, bench::whole_picture()); }},
    {"start_with_a_reference_of_0",
     [](const bench::six_functions& f) {
         return start_with(f, {0, 0, 0, 1, 1, 1, 1, 1});
     }},
    {"start_beyond_the_right_edge",
     [](const bench::six_functions& f) {
         return start_with(f, {1, 100, 0, 100, 100, 100, 100, 100});
     }},
    {"start_below_the_lower_edge",
     [](const bench::six_functions& f) {
         return start_with(f, {0, 100, 1, 100, 100, 100, 100, 100});
     }},
    {"start_with_a_value_of_32768",
     [](const bench::six_functions& f) {
         return start_with(f, {32768, 65535, 0, 1, 1, 10, 1, 1});
     }},
    {"stop_128", [](const bench::six_functions& f) { return f.stop(128); }},
    {"a_frame_for_128", [](const bench::six_functions& f) { return frame_on(f, 128, 16); }},
    {"a_frame_for_a_handle_that_is_not_open", [](const bench::six_functions& f) { return frame_on(f, 5, 16); }},
    {"a_grade_for_a_handle_that_is_not_open", [](const bench::six_functions& f) { return f.set_grade(5, 50); }},
    {"a_frame_that_is_too_wide",
     [](const bench::six_functions& f) {
         int handle = -1;
         f.start(&handle, bench::whole_picture());
         const int code = frame_on(f, handle, 353);
         f.stop(handle);
         return code;
     }},
    {"a_grade_of_101",
     [](const bench::six_functions& f) {
         int handle = -1;
         f.start(&handle, bench::whole_picture());
         const int code = f.set_grade(handle, 101);
         f.stop(handle);
         return code;
     }},
};

class refused_calls : public testing::TestWithParam<call_row> {};

TEST_P(refused_calls, have_the_librarys_code_and_lines) {
    std::string texts[2];
    int codes[2];
    const bench::six_functions* const both[2] = {&k_shipped, &plain_o2::functions};
    for (std::size_t i = 0; i < 2; ++i) {
        both[i]->init();
        testing::internal::CaptureStdout();
        codes[i] = GetParam().call(*both[i]);
        texts[i] = testing::internal::GetCapturedStdout();
        both[i]->uninit();
    }
    EXPECT_NE(codes[0], FD_OK);
    EXPECT_EQ(codes[0], codes[1]);
    EXPECT_EQ(texts[0], texts[1]);
}

INSTANTIATE_TEST_SUITE_P(, refused_calls, testing::ValuesIn(k_calls),
                         [](const testing::TestParamInfo<call_row>& row) { return std::string(row.param.name); });

}  // namespace
