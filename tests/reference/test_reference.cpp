// The plain twin against values worked out by hand: pixels, morphology, colour, components.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/reference/ref_label.h"
#include "tests/reference/ref_pixels.h"
#include "tests/reference/reference_rows.h"

namespace {

using ref_test::fill_box;
using ref_test::grey_image;
using ref_test::row_name;

using picture = std::vector<std::string>;

TEST(reference_helpers, get_stride_rounds_up) {
    EXPECT_EQ(ref::get_stride(352, 4), 352);
    EXPECT_EQ(ref::get_stride(350, 4), 352);
    EXPECT_EQ(ref::get_stride(353, 16), 368);
}

TEST(reference_helpers, limit_range_tests_the_lower_bound_first) {
    EXPECT_EQ(ref::limit_range(5, 10, 3), 10);
    EXPECT_EQ(ref::limit_range(12, 10, 3), 3);
    EXPECT_EQ(ref::limit_range(3, 0, 3), 3);
    EXPECT_EQ(ref::limit_range(-1, 0, 351), 0);
}

// --- difference, threshold, copy ------------------------------------------------------------------------------------

TEST(reference_sub, writes_every_difference_and_leaves_padding_alone) {
    grey_image a(256, 256, 256);
    grey_image b(256, 256, 257);
    grey_image dst(256, 256, 260, 77);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            a.view().at(x, y) = static_cast<unsigned char>(x);
            b.view().at(x, y) = static_cast<unsigned char>(y);
        }
    }
    ref::log_book log;
    EXPECT_EQ(ref::sub(a.view(), b.view(), dst.view(), log), 0);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) ASSERT_EQ(dst.view().at(x, y), x > y ? x - y : y - x) << x << ", " << y;
        ASSERT_EQ(dst.view().at(256, y), 77);
    }
    EXPECT_EQ(log.text(), "");
}

TEST(reference_sub, refuses_images_of_different_size) {
    grey_image a(4, 4, 4, 9);
    grey_image b(4, 3, 4, 1);
    grey_image dst(4, 4, 4, 77);
    ref::log_book log;
    EXPECT_EQ(ref::sub(a.view(), b.view(), dst.view(), log), 7);
    EXPECT_EQ(dst.view().at(0, 0), 77);
    EXPECT_EQ(log.text(), "[Fire Detection: common: sub] 169 entered \n");
}

TEST(reference_threshold, sets_what_is_above) {
    grey_image img(3, 1, 4, 0);
    img.bytes() = {19, 20, 21, 99};
    ref::log_book log;
    EXPECT_EQ(ref::threshold_binary(img.view(), img.view(), 20, log), 0);
    EXPECT_EQ(img.bytes(), (std::vector<unsigned char>{0, 0, 255, 99}));
    img.bytes() = {0, 1, 255, 99};
    ref::threshold_binary(img.view(), img.view(), 0, log);
    EXPECT_EQ(img.bytes(), (std::vector<unsigned char>{0, 255, 255, 99}));
    ref::threshold_binary(img.view(), img.view(), 255, log);
    EXPECT_EQ(img.bytes(), (std::vector<unsigned char>{0, 0, 0, 99}));
    EXPECT_EQ(ref::threshold_binary(ref::plane{}, img.view(), 20, log), 7);
    EXPECT_EQ(log.text(), "[Fire Detection: common: threshold_binary] 198 entered \n");
}

TEST(reference_copy, copies_rows_without_padding) {
    grey_image src(2, 2, 3);
    src.bytes() = {1, 2, 3, 4, 5, 6};
    grey_image dst(2, 2, 4, 9);
    ref::copy_rows(src.view(), dst.view());
    EXPECT_EQ(dst.bytes(), (std::vector<unsigned char>{1, 2, 9, 9, 4, 5, 9, 9}));
}

// Pixels of up to three values in a picture, and the threshold searched in 20..35.
struct otsu_row {
    const char* name;
    int value[3];
    int count[3];
    int expected;
};

class reference_otsu : public testing::TestWithParam<otsu_row> {};

