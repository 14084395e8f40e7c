// Where a region lies in a frame: rescaling, alignment, the view, and which frames are refused.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "channel/frame_process.h"
#include "preprocess/CYuv420_Rgb.h"
#include "tests/channel/components.h"
#include "tests/reference/ref_channel.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::frame_process;
using orva_fd::test_access;
using support::nv21_picture;
using support::row_name;
using support::text_of;

// --- trans_region ---------------------------------------------------------------------------------------------------

struct scale_row : support::named_row {
    fd_rect before;
    int width;
    int height;
    fd_rect after;
};

class trans_region : public testing::TestWithParam<scale_row> {};

TEST_P(trans_region, brings_every_value_to_the_frame) {
    fd_rect rect = GetParam().before;
    EXPECT_EQ(frame_process().trans_region(&rect, GetParam().width, GetParam().height), 0);
    EXPECT_EQ(text_of(rect), text_of(GetParam().after));
}

INSTANTIATE_TEST_SUITE_P(
    table, trans_region,
    testing::Values(
        scale_row{
            {"per mille"}, {10, 1000, 20, 1000, 500, 1000, 400, 1000}, 352, 288, {3, 352, 5, 288, 176, 352, 115, 288}},
        scale_row{{"half of 704 x 576"},
                  {100, 704, 50, 576, 301, 704, 201, 576},
                  352,
                  288,
                  {50, 352, 25, 288, 150, 352, 100, 288}},
        scale_row{{"the whole picture"}, {0, 1, 0, 1, 1, 1, 1, 1}, 351, 287, {0, 351, 0, 287, 351, 351, 287, 287}},
        scale_row{
            {"each value has its own reference"}, {1, 2, 1, 3, 1, 4, 1, 5}, 60, 60, {30, 60, 20, 60, 15, 60, 12, 60}},
        scale_row{{"x reference 0 gives 0"},
                  {7, 0, 20, 1000, 500, 1000, 400, 1000},
                  352,
                  288,
                  {0, 352, 5, 288, 176, 352, 115, 288}},
        scale_row{{"y reference 0 gives 0"},
                  {10, 1000, 7, 0, 500, 1000, 400, 1000},
                  352,
                  288,
                  {3, 352, 0, 288, 176, 352, 115, 288}},
        scale_row{{"width reference 0 gives 0"},
                  {10, 1000, 20, 1000, 7, 0, 400, 1000},
                  352,
                  288,
                  {3, 352, 5, 288, 0, 352, 115, 288}},
        scale_row{{"height reference 0 gives 0"},
                  {10, 1000, 20, 1000, 500, 1000, 7, 0},
                  352,
                  288,
                  {3, 352, 5, 288, 176, 352, 0, 288}},
        scale_row{{"a frame without size"}, {10, 1000, 20, 1000, 500, 1000, 400, 1000}, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
        // 352 * 65535 = 23068320, of which the low 16 bits are 65184
        scale_row{{"results are cut to 16 bits"},
                  {65535, 1, 0, 1, 1, 1, 1, 1},
                  352,
                  288,
                  {65184, 352, 0, 288, 352, 352, 288, 288}}),
    row_name());

// --- get_frame_roi --------------------------------------------------------------------------------------------------

struct view_row : support::named_row {
    int x, y, width, height;  // the region
    int frame_width, frame_height, stride;
    int wanted_x, wanted_y, wanted_width, wanted_height;
};

class get_frame_roi : public testing::TestWithParam<view_row> {};

TEST_P(get_frame_roi, aligns_the_region_and_cuts_a_view) {
    const view_row& row = GetParam();
    frame_process channel;
    const auto word = [](int value) { return static_cast<uint16_t>(value); };
    test_access::roi(channel) = {word(row.x), 111, word(row.y), 222, word(row.width), 333, word(row.height), 444};
    std::vector<unsigned char> pixels(1);
    fd_yuv_frame src;
    std::memset(&src, 0x11, sizeof src);
    src.width = static_cast<unsigned>(row.frame_width);
    src.height = static_cast<unsigned>(row.frame_height);
    src.stride[0] = static_cast<unsigned>(row.stride);
    src.phys_addr[0] = 0x10000000;
    src.phys_addr[1] = 0x20000000;
    src.virt_addr[0] = pixels.data();
    src.virt_addr[1] = pixels.data() + 1;
    fd_yuv_frame dst = src;
    EXPECT_EQ(channel.get_frame_roi(&src, &dst), 0);

    EXPECT_EQ(text_of(test_access::roi(channel)),
              text_of(fd_rect{word(row.wanted_x), 111, word(row.wanted_y), 222, word(row.wanted_width), 333,
                              word(row.wanted_height), 444}));
    const unsigned luma = static_cast<unsigned>(row.stride * row.wanted_y + row.wanted_x);
    const unsigned chroma = static_cast<unsigned>(row.stride * (row.wanted_y / 2) + row.wanted_x);
    EXPECT_EQ(dst.phys_addr[0], 0x10000000 + luma);
    EXPECT_EQ(dst.phys_addr[1], 0x20000000 + chroma);
    EXPECT_EQ(dst.virt_addr[0] - src.virt_addr[0], static_cast<std::ptrdiff_t>(luma));
    EXPECT_EQ(dst.virt_addr[1] - src.virt_addr[1], static_cast<std::ptrdiff_t>(chroma));
    EXPECT_EQ(dst.width, static_cast<unsigned>(row.wanted_width));
    EXPECT_EQ(dst.height, static_cast<unsigned>(row.wanted_height));
    EXPECT_EQ(static_cast<unsigned>(dst.format), 0x11111111u);
    EXPECT_EQ(dst.reserved, 0x11111111);
    EXPECT_EQ(dst.phys_addr[2], src.phys_addr[2]);
    EXPECT_EQ(dst.virt_addr[2], src.virt_addr[2]);
    for (int plane = 0; plane < 3; ++plane) EXPECT_EQ(dst.stride[plane], src.stride[plane]);
}

INSTANTIATE_TEST_SUITE_P(
    horizontal, get_frame_roi,
    testing::Values(view_row{{"x 21 and width 30"}, 21, 0, 30, 10, 352, 288, 384, 16, 0, 36, 10},
                    view_row{{"x 20 and width 30"}, 20, 0, 30, 10, 352, 288, 384, 16, 0, 34, 10},
                    view_row{{"x 16 and width 31"}, 16, 0, 31, 10, 352, 288, 384, 16, 0, 32, 10},
                    view_row{{"width 31 in a frame of 32"}, 0, 0, 31, 10, 32, 288, 384, 0, 0, 32, 10},
                    view_row{{"width 31 in a frame of 31"}, 0, 0, 31, 10, 31, 288, 384, 0, 0, 30, 10},
                    view_row{
                        {"the width alone is compared with the frame"}, 16, 0, 31, 10, 40, 288, 384, 16, 0, 32, 10},
                    view_row{{"x 31 and width 1"}, 31, 0, 1, 10, 352, 288, 384, 16, 0, 16, 10},
                    view_row{{"x 15 moves to 0"}, 15, 0, 20, 10, 352, 288, 384, 0, 0, 36, 10},
                    view_row{{"an aligned region stays"}, 32, 4, 64, 48, 352, 288, 384, 32, 4, 64, 48}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    vertical, get_frame_roi,
    testing::Values(view_row{{"y 7 and height 10"}, 0, 7, 16, 10, 352, 288, 384, 0, 6, 16, 12},
                    view_row{{"y 7 and height 11"}, 0, 7, 16, 11, 352, 288, 384, 0, 6, 16, 12},
                    view_row{{"y 6 and height 11"}, 0, 6, 16, 11, 352, 288, 384, 0, 6, 16, 12},
                    view_row{{"height 11 in a frame of 12"}, 0, 0, 16, 11, 352, 12, 384, 0, 0, 16, 12},
                    view_row{{"height 11 in a frame of 11"}, 0, 0, 16, 11, 352, 11, 384, 0, 0, 16, 10},
                    view_row{
                        {"the height alone is compared with the frame"}, 0, 6, 16, 11, 352, 14, 384, 0, 6, 16, 12}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    strides, get_frame_roi,
    testing::Values(view_row{{"360 leaves odd values alone"}, 21, 7, 31, 11, 352, 288, 360, 21, 7, 31, 11},
                    view_row{{"352 aligns"}, 21, 7, 31, 11, 352, 288, 352, 16, 6, 36, 12},
                    view_row{{"353 leaves alone"}, 21, 7, 31, 11, 352, 288, 353, 21, 7, 31, 11},
                    view_row{{"351 leaves alone"}, 21, 7, 31, 11, 351, 288, 351, 21, 7, 31, 11},
                    view_row{{"an odd y takes the chroma row above"}, 3, 5, 8, 8, 352, 288, 360, 3, 5, 8, 8}),
    row_name());

TEST(get_frame_roi_again, finds_its_own_values_aligned) {
    support::random_source random;
    std::vector<unsigned char> pixels(352 * 288 * 2);
    for (int round = 0; round < 2000; ++round) {
        frame_process channel;
        const auto word = [&](int limit) { return static_cast<uint16_t>(random.below(limit)); };
        test_access::roi(channel) = {word(352), 352, word(288), 288, word(353), 352, word(289), 288};
        fd_yuv_frame src = {};
        src.width = 352;
        src.height = 288;
        src.stride[0] = 352;
        src.virt_addr[0] = pixels.data();
        src.virt_addr[1] = pixels.data() + 352 * 288;
        fd_yuv_frame dst = src;
        channel.get_frame_roi(&src, &dst);
        const std::string once = text_of(test_access::roi(channel));
        channel.get_frame_roi(&src, &dst);
        EXPECT_EQ(text_of(test_access::roi(channel)), once) << "seed " << random.seed();
        EXPECT_EQ(test_access::roi(channel).x % 16, 0);
        EXPECT_EQ(
            (test_access::roi(channel).y | test_access::roi(channel).width | test_access::roi(channel).height) % 2, 0);
    }
}

// --- frames that are taken and frames that are refused --------------------------------------------------------------

// Everything that a refused frame must leave as it was.
struct channel_state {
    explicit channel_state(frame_process& channel) {
        orva_fd::pre_process& stage = test_access::stage(channel);
        for (const orva_fd::hisi_mmz_mem* memory : {&test_access::fg_mem(stage), &test_access::rgb_mem(stage),
                                                    &test_access::diff_mem(stage), &test_access::blob_mem(stage)}) {
            images.append(static_cast<const char*>(memory->virt_addr()), memory->size());
        }
        for (const fd_yuv_frame* image :
             {&test_access::fg_img(stage), &test_access::rgb_img(stage), &test_access::diff_img(stage)}) {
            numbers += std::to_string(image->width) + "x" + std::to_string(image->height) + " ";
        }
        numbers += text_of(test_access::roi(channel)) + " hold " + std::to_string(test_access::hold_count(channel)) +
                   " known " + std::to_string(test_access::roi_size_known(channel)) + " " +
                   std::to_string(test_access::roi_width(channel)) + "x" +
                   std::to_string(test_access::roi_height(channel)) + " stage " +
                   std::to_string(test_access::width(stage)) + "x" + std::to_string(test_access::height(stage)) +
                   " thresh " + std::to_string(test_access::stable_thresh(test_access::analysis(channel)));
        for (const auto& list : test_access::history(test_access::analysis(channel)))
            numbers += "[" + text_of(list) + "]";
        last.assign(reinterpret_cast<const char*>(&test_access::last_result(channel)), sizeof(fd_result));
    }
    bool operator==(const channel_state& other) const {
        return images == other.images && numbers == other.numbers && last == other.last;
    }

    std::string images, numbers, last;
};

struct refusal_row : support::named_row {
    fd_rect region;
    fd_yuv_frame frame;  // format, size, strides; addresses other than null are set by the test
    bool null_luma;
    bool null_chroma;
};

fd_yuv_frame frame_of(unsigned width, unsigned height, unsigned stride, unsigned format = 0) {
    fd_yuv_frame frame = {};
    frame.format = static_cast<fd_pixel_format>(format);
    frame.width = width;
    frame.height = height;
    frame.stride[0] = frame.stride[1] = stride;
    return frame;
}

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

class refused_frames : public testing::TestWithParam<refusal_row> {
protected:
    static void SetUpTestSuite() {
        orva_fd::fd_table::init();
        orva_fd::pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }

    static void expect_refused(frame_process& channel) {
        static std::vector<unsigned char> pixels(400 * 500);
        fd_yuv_frame frame = GetParam().frame;
        frame.virt_addr[0] = GetParam().null_luma ? nullptr : pixels.data();
        frame.virt_addr[1] = GetParam().null_chroma ? nullptr : pixels.data() + 400 * 300;
        fd_result result;
        std::memset(&result, 0x5a, sizeof result);
        const fd_result before = result;
        const channel_state state(channel);
        const support::outcome got = support::outcome_of([&] { return channel.set_frame(frame, result); });
        EXPECT_EQ(got.status, 7);
        EXPECT_EQ(got.text, "ERR. [Fire Detection: frame_process::set_frame : 78] \n");
        EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
        EXPECT_TRUE(channel_state(channel) == state) << channel_state(channel).numbers << "\nwas\n" << state.numbers;
    }
};

TEST_P(refused_frames, leave_a_new_channel_as_it_was) {
    frame_process channel;
    ASSERT_EQ(channel.start(GetParam().region), 0);
    expect_refused(channel);
}

// Running on 64 x 48 pixels, holding a result, with a history.
TEST_P(refused_frames, leave_a_running_channel_as_it_was) {
    frame_process channel;
    ASSERT_EQ(channel.start(k_whole), 0);
    nv21_picture picture(64, 48);
    fd_yuv_frame frame = picture.frame();
    fd_result result;
    ASSERT_EQ(channel.set_frame(frame, result), 0);
    test_access::roi(channel) = GetParam().region;
    test_access::hold_count(channel) = 4;
    test_access::last_result(channel).count = 2;
    test_access::history(test_access::analysis(channel)).push_back({support::box(1, 2, 3, 4, 5)});
    expect_refused(channel);
}

INSTANTIATE_TEST_SUITE_P(
    plain, refused_frames,
    testing::Values(
        refusal_row{{"format 1"}, k_whole, frame_of(352, 288, 352, 1), false, false},
        refusal_row{{"format 7fffffff"}, k_whole, frame_of(352, 288, 352, 0x7fffffff), false, false},
        refusal_row{{"format ffffffff"}, k_whole, frame_of(352, 288, 352, 0xffffffff), false, false},
        refusal_row{{"353 columns"}, k_whole, frame_of(353, 288, 368), false, false},
        refusal_row{{"289 rows"}, k_whole, frame_of(352, 289, 352), false, false},
        refusal_row{
            {"a width that is negative as a signed number"}, k_whole, frame_of(0xffffffffu, 288, 352), false, false},
        refusal_row{
            {"a height that is negative as a signed number"}, k_whole, frame_of(352, 0x80000000u, 352), false, false},
        refusal_row{{"a width of 65536"}, k_whole, frame_of(0x10000, 288, 352), false, false},
        refusal_row{{"no luma"}, k_whole, frame_of(352, 288, 352), true, false},
        refusal_row{{"no chroma"}, k_whole, frame_of(352, 288, 352), false, true},
        refusal_row{{"neither plane and one line"}, k_whole, frame_of(352, 288, 352), true, true},
        refusal_row{{"everything wrong and one line"}, k_whole, frame_of(353, 289, 352, 1), true, true},
        refusal_row{{"no column"}, k_whole, frame_of(0, 288, 352), false, false},
        refusal_row{{"no row"}, k_whole, frame_of(352, 0, 352), false, false},
        refusal_row{{"an empty frame"}, k_whole, frame_of(0, 0, 0), false, false}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    region, refused_frames,
    testing::Values(
        // x and y are in the frame's units already, so nothing is rescaled, and width or height is too large as it
        // stands.
        refusal_row{{"x of 352 with a width of 704"},
                    {0, 352, 0, 288, 704, 704, 288, 288},
                    frame_of(352, 288, 352),
                    false,
                    false},
        refusal_row{{"y of 288 with a height of 576"},
                    {0, 352, 0, 288, 352, 352, 576, 576},
                    frame_of(352, 288, 352),
                    false,
                    false},
        refusal_row{
            {"both without alignment"}, {0, 352, 0, 288, 704, 704, 576, 576}, frame_of(352, 288, 360), false, false},
        // 1 per mille of 352 columns is none
        refusal_row{
            {"a width that vanishes"}, {0, 1000, 0, 1000, 1, 1000, 1000, 1000}, frame_of(352, 288, 360), false, false},
        refusal_row{
            {"a height that vanishes"}, {0, 1000, 0, 1000, 1000, 1000, 1, 1000}, frame_of(352, 288, 360), false, false},
        refusal_row{{"a tenth of a frame of 8 x 8"}, {0, 10, 0, 10, 1, 10, 1, 10}, frame_of(8, 8, 8), false, false},
        refusal_row{{"a tenth of a frame of 8 x 8 with alignment"},
                    {0, 10, 0, 10, 1, 10, 1, 10},
                    frame_of(8, 8, 16),
                    false,
                    false},
        // 1 becomes 2, which is more than the frame has, and so 0
        refusal_row{{"a frame of one column with alignment"}, k_whole, frame_of(1, 8, 16), false, false},
        refusal_row{{"a frame of one row with alignment"}, k_whole, frame_of(8, 1, 16), false, false},
        refusal_row{{"width reference 0"}, {0, 1, 0, 1, 1, 0, 1, 1}, frame_of(352, 288, 352), false, false},
        refusal_row{{"height reference 0"}, {0, 1, 0, 1, 1, 1, 1, 0}, frame_of(352, 288, 352), false, false},
        refusal_row{{"one column beyond the frame"},
                    {41, 352, 0, 288, 312, 352, 288, 288},
                    frame_of(352, 288, 360),
                    false,
                    false},
        refusal_row{
            {"one row beyond the frame"}, {0, 352, 41, 288, 352, 352, 248, 288}, frame_of(352, 288, 360), false, false},
        // an odd frame's size is rounded up: 351 columns allow 352
        refusal_row{{"two columns beyond an odd frame"},
                    {41, 351, 0, 287, 312, 351, 287, 287},
                    frame_of(351, 287, 360),
                    false,
                    false},
        refusal_row{{"two rows beyond an odd frame"},
                    {0, 351, 41, 287, 351, 351, 248, 287},
                    frame_of(351, 287, 360),
                    false,
                    false}),
    row_name());

struct taken_row : support::named_row {
    fd_rect region;
    int width, height, stride;
    fd_rect wanted;
};

class taken_frames : public testing::TestWithParam<taken_row> {
protected:
    static void SetUpTestSuite() { refused_frames_tables(); }
    static void refused_frames_tables() {
        orva_fd::fd_table::init();
        orva_fd::pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

TEST_P(taken_frames, place_the_region) {
    frame_process channel;
    ASSERT_EQ(channel.start(GetParam().region), 0);
    nv21_picture picture(GetParam().width, GetParam().height, GetParam().stride);
    fd_yuv_frame frame = picture.frame();
    fd_result result;
    std::memset(&result, 0x5a, sizeof result);
    const support::outcome got = support::outcome_of([&] { return channel.set_frame(frame, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(text_of(test_access::roi(channel)), text_of(GetParam().wanted));
    EXPECT_EQ(test_access::roi_width(channel), GetParam().wanted.width);
    EXPECT_EQ(test_access::roi_height(channel), GetParam().wanted.height);
    EXPECT_TRUE(test_access::roi_size_known(channel));
}

INSTANTIATE_TEST_SUITE_P(
    table, taken_frames,
    testing::Values(
        taken_row{{"the largest frame"}, k_whole, 352, 288, 352, {0, 352, 0, 288, 352, 352, 288, 288}},
        taken_row{{"the smallest frame"}, k_whole, 1, 1, 2, {0, 1, 0, 1, 1, 1, 1, 1}},
        taken_row{{"2 x 2 with alignment"}, k_whole, 2, 2, 16, {0, 2, 0, 2, 2, 2, 2, 2}},
        taken_row{{"half of the reference"},
                  {100, 704, 50, 576, 301, 704, 201, 576},
                  352,
                  288,
                  360,
                  {50, 352, 25, 288, 150, 352, 100, 288}},
        taken_row{{"half of the reference with alignment"},
                  {100, 704, 50, 576, 301, 704, 201, 576},
                  352,
                  288,
                  352,
                  {48, 352, 24, 288, 152, 352, 102, 288}},
        // only the references of x and y are compared: width and height stay, their references too
        taken_row{{"references of width and height alone are not looked at"},
                  {0, 352, 0, 288, 352, 704, 100, 200},
                  352,
                  288,
                  352,
                  {0, 352, 0, 288, 352, 704, 100, 200}},
        taken_row{{"a y reference that differs rescales everything"},
                  {0, 352, 0, 144, 352, 704, 100, 200},
                  352,
                  288,
                  352,
                  {0, 352, 0, 288, 176, 352, 144, 288}},
        taken_row{{"an x reference that differs rescales everything"},
                  {0, 176, 0, 288, 352, 704, 100, 200},
                  352,
                  288,
                  352,
                  {0, 352, 0, 288, 176, 352, 144, 288}},
        taken_row{
            {"x reference 0 gives x 0"}, {9, 0, 0, 1, 1, 1, 1, 1}, 352, 288, 352, {0, 352, 0, 288, 352, 352, 288, 288}},
        taken_row{{"up to the frame's last column and row"},
                  {40, 352, 40, 288, 312, 352, 248, 288},
                  352,
                  288,
                  360,
                  {40, 352, 40, 288, 312, 352, 248, 288}},
        taken_row{{"one column beyond an odd frame"},
                  {40, 351, 40, 287, 312, 351, 248, 287},
                  351,
                  287,
                  360,
                  {40, 351, 40, 287, 312, 351, 248, 287}},
        taken_row{{"widened at the right end of a frame"},
                  {337, 352, 0, 288, 15, 352, 288, 288},
                  352,
                  288,
                  352,
                  {336, 352, 0, 288, 16, 352, 288, 288}}),
    row_name());

// Regions, frame sizes and strides at random: the twin says which are taken and where the region then lies.
TEST(frames_at_random, are_taken_and_refused_like_the_twin_says) {
    support::random_source random;
    orva_fd::fd_table::init();
    orva_fd::pre_process::init();
    orva_fd::CYuv420_Rgb::init();
    int taken = 0, refused = 0;
    for (int round = 0; round < 3000; ++round) {
        const int width = random.below(3) == 0 ? random.below(12) : random.below(353);
        const int height = random.below(3) == 0 ? random.below(12) : random.below(289);
        const int stride = random.below(2) == 0 ? (width + 15) / 16 * 16 : width + random.below(20);
        // References: the frame's own, the same scale for all, or any.
        const auto reference = [&](int own) {
            return static_cast<uint16_t>(random.below(3) == 0 ? own : random.between(1, 1000));
        };
        fd_rect region = {0, reference(width), 0, reference(height), 0, reference(width), 0, reference(height)};
        region.x = static_cast<uint16_t>(random.below(region.x_ref + 1));
        region.y = static_cast<uint16_t>(random.below(region.y_ref + 1));
        region.width = static_cast<uint16_t>(random.below(region.width_ref + 1));
        region.height = static_cast<uint16_t>(random.below(region.height_ref + 1));
        std::vector<unsigned char> pixels(
            static_cast<std::size_t>(std::max(stride, 1) * (height + (height + 1) / 2 + 2) + 2));
        fd_yuv_frame frame =
            frame_of(static_cast<unsigned>(width), static_cast<unsigned>(height), static_cast<unsigned>(stride));
        frame.virt_addr[0] = pixels.data();
        frame.virt_addr[1] = pixels.data() + stride * height;
        frame_process channel;
        ASSERT_EQ(channel.start(region), 0);
        fd_result result;
        support::outcome got = support::outcome_of([&] { return channel.set_frame(frame, result); });
        const bool fits = ref::region_fits(region, frame);
        ASSERT_EQ(got.status, fits ? 0 : 7) << text_of(region) << " on " << width << " x " << height << ", stride "
                                            << stride << ", seed " << random.seed();
        ++(fits ? taken : refused);
        fd_rect wanted = region;
        if (fits) {
            if (wanted.x_ref != width || wanted.y_ref != height) ref::trans_region(wanted, width, height);
            ref::align_region(wanted, frame);
        }
        ASSERT_EQ(text_of(test_access::roi(channel)), text_of(wanted)) << "seed " << random.seed();
    }
    EXPECT_GT(taken, 300);
    EXPECT_GT(refused, 300);
}

}  // namespace
