// Difference and threshold: every pair of values, refusals, and the loops against their plain twins.
#include <gtest/gtest.h>

#include <cstring>

#include "imgproc/common.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/capture.h"
#include "tests/support/fenced_block.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::fd_table;
using support::all_contents;
using support::all_shapes;
using support::content_row;
using support::first_difference;
using support::grey_image;
using support::outcome;
using support::outcome_of;
using support::row_name;
using support::shape;

// Looked at before main, and so before anything can have filled the table.
const bool k_lut_was_null_at_start = fd_table::m_abs_lut == nullptr;

class pixels : public testing::Test {
protected:
    static void SetUpTestSuite() { fd_table::init(); }
};

// --- the table ------------------------------------------------------------------------------------------------------

using difference_table = pixels;

TEST_F(difference_table, is_not_there_before_init) {
    EXPECT_TRUE(k_lut_was_null_at_start);
}

TEST_F(difference_table, holds_its_512_entries) {
    for (int i = 0; i < 256; ++i) EXPECT_EQ(fd_table::m_abs_table[i], 255 - i) << i;
    for (int i = 256; i < 511; ++i) EXPECT_EQ(fd_table::m_abs_table[i], i - 255) << i;
    EXPECT_EQ(fd_table::m_abs_table[511], 0);
}

TEST_F(difference_table, is_read_from_its_middle) {
    ASSERT_EQ(fd_table::m_abs_lut, fd_table::m_abs_table + 255);
    for (int d = -255; d <= 255; ++d) EXPECT_EQ(fd_table::m_abs_lut[d], d < 0 ? -d : d) << d;
}

TEST_F(difference_table, is_left_alone_by_a_second_init) {
    fd_table::m_abs_table[511] = 77;
    fd_table::m_abs_table[100] = 78;
    EXPECT_EQ(fd_table::init(), 0);
    EXPECT_EQ(fd_table::m_abs_table[511], 77);
    EXPECT_EQ(fd_table::m_abs_table[100], 78);
    fd_table::m_abs_table[511] = 0;
    fd_table::m_abs_table[100] = 155;
}

TEST_F(difference_table, stays_after_destroy) {
    EXPECT_EQ(fd_table::destroy(), 0);
    ASSERT_NE(fd_table::m_abs_lut, nullptr);
    EXPECT_EQ(fd_table::m_abs_lut[-3], 3);
}

// --- difference -----------------------------------------------------------------------------------------------------

TEST_F(pixels, sub_gives_the_distance_for_all_65536_pairs) {
    grey_image a(256, 256), b(256, 256), difference(256, 256, 256, 0, 7);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            a.at(x, y) = static_cast<unsigned char>(x);
            b.at(x, y) = static_cast<unsigned char>(y);
        }
    }
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = difference.frame();
    EXPECT_EQ(orva_fd::sub(&first, &second, &dst), 0);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) ASSERT_EQ(difference.at(x, y), x > y ? x - y : y - x) << x << ", " << y;
    }
}

struct size_row : support::named_row {
    unsigned second_width;
    unsigned second_height;
};

class sub_of_other_sizes : public testing::TestWithParam<size_row> {};