TEST_P(reference_otsu, finds) {
    const otsu_row& row = GetParam();
    const int total = row.count[0] + row.count[1] + row.count[2];
    grey_image img(total, 1, total);
    int x = 0;
    for (std::size_t k = 0; k < 3; ++k) {
        fill_box(img.view(), x, 0, row.count[k], 1, row.value[k]);
        x += row.count[k];
    }
    EXPECT_EQ(ref::otsu_threshold(img.view(), 0, 0, 20, 35), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_otsu,
    testing::Values(
        otsu_row{"an all zero image gives the lower bound", {0, 0, 0}, {100, 0, 0}, 20},
        otsu_row{"values above the range only give the lower bound", {90, 90, 90}, {100, 0, 0}, 20},
        otsu_row{"two values around the range tie and the lowest wins", {10, 60, 60}, {100, 100, 0}, 20},
        // From 25 on both classes are populated, 24 and less skip nothing but the empty class.
        otsu_row{"a lower class that begins inside the range", {25, 60, 60}, {100, 100, 0}, 25},
        // t < 30: 100 * 200 pixels, means 10 and 45: 3500 * 7000 = 24,500,000.
        // t >= 30: 200 * 100 pixels, means 20 and 60: 8000 * 4000 = 32,000,000.
        otsu_row{"three values are split between the upper two", {10, 30, 60}, {100, 100, 100}, 30},
        // t < 30: m1 wraps to -40869, both products are positive. t >= 30: 60000 * -49920 wraps to 1,299,767,296, the
        // other factor stays negative, and the value is below zero. In wider arithmetic 30 would win.
        otsu_row{"sums beyond 32 bits wrap", {0, 30, 200}, {50000, 10000, 41376}, 20}),
    row_name<otsu_row>);

TEST(reference_otsu_search, keeps_to_its_margins_and_bounds) {
    grey_image img({
        "#####",
        "#...#",
        "#...#",
        "#####",
    });
    EXPECT_EQ(ref::otsu_threshold(img.view(), 1, 1, 20, 35), 20);
    EXPECT_EQ(ref::otsu_threshold(img.view(), 0, 2, 20, 35), 20) << "no row is left";
    EXPECT_EQ(ref::otsu_threshold(img.view(), 0, 0, 35, 20), 35) << "the lower bound comes back";
    EXPECT_EQ(ref::otsu_threshold(img.view(), 0, 0, 30, 30), 30);
}

// --- morphology -----------------------------------------------------------------------------------------------------

struct template_row {
    const char* name;
    int type;
    picture grown;  // what one set pixel in the middle of 7 x 5 becomes
};

class reference_templates : public testing::TestWithParam<template_row> {};

TEST_P(reference_templates, grows_one_pixel) {
    grey_image src({
        ".......",
        ".......",
        "...#...",
        ".......",
        ".......",
    });
    grey_image dst(7, 5, 7, 9);
    ref::dilate(src.view(), dst.view(), GetParam().type);
    EXPECT_EQ(dst.drawn(), GetParam().grown);
}

// Erosion of the inverse picture by the same template clears what dilation of the picture sets.
TEST_P(reference_templates, erodes_one_hole) {
    grey_image src({
        "#######",
        "#######",
        "###.###",
        "#######",
        "#######",
    });
    grey_image dst(7, 5, 7, 9);
    ref::erode(src.view(), dst.view(), GetParam().type);
    picture expected = GetParam().grown;
    for (std::string& row : expected) {
        for (char& c : row) c = c == '#' ? '.' : '#';
    }
    EXPECT_EQ(dst.drawn(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_templates,
    testing::Values(
        template_row{"horizontal line", 0, {".......", ".......", "..###..", ".......", "......."}},
        template_row{"vertical line", 1, {".......", "...#...", "...#...", "...#...", "......."}},
        template_row{"cross", 2, {".......", "...#...", "..###..", "...#...", "......."}},
        template_row{"square", 3, {".......", "..###..", "..###..", "..###..", "......."}},
        // The lower left neighbour is asked, so a pixel grows to the upper right.
        template_row{"cross with the lower left corner", 4, {".......", "...##..", "..###..", "...#...", "......."}}),
    row_name<template_row>);

TEST(reference_dilate, leaves_the_border_and_the_last_inner_column_as_copied) {
    grey_image src({
        "......",
        "......",
        "...#..",
        "......",
        "....#.",
        "......",
    });
    grey_image dst(6, 6, 6, 9);
    ref::dilate(src.view(), dst.view());
    // Columns 1 to 3 are worked on; column 4 is the last inner one and keeps what was copied.
    EXPECT_EQ(dst.drawn(), (picture{
                               "......",
                               "..##..",
                               "..##..",
                               "..##..",
                               "...##.",
                               "......",
                           }));
}

TEST(reference_dilate, copies_row_padding_and_nothing_behind_the_last_row) {
    grey_image src(6, 3, 8, 5);
    src.view().at(7, 1) = 44;
    grey_image dst(6, 4, 8, 9);
    ref::plane three_rows = dst.view();
    three_rows.height = 3;
    ref::dilate(src.view(), three_rows);
    EXPECT_EQ(dst.view().at(7, 0), 5);
    EXPECT_EQ(dst.view().at(7, 1), 44);
    EXPECT_EQ(dst.view().at(7, 2), 5);
    EXPECT_EQ(dst.view().at(0, 3), 9);
}

TEST(reference_dilate, only_copies_what_is_too_small_to_have_an_inside) {
    grey_image low({"#.#.#", ".#.#."});
    grey_image low_out(5, 2, 5, 9);
    ref::dilate(low.view(), low_out.view());
    EXPECT_EQ(low_out.drawn(), low.drawn());
    grey_image narrow({"#.#", "...", "#.#"});
    grey_image narrow_out(3, 3, 3, 9);
    ref::dilate(narrow.view(), narrow_out.view());
    EXPECT_EQ(narrow_out.drawn(), narrow.drawn());
    grey_image four({"....", "#...", "...."});
    grey_image four_out(4, 3, 4, 9);
    ref::dilate(four.view(), four_out.view());
    EXPECT_EQ(four_out.drawn(), (picture{"....", "##..", "...."}));
}

TEST(reference_dilate, asks_the_lowest_bit_only) {
    grey_image src({
        "........",
        ".e...1..",
        "........",
    });
    grey_image dst(8, 3, 8, 9);
    ref::dilate(src.view(), dst.view());
    EXPECT_EQ(dst.drawn(), (picture{
                               "........",
                               ".e..##..",
                               "........",
                           }));
}

TEST(reference_masks, an_unknown_template_is_logged_and_leaves_the_masks_alone) {
    ref::log_book log;
    std::array<std::uint32_t, 3> mask{1, 2, 3};
    EXPECT_EQ(ref::get_mask(5, mask, log), 0);
    EXPECT_EQ(mask, (std::array<std::uint32_t, 3>{1, 2, 3}));
    EXPECT_EQ(log.text(), "ERR. [Fire Detection: morphology::get_mask : 113] \nunknown morph template, 5");
    EXPECT_EQ(ref::get_mask(4, mask, log), 0);
    EXPECT_EQ(mask, (std::array<std::uint32_t, 3>{0x100, 0x10101, 0x101}));
}

// --- colour ---------------------------------------------------------------------------------------------------------

TEST(reference_colour, saturation_limit_has_the_telling_rows) {
    EXPECT_EQ(ref::saturation_limit(0), -912260);
    EXPECT_EQ(ref::saturation_limit(3), -889192);
    EXPECT_EQ(ref::saturation_limit(118), -4892);
    EXPECT_EQ(ref::saturation_limit(119), 2796);
    EXPECT_EQ(ref::saturation_limit(150), 241172);
    EXPECT_EQ(ref::saturation_limit(200), 625650);
    EXPECT_EQ(ref::saturation_limit(254), 1040886);
    EXPECT_EQ(ref::saturation_limit(255), 1048576);
}

// In whole numbers, 2^20 * (1 - 1.1 * (255 - i) / 150) + 0.5 is (1572864000 - 11534336 * (255 - i) + 750) / 1500.
TEST(reference_colour, saturation_limit_differs_from_exact_arithmetic_in_twelve_entries) {
    int different = 0;
    for (int red = 0; red < 256; ++red) {
        const long long exact = (1572864000LL - 11534336LL * (255 - red) + 750) / 1500;
        const long long distance = ref::saturation_limit(red) - exact;
        EXPECT_LE(distance < 0 ? -distance : distance, 1) << red;
        different += distance != 0;
    }
    EXPECT_EQ(different, 12);
}

struct conversion_row {
    const char* name;
    int y, u, v;
    int blue, green, red;
};

class reference_conversion : public testing::TestWithParam<conversion_row> {};

TEST_P(reference_conversion, gives) {
    const conversion_row& row = GetParam();
    const ref::bgr colour = ref::convert_pixel(row.y, row.u, row.v);
    EXPECT_EQ(colour.blue, row.blue);
    EXPECT_EQ(colour.green, row.green);
    EXPECT_EQ(colour.red, row.red);
}

// Offsets: R from V -180 (V 0) to 178 (V 255); G from V -92 to 90 and from U -44 to 43, both taken away; B from U -227
// to 225.
INSTANTIATE_TEST_SUITE_P(rows, reference_conversion,
                         testing::Values(conversion_row{"black", 0, 128, 128, 0, 0, 0},
                                         conversion_row{"white", 255, 128, 128, 255, 255, 255},
                                         conversion_row{"grey", 100, 128, 128, 100, 100, 100},
                                         conversion_row{"V at its top clips red", 255, 128, 255, 255, 165, 255},
                                         conversion_row{"V at its top, dark", 50, 128, 255, 50, 0, 228},
                                         conversion_row{"V at zero", 200, 128, 0, 200, 255, 20},
                                         conversion_row{"V at zero, dark", 100, 128, 0, 100, 192, 0},
                                         conversion_row{"U at zero", 230, 0, 128, 3, 255, 230},
                                         conversion_row{"U at its top", 20, 255, 128, 245, 0, 20},
                                         conversion_row{"U at its top, brighter", 100, 255, 128, 255, 57, 100},
                                         // One step below neutral rounds down to -2, -1, -1, -2.
                                         conversion_row{"one below neutral", 100, 127, 127, 98, 102, 98},
                                         // One step above: 359 >> 8 = 1, 183 >> 8 = 0, 88 >> 8 = 0, 454 >> 8 = 1.
                                         conversion_row{"one above neutral", 100, 129, 129, 101, 100, 101}),
                         row_name<conversion_row>);

TEST(reference_conversion_image, takes_v_first_and_whole_blocks_on_an_odd_edge) {
    // One pixel wide and high; the planes lie stride * height = 4 bytes apart, so the block's lower row of one plane is
    // the upper row of the next. V 228 adds 140 to red and takes 71 from green; U is neutral.
    grey_image luma(4, 2, 4);
    luma.bytes() = {10, 20, 0, 0, 30, 90, 0, 0};
    ref::plane one_pixel = luma.view();
    one_pixel.width = 1;
    one_pixel.height = 1;
    const unsigned char chroma[] = {228, 128, 0, 0};
    std::vector<unsigned char> rgb(16, 7);
    const ref::rgb_view dst{{rgb.data(), 1, 1, 4}, rgb.data() + 4, rgb.data() + 8};
    ref::convert_image({one_pixel, chroma, 4}, dst);
    EXPECT_EQ(rgb, (std::vector<unsigned char>{10, 20, 7, 7,       // blue, upper row
                                               30, 90, 7, 7,       // green of the upper row, then blue of the lower
                                               0, 19, 7, 7,        // red of the upper row, then green of the lower
                                               170, 230, 7, 7}));  // red, lower row
}

struct fire_row {
    const char* name;
    int r, g, b, y, u, v;
    int expected;
};

class reference_fire_colour : public testing::TestWithParam<fire_row> {};

TEST_P(reference_fire_colour, answers) {
    const fire_row& row = GetParam();
    EXPECT_EQ(ref::check_fire_pt(row.r, row.g, row.b, row.y, row.u, row.v), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_fire_colour,
    testing::Values(
        fire_row{"a flame", 255, 200, 100, 200, 60, 180, 1},
        fire_row{"red equal to green", 220, 220, 100, 200, 60, 180, 1},
        fire_row{"red below green", 220, 221, 100, 200, 60, 180, 0},
        fire_row{"green equal to blue", 255, 200, 200, 200, 60, 180, 0},
        fire_row{"green one above blue", 255, 201, 200, 200, 60, 180, 1},
        fire_row{"blue 81", 255, 200, 81, 200, 60, 180, 1}, fire_row{"blue 80", 255, 200, 80, 200, 60, 180, 0},
        fire_row{"red 150", 150, 140, 100, 200, 60, 180, 0},
        fire_row{"red just below twice green", 255, 128, 90, 200, 60, 180, 1},
        fire_row{"red twice green", 254, 127, 90, 200, 60, 180, 0},
        fire_row{"luma 31 above U", 255, 200, 100, 91, 60, 180, 1},
        fire_row{"luma 30 above U", 255, 200, 100, 90, 60, 180, 0},
        fire_row{"V one above U", 255, 200, 100, 200, 160, 161, 1},
        fire_row{"V equal to U", 255, 200, 100, 200, 160, 160, 0}, fire_row{"V 121", 255, 200, 100, 200, 60, 121, 1},
        fire_row{"V 120", 255, 200, 100, 200, 60, 120, 0},
        // Limit 625650 for red 200. (258 * 2^20 + 218) / 436 = 620488 and (261 * 2^20 + 218) / 437 = 626266.
        fire_row{"saturated enough", 200, 150, 86, 200, 60, 180, 1},
        fire_row{"a little too pale", 200, 150, 87, 200, 60, 180, 0}),
    row_name<fire_row>);

// A block of four: which pixels are set, which of them have the colour of fire, and whether the block stays.
struct block_row {
    const char* name;
    int set_pixels;
    int fire_pixels;
    bool stays;
};

class reference_blocks : public testing::TestWithParam<block_row> {};

TEST_P(reference_blocks, stay_or_go) {
    const block_row& row = GetParam();
    grey_image mask(2, 2, 4, 33);
    grey_image luma(2, 2, 4, 200);
    grey_image blue(2, 2, 4, 100);
    grey_image green(2, 2, 4, 200);
    grey_image red(2, 2, 4, 0);
    for (int k = 0; k < 4; ++k) {
        mask.view().at(k % 2, k / 2) = k < row.set_pixels ? 255 : 0;
        if (k < row.fire_pixels) red.view().at(k % 2, k / 2) = 255;
    }
    const std::vector<unsigned char> before = mask.bytes();
    const unsigned char chroma[] = {180, 60};
    ref::color_filter(mask.view(), {blue.view(), green.bytes().data(), red.bytes().data()}, {luma.view(), chroma, 4});
    std::vector<unsigned char> expected = before;
    if (!row.stays) expected = {0, 0, 33, 33, 0, 0, 33, 33};
    EXPECT_EQ(mask.bytes(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_blocks,
    testing::Values(block_row{"none set", 0, 4, true}, block_row{"one set, none of fire", 1, 0, false},
                    block_row{"one set, one of fire", 1, 1, true}, block_row{"two set, none of fire", 2, 0, false},
                    block_row{"two set, one of fire", 2, 1, true}, block_row{"three set, one of fire", 3, 1, false},
                    block_row{"three set, two of fire", 3, 2, true}, block_row{"four set, two of fire", 4, 2, false},
                    block_row{"four set, three of fire", 4, 3, true}),
    row_name<block_row>);

// --- components -----------------------------------------------------------------------------------------------------

struct label_row {
    const char* name;
    picture drawn;
    std::vector<ref::component> expected;  // area, left, right, top, bottom
};

class reference_labels : public testing::TestWithParam<label_row> {};

TEST_P(reference_labels, are) {
    grey_image img(GetParam().drawn);
    std::vector<ref::component> found;
    ref::label_components(img.view(), found);
    EXPECT_TRUE(found == GetParam().expected);
    ASSERT_EQ(found.size(), GetParam().expected.size());
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_labels,
    testing::Values(label_row{"nothing", {"...", "..."}, {}}, label_row{"one pixel", {"#..", "..."}, {{1, 0, 0, 0, 0}}},
                    label_row{"a value of 1 or 254 counts", {"1e."}, {{2, 0, 1, 0, 0}}},
                    label_row{"a corner does not connect", {"#.", ".#"}, {{1, 0, 0, 0, 0}, {1, 1, 1, 1, 1}}},
                    label_row{"arms that meet below are one", {"#.#", "#.#", "###"}, {{7, 0, 2, 0, 2}}},
                    label_row{"a row between keeps apart", {"##", "..", "##"}, {{2, 0, 1, 0, 0}, {2, 0, 1, 2, 2}}},
                    label_row{"one column wide", {"#", ".", "#", "#"}, {{1, 0, 0, 0, 0}, {2, 0, 0, 2, 3}}},
                    label_row{"in the order of the first run and not of the size",
                              {"..#..", "#...#", "##.##"},
                              {{1, 2, 2, 0, 0}, {3, 0, 1, 1, 2}, {3, 3, 4, 1, 2}}},
                    label_row{"a late meeting keeps the number of the first arm",
                              {"..#.#.", "#.#.#.", "#.###.", "#....."},
                              {{7, 2, 4, 0, 2}, {3, 0, 0, 1, 3}}}),
    row_name<label_row>);

TEST(reference_label_records, start_at_352_and_288_whatever_the_image) {
    grey_image img(400, 300, 400);
    fill_box(img.view(), 360, 290, 5, 2, 255);
    std::vector<ref::component> found;
    ref::label_components(img.view(), found);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0] == (ref::component{10, 352, 364, 288, 291}));
}

TEST(reference_label_records, are_resized_and_old_ones_are_widened) {
    grey_image img({".#.#"});
    std::vector<ref::component> found = {{100, 2, 2, 5, 5}};
    ref::label_components(img.view(), found);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_TRUE(found[0] == (ref::component{101, 1, 2, 0, 5}));
    EXPECT_TRUE(found[1] == (ref::component{1, 3, 3, 0, 0}));
    grey_image empty({"...."});
    ref::label_components(empty.view(), found);
    EXPECT_EQ(found.size(), 2u) << "an empty image leaves the records alone";
    grey_image one({"#..."});
    ref::label_components(one.view(), found);
    EXPECT_EQ(found.size(), 1u) << "fewer components shorten the list";
}

}  // namespace
