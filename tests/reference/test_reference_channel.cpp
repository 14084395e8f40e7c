// The plain twin against values worked out by hand: geometry, working images, holding, whole scenes, refusals.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/reference/ref_library.h"
#include "tests/reference/reference_rows.h"

namespace {

using ref::branch;
using ref_test::host_frame;
using ref_test::k_whole;
using ref_test::of;
using ref_test::row_name;
using ref_test::values;

// --- geometry -------------------------------------------------------------------------------------------------------

struct rescale_row {
    const char* name;
    fd_rect before;
    int width, height;
    values after;
};

class reference_rescale : public testing::TestWithParam<rescale_row> {};

TEST_P(reference_rescale, gives) {
    fd_rect rect = GetParam().before;
    ref::trans_region(rect, GetParam().width, GetParam().height);
    EXPECT_EQ(of(rect), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(rows, reference_rescale,
                         testing::Values(rescale_row{"per mille of a frame",
                                                     {10, 1000, 20, 1000, 500, 1000, 400, 1000},
                                                     352,
                                                     288,
                                                     {3, 352, 5, 288, 176, 352, 115, 288}},
                                         rescale_row{"a frame of twice the size",
                                                     {100, 704, 50, 576, 352, 704, 288, 576},
                                                     352,
                                                     288,
                                                     {50, 352, 25, 288, 176, 352, 144, 288}},
                                         rescale_row{"each value by its own reference",
                                                     {10, 100, 10, 50, 10, 20, 10, 10},
                                                     300,
                                                     200,
                                                     {30, 300, 40, 200, 150, 300, 200, 200}},
                                         rescale_row{"a reference of zero gives zero",
                                                     {10, 0, 20, 1000, 500, 1000, 400, 0},
                                                     352,
                                                     288,
                                                     {0, 352, 5, 288, 176, 352, 0, 288}}),
                         row_name<rescale_row>);

struct align_row {
    const char* name;
    int stride, frame_width, frame_height;
    values before;  // x, y, width, height
    values after;
};

class reference_align : public testing::TestWithParam<align_row> {};

TEST_P(reference_align, gives) {
    const align_row& row = GetParam();
    fd_yuv_frame frame{};
    frame.width = static_cast<std::uint32_t>(row.frame_width);
    frame.height = static_cast<std::uint32_t>(row.frame_height);
    frame.stride[0] = static_cast<std::uint32_t>(row.stride);
    fd_rect rect{};
    rect.x = static_cast<std::uint16_t>(row.before[0]);
    rect.y = static_cast<std::uint16_t>(row.before[1]);
    rect.width = static_cast<std::uint16_t>(row.before[2]);
    rect.height = static_cast<std::uint16_t>(row.before[3]);
    ref::align_region(rect, frame);
    EXPECT_EQ((values{rect.x, rect.y, rect.width, rect.height}), row.after);
    ref::align_region(rect, frame);
    EXPECT_EQ((values{rect.x, rect.y, rect.width, rect.height}), row.after) << "the second time changes nothing";
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_align,
    testing::Values(
        align_row{"x 21 goes back to 16", 384, 352, 288, {21, 0, 30, 10}, {16, 0, 36, 10}},
        align_row{"x 20 goes back to 16", 384, 352, 288, {20, 0, 30, 10}, {16, 0, 34, 10}},
        align_row{"an odd width grows", 384, 352, 288, {16, 0, 31, 10}, {16, 0, 32, 10}},
        align_row{"an odd width as wide as the frame shrinks", 384, 31, 288, {0, 0, 31, 10}, {0, 0, 30, 10}},
        align_row{"y 7 goes back to 6", 384, 352, 288, {0, 7, 30, 10}, {0, 6, 30, 12}},
        align_row{"an odd height as high as the frame shrinks", 384, 352, 17, {0, 0, 30, 17}, {0, 0, 30, 16}},
        align_row{"a single column of a single column vanishes", 16, 1, 8, {0, 0, 1, 8}, {0, 0, 0, 8}},
        align_row{"another stride leaves all as it is", 360, 352, 288, {21, 7, 31, 11}, {21, 7, 31, 11}}),
    row_name<align_row>);

TEST(reference_cut, moves_both_planes_by_the_luma_stride) {
    std::vector<unsigned char> bytes(1);
    fd_yuv_frame frame{};
    frame.virt_addr[0] = bytes.data();
    frame.virt_addr[1] = bytes.data();
    frame.phys_addr[0] = 1000;
    frame.phys_addr[1] = 2000;
    frame.stride[0] = 360;
    frame.stride[1] = 999;
    fd_rect rect{};
    rect.x = 3;
    rect.y = 7;
    rect.width = 30;
    rect.height = 10;
    const fd_yuv_frame region = ref::cut_region(rect, frame);
    EXPECT_EQ(region.phys_addr[0], 1000u + 360 * 7 + 3);
    EXPECT_EQ(region.phys_addr[1], 2000u + 360 * 3 + 3);
    EXPECT_EQ(region.virt_addr[0] - frame.virt_addr[0], 360 * 7 + 3);
    EXPECT_EQ(region.virt_addr[1] - frame.virt_addr[1], 360 * 3 + 3);
    EXPECT_EQ(region.width, 30u);
    EXPECT_EQ(region.height, 10u);
    EXPECT_EQ(region.stride[1], 999u);
}

struct fit_row {
    const char* name;
    fd_rect region;
    int frame_width, frame_height, stride;
    bool fits;
};

class reference_fit : public testing::TestWithParam<fit_row> {};

TEST_P(reference_fit, is_decided) {
    const fit_row& row = GetParam();
    fd_yuv_frame frame{};
    frame.width = static_cast<std::uint32_t>(row.frame_width);
    frame.height = static_cast<std::uint32_t>(row.frame_height);
    frame.stride[0] = static_cast<std::uint32_t>(row.stride);
    EXPECT_EQ(ref::region_fits(row.region, frame), row.fits);
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_fit,
    testing::Values(
        fit_row{"the whole frame", k_whole, 352, 288, 352, true}, fit_row{"an empty frame", k_whole, 0, 0, 352, false},
        fit_row{"a frame without rows", k_whole, 352, 0, 352, false},
        fit_row{"one pixel, stride not aligned", k_whole, 1, 1, 2, true},
        fit_row{"one pixel, stride aligned", k_whole, 1, 1, 16, false},
        fit_row{"a region that vanishes on a tiny frame", {0, 100, 0, 100, 10, 100, 10, 100}, 9, 9, 10, false},
        fit_row{"mixed references beyond the frame", {0, 352, 0, 288, 704, 704, 10, 288}, 352, 288, 352, false},
        fit_row{"mixed references on another frame", {0, 352, 0, 288, 704, 704, 10, 288}, 320, 240, 320, true},
        fit_row{"one column beyond an odd frame", {1, 351, 0, 288, 351, 351, 288, 288}, 351, 288, 352, true},
        fit_row{"one column beyond an even frame", {1, 352, 0, 288, 352, 352, 288, 288}, 352, 288, 354, false},
        fit_row{"one row beyond an odd frame", {0, 352, 1, 287, 352, 352, 287, 287}, 352, 287, 354, true},
        fit_row{"two rows beyond an odd frame", {0, 352, 2, 287, 352, 352, 287, 287}, 352, 287, 354, false}),
    row_name<fit_row>);

// --- working images -------------------------------------------------------------------------------------------------

TEST(reference_images, begin_with_zeros_at_full_size) {
    ref::log_book log;
    ref::pre_stage stage(log);
    EXPECT_EQ(stage.foreground().bytes(), std::vector<unsigned char>(101376, 0));
    EXPECT_EQ(stage.difference().bytes(), std::vector<unsigned char>(101376, 0));
    EXPECT_EQ(stage.rgb().bytes(), std::vector<unsigned char>(304128, 0));
    EXPECT_EQ(stage.rgb().rgb().red - stage.rgb().rgb().green, 101376);
}

TEST(reference_images, keep_stale_bytes_beside_and_below_a_smaller_region) {
    ref::log_book log;
    ref::channel channel(log, k_whole);
    fd_result result{};
    host_frame first(352, 288, 352, 10);
    ASSERT_EQ(channel.set_frame(first.frame(), result), 0);
    EXPECT_EQ(log.hits(branch::stage_resized), 0) << "352 x 288 is the size at the start";
    host_frame second(176, 144, 176, 25);
    ASSERT_EQ(channel.set_frame(second.frame(), result), 0);
    EXPECT_EQ(log.hits(branch::stage_resized), 1);

    // The first frame left its luma 10 as the previous one. Columns from 176 on keep it; the two dilations carry it as
    // padding into the mask and back. The difference of 15 in the region is below the threshold.
    ref::plane difference = channel.stage().difference().view();
    ref::plane mask = channel.stage().foreground().view();
    EXPECT_EQ(channel.stage().last_threshold(), 20);
    EXPECT_EQ(difference.at(0, 0), 25);
    EXPECT_EQ(difference.at(175, 143), 25);
    EXPECT_EQ(difference.at(176, 143), 10);
    EXPECT_EQ(difference.at(0, 144), 10);
    EXPECT_EQ(mask.at(175, 143), 0);
    EXPECT_EQ(mask.at(176, 0), 10);
    EXPECT_EQ(mask.at(351, 143), 10);
    EXPECT_EQ(mask.at(176, 144), 0);
    const ref::rgb_view rgb = channel.stage().rgb().rgb();
    EXPECT_EQ(rgb.green - rgb.blue.data, 352 * 144);
    EXPECT_EQ(rgb.green[0], 25);
    EXPECT_EQ(rgb.green[176], 10) << "the first frame's blue plane";
}

TEST(reference_images, find_a_flame_on_the_first_frame) {
    ref::log_book log;
    ref::channel channel(log, k_whole);
    host_frame picture(352, 288, 352, 60);
    picture.paint(100, 100, 20, 20, 250, 60, 170);
    std::vector<ref::component> components;
    channel.stage().set_frame(picture.frame(), components);
    ASSERT_EQ(components.size(), 1u);
    EXPECT_TRUE(components[0] == (ref::component{22 * 22, 99, 120, 99, 120}));
    // B 250 - 121, G 250 + 24 - 30, R 250 + 58.
    const ref::rgb_view rgb = channel.stage().rgb().rgb();
    EXPECT_EQ(rgb.blue.at(110, 110), 129);
    EXPECT_EQ(rgb.green_plane().at(110, 110), 244);
    EXPECT_EQ(rgb.red_plane().at(110, 110), 255);
    components.clear();
    channel.stage().set_frame(picture.frame(), components);
    EXPECT_TRUE(components.empty()) << "nothing moved";
}

// --- holding --------------------------------------------------------------------------------------------------------

fd_result boxes(int count, int x) {
    fd_result result{};
    result.count = static_cast<std::uint16_t>(count);
    for (int i = 0; i < count; ++i) {
        result.rects[i].x = static_cast<std::uint16_t>(x + i);
        result.rects[i].width = 7;
        result.rects[i].height = 9;
    }
    return result;
}

class reference_holding : public testing::Test {
protected:
    // Gives one frame with `count` boxes from x on, and returns {count, x of the first} of what is reported.
    values step(int count, int x) {
        fd_result result = boxes(count, x);
        m_holder.step(result, m_roi, 352, 288);
        m_reported = result;
        return {result.count, result.rects[0].x};
    }

    ref::log_book m_log;
    ref::result_holder m_holder{m_log};
    fd_rect m_roi = {100, 352, 50, 288, 200, 352, 200, 288};
    fd_result m_reported{};
};

TEST_F(reference_holding, reports_at_once_in_frame_coordinates) {
    EXPECT_EQ(step(0, 0), (values{0, 0}));
    EXPECT_EQ(step(2, 30), (values{2, 130}));
    EXPECT_EQ(of(m_reported.rects[1]), (values{131, 352, 50, 288, 7, 352, 9, 288}));
}

TEST_F(reference_holding, freezes_for_six_frames_and_takes_the_seventh) {
    step(1, 30);
    for (int frame = 1; frame <= 6; ++frame) EXPECT_EQ(step(1, 40), (values{1, 130})) << frame;
    EXPECT_EQ(step(1, 40), (values{1, 140}));
    EXPECT_EQ(m_holder.count(), 0);
    EXPECT_EQ(m_log.hits(branch::hold_frozen_boxes), 6);
    EXPECT_EQ(m_log.hits(branch::hold_kept_replaced), 1);
}

TEST_F(reference_holding, keeps_for_fifteen_frames_and_ends_with_the_sixteenth) {
    step(1, 30);
    for (int frame = 1; frame <= 15; ++frame) EXPECT_EQ(step(0, 0), (values{1, 130})) << frame;
    EXPECT_EQ(m_holder.count(), 15);
    EXPECT_EQ(step(0, 0), (values{0, 130})) << "the old box stays behind a count of 0";
    EXPECT_EQ(m_log.hits(branch::hold_frozen_empty), 6);
    EXPECT_EQ(m_log.hits(branch::hold_kept_empty), 9);
    EXPECT_EQ(m_log.hits(branch::hold_limit_ended), 1);
    EXPECT_EQ(step(1, 60), (values{1, 160})) << "a new report starts at once";
}

TEST_F(reference_holding, replaces_at_the_limit) {
    step(1, 30);
    for (int frame = 1; frame <= 15; ++frame) step(0, 0);
    EXPECT_EQ(step(3, 70), (values{3, 170}));
    EXPECT_EQ(m_log.hits(branch::hold_limit_replaced), 1);
}

TEST_F(reference_holding, starts_its_count_again_and_keeps_the_boxes) {
    step(1, 30);
    for (int frame = 1; frame <= 10; ++frame) step(0, 0);
    m_holder.restart_count();
    for (int frame = 1; frame <= 15; ++frame) EXPECT_EQ(step(0, 0), (values{1, 130})) << frame;
    EXPECT_EQ(step(0, 0), (values{0, 130}));
}

TEST_F(reference_holding, moves_a_box_only_when_it_is_taken) {
    step(1, 30);
    m_roi.x = 0;
    EXPECT_EQ(step(0, 0), (values{1, 130}));
}

// --- the whole channel ----------------------------------------------------------------------------------------------

// A flame of 40 or 32 pixels, brighter and darker by turns, so that all of it moves in every frame. With the two rows
// and columns that dilation adds its boxes are 42 x 42 and 34 x 34, both at (99, 99).
host_frame flame(int frame, bool grows) {
    host_frame picture(352, 288, 352, 60);
    const int size = !grows || frame % 2 == 0 ? 40 : 32;
    picture.paint(100, 100, size, size, frame % 2 == 0 ? 250 : 210, 60, 170);
    return picture;
}

TEST(reference_scene, a_growing_flame_is_reported_from_the_51st_frame_and_held) {
    ref::library library;
    ASSERT_EQ(library.init(), 0);
    int handle = -1;
    ASSERT_EQ(library.start(&handle, k_whole), 0);
    fd_result result{};
    for (int frame = 0; frame < 50; ++frame) {
        host_frame picture = flame(frame, true);
        ASSERT_EQ(library.set_frame(handle, picture.frame(), &result), 0);
        ASSERT_EQ(result.count, 0) << frame;
    }
    host_frame last = flame(50, true);
    ASSERT_EQ(library.set_frame(handle, last.frame(), &result), 0);
    ASSERT_EQ(result.count, 1);
    // 26 boxes of 42 and 25 of 34, all at 99: width (26 * 42 + 25 * 34 + 26) / 51 = 1968 / 51.
    // Areas 1764 and 1156: mean 1466, deviation (26 * 298 + 25 * 310 + 26) / 51 = 304, between 244 and 1466.
    EXPECT_EQ(of(result.rects[0]), (values{99, 352, 99, 288, 38, 352, 38, 288}));
    for (int held = 1; held <= 15; ++held) {
        ASSERT_EQ(library.set_frame(handle, last.frame(), &result), 0);
        EXPECT_EQ(result.count, 1) << held;
    }
    ASSERT_EQ(library.set_frame(handle, last.frame(), &result), 0);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(library.log(), "");
    EXPECT_EQ(library.book().hits(branch::frame_taken), 67);
    EXPECT_EQ(library.book().hits(branch::frame_with_boxes), 16);
    EXPECT_EQ(library.un_init(), 0);
}

TEST(reference_scene, a_steady_flame_is_refused_with_its_ratio) {
    ref::log_book log;
    ref::channel channel(log, k_whole);
    fd_result result{};
    for (int frame = 0; frame < 52; ++frame) {
        host_frame picture = flame(frame, false);
        ASSERT_EQ(channel.set_frame(picture.frame(), result), 0);
        EXPECT_EQ(result.count, 0);
    }
    EXPECT_EQ(log.text(), "0.00  -----------------\n0.00  -----------------\n");
    EXPECT_EQ(log.hits(branch::stable_too_steady), 2);
}

TEST(reference_scene, two_twins_side_by_side_do_not_touch_each_other) {
    const auto run = [](std::string& text) {
        ref::log_book log;
        ref::channel channel(log, k_whole);
        fd_result result{};
        for (int frame = 0; frame < 53; ++frame) {
            host_frame picture = flame(frame, false);
            channel.set_frame(picture.frame(), result);
        }
        text = log.text();
    };
    std::string one;
    std::string two;
    std::thread first(run, std::ref(one));
    std::thread second(run, std::ref(two));
    first.join();
    second.join();
    EXPECT_EQ(one, "0.00  -----------------\n0.00  -----------------\n0.00  -----------------\n");
    EXPECT_EQ(one, two);
}

// --- refusals -------------------------------------------------------------------------------------------------------

struct refusal_row {
    const char* name;
    void (*spoil)(fd_yuv_frame&);
    branch expected;
};

class reference_refusal : public testing::TestWithParam<refusal_row> {};

TEST_P(reference_refusal, changes_nothing) {
    ref::library library;
    library.init();
    int handle = -1;
    library.start(&handle, {10, 1000, 20, 1000, 500, 1000, 400, 1000});
    host_frame picture(352, 288, 352, 60);
    GetParam().spoil(picture.frame());
    fd_result result;
    std::memset(&result, 0x5a, sizeof result);
    const fd_result before = result;
    EXPECT_EQ(library.set_frame(handle, picture.frame(), &result), 7);
    EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
    EXPECT_EQ(library.book().hits(GetParam().expected), 1);
    EXPECT_EQ(library.take_log(),
              "ERR. [Fire Detection: frame_process::set_frame : 78] \n"
              "[Fire Detection: FireDetectionManager: FireDetectionMain] 140 entered \n"
              "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetFrame] 117 entered \n");
    EXPECT_EQ(library.log(), "");
    const ref::channel& channel = *library.channel_of(handle);
    EXPECT_EQ(of(channel.roi()), (values{10, 1000, 20, 1000, 500, 1000, 400, 1000}));
    EXPECT_FALSE(channel.size_known());
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_refusal,
    testing::Values(
        refusal_row{"another format", [](fd_yuv_frame& f) { f.format = static_cast<fd_pixel_format>(1); },
                    branch::refused_format},
        refusal_row{"353 columns", [](fd_yuv_frame& f) { f.width = 353; }, branch::refused_width},
        refusal_row{"289 rows", [](fd_yuv_frame& f) { f.height = 289; }, branch::refused_height},
        refusal_row{"no luma", [](fd_yuv_frame& f) { f.virt_addr[0] = nullptr; }, branch::refused_null_plane},
        refusal_row{"no chroma", [](fd_yuv_frame& f) { f.virt_addr[1] = nullptr; }, branch::refused_null_plane},
        refusal_row{"no columns", [](fd_yuv_frame& f) { f.width = 0; }, branch::refused_region},
        refusal_row{"too low for the region", [](fd_yuv_frame& f) { f.height = 2; }, branch::refused_region}),
    row_name<refusal_row>);

}  // namespace