TEST_P(sub_of_other_sizes, is_refused_and_writes_nothing) {
    grey_image a(16, 8, 16, 0, 9), b(17, 9, 17, 0, 1), c(16, 8, 16, 0, 99);
    const grey_image before = c;
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = c.frame();
    second.width = GetParam().second_width;
    second.height = GetParam().second_height;
    const outcome got = outcome_of([&] { return orva_fd::sub(&first, &second, &dst); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "[Fire Detection: common: sub] 169 entered \n");
    EXPECT_TRUE(c == before);
}

INSTANTIATE_TEST_SUITE_P(table, sub_of_other_sizes,
                         testing::Values(size_row{{"one column more"}, 17, 8}, size_row{{"one column less"}, 15, 8},
                                         size_row{{"one row more"}, 16, 9}, size_row{{"one row less"}, 16, 7},
                                         size_row{{"both differ"}, 17, 9}, size_row{{"an empty second"}, 0, 0}),
                         row_name());

TEST_F(pixels, sub_does_not_look_at_the_size_of_the_output) {
    grey_image a(4, 2, 4, 0, 9), b(4, 2, 4, 0, 1), c(4, 2, 4, 0, 99);
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = c.frame();
    dst.width = 1;
    dst.height = 0;
    EXPECT_EQ(orva_fd::sub(&first, &second, &dst), 0);
    EXPECT_TRUE(c == grey_image(4, 2, 4, 0, 8));
}

TEST_F(pixels, sub_takes_sizes_as_signed) {
    grey_image a(4, 2), b(4, 2), c(4, 2, 4, 0, 99);
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = c.frame();
    for (const auto& size :
         {std::pair<unsigned, unsigned>{0x80000000u, 2}, {4, 0x80000000u}, {0xffffffffu, 2}, {0, 2}, {4, 0}}) {
        first.width = second.width = size.first;
        first.height = second.height = size.second;
        EXPECT_EQ(orva_fd::sub(&first, &second, &dst), 0) << size.first << " x " << size.second;
        EXPECT_TRUE(c == grey_image(4, 2, 4, 0, 99)) << size.first << " x " << size.second;
    }
}

class sub_loop : public testing::TestWithParam<content_row> {
protected:
    static void SetUpTestSuite() { fd_table::init(); }
};

TEST_P(sub_loop, equals_the_plain_twin_in_all_shapes_and_places) {
    support::random_source random;
    ref::log_book log;
    for (const shape& s : all_shapes()) {
        // Output in a third image, in the first, in the second.
        for (int place = 0; place < 3; ++place) {
            grey_image a = support::make_image(s), b = support::make_image(s), c = support::make_image(s);
            fill(a, GetParam().what, random);
            fill(b, support::content::noise, random);
            fill(c, support::content::noise, random);
            grey_image twin_a = a, twin_b = b, twin_c = support::with_other_pixels(c);
            fd_yuv_frame frames[3] = {c.frame(), a.frame(), b.frame()};
            const ref::plane planes[3] = {plane_of(twin_c), plane_of(twin_a), plane_of(twin_b)};
            ASSERT_EQ(orva_fd::sub(&frames[1], &frames[2], &frames[place]), 0);
            ref::sub(planes[1], planes[2], planes[place], log);
            ASSERT_EQ(first_difference(a, twin_a), "")
                << text_of(s) << ", place " << place << ", seed " << random.seed();
            ASSERT_EQ(first_difference(b, twin_b), "")
                << text_of(s) << ", place " << place << ", seed " << random.seed();
            if (place == 0) {
                ASSERT_EQ(first_difference(c, twin_c), "") << text_of(s) << ", seed " << random.seed();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(contents, sub_loop, testing::ValuesIn(all_contents()), row_name());

TEST_F(pixels, sub_steps_each_image_with_its_own_stride) {
    grey_image a(3, 2, 3, 0, 10), b(3, 2, 8, 0, 4), c(3, 2, 5, 0, 99);
    b.at(0, 1) = 11;
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = c.frame();
    EXPECT_EQ(orva_fd::sub(&first, &second, &dst), 0);
    grey_image wanted(3, 2, 5, 0, 99);
    wanted.fill_rect(0, 0, 3, 2, 6);
    wanted.at(0, 1) = 1;
    EXPECT_EQ(first_difference(c, wanted), "");
}

// --- threshold ------------------------------------------------------------------------------------------------------

TEST_F(pixels, threshold_gives_255_above_and_0_elsewhere_for_all_thresholds_and_values) {
    grey_image src(256, 1), dst(256, 1);
    for (int x = 0; x < 256; ++x) src.at(x, 0) = static_cast<unsigned char>(x);
    fd_yuv_frame from = src.frame(), to = dst.frame();
    for (int thresh = 0; thresh < 256; ++thresh) {
        ASSERT_EQ(orva_fd::threshold_binary(&from, &to, thresh), 0);
        for (int x = 0; x < 256; ++x) ASSERT_EQ(dst.at(x, 0), x > thresh ? 255 : 0) << thresh << ", " << x;
    }
}

struct null_row : support::named_row {
    bool src_is_null;
    bool dst_is_null;
};

class threshold_without_memory : public testing::TestWithParam<null_row> {};

TEST_P(threshold_without_memory, is_refused) {
    grey_image src(4, 2, 4, 0, 200), dst(4, 2, 4, 0, 99);
    const grey_image before = dst;
    fd_yuv_frame from = src.frame(), to = dst.frame();
    if (GetParam().src_is_null) from.virt_addr[0] = nullptr;
    if (GetParam().dst_is_null) to.virt_addr[0] = nullptr;
    const outcome got = outcome_of([&] { return orva_fd::threshold_binary(&from, &to, 20); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "[Fire Detection: common: threshold_binary] 198 entered \n");
    EXPECT_TRUE(dst == before);
}

INSTANTIATE_TEST_SUITE_P(table, threshold_without_memory,
                         testing::Values(null_row{{"the source is null"}, true, false},
                                         null_row{{"the output is null"}, false, true},
                                         null_row{{"both are null and one line is printed"}, true, true}),
                         row_name());

TEST_F(pixels, threshold_uses_the_size_of_the_source) {
    grey_image src(4, 2, 4, 0, 200), dst(4, 2, 4, 0, 99);
    fd_yuv_frame from = src.frame(), to = dst.frame();
    to.width = 1;
    to.height = 1;
    EXPECT_EQ(orva_fd::threshold_binary(&from, &to, 20), 0);
    EXPECT_TRUE(dst == grey_image(4, 2, 4, 0, 255));
}

class threshold_loop : public testing::TestWithParam<content_row> {};

TEST_P(threshold_loop, equals_the_plain_twin_in_all_shapes_and_in_place) {
    support::random_source random;
    ref::log_book log;
    for (const shape& s : all_shapes()) {
        const int thresh = random.below(256);
        grey_image src = support::make_image(s), dst = support::make_image(s);
        fill(src, GetParam().what, random);
        fill(dst, support::content::noise, random);
        grey_image twin_src = src, twin_dst = support::with_other_pixels(dst);
        fd_yuv_frame from = src.frame(), to = dst.frame();
        ASSERT_EQ(orva_fd::threshold_binary(&from, &to, thresh), 0);
        ref::threshold_binary(plane_of(twin_src), plane_of(twin_dst), thresh, log);
        ASSERT_EQ(first_difference(dst, twin_dst), "")
            << text_of(s) << ", above " << thresh << ", seed " << random.seed();
        ASSERT_EQ(first_difference(src, twin_src), "") << text_of(s) << ", seed " << random.seed();

        ASSERT_EQ(orva_fd::threshold_binary(&from, &from, thresh), 0);
        ref::threshold_binary(plane_of(twin_src), plane_of(twin_src), thresh, log);
        ASSERT_EQ(first_difference(src, twin_src), "") << "in place, " << text_of(s) << ", seed " << random.seed();
    }
}

INSTANTIATE_TEST_SUITE_P(contents, threshold_loop, testing::ValuesIn(all_contents()), row_name());

// --- bounds ---------------------------------------------------------------------------------------------------------

TEST_F(pixels, nothing_is_read_or_written_behind_the_last_pixel) {
    for (const int width : {1, 15, 17, 31, 33, 63, 351, 352}) {
        const std::size_t length = static_cast<std::size_t>(384 * 2 + width);
        support::fenced_block a(length), b(length), c(length);
        fd_yuv_frame frames[3];
        support::fenced_block* blocks[3] = {&a, &b, &c};
        for (int i = 0; i < 3; ++i)
            orva_fd::init_yuv_frame(&frames[i], width, 3, 384, 0, blocks[i]->data(), FD_PIXEL_FORMAT_YUV420SP);
        a.data()[length - 1] = 200;
        a.make_read_only();
        b.make_read_only();
        EXPECT_EQ(orva_fd::sub(&frames[0], &frames[1], &frames[2]), 0);
        EXPECT_EQ(c.data()[length - 1], 200);
        EXPECT_EQ(orva_fd::threshold_binary(&frames[2], &frames[2], 199), 0);
        EXPECT_EQ(c.data()[length - 1], 255);
    }
}

}  // namespace
