// The brightness test of a candidate: every limit, every rounding, and exactly which pixels around a box are counted.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "channel/foreground_analysis.h"
#include "tests/channel/components.h"
#include "tests/reference/ref_boxes.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::con_info;
using orva_fd::foreground_analysis;
using support::box;
using support::grey_image;
using support::outcome;
using support::outcome_of;
using support::row_name;

outcome verify(grey_image& luma, grey_image& mask, con_info candidate) {
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    return outcome_of([&] { return foreground_analysis().verify_fire(&roi, &fg, nullptr, &candidate); });
}

// --- limit_rect -----------------------------------------------------------------------------------------------------

struct clamp_row : support::named_row {
    int x, y, w, h;
    int wanted_x, wanted_y, wanted_w, wanted_h;
};

class limit_rect : public testing::TestWithParam<clamp_row> {};

TEST_P(limit_rect, clamps_to_an_image_of_100_x_50) {
    int x = GetParam().x, y = GetParam().y, w = GetParam().w, h = GetParam().h;
    EXPECT_EQ(foreground_analysis().limit_rect(x, y, w, h, 100, 50), 0);
    EXPECT_EQ(x, GetParam().wanted_x);
    EXPECT_EQ(y, GetParam().wanted_y);
    EXPECT_EQ(w, GetParam().wanted_w);
    EXPECT_EQ(h, GetParam().wanted_h);
}

INSTANTIATE_TEST_SUITE_P(table, limit_rect,
                         testing::Values(clamp_row{{"inside"}, 10, 10, 20, 20, 10, 10, 20, 20},
                                         clamp_row{{"the whole image"}, 0, 0, 100, 50, 0, 0, 100, 50},
                                         clamp_row{{"moving right keeps the width"}, -5, 10, 20, 20, 0, 10, 20, 20},
                                         clamp_row{{"moving down keeps the height"}, 10, -3, 20, 20, 10, 0, 20, 20},
                                         clamp_row{{"one column too many"}, 81, 10, 20, 20, 81, 10, 19, 20},
                                         clamp_row{{"the last column"}, 80, 10, 20, 20, 80, 10, 20, 20},
                                         clamp_row{{"one row too many"}, 10, 31, 20, 20, 10, 31, 20, 19},
                                         clamp_row{{"the last row"}, 10, 30, 20, 20, 10, 30, 20, 20},
                                         clamp_row{{"moved and still too wide"}, -5, 10, 101, 20, 0, 10, 100, 20},
                                         clamp_row{{"moved and still too high"}, 10, -5, 20, 51, 10, 0, 20, 50},
                                         clamp_row{{"beyond the right edge"}, 120, 10, 20, 20, 120, 10, -20, 20}),
                         row_name());

// --- counting in the box --------------------------------------------------------------------------------------------

struct count_row : support::named_row {
    int width, height, area;
    int bright;  // pixels of `value`, the others 0, in raster order of the box
    int value;
    int set;  // mask bytes of `mask_value`
    int mask_value;
    int status;
    std::string text;
};

class counts : public testing::TestWithParam<count_row> {};

// The surround is black, so that whatever passes the counts is brighter.
TEST_P(counts, decide) {
    const count_row& row = GetParam();
    grey_image luma(100, 100), mask(100, 100, 103);
    for (int i = 0; i < row.width * row.height; ++i) {
        const int x = 30 + i % row.width, y = 30 + i / row.width;
        if (i < row.bright) luma.at(x, y) = static_cast<unsigned char>(row.value);
        if (i < row.set) mask.at(x, y) = static_cast<unsigned char>(row.mask_value);
    }
    const outcome got = verify(luma, mask, box(30, 30, row.width, row.height, row.area));
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(got.text, row.text);
}

INSTANTIATE_TEST_SUITE_P(size, counts,
                         testing::Values(count_row{{"2 pixels wide"}, 2, 40, 80, 80, 255, 80, 255, 4, ""},
                                         count_row{{"3 pixels wide"}, 3, 40, 120, 120, 255, 120, 255, 0, ""},
                                         count_row{{"4 lines high"}, 40, 4, 160, 160, 255, 160, 255, 4, ""},
                                         count_row{{"5 lines high"}, 40, 5, 200, 200, 255, 200, 255, 0, ""},
                                         count_row{{"an area of 19"}, 10, 10, 19, 100, 255, 100, 255, 4, ""},
                                         count_row{{"an area of 20"}, 10, 10, 20, 100, 255, 100, 255, 0, ""},
                                         count_row{{"3 x 5 has too few pixels to be set"},
                                                   3,
                                                   5,
                                                   20,
                                                   15,
                                                   255,
                                                   15,
                                                   255,
                                                   4,
                                                   "ratio1 = 1.00, fire_area = 15, ratio = 1.00 ==========\n"},
                                         count_row{{"too narrow before too dark"}, 2, 40, 80, 0, 255, 0, 255, 4, ""},
                                         count_row{{"too low before too dark"}, 40, 4, 160, 0, 255, 0, 255, 4, ""},
                                         count_row{{"too small before too dark"}, 10, 10, 19, 0, 255, 0, 255, 4, ""}),
                         row_name());

