// Sizes, regions and boxes, with values worked out by hand.
#include <gtest/gtest.h>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/geometry.h"
#include "tests/support/rows.h"

namespace orva_fire {

static void PrintTo(const box& b, std::ostream* out) {
    *out << b.x << "," << b.y << " " << b.width << "x" << b.height;
}
static void PrintTo(const picture_size& size, std::ostream* out) {
    *out << size.width << "x" << size.height;
}

}  // namespace orva_fire

namespace {

using namespace orva_fire;
using support::row_name;

// --- the size that the detector sees ---------------------------------------------------------------------------------

struct size_row : support::named_row {
    picture_size source, wanted;
};

class analysis_size_of : public testing::TestWithParam<size_row> {};

TEST_P(analysis_size_of, fits_the_library_and_keeps_the_aspect) {
    EXPECT_EQ(analysis_size(GetParam().source), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, analysis_size_of,
    testing::Values(size_row{{"the largest size stays"}, {352, 288}, {352, 288}},
                    size_row{{"a small size stays"}, {320, 240}, {320, 240}},
                    size_row{{"wide pictures are held by their width"}, {640, 360}, {352, 198}},
                    size_row{{"full HD"}, {1920, 1080}, {352, 198}},
                    size_row{{"4 to 3 is held by its width"}, {1280, 960}, {352, 264}},
                    size_row{{"PAL"}, {720, 576}, {352, 282}},
                    size_row{{"portrait is held by its height and rounded from 162 to 160"}, {1080, 1920}, {160, 288}},
                    size_row{{"278 becomes 272 since that is 2 percent"}, {316, 328}, {272, 288}},
                    size_row{{"100 stays since 96 would be 4 percent less"}, {100, 80}, {100, 80}},
                    size_row{{"200 stays since 208 would be 4 percent more"}, {200, 100}, {200, 100}},
                    size_row{{"330 becomes 336 since that is 2 percent"}, {330, 200}, {336, 200}},
                    size_row{{"345 becomes 352"}, {345, 200}, {352, 200}},
                    size_row{{"odd sizes become even"}, {101, 57}, {102, 58}},
                    size_row{{"one step of 16"}, {16, 16}, {16, 16}},
                    size_row{{"a very flat picture keeps two rows"}, {4000, 20}, {352, 2}},
                    size_row{{"a very narrow picture keeps two columns"}, {20, 4000}, {2, 288}}),
    row_name());

// --- regions ---------------------------------------------------------------------------------------------------------

struct region_row : support::named_row {
    const char* text;
    picture_size picture;
    box wanted;
};

class placed_region : public testing::TestWithParam<region_row> {};

TEST_P(placed_region, lies_on_even_pixels) {
    EXPECT_EQ(place_region(parse_region(GetParam().text), GetParam().picture), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, placed_region,
    testing::Values(region_row{{"pixels"}, "100,50,200,100", {640, 360}, {100, 50, 200, 100}},
                    region_row{{"percent"}, "50%,0%,50%,100%", {640, 360}, {320, 0, 320, 360}},
                    region_row{{"pixels and percent mixed"}, "10,25%,50%,60", {640, 360}, {10, 90, 320, 60}},
                    region_row{{"fractions of a percent"}, "12.5%,0,12.5%,20", {640, 360}, {80, 0, 80, 20}},
                    region_row{{"odd edges are widened"}, "101,51,100,60", {640, 360}, {100, 50, 102, 62}},
                    region_row{{"the whole of an odd picture"}, "0,0,100%,100%", {641, 361}, {0, 0, 641, 361}},
                    region_row{
                        {"thirds that add up to a whole"}, "66.67%,0,33.33%,100%", {640, 360}, {426, 0, 214, 360}},
                    region_row{{"the smallest"}, "0,0,16,16", {640, 360}, {0, 0, 16, 16}},
                    region_row{{"15 pixels widen to 16"}, "1,0,15,16", {640, 360}, {0, 0, 16, 16}},
                    region_row{{"up to the last pixel"}, "624,344,16,16", {640, 360}, {624, 344, 16, 16}}),
    row_name());

struct bad_region_row : support::named_row {
    const char* text;
};

class bad_region : public testing::TestWithParam<bad_region_row> {};

TEST_P(bad_region, is_refused_on_640_x_360) {
    EXPECT_THROW(place_region(parse_region(GetParam().text), {640, 360}), usage_error);
}

INSTANTIATE_TEST_SUITE_P(
    table, bad_region,
    testing::Values(bad_region_row{{"three values"}, "1,2,3"}, bad_region_row{{"five values"}, "1,2,3,4,5"},
                    bad_region_row{{"no value"}, ""}, bad_region_row{{"an empty value"}, "1,,30,30"},
                    bad_region_row{{"a word"}, "a,0,30,30"}, bad_region_row{{"a number with a word"}, "10px,0,30,30"},
                    bad_region_row{{"two percent signs"}, "10%%,0,30,30"},
                    bad_region_row{{"a negative value"}, "-10,0,30,30"},
                    bad_region_row{{"a fraction of a pixel"}, "10.5,0,30,30"},
                    bad_region_row{{"a number in another base"}, "0x10,0,30,30"},
                    bad_region_row{{"no number at all"}, "nan,0,30,30"}, bad_region_row{{"without end"}, "inf,0,30,30"},
                    bad_region_row{{"blanks"}, " 10,0,30,30"}, bad_region_row{{"one pixel too wide"}, "610,0,31,30"},
                    bad_region_row{{"one pixel too high"}, "0,331,30,30"},
                    bad_region_row{{"beyond 100 percent"}, "60%,0,41%,30"},
                    bad_region_row{{"14 pixels wide"}, "0,0,14,30"}, bad_region_row{{"14 pixels high"}, "0,0,30,14"},
                    bad_region_row{{"no width"}, "0,0,0,30"}),
    row_name());

// --- boxes -----------------------------------------------------------------------------------------------------------

struct source_row : support::named_row {
    box seen;
    picture_size analysis;
    box region, wanted;
};

class box_in_source : public testing::TestWithParam<source_row> {};

TEST_P(box_in_source, covers_what_was_seen) {
    EXPECT_EQ(to_source(GetParam().seen, GetParam().analysis, GetParam().region), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, box_in_source,
    testing::Values(
        source_row{{"same size, whole picture"}, {10, 20, 30, 40}, {320, 240}, {0, 0, 320, 240}, {10, 20, 30, 40}},
        source_row{{"same size, a region"}, {10, 20, 30, 40}, {176, 144}, {100, 50, 176, 144}, {110, 70, 30, 40}},
        // left 10*640/352 = 18.18, top 20*360/198 = 36.36, right 40*640/352 = 72.73, bottom 60*360/198 = 109.09
        source_row{{"larger source rounds outwards"}, {10, 20, 30, 40}, {352, 198}, {0, 0, 640, 360}, {18, 36, 55, 74}},
        source_row{{"the whole picture"}, {0, 0, 352, 198}, {352, 198}, {0, 0, 640, 360}, {0, 0, 640, 360}},
        source_row{
            {"a box beyond the edge is cut"}, {340, 190, 30, 20}, {352, 198}, {0, 0, 352, 198}, {340, 190, 12, 8}}),
    row_name());

TEST(per_mille, rounds_edges_to_the_nearest) {
    // 18/640 = 28.1, 73/640 = 114.06, 36/360 = 100, 110/360 = 305.6
    EXPECT_EQ(to_per_mille({18, 36, 55, 74}, {640, 360}), (box{28, 100, 86, 206}));
    EXPECT_EQ(to_per_mille({0, 0, 640, 360}, {640, 360}), (box{0, 0, 1000, 1000}));
}

TEST(largest_box, is_the_first_of_the_largest_by_area) {
    EXPECT_EQ(largest_box({{0, 0, 10, 10}, {1, 1, 20, 6}, {2, 2, 6, 20}, {3, 3, 5, 5}}), (box{1, 1, 20, 6}));
    EXPECT_EQ(largest_box({}), box());
}

}  // namespace
