// Records and helpers that every folder shares, and the log lines' four shapes.
#include "imgproc/common.h"

#include <gtest/gtest.h>
#include <sys/time.h>

#include <cstring>

#include "imgproc/log.h"
#include "imgproc/status.h"
#include "tests/support/capture.h"
#include "tests/support/rows.h"

namespace {

using support::output_of;
using support::row_name;

// --- get_stride -----------------------------------------------------------------------------------------------------

struct stride_row : support::named_row {
    int width;
    int align;
    int wanted;
};

class get_stride : public testing::TestWithParam<stride_row> {};

TEST_P(get_stride, rounds_up) {
    EXPECT_EQ(orva_fd::get_stride(GetParam().width, GetParam().align), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, get_stride,
    testing::Values(stride_row{{"352 by 4 is 352"}, 352, 4, 352}, stride_row{{"350 by 4 is 352"}, 350, 4, 352},
                    stride_row{{"353 by 16 is 368"}, 353, 16, 368}, stride_row{{"349 by 4 is 352"}, 349, 4, 352},
                    stride_row{{"348 by 4 is 348"}, 348, 4, 348}, stride_row{{"0 by 16 is 0"}, 0, 16, 0},
                    stride_row{{"1 by 16 is 16"}, 1, 16, 16}, stride_row{{"7 by 1 is 7"}, 7, 1, 7},
                    // (-20 + 15) / 16 = 0 and (-33 + 15) / 16 = -1: division truncates towards 0.
                    stride_row{{"minus 20 by 16 is 0"}, -20, 16, 0},
                    stride_row{{"minus 33 by 16 is minus 16"}, -33, 16, -16}),
    row_name());

// --- limit_range ----------------------------------------------------------------------------------------------------

struct range_row : support::named_row {
    int value;
    int min;
    int max;
    int wanted;
};

class limit_range : public testing::TestWithParam<range_row> {};

TEST_P(limit_range, holds_the_value) {
    EXPECT_EQ(orva_fd::limit_range(GetParam().value, GetParam().min, GetParam().max), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, limit_range,
    testing::Values(range_row{{"5 with min 10 above max 3 is 10"}, 5, 10, 3, 10},
                    range_row{{"9 with min 10 above max 3 is 10"}, 9, 10, 3, 10},
                    range_row{{"10 with min 10 above max 3 is 3"}, 10, 10, 3, 3},
                    range_row{{"11 with min 10 above max 3 is 3"}, 11, 10, 3, 3},
                    range_row{{"2 with min 10 above max 3 is 10"}, 2, 10, 3, 10},
                    range_row{{"3 in 0 to 3 is 3"}, 3, 0, 3, 3}, range_row{{"2 in 0 to 3 is 2"}, 2, 0, 3, 2},
                    range_row{{"4 in 0 to 3 is 3"}, 4, 0, 3, 3}, range_row{{"minus 1 in 0 to 351 is 0"}, -1, 0, 351, 0},
                    range_row{{"0 in 0 to 351 is 0"}, 0, 0, 351, 0}, range_row{{"7 in 5 to 5 is 5"}, 7, 5, 5, 5},
                    range_row{{"the smallest int is min"}, -2147483647 - 1, -7, 7, -7},
                    range_row{{"the largest int is max"}, 2147483647, -7, 7, 7}),
    row_name());

// --- init_yuv_frame -------------------------------------------------------------------------------------------------

fd_yuv_frame old_frame() {
    fd_yuv_frame frame;
    std::memset(&frame, 0x77, sizeof frame);
    return frame;
}

TEST(init_yuv_frame_full, clears_everything_that_it_does_not_set) {
    fd_yuv_frame frame = old_frame();
    unsigned char pixel = 0;
    EXPECT_EQ(orva_fd::init_yuv_frame(&frame, 352, 288, 384, 0x80001000u, &pixel, FD_PIXEL_FORMAT_YUV420SP), 0);
    EXPECT_EQ(frame.format, FD_PIXEL_FORMAT_YUV420SP);
    EXPECT_EQ(frame.width, 352u);
    EXPECT_EQ(frame.height, 288u);
    EXPECT_EQ(frame.stride[0], 384u);
    EXPECT_EQ(frame.phys_addr[0], 0x80001000u);
    EXPECT_EQ(frame.virt_addr[0], &pixel);
    EXPECT_EQ(frame.reserved, -1);
    for (const int plane : {1, 2}) {
        EXPECT_EQ(frame.stride[plane], 0u);
        EXPECT_EQ(frame.phys_addr[plane], 0u);
        EXPECT_EQ(frame.virt_addr[plane], nullptr);
    }
}

TEST(init_yuv_frame_full, stores_the_format_as_given) {
    fd_yuv_frame frame = old_frame();
    EXPECT_EQ(orva_fd::init_yuv_frame(&frame, 1, 1, 16, 0, nullptr, static_cast<fd_pixel_format>(5u)), 0);
    EXPECT_EQ(static_cast<unsigned>(frame.format), 5u);
    EXPECT_EQ(frame.width, 1u);
    EXPECT_EQ(frame.height, 1u);
    EXPECT_EQ(frame.stride[0], 16u);
}

struct buffer_row : support::named_row {
    int width;
    int height;
    unsigned wanted_width;
    unsigned wanted_height;
    unsigned wanted_stride;
};

class init_yuv_frame_buffer : public testing::TestWithParam<buffer_row> {};

TEST_P(init_yuv_frame_buffer, sets_plane_0_and_leaves_the_rest) {
    const buffer_row& row = GetParam();
    fd_yuv_frame frame = old_frame();
    unsigned char pixel = 0;
    EXPECT_EQ(orva_fd::init_yuv_frame(&frame, row.width, row.height, 400, 4096, 0x1230u, &pixel), 0);
    EXPECT_EQ(frame.width, row.wanted_width);
    EXPECT_EQ(frame.height, row.wanted_height);
    EXPECT_EQ(frame.stride[0], row.wanted_stride);
    EXPECT_EQ(frame.phys_addr[0], 0x1230u);
    EXPECT_EQ(frame.virt_addr[0], &pixel);
    const fd_yuv_frame old = old_frame();
    EXPECT_EQ(static_cast<unsigned>(frame.format), static_cast<unsigned>(old.format));
    EXPECT_EQ(frame.reserved, old.reserved);
    for (const int plane : {1, 2}) {
        EXPECT_EQ(frame.stride[plane], old.stride[plane]);
        EXPECT_EQ(frame.phys_addr[plane], old.phys_addr[plane]);
        EXPECT_EQ(frame.virt_addr[plane], old.virt_addr[plane]);
    }
}

const unsigned k_old = 0x77777777u;

INSTANTIATE_TEST_SUITE_P(
    table, init_yuv_frame_buffer,
    testing::Values(buffer_row{{"1 x 1 is a raw block and its size is the stride"}, 1, 1, k_old, k_old, 4096},
                    buffer_row{{"352 x 288 sets size and stride"}, 352, 288, 352, 288, 400},
                    buffer_row{{"1 x 2 is an image"}, 1, 2, 1, 2, 400},
                    buffer_row{{"2 x 1 is an image"}, 2, 1, 2, 1, 400}),
    row_name());

// --- time -----------------------------------------------------------------------------------------------------------

unsigned milliseconds_now() {
    timeval now;
    gettimeofday(&now, nullptr);
    return static_cast<unsigned>(now.tv_sec) * 1000u + static_cast<unsigned>(now.tv_usec) / 1000u;
}

TEST(get_cur_time, is_wall_clock_milliseconds_in_32_bits) {
    const unsigned before = milliseconds_now();
    const unsigned now = orva_fd::get_cur_time();
    const unsigned after = milliseconds_now();
    EXPECT_LE(now - before, after - before);
}

// --- boxes ----------------------------------------------------------------------------------------------------------

TEST(con_info, has_inclusive_edges) {
    const orva_fd::con_info box = {0, 10, 19, 100, 100};
    EXPECT_EQ(orva_fd::box_width(box), 10);
    EXPECT_EQ(orva_fd::box_height(box), 1);
    EXPECT_EQ(orva_fd::box_centre_x(box), 15);
    EXPECT_EQ(orva_fd::box_centre_y(box), 100);
}

TEST(con_info, halves_negative_sums_downwards) {
    const orva_fd::con_info box = {0, -4, 0, -2, 0};  // sums with the 1 are -3 and -1
    EXPECT_EQ(orva_fd::box_centre_x(box), -2);
    EXPECT_EQ(orva_fd::box_centre_y(box), -1);
}

TEST(con_info, is_laid_out_like_a_region_of_the_accelerator) {
    EXPECT_EQ(sizeof(orva_fd::con_info), 12u);
    EXPECT_EQ(offsetof(orva_fd::con_info, area), 0u);
    EXPECT_EQ(offsetof(orva_fd::con_info, left), 4u);
    EXPECT_EQ(offsetof(orva_fd::con_info, right), 6u);
    EXPECT_EQ(offsetof(orva_fd::con_info, top), 8u);
    EXPECT_EQ(offsetof(orva_fd::con_info, bottom), 10u);
}

// --- log lines ------------------------------------------------------------------------------------------------------

TEST(log, has_four_shapes) {
    EXPECT_EQ(output_of([] { orva_fd::log_entered("file", "function", 12); }),
              "[Fire Detection: file: function] 12 entered \n");
    EXPECT_EQ(output_of([] { orva_fd::log_error("file", "function", 12); }),
              "ERR. [Fire Detection: file::function : 12] \n");
    EXPECT_EQ(output_of([] { orva_fd::log_warning("file", "function", 12, "text"); }),
              "WARN.[Fire Detection: file::function : 12] \ntext\n");
    EXPECT_EQ(output_of([] { orva_fd::log_information("file", "function", 12, "text"); }),
              "INFO.[Fire Detection: file::function: 12] \ntext\n");
}

TEST(status, inner_codes_have_their_numbers) {
    EXPECT_EQ(orva_fd::k_not_fire, 4);
    EXPECT_EQ(orva_fd::k_no_software_path, 5);
    EXPECT_EQ(orva_fd::k_accelerator_timed_out, 12);
}

}  // namespace
