// Sensitivity, merging of close components, covering, and the list of candidates.
#include <gtest/gtest.h>

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
#include "tests/support/test_access.h"

namespace {

using orva_fd::con_info;
using orva_fd::foreground_analysis;
using orva_fd::test_access;
using support::box;
using support::grey_image;
using support::outcome;
using support::outcome_of;
using support::row_name;
using support::text_of;

using list = std::vector<con_info>;

// --- sensitivity ----------------------------------------------------------------------------------------------------

struct grade_row : support::named_row {
    int first;
    int last;
    int wanted;
};

class grades : public testing::TestWithParam<grade_row> {};

TEST_P(grades, ask_for_so_many_frames) {
    for (int grade = GetParam().first; grade <= GetParam().last; ++grade) {
        foreground_analysis analysis;
        test_access::stable_thresh(analysis) = 1;
        const outcome got = outcome_of([&] { return analysis.set_sensitive(grade); });
        EXPECT_EQ(got.status, 0) << grade;
        EXPECT_EQ(got.text, "") << grade;
        EXPECT_EQ(test_access::stable_thresh(analysis), GetParam().wanted) << grade;
    }
}

INSTANTIATE_TEST_SUITE_P(table, grades,
                         testing::Values(grade_row{{"0 to 1"}, 0, 1, 47}, grade_row{{"2 to 7"}, 2, 7, 46},
                                         grade_row{{"8 to 13"}, 8, 13, 45}, grade_row{{"14 to 19"}, 14, 19, 44},
                                         grade_row{{"20 to 25"}, 20, 25, 43}, grade_row{{"26 to 31"}, 26, 31, 42},
                                         grade_row{{"32 to 37"}, 32, 37, 41}, grade_row{{"38 to 43"}, 38, 43, 40},
                                         grade_row{{"44 to 49"}, 44, 49, 39}, grade_row{{"50 to 55"}, 50, 55, 38},
                                         grade_row{{"56 to 61"}, 56, 61, 37}, grade_row{{"62 to 67"}, 62, 67, 36},
                                         grade_row{{"68 to 73"}, 68, 73, 35}, grade_row{{"74 to 79"}, 74, 79, 34},
                                         grade_row{{"80 to 85"}, 80, 85, 33}, grade_row{{"86 to 91"}, 86, 91, 32},
                                         grade_row{{"92 to 97"}, 92, 97, 31}, grade_row{{"98 to 100"}, 98, 100, 30}),
                         row_name());

class bad_grades : public testing::TestWithParam<int> {};

TEST_P(bad_grades, are_refused_and_the_old_one_stays) {
    foreground_analysis analysis;
    EXPECT_EQ(analysis.set_sensitive(50), 0);
    const outcome got = outcome_of([&] { return analysis.set_sensitive(GetParam()); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n");
    EXPECT_EQ(test_access::stable_thresh(analysis), 38);
}

INSTANTIATE_TEST_SUITE_P(numbers, bad_grades, testing::Values(-1, 101, 102, 255, 2147483647, -2147483647 - 1));

TEST(sensitivity, is_35_at_first_and_outlives_start_and_stop) {
    foreground_analysis analysis;
    EXPECT_EQ(test_access::stable_thresh(analysis), 35);
    EXPECT_EQ(analysis.set_sensitive(100), 0);
    EXPECT_EQ(analysis.start(), 0);
    EXPECT_EQ(test_access::stable_thresh(analysis), 30);
    EXPECT_EQ(analysis.stop(), 0);
    EXPECT_EQ(test_access::stable_thresh(analysis), 30);
}

TEST(history, is_emptied_by_stop_alone) {
    foreground_analysis analysis;
    test_access::history(analysis) = {{box(0, 0, 9, 9, 81)}, {}};
    EXPECT_EQ(analysis.start(), 0);
    EXPECT_EQ(test_access::history(analysis).size(), 2u);
    EXPECT_EQ(analysis.stop(), 0);
    EXPECT_TRUE(test_access::history(analysis).empty());
}

// --- merging --------------------------------------------------------------------------------------------------------

// Runs get_fire_rects on a black region, where no candidate passes, and gives the merged list.
list merged(list components, bool* found = nullptr) {
    grey_image luma(352, 288), mask(352, 288);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    list candidates;
    bool any = false;
    support::output_of([&] { foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, candidates, any); });
    EXPECT_TRUE(candidates.empty());
    if (found != nullptr) *found = any;
    return components;
}

struct merge_row : support::named_row {
    list components;
    list wanted;
};

class merging : public testing::TestWithParam<merge_row> {};

TEST_P(merging, gives) {
    bool found = GetParam().wanted.empty();
    EXPECT_EQ(text_of(merged(GetParam().components, &found)), text_of(GetParam().wanted));
    EXPECT_EQ(found, !GetParam().wanted.empty());
}

// Two boxes of 10 x 10 have a limit of 40, the lowest: (10 + 10 + 10 + 10) / 2 is 20.
INSTANTIATE_TEST_SUITE_P(
    distance, merging,
    testing::Values(
        merge_row{{"nothing"}, {}, {}}, merge_row{{"one"}, {box(5, 6, 7, 8, 9)}, {box(5, 6, 7, 8, 9)}},
        merge_row{{"30 columns apart"}, {box(0, 0, 10, 10, 50), box(39, 0, 10, 10, 60)}, {box(0, 0, 49, 10, 110)}},
        merge_row{{"39 columns apart"}, {box(0, 0, 10, 10, 50), box(48, 0, 10, 10, 60)}, {box(0, 0, 58, 10, 110)}},
        merge_row{{"40 columns apart"},
                  {box(0, 0, 10, 10, 50), box(49, 0, 10, 10, 60)},
                  {box(0, 0, 10, 10, 50), box(49, 0, 10, 10, 60)}},
        merge_row{{"39 columns apart to the left"},
                  {box(48, 0, 10, 10, 50), box(0, 0, 10, 10, 60)},
                  {box(0, 0, 58, 10, 110)}},
        merge_row{{"40 columns apart to the left"},
                  {box(49, 0, 10, 10, 50), box(0, 0, 10, 10, 60)},
                  {box(49, 0, 10, 10, 50), box(0, 0, 10, 10, 60)}},
        merge_row{{"39 rows apart"}, {box(0, 0, 10, 10, 50), box(0, 48, 10, 10, 60)}, {box(0, 0, 10, 58, 110)}},
        merge_row{{"40 rows apart"},
                  {box(0, 0, 10, 10, 50), box(0, 49, 10, 10, 60)},
                  {box(0, 0, 10, 10, 50), box(0, 49, 10, 10, 60)}},
        merge_row{{"40 rows apart upwards"},
                  {box(0, 49, 10, 10, 50), box(0, 0, 10, 10, 60)},
                  {box(0, 49, 10, 10, 50), box(0, 0, 10, 10, 60)}},
        merge_row{{"20 columns and 19 rows apart"},
                  {box(0, 0, 10, 10, 50), box(29, 28, 10, 10, 60)},
                  {box(0, 0, 39, 38, 110)}},
        merge_row{{"20 columns and 20 rows apart"},
                  {box(0, 0, 10, 10, 50), box(29, 29, 10, 10, 60)},
                  {box(0, 0, 10, 10, 50), box(29, 29, 10, 10, 60)}},
        // (25 + 25 + 25 + 25) / 2 = 50
        merge_row{{"larger boxes 49 apart"}, {box(0, 0, 25, 25, 1), box(73, 0, 25, 25, 2)}, {box(0, 0, 98, 25, 3)}},
        merge_row{{"larger boxes 50 apart"},
                  {box(0, 0, 25, 25, 1), box(74, 0, 25, 25, 2)},
                  {box(0, 0, 25, 25, 1), box(74, 0, 25, 25, 2)}},
        // (25 + 25 + 25 + 26) / 2 = 50.5
        merge_row{{"the halving rounds down"},
                  {box(0, 0, 25, 26, 1), box(74, 1, 25, 25, 2)},
                  {box(0, 0, 25, 26, 1), box(74, 1, 25, 25, 2)}},
        merge_row{{"and 51 is reached by one pixel more"},
                  {box(0, 0, 26, 26, 1), box(75, 1, 25, 25, 2)},
                  {box(0, 0, 100, 26, 3)}},
        merge_row{
            {"huge boxes 79 apart"}, {box(0, 0, 100, 100, 1), box(178, 0, 100, 100, 2)}, {box(0, 0, 278, 100, 3)}},
        merge_row{{"huge boxes 80 apart"},
                  {box(0, 0, 100, 100, 1), box(179, 0, 100, 100, 2)},
                  {box(0, 0, 100, 100, 1), box(179, 0, 100, 100, 2)}},
        // Edges are compared, not areas: 90 and 95 columns from the edges around it, 90 and 95 rows.
        merge_row{{"a box deep inside another"},
                  {box(0, 0, 200, 200, 1), box(95, 95, 10, 10, 2)},
                  {box(0, 0, 200, 200, 1), box(95, 95, 10, 10, 2)}},
        merge_row{{"equal boxes"}, {box(3, 4, 5, 6, 7), box(3, 4, 5, 6, 7)}, {box(3, 4, 5, 6, 14)}},
        // Only one of the four pairs of edges is near, each in its own row.
        merge_row{{"left to left"}, {box(0, 0, 200, 10, 1), box(5, 0, 100, 10, 2)}, {box(0, 0, 200, 10, 3)}},
        merge_row{{"right to right"}, {box(0, 0, 200, 10, 1), box(100, 0, 95, 10, 2)}, {box(0, 0, 200, 10, 3)}},
        merge_row{{"left to right"}, {box(100, 0, 200, 10, 1), box(5, 0, 100, 10, 2)}, {box(5, 0, 295, 10, 3)}},
        merge_row{{"right to left"}, {box(0, 0, 100, 10, 1), box(95, 0, 200, 10, 2)}, {box(0, 0, 295, 10, 3)}},
        merge_row{{"top to top"}, {box(0, 0, 10, 200, 1), box(0, 5, 10, 100, 2)}, {box(0, 0, 10, 200, 3)}},
        merge_row{{"bottom to bottom"}, {box(0, 0, 10, 200, 1), box(0, 100, 10, 95, 2)}, {box(0, 0, 10, 200, 3)}},
        merge_row{{"top to bottom"}, {box(0, 80, 10, 200, 1), box(0, 5, 10, 80, 2)}, {box(0, 5, 10, 275, 3)}},
        merge_row{{"bottom to top"}, {box(0, 0, 10, 100, 1), box(0, 95, 10, 180, 2)}, {box(0, 0, 10, 275, 3)}}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    order, merging,
    testing::Values(
        merge_row{{"a chain becomes one"},
                  {box(0, 0, 10, 10, 1), box(40, 0, 10, 10, 2), box(80, 0, 10, 10, 4), box(120, 0, 10, 10, 8)},
                  {box(0, 0, 130, 10, 15)}},
        // The first absorbs the second; of the union no edge is near the third, although the second's were.
        merge_row{{"the union's edges decide"},
                  {box(0, 0, 200, 10, 1), box(70, 0, 41, 10, 2), box(100, 0, 6, 10, 4)},
                  {box(0, 0, 200, 10, 3), box(100, 0, 6, 10, 4)}},
        merge_row{{"in another order all are one"},
                  {box(70, 0, 41, 10, 2), box(100, 0, 6, 10, 4), box(0, 0, 200, 10, 1)},
                  {box(0, 0, 200, 10, 7)}},
        // The second absorbs the third and has then grown to the first's reach.
        merge_row{{"the search starts again from the first"},
                  {box(0, 0, 10, 10, 1), box(80, 0, 10, 10, 2), box(45, 0, 10, 10, 4)},
                  {box(0, 0, 90, 10, 7)}},
        merge_row{{"what stays keeps its order"},
                  {box(0, 0, 10, 10, 1), box(100, 0, 10, 10, 2), box(200, 0, 10, 10, 4), box(120, 0, 10, 10, 8),
                   box(0, 100, 10, 10, 16)},
                  {box(0, 0, 10, 10, 1), box(100, 0, 30, 10, 10), box(200, 0, 10, 10, 4), box(0, 100, 10, 10, 16)}},
        merge_row{{"the first close one is taken"},
                  {box(100, 0, 10, 10, 1), box(60, 0, 10, 10, 2), box(140, 0, 10, 10, 4), box(300, 200, 10, 10, 8)},
                  {box(60, 0, 90, 10, 7), box(300, 200, 10, 10, 8)}}),
    row_name());

// --- covering -------------------------------------------------------------------------------------------------------

// A small bright box and a larger dark one, far from its edges. The small one passes the brightness test; it is among
// the candidates unless the larger one covers it.
struct cover_row : support::named_row {
    con_info large;
    con_info small;
    bool covered;
};

class covering : public testing::TestWithParam<cover_row> {};

TEST_P(covering, drops_what_lies_inside) {
    for (const bool large_first : {true, false}) {
        grey_image luma(352, 288), mask(352, 288, 352, 0, 255);
        const con_info small = GetParam().small;
        luma.fill_rect(small.left, small.top, orva_fd::box_width(small), orva_fd::box_height(small), 200);
        fd_yuv_frame roi = luma.frame(), fg = mask.frame();
        list components = large_first ? list{GetParam().large, small} : list{small, GetParam().large};
        list candidates;
        bool found = false;
        support::output_of(
            [&] { foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, candidates, found); });
        ASSERT_EQ(components.size(), 2u) << "not merged";
        EXPECT_EQ(text_of(candidates), GetParam().covered ? "" : text_of(list{small}))
            << "large first: " << large_first;
    }
}

// The large box spans columns 50 to 249 and rows 40 to 239. A box of 10 from x on has its centre at x + 5.
const con_info k_large = box(50, 40, 200, 200, 5000);

INSTANTIATE_TEST_SUITE_P(
    table, covering,
    testing::Values(
        cover_row{{"in the middle"}, k_large, box(145, 135, 10, 10, 100), true},
        cover_row{{"two columns left of the edge"}, k_large, box(43, 135, 10, 10, 100), true},
        cover_row{{"three columns left of the edge"}, k_large, box(42, 135, 10, 10, 100), false},
        cover_row{{"two columns right of the edge"}, k_large, box(246, 135, 10, 10, 100), true},
        cover_row{{"three columns right of the edge"}, k_large, box(247, 135, 10, 10, 100), false},
        cover_row{{"two rows above the edge"}, k_large, box(145, 33, 10, 10, 100), true},
        cover_row{{"three rows above the edge"}, k_large, box(145, 32, 10, 10, 100), false},
        cover_row{{"two rows below the edge"}, k_large, box(145, 236, 10, 10, 100), true},
        cover_row{{"three rows below the edge"}, k_large, box(145, 237, 10, 10, 100), false},
        // 9 wide: (left + right + 1) / 2 is left + 4
        cover_row{{"an odd width has its centre half a pixel to the left"}, k_large, box(44, 135, 9, 10, 90), true},
        cover_row{{"and is outside one pixel further"}, k_large, box(43, 135, 9, 10, 90), false},
        cover_row{{"areas that are equal count"}, box(50, 40, 200, 200, 100), box(145, 135, 10, 10, 100), true},
        cover_row{{"an area one smaller does not"}, box(50, 40, 200, 200, 99), box(145, 135, 10, 10, 100), false},
        cover_row{{"beside"}, box(50, 40, 100, 100, 5000), box(300, 200, 10, 10, 100), false}),
    row_name());

// Each centre lies in the other's box and the areas are equal: both are skipped, so that nothing is verified or
// printed.
TEST(covering_each_other, leaves_neither) {
    grey_image luma(352, 288), mask(352, 288, 352, 0, 255);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    list components = {box(0, 110, 340, 20, 500), box(160, 0, 20, 240, 500)}, candidates;
    bool found = false;
    EXPECT_EQ(support::output_of(
                  [&] { foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, candidates, found); }),
              "");
    EXPECT_EQ(components.size(), 2u);
    EXPECT_TRUE(candidates.empty());
    EXPECT_TRUE(found);
}

TEST(covering_each_other, spares_the_larger) {
    grey_image luma(352, 288), mask(352, 288, 352, 0, 255);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    list components = {box(0, 110, 340, 20, 501), box(160, 0, 20, 240, 500)}, candidates;
    bool found = false;
    EXPECT_EQ(support::output_of(
                  [&] { foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, candidates, found); }),
              "ratio1 = 0.00, fire_area = 6800, ratio = 1.00 ==========\n")
        << "only the first is verified, and it is black";
}