INSTANTIATE_TEST_SUITE_P(
    bright, counts,
    testing::Values(
        count_row{{"12 of 100"}, 10, 10, 100, 12, 255, 100, 255, 0, ""},
        count_row{{"11 of 100"},
                  10,
                  10,
                  100,
                  11,
                  255,
                  100,
                  255,
                  4,
                  "ratio1 = 0.11, fire_area = 100, ratio = 1.00 ==========\n"},
        count_row{
            {"none"}, 10, 10, 100, 0, 255, 100, 255, 4, "ratio1 = 0.00, fire_area = 100, ratio = 1.00 ==========\n"},
        count_row{{"luma 129 is bright"}, 10, 10, 100, 100, 129, 100, 255, 0, ""},
        count_row{{"luma 128 is not"},
                  10,
                  10,
                  100,
                  100,
                  128,
                  100,
                  255,
                  4,
                  "ratio1 = 0.00, fire_area = 100, ratio = 1.00 ==========\n"},
        // 39 * 5 / 8 = 24.4
        count_row{{"24 of 195"}, 39, 5, 195, 24, 255, 195, 255, 0, ""},
        count_row{{"23 of 195"},
                  39,
                  5,
                  195,
                  23,
                  255,
                  195,
                  255,
                  4,
                  "ratio1 = 0.12, fire_area = 195, ratio = 1.00 ==========\n"}),
    row_name());

INSTANTIATE_TEST_SUITE_P(set, counts,
                         testing::Values(count_row{{"20 of 100"}, 10, 10, 100, 100, 255, 20, 255, 0, ""},
                                         count_row{{"19 of 100"},
                                                   10,
                                                   10,
                                                   100,
                                                   100,
                                                   255,
                                                   19,
                                                   255,
                                                   4,
                                                   "ratio1 = 1.00, fire_area = 19, ratio = 0.19 ==========\n"},
                                         count_row{{"100 of 1600"}, 40, 40, 1600, 1600, 255, 100, 255, 0, ""},
                                         count_row{{"99 of 1600"},
                                                   40,
                                                   40,
                                                   1600,
                                                   1600,
                                                   255,
                                                   99,
                                                   255,
                                                   4,
                                                   "ratio1 = 1.00, fire_area = 99, ratio = 0.06 ==========\n"},
                                         // 39 * 40 / 16 = 97.5
                                         count_row{{"97 of 1560"}, 39, 40, 1560, 1560, 255, 97, 255, 0, ""},
                                         count_row{{"96 of 1560"},
                                                   39,
                                                   40,
                                                   1560,
                                                   1560,
                                                   255,
                                                   96,
                                                   255,
                                                   4,
                                                   "ratio1 = 1.00, fire_area = 96, ratio = 0.06 ==========\n"},
                                         count_row{{"a mask byte of 1 is set"}, 10, 10, 100, 100, 255, 20, 1, 0, ""},
                                         count_row{{"a mask byte of 254 is not"},
                                                   10,
                                                   10,
                                                   100,
                                                   100,
                                                   255,
                                                   100,
                                                   254,
                                                   4,
                                                   "ratio1 = 1.00, fire_area = 0, ratio = 0.00 ==========\n"},
                                         count_row{{"neither bright nor set and one line"},
                                                   10,
                                                   10,
                                                   100,
                                                   3,
                                                   255,
                                                   7,
                                                   255,
                                                   4,
                                                   "ratio1 = 0.03, fire_area = 7, ratio = 0.07 ==========\n"}),
                         row_name());

// --- centre and surround ---------------------------------------------------------------------------------------------

struct average_row : support::named_row {
    int low_count;  // pixels of the box with luma 209; the other bright ones have 210
    int bright_count;
    int around;
    int status;
    std::string text;
};

class averages : public testing::TestWithParam<average_row> {};

TEST_P(averages, decide) {
    const average_row& row = GetParam();
    grey_image luma(100, 100, 100, 0, static_cast<unsigned char>(row.around)), mask(100, 100, 100, 0, 1);
    luma.fill_rect(30, 30, 10, 10, 100);
    for (int i = 0; i < row.bright_count; ++i) luma.at(30 + i % 10, 30 + i / 10) = i < row.low_count ? 209 : 210;
    const outcome got = verify(luma, mask, box(30, 30, 10, 10, 100));
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(got.text, row.text);
}

