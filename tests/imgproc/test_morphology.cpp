// Dilation and erosion: pictures drawn by hand, border rules, and the loops against their plain twins.
#include "imgproc/morphology.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "imgproc/common.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/capture.h"
#include "tests/support/fenced_block.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::morphology;
using support::first_difference;
using support::grey_image;
using support::outcome;
using support::outcome_of;
using support::row_name;
using support::shape;

// --- structuring elements -------------------------------------------------------------------------------------------

struct mask_row : support::named_row {
    int type;
    unsigned top;
    unsigned middle;
    unsigned bottom;
};

class get_mask : public testing::TestWithParam<mask_row> {};

TEST_P(get_mask, writes_three_rows) {
    unsigned mask[3] = {7, 7, 7};
    const outcome got = outcome_of([&] { return morphology().get_mask(GetParam().type, mask); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(mask[0], GetParam().top);
    EXPECT_EQ(mask[1], GetParam().middle);
    EXPECT_EQ(mask[2], GetParam().bottom);
}

INSTANTIATE_TEST_SUITE_P(table, get_mask,
                         testing::Values(mask_row{{"0 is a horizontal line"}, 0, 0, 0x10101, 0},
                                         mask_row{{"1 is a vertical line"}, 1, 0x100, 0x100, 0x100},
                                         mask_row{{"2 is a cross"}, 2, 0x100, 0x10101, 0x100},
                                         mask_row{{"3 is the square"}, 3, 0x10101, 0x10101, 0x10101},
                                         mask_row{
                                             {"4 is a cross with the lower left corner"}, 4, 0x100, 0x10101, 0x101}),
                         row_name());

class get_mask_unknown : public testing::TestWithParam<int> {};

TEST_P(get_mask_unknown, says_so_and_writes_nothing) {
    unsigned mask[3] = {7, 8, 9};
    const outcome got = outcome_of([&] { return morphology().get_mask(GetParam(), mask); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "ERR. [Fire Detection: morphology::get_mask : 113] \nunknown morph template, " +
                            std::to_string(GetParam()));
    EXPECT_EQ(mask[0], 7u);
    EXPECT_EQ(mask[1], 8u);
    EXPECT_EQ(mask[2], 9u);
}

INSTANTIATE_TEST_SUITE_P(types, get_mask_unknown, testing::Values(5, -1, 6, 2147483647, -2147483647 - 1));

// --- pictures -------------------------------------------------------------------------------------------------------

using drawing = std::vector<std::string>;

struct picture_row : support::named_row {
    drawing before;
    drawing after;
};

class dilate : public testing::TestWithParam<picture_row> {};
class erode : public testing::TestWithParam<picture_row> {};

TEST_P(dilate, gives_the_picture) {
    grey_image src = grey_image::drawn(GetParam().before);
    grey_image dst(src.width(), src.height(), src.stride(), 0, 99);
    fd_yuv_frame from = src.frame(), to = dst.frame();
    morphology().dilate(&from, &to);
    EXPECT_EQ(dst.as_text(), GetParam().after);
    EXPECT_EQ(src.as_text(), GetParam().before);
}

TEST_P(erode, gives_the_picture) {
    grey_image src = grey_image::drawn(GetParam().before);
    grey_image dst(src.width(), src.height(), src.stride(), 0, 99);
    fd_yuv_frame from = src.frame(), to = dst.frame();
    morphology().erode(&from, &to);
    EXPECT_EQ(dst.as_text(), GetParam().after);
    EXPECT_EQ(src.as_text(), GetParam().before);
}

INSTANTIATE_TEST_SUITE_P(
    drawn, dilate,
    testing::Values(picture_row{{"a pixel becomes a square"},
                                {"........", "........", "...#....", "........", "........"},
                                {"........", "..###...", "..###...", "..###...", "........"}},
                    picture_row{{"254 is not set"},
                                {"........", "........", "...e....", "........", "........"},
                                {"........", "........", "...e....", "........", "........"}},
                    picture_row{{"1 is set"},
                                {"........", "........", "...1....", "........", "........"},
                                {"........", "..###...", "..###...", "..###...", "........"}},
                    picture_row{{"254 beside a set pixel becomes 255"},
                                {"........", "..e.....", "...#....", "........", "........"},
                                {"........", "..###...", "..###...", "..###...", "........"}},
                    picture_row{{"the border keeps its values and still reaches inwards"},
                                {"#......1", "........", "........", "........", "1......e"},
                                {"#......1", ".#......", "........", ".#......", "1......e"}},
                    picture_row{{"the column before the last keeps its values"},
                                {"........", "........", ".....#1.", "........", "........"},
                                {"........", "....##..", "....##1.", "....##..", "........"}},
                    picture_row{{"and the last column reaches nothing"},
                                {"........", "........", ".......#", "........", "........"},
                                {"........", "........", ".......#", "........", "........"}},
                    picture_row{{"the second column is processed"},
                                {"........", "........", "#.......", "........", "........"},
                                {"........", ".#......", "##......", ".#......", "........"}},
                    picture_row{{"two rows are only copied"}, {"..1#....", "....e..."}, {"..1#....", "....e..."}},
                    picture_row{{"three rows have one inner row"},
                                {"...#....", "........", "........"},
                                {"...#....", "..###...", "........"}},
                    picture_row{
                        {"three columns are only copied"}, {"...", ".#.", "...", "1.."}, {"...", ".#.", "...", "1.."}},
                    picture_row{{"four columns have one inner column"},
                                {"....", "..1.", "....", "...."},
                                {"....", ".#1.", ".#..", "...."}}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    drawn, erode,
    testing::Values(picture_row{{"a hole becomes a square"},
                                {"########", "########", "###.####", "########", "########"},
                                {"########", "##...###", "##...###", "##...###", "########"}},
                    picture_row{{"254 is a hole"},
                                {"########", "########", "###e####", "########", "########"},
                                {"########", "##...###", "##...###", "##...###", "########"}},
                    picture_row{{"1 is not a hole and keeps its value"},
                                {"########", "########", "###1####", "########", "########"},
                                {"########", "########", "###1####", "########", "########"}},
                    picture_row{{"the border keeps its values and still reaches inwards"},
                                {".######e", "########", "########", "########", "########"},
                                {".######e", "#.######", "########", "########", "########"}},
                    picture_row{{"the column before the last keeps its values"},
                                {"########", "########", "######.#", "########", "########"},
                                {"########", "#####.##", "#####..#", "#####.##", "########"}},
                    picture_row{{"two rows are only copied"}, {"##.#####", "####1###"}, {"##.#####", "####1###"}},
                    picture_row{
                        {"three columns are only copied"}, {"###", "#.#", "###", "1##"}, {"###", "#.#", "###", "1##"}},
                    picture_row{{"four columns have one inner column"},
                                {"####", "##.#", "####", "####"},
                                {"####", "#..#", "#.##", "####"}}),
    row_name());

TEST(dilate_whole, a_pixel_at_5_5_of_16_x_16_becomes_the_block_around_it) {
    grey_image src(16, 16), dst(16, 16, 16, 0, 99), wanted(16, 16);
    src.at(5, 5) = 255;
    wanted.fill_rect(4, 4, 3, 3, 255);
    fd_yuv_frame from = src.frame(), to = dst.frame();
    morphology().dilate(&from, &to);
    EXPECT_EQ(first_difference(dst, wanted), "");
}

// --- loops ----------------------------------------------------------------------------------------------------------

class morphology_loop : public testing::TestWithParam<support::content_row> {};

TEST_P(morphology_loop, equals_the_plain_twin_in_all_shapes) {
    support::random_source random;
    for (const shape& s : support::all_shapes()) {
        grey_image src = support::make_image(s);
        fill(src, GetParam().what, random);
        grey_image unread = src;
        // The copy takes row padding along, so that the whole block is the output's.
        grey_image dilated(s.width, s.height, s.stride, s.offset, 17), eroded = dilated;
        grey_image twin_dilated(s.width, s.height, s.stride, s.offset, 34), twin_eroded = twin_dilated;
        fd_yuv_frame from = src.frame(), to_dilated = dilated.frame(), to_eroded = eroded.frame();
        morphology().dilate(&from, &to_dilated);
        morphology().erode(&from, &to_eroded);
        ref::dilate(plane_of(src), plane_of(twin_dilated));
        ref::erode(plane_of(src), plane_of(twin_eroded));
        ASSERT_EQ(first_difference(dilated, twin_dilated), "")
            << "dilate, " << text_of(s) << ", seed " << random.seed();
        ASSERT_EQ(first_difference(eroded, twin_eroded), "") << "erode, " << text_of(s) << ", seed " << random.seed();
        ASSERT_EQ(first_difference(src, unread), "") << text_of(s) << ", seed " << random.seed();
    }
}

INSTANTIATE_TEST_SUITE_P(contents, morphology_loop, testing::ValuesIn(support::all_contents()), row_name());

// Few set pixels, so that an output pixel hangs on a single input.
TEST(morphology_sparse, equals_the_plain_twin) {
    support::random_source random;
    for (int round = 0; round < 2000; ++round) {
        const int width = 4 + random.below(80), height = 3 + random.below(12);
        grey_image src(width, height, width + random.below(20));
        const bool inverted = round % 2 != 0;
        for (std::size_t i = 0; i < src.length(); ++i) {
            const bool marked = random.below(40) == 0;
            src.data()[i] = static_cast<unsigned char>(marked != inverted ? 255 : 0);
        }
        grey_image dilated(width, height, src.stride(), 0, 17), eroded = dilated, twin_dilated = dilated,
                                                                twin_eroded = dilated;
        fd_yuv_frame from = src.frame(), to_dilated = dilated.frame(), to_eroded = eroded.frame();
        morphology().dilate(&from, &to_dilated);
        morphology().erode(&from, &to_eroded);
        ref::dilate(plane_of(src), plane_of(twin_dilated));
        ref::erode(plane_of(src), plane_of(twin_eroded));
        ASSERT_EQ(first_difference(dilated, twin_dilated), "")
            << "dilate, round " << round << ", seed " << random.seed();
        ASSERT_EQ(first_difference(eroded, twin_eroded), "") << "erode, round " << round << ", seed " << random.seed();
    }
}

TEST(morphology_bounds, nothing_is_read_or_written_behind_the_last_row) {
    for (const int width : {3, 4, 5, 8, 16, 17, 33, 352}) {
        const std::size_t length = static_cast<std::size_t>(width * 4);
        support::fenced_block a(length), b(length);
        std::memset(a.data(), 255, length);
        a.make_read_only();
        fd_yuv_frame from, to;
        orva_fd::init_yuv_frame(&from, width, 4, width, 0, a.data(), FD_PIXEL_FORMAT_YUV420SP);
        orva_fd::init_yuv_frame(&to, width, 4, width, 0, b.data(), FD_PIXEL_FORMAT_YUV420SP);
        morphology().dilate(&from, &to);
        EXPECT_EQ(b.data()[length - 1], 255);
        morphology().erode(&from, &to);
        EXPECT_EQ(b.data()[length - 1], 255);
    }
}

}  // namespace