// --- the list of candidates -----------------------------------------------------------------------------------------

// Bright boxes of 10 x 10, 50 pixels apart: too far to merge, six in a row.
list far_apart(int count) {
    list components;
    for (int i = 0; i < count; ++i) components.push_back(box(5 + 55 * (i % 6), 5 + 55 * (i / 6), 10, 10, 100 + i));
    return components;
}

struct list_row : support::named_row {
    int bright;
    int dark;  // come after the bright ones
    int held_before;
    int wanted;
    int lines;  // verifications that failed
};

class candidates : public testing::TestWithParam<list_row> {};

TEST_P(candidates, are_ten_at_most) {
    const list_row& row = GetParam();
    grey_image luma(352, 288), mask(352, 288, 352, 0, 255);
    list components = far_apart(row.bright + row.dark);
    for (int i = 0; i < row.bright; ++i)
        luma.fill_rect(components[static_cast<std::size_t>(i)].left, components[static_cast<std::size_t>(i)].top, 10,
                       10, 200);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    list fire_rects(static_cast<std::size_t>(row.held_before), box(1, 2, 3, 4, 5));
    const list all = components;
    bool found = false;
    const outcome got = outcome_of(
        [&] { return foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, fire_rects, found); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(text_of(components), text_of(all));
    ASSERT_EQ(fire_rects.size(), static_cast<std::size_t>(row.wanted));
    for (int i = row.held_before; i < row.wanted; ++i) {
        EXPECT_EQ(fire_rects[static_cast<std::size_t>(i)].area, 100 + i - row.held_before);
    }
    std::string lines;
    for (int i = 0; i < row.lines; ++i) lines += "ratio1 = 0.00, fire_area = 100, ratio = 1.00 ==========\n";
    EXPECT_EQ(got.text, lines);
}

INSTANTIATE_TEST_SUITE_P(table, candidates,
                         testing::Values(list_row{{"three"}, 3, 0, 0, 3, 0},
                                         list_row{{"three and two that fail"}, 3, 2, 0, 3, 2},
                                         list_row{{"ten"}, 10, 0, 0, 10, 0},
                                         list_row{{"ten and those after them are still verified"}, 10, 3, 0, 10, 3},
                                         list_row{{"eleven"}, 11, 0, 0, 10, 0}, list_row{{"twelve"}, 12, 0, 0, 10, 0},
                                         list_row{{"the eleventh ends the search"}, 11, 3, 0, 10, 0},
                                         list_row{{"those held before count"}, 5, 0, 8, 10, 0}),
                         row_name());

// --- against the twin -----------------------------------------------------------------------------------------------

TEST(get_fire_rects_random, equals_the_plain_twin) {
    support::random_source random;
    int verified = 0, merges = 0;
    for (int round = 0; round < 1500; ++round) {
        grey_image luma(352, 360, 352, 0, static_cast<unsigned char>(random.below(160))), mask(352, 288, 352, 0, 255);
        list components;
        const int count = random.below(25), spread = random.between(60, 300);
        for (int i = 0; i < count; ++i) {
            const int width = random.between(1, random.below(4) == 0 ? 150 : 30),
                      height = random.between(1, random.below(4) == 0 ? 120 : 30);
            const int x = random.below(std::max(1, std::min(spread, 352 - width))),
                      y = random.below(std::max(1, std::min(spread, 288 - height)));
            components.push_back(box(x, y, width, height, random.between(1, width * height)));
            if (random.below(2) == 0)
                luma.fill_rect(x, y, width, height, static_cast<unsigned char>(random.between(120, 255)));
        }
        fd_yuv_frame roi = luma.frame(), fg = mask.frame();
        roi.height = 288;
        list fire_rects;
        std::vector<ref::component> twin_components = support::to_ref(components), twin_rects;
        bool found = false, twin_found = false;
        const outcome got = outcome_of(
            [&] { return foreground_analysis().get_fire_rects(&roi, &fg, nullptr, components, fire_rects, found); });
        ref::log_book log;
        const ref::plane twin_luma = {luma.data(), 352, 288, 352};
        ref::analysis(log).get_fire_rects(twin_luma, plane_of(mask), twin_components, twin_rects, twin_found);
        ASSERT_EQ(text_of(components), text_of(support::from_ref(twin_components)))
            << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(text_of(fire_rects), text_of(support::from_ref(twin_rects)))
            << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(found, twin_found) << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(got.text, log.text()) << "round " << round << ", seed " << random.seed();
        verified += static_cast<int>(fire_rects.size());
        merges += count - static_cast<int>(components.size());
    }
    EXPECT_GT(verified, 200);
    EXPECT_GT(merges, 2000);
}

}  // namespace