INSTANTIATE_TEST_SUITE_P(
    table, averages,
    testing::Values(
        average_row{{"210 against 200"}, 0, 100, 200, 0, ""},
        average_row{{"209 against 200"}, 100, 100, 200, 4, " avg_center = 209, avg_arround = 200, ratio = 1.04\n"},
        average_row{{"210 against 201"}, 0, 100, 201, 4, " avg_center = 210, avg_arround = 201, ratio = 1.04\n"},
        average_row{{"half of 209 is rounded up"}, 6, 12, 200, 0, ""},
        average_row{
            {"a little more is rounded down"}, 7, 12, 200, 4, " avg_center = 209, avg_arround = 200, ratio = 1.04\n"},
        average_row{{"only bright pixels are averaged"}, 0, 50, 200, 0, ""},
        average_row{{"210 against 255"}, 0, 100, 255, 4, " avg_center = 210, avg_arround = 255, ratio = 0.82\n"},
        average_row{{"210 against black"}, 0, 100, 0, 0, ""}),
    row_name());

// Boxes of up to 4 pixels have no margin on that side: 4 * 0.2 is 0.8. With neither there would be no surround, but
// boxes are at least 5 high. Truncation, not rounding: 9 * 0.2 = 1.8 gives 1, 10 * 0.2 gives 2, 15 * 0.2 gives 3.
//
// Which pixels count, and how often: the picture is 129 everywhere, one pixel is 255. The printed average tells whether
// that pixel was counted.
struct map_row : support::named_row {
    int x, y, width, height;  // the box, in a region of region_width x region_height
    int region_width, region_height;
    std::vector<std::string> wanted;  // from (0, 0) of the region on, beyond its right and lower edge too
};

class surround : public testing::TestWithParam<map_row> {};

// How often a pixel with 126 more than the others was counted among n. Averages are rounded, so n must tell 1 from 2.
char times_counted(int average, int n) {
    for (int times = 0; times <= 3; ++times) {
        if (average == (129 * n + 126 * times + n / 2) / n) return times == 0 ? '.' : static_cast<char>('0' + times);
    }
    return '?';
}

TEST_P(surround, counts_these_pixels) {
    const map_row& row = GetParam();
    const int columns = static_cast<int>(row.wanted[0].size()), rows = static_cast<int>(row.wanted.size());
    const int mx = row.width / 5, my = row.height / 5;
    int clamped_width = row.width + 2 * mx;
    const int clamped_x = std::max(0, row.x - mx);
    if (clamped_x + clamped_width > row.region_width) clamped_width = row.region_width - clamped_x;
    const int n = 2 * (mx * row.height + clamped_width * my);
    std::vector<std::string> got;
    for (int y = 0; y < rows; ++y) {
        std::string line;
        for (int x = 0; x < columns; ++x) {
            grey_image luma(columns, rows, columns + 4, 0, 129), mask(columns, rows, columns, 0, 255);
            luma.at(x, y) = 255;
            fd_yuv_frame roi = luma.frame(), fg = mask.frame();
            roi.width = static_cast<unsigned>(row.region_width);
            roi.height = static_cast<unsigned>(row.region_height);
            con_info candidate = box(row.x, row.y, row.width, row.height, 100);
            const outcome told =
                outcome_of([&] { return foreground_analysis().verify_fire(&roi, &fg, nullptr, &candidate); });
            EXPECT_EQ(told.status, 4);
            int centre = 0, around = 0;
            EXPECT_EQ(std::sscanf(told.text.c_str(), " avg_center = %d, avg_arround = %d,", &centre, &around), 2)
                << told.text;
            line += times_counted(around, n);
        }
        got.push_back(line);
    }
    EXPECT_EQ(got, row.wanted);
}

INSTANTIATE_TEST_SUITE_P(
    by_hand, surround,
    testing::Values(map_row{{"inside the region"},
                            3,
                            3,
                            5,
                            5,
                            11,
                            11,
                            {"...........",  //
                             "...........",  //
                             "..1111111..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1111111..",  //
                             "...........",  //
                             "..........."}},
                    // The left band comes to lie inside the box, and the upper and lower ones keep their width.
                    map_row{{"at the left edge"},
                            0,
                            3,
                            5,
                            5,
                            11,
                            11,
                            {"...........",  //
                             "...........",  //
                             "1111111....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1111111....",  //
                             "...........",  //
                             "..........."}},
                    // The upper band comes to lie inside the box and meets the side bands.
                    map_row{{"at the upper edge"},
                            3,
                            0,
                            5,
                            5,
                            11,
                            11,
                            {"..2111112..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1111111..",  //
                             "...........",  //
                             "..........."}},
                    map_row{{"in the upper left corner"},
                            0,
                            0,
                            5,
                            5,
                            11,
                            11,
                            {"2111121....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1....1.....",  //
                             "1111111....",  //
                             "..........."}},
                    // The upper and lower bands end at the region, the right band lies beyond it.
                    map_row{{"at the right edge"},
                            3,
                            3,
                            5,
                            5,
                            8,
                            11,
                            {"...........",  //
                             "...........",  //
                             "..111111...",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..111111...",  //
                             "..........."}},
                    // The lower band lies beyond the region.
                    map_row{{"at the lower edge"},
                            3,
                            3,
                            5,
                            5,
                            11,
                            8,
                            {"...........",  //
                             "...........",  //
                             "..1111111..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1.....1..",  //
                             "..1111111..",  //
                             "..........."}},
                    map_row{{"4 wide has no side bands"},
                            3,
                            3,
                            4,
                            5,
                            10,
                            11,
                            {"..........",  //
                             "..........",  //
                             "...1111...",  //
                             "..........",  //
                             "..........",  //
                             "..........",  //
                             "..........",  //
                             "..........",  //
                             "...1111...",  //
                             ".........."}},
                    map_row{{"9 x 9 has bands of one pixel"},
                            3,
                            3,
                            9,
                            9,
                            15,
                            15,
                            {"...............",  //
                             "...............",  //
                             "..11111111111..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..1.........1..",  //
                             "..11111111111..",  //
                             "...............",  //
                             "..............."}},
                    map_row{{"10 x 10 has bands of two pixels"},
                            3,
                            3,
                            10,
                            10,
                            16,
                            16,
                            {"................",  //
                             ".11111111111111.",  //
                             ".11111111111111.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11..........11.",  //
                             ".11111111111111.",  //
                             ".11111111111111.",  //
                             "................"}},
                    map_row{{"moved by one of two columns"},
                            1,
                            3,
                            10,
                            10,
                            16,
                            16,
                            {"................",  //
                             "11111111111111..",  //
                             "11111111111111..",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11.........11...",  //
                             "11111111111111..",  //
                             "11111111111111..",  //
                             "................"}}),
    row_name());

TEST(surround_average, is_rounded_to_the_nearest) {
    // 10 x 10: 96 pixels around. 48 more than 200 each is half: rounded up to 201; 47 is not.
    for (const int more : {47, 48}) {
        grey_image luma(50, 50, 50, 0, 200), mask(50, 50, 50, 0, 1);
        luma.fill_rect(20, 20, 10, 10, 200);
        for (int i = 0; i < more; ++i) luma.at(18 + i % 14, i < 14 ? 18 : i < 28 ? 19 : i < 42 ? 30 : 31) = 201;
        const outcome got = verify(luma, mask, box(20, 20, 10, 10, 100));
        EXPECT_EQ(got.text, more == 47 ? " avg_center = 200, avg_arround = 200, ratio = 1.00\n"
                                       : " avg_center = 200, avg_arround = 201, ratio = 1.00\n");
    }
}

// --- against the twin -----------------------------------------------------------------------------------------------

TEST(verify_fire_random, equals_the_plain_twin) {
    support::random_source random;
    int fire = 0, dim = 0;
    for (int round = 0; round < 3000; ++round) {
        grey_image luma(130, 130, 140), mask(100, 100, 110);
        const int base = random.below(200);
        for (std::size_t i = 0; i < luma.length(); ++i)
            luma.data()[i] = static_cast<unsigned char>(base + random.below(56));
        for (std::size_t i = 0; i < mask.length(); ++i) mask.data()[i] = static_cast<unsigned char>(random.below(256));
        const int width = random.between(1, 60), height = random.between(1, 60);
        con_info candidate = box(random.between(0, 100 - width), random.between(0, 100 - height), width, height,
                                 random.between(10, 2000));
        if (random.below(2) == 0) {
            for (int y = candidate.top; y <= candidate.bottom; ++y) {
                for (int x = candidate.left; x <= candidate.right; ++x) {
                    luma.at(x, y) = static_cast<unsigned char>(std::min(255, luma.at(x, y) + random.below(40)));
                }
            }
        }
        fd_yuv_frame roi = luma.frame(), fg = mask.frame();
        roi.width = roi.height = 100;
        const outcome got =
            outcome_of([&] { return foreground_analysis().verify_fire(&roi, &fg, nullptr, &candidate); });
        ref::log_book log;
        const int wanted =
            ref::verify_fire({luma.data(), 100, 100, luma.stride()}, plane_of(mask),
                             {candidate.area, candidate.left, candidate.right, candidate.top, candidate.bottom}, log);
        ASSERT_EQ(got.status, wanted) << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(got.text, log.text()) << "round " << round << ", seed " << random.seed();
        fire += wanted == 0;
        dim += got.text.compare(0, 11, " avg_center") == 0;
    }
    EXPECT_GT(fire, 100);
    EXPECT_GT(dim, 100);
}

}  // namespace
