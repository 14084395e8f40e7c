// The plain twin against values worked out by hand: merging, covering, verification, stability.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/reference/ref_boxes.h"
#include "tests/reference/reference_rows.h"

namespace {

using ref::branch;
using ref::component;
using ref_test::fill_box;
using ref_test::grey_image;
using ref_test::row_name;

component box(int area, int left, int top, int width, int height) {
    component c;
    c.area = area;
    c.left = static_cast<std::int16_t>(left);
    c.right = static_cast<std::int16_t>(left + width - 1);
    c.top = static_cast<std::int16_t>(top);
    c.bottom = static_cast<std::int16_t>(top + height - 1);
    return c;
}

// --- grade, rectangle -----------------------------------------------------------------------------------------------

TEST(reference_grade, gives_the_threshold_of_its_row) {
    // First and last grade of each row of the table.
    const int rows[][3] = {{0, 1, 47},   {2, 7, 46},   {8, 13, 45},  {14, 19, 44}, {20, 25, 43}, {26, 31, 42},
                           {32, 37, 41}, {38, 43, 40}, {44, 49, 39}, {50, 55, 38}, {56, 61, 37}, {62, 67, 36},
                           {68, 73, 35}, {74, 79, 34}, {80, 85, 33}, {86, 91, 32}, {92, 97, 31}, {98, 100, 30}};
    ref::log_book log;
    ref::analysis analysis(log);
    EXPECT_EQ(analysis.stable_thresh(), 35);
    for (const auto& row : rows) {
        for (int grade = row[0]; grade <= row[1]; ++grade) {
            EXPECT_EQ(analysis.set_sensitive(grade), 0);
            EXPECT_EQ(analysis.stable_thresh(), row[2]) << grade;
        }
    }
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(analysis.set_sensitive(-1), 7);
    EXPECT_EQ(analysis.set_sensitive(101), 7);
    EXPECT_EQ(analysis.stable_thresh(), 30);
    EXPECT_EQ(log.text(),
              "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n"
              "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n");
}

struct limit_row {
    const char* name;
    int in[4];
    int out[4];
};

class reference_limit_rect : public testing::TestWithParam<limit_row> {};

TEST_P(reference_limit_rect, gives) {
    const limit_row& row = GetParam();
    int x = row.in[0], y = row.in[1], w = row.in[2], h = row.in[3];
    ref::limit_rect(x, y, w, h, 100, 80);
    EXPECT_EQ(std::vector<int>({x, y, w, h}), std::vector<int>(row.out, row.out + 4));
}

INSTANTIATE_TEST_SUITE_P(rows, reference_limit_rect,
                         testing::Values(limit_row{"inside", {10, 10, 90, 70}, {10, 10, 90, 70}},
                                         limit_row{
                                             "moved in without getting shorter", {-5, -6, 20, 30}, {0, 0, 20, 30}},
                                         limit_row{"cut at the right", {90, 10, 20, 20}, {90, 10, 10, 20}},
                                         limit_row{"cut below", {10, 75, 20, 20}, {10, 75, 20, 5}},
                                         limit_row{"moved in and then cut", {-5, -5, 101, 81}, {0, 0, 100, 80}}),
                         row_name<limit_row>);

// --- merging and covering -------------------------------------------------------------------------------------------

struct merge_row {
    const char* name;
    std::vector<component> before;
    std::vector<component> after;
};

class reference_merge : public testing::TestWithParam<merge_row> {};

TEST_P(reference_merge, leaves) {
    std::vector<component> list = GetParam().before;
    ref::log_book log;
    ref::merge_close(list, log);
    EXPECT_TRUE(list == GetParam().after);
    EXPECT_EQ(log.hits(branch::components_merged), static_cast<long>(GetParam().before.size() - list.size()));
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_merge,
    testing::Values(
        merge_row{"nothing to merge", {}, {}},
        merge_row{"small boxes 39 apart", {box(9, 0, 0, 5, 5), box(8, 43, 0, 5, 5)}, {box(17, 0, 0, 48, 5)}},
        merge_row{"small boxes 40 apart stay",
                  {box(9, 0, 0, 5, 5), box(8, 44, 0, 5, 5)},
                  {box(9, 0, 0, 5, 5), box(8, 44, 0, 5, 5)}},
        // (30 + 30 + 30 + 30) / 2 = 60.
        merge_row{"middling boxes 59 apart", {box(9, 0, 0, 30, 30), box(8, 88, 0, 30, 30)}, {box(17, 0, 0, 118, 30)}},
        merge_row{"middling boxes 60 apart stay",
                  {box(9, 0, 0, 30, 30), box(8, 89, 0, 30, 30)},
                  {box(9, 0, 0, 30, 30), box(8, 89, 0, 30, 30)}},
        // (30 + 30 + 30 + 29) / 2 = 59 rounded down.
        merge_row{"half sizes round down",
                  {box(9, 0, 0, 30, 30), box(8, 88, 0, 30, 29)},
                  {box(9, 0, 0, 30, 30), box(8, 88, 0, 30, 29)}},
        merge_row{"big boxes 80 apart stay",
                  {box(9, 0, 0, 100, 100), box(8, 179, 0, 100, 100)},
                  {box(9, 0, 0, 100, 100), box(8, 179, 0, 100, 100)}},
        merge_row{"both distances add up",
                  {box(9, 0, 0, 5, 5), box(8, 24, 24, 5, 5)},  // 20 and 20
                  {box(9, 0, 0, 5, 5), box(8, 24, 24, 5, 5)}},
        merge_row{"a chain closes one after the other",
                  {box(1, 0, 0, 10, 10), box(2, 40, 0, 10, 10), box(4, 80, 0, 10, 10)},
                  {box(7, 0, 0, 90, 10)}},
        // The third starts where the second starts, and 80 to the right of where their union starts.
        merge_row{"the union and not the second decides about the third",
                  {box(25, 20, 10, 5, 5), box(500, 100, 10, 201, 50), box(25, 100, 10, 5, 5)},
                  {box(525, 20, 10, 281, 50), box(25, 100, 10, 5, 5)}},
        // First and second are far apart; the third touches both.
        merge_row{"the search starts again from the head",
                  {box(1, 0, 0, 10, 10), box(2, 70, 0, 10, 10), box(4, 40, 0, 10, 10)},
                  {box(7, 0, 0, 80, 10)}}),
    row_name<merge_row>);

struct cover_row {
    const char* name;
    std::vector<component> list;
    bool covered;  // the first
};

class reference_cover : public testing::TestWithParam<cover_row> {};

TEST_P(reference_cover, is_found) {
    EXPECT_EQ(ref::is_covered(GetParam().list, 0), GetParam().covered);
}

// The first box is 5 x 5, its centre lies 2 right of its left edge and 2 below its top: (left + right + 1) / 2.
INSTANTIATE_TEST_SUITE_P(
    rows, reference_cover,
    testing::Values(
        cover_row{"alone", {box(25, 10, 10, 5, 5)}, false},
        cover_row{"inside a larger one", {box(25, 10, 10, 5, 5), box(99, 0, 0, 50, 50)}, true},
        cover_row{"inside a larger box of smaller area", {box(25, 10, 10, 5, 5), box(24, 0, 0, 50, 50)}, false},
        cover_row{"a tie counts", {box(25, 10, 10, 5, 5), box(25, 0, 0, 50, 50)}, true},
        cover_row{"centre 2 beyond the last column", {box(25, 49, 10, 5, 5), box(99, 0, 0, 50, 50)}, true},
        cover_row{"centre 3 beyond the last column", {box(25, 50, 10, 5, 5), box(99, 0, 0, 50, 50)}, false},
        cover_row{"centre 2 before the first column", {box(25, 96, 10, 5, 5), box(99, 100, 0, 50, 50)}, true},
        cover_row{"centre 3 before the first column", {box(25, 95, 10, 5, 5), box(99, 100, 0, 50, 50)}, false},
        cover_row{"centre 2 below the last row", {box(25, 10, 49, 5, 5), box(99, 0, 0, 50, 50)}, true},
        cover_row{"centre 3 below the last row", {box(25, 10, 50, 5, 5), box(99, 0, 0, 50, 50)}, false},
        cover_row{"centre 2 above the first row", {box(25, 10, 96, 5, 5), box(99, 0, 100, 50, 50)}, true},
        cover_row{"centre 3 above the first row", {box(25, 10, 95, 5, 5), box(99, 0, 100, 50, 50)}, false}),
    row_name<cover_row>);

TEST(reference_cover_both, two_of_equal_area_may_cover_each_other) {
    const std::vector<component> list = {box(25, 10, 10, 5, 5), box(25, 11, 11, 5, 5)};
    EXPECT_TRUE(ref::is_covered(list, 0));
    EXPECT_TRUE(ref::is_covered(list, 1));
}

// --- verification ---------------------------------------------------------------------------------------------------

// A region of 60 x 60 pixels inside a picture with room on the right and below.
struct scene {
    scene() : luma(80, 80, 80), mask(60, 60, 64) {}
    int verify(const component& candidate) {
        ref::plane region = luma.view();
        region.width = 60;
        region.height = 60;
        return ref::verify_fire(region, mask.view(), candidate, log);
    }
    grey_image luma;
    grey_image mask;
    ref::log_book log;
};

struct small_row {
    const char* name;
    component candidate;
    branch outcome;
};

class reference_small_boxes : public testing::TestWithParam<small_row> {};

TEST_P(reference_small_boxes, are_refused_without_a_word) {
    scene s;
    fill_box(s.luma.view(), 0, 0, 80, 80, 250);
    fill_box(s.mask.view(), 0, 0, 60, 60, 255);
    EXPECT_EQ(s.verify(GetParam().candidate), 4);
    EXPECT_EQ(s.log.text(), "");
    EXPECT_EQ(s.log.hits(GetParam().outcome), 1);
}

INSTANTIATE_TEST_SUITE_P(rows, reference_small_boxes,
                         testing::Values(small_row{"2 wide", box(99, 10, 10, 2, 20), branch::verify_too_narrow},
                                         small_row{"4 high", box(99, 10, 10, 20, 4), branch::verify_too_low},
                                         small_row{"19 pixels", box(19, 10, 10, 3, 7), branch::verify_too_small}),
                         row_name<small_row>);

TEST(reference_verify, an_eighth_of_the_box_must_be_bright) {
    scene s;
    fill_box(s.mask.view(), 20, 20, 10, 10, 1);
    fill_box(s.luma.view(), 20, 20, 10, 1, 129);
    fill_box(s.luma.view(), 20, 21, 2, 1, 129);
    fill_box(s.luma.view(), 22, 21, 8, 1, 128);  // not bright
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 0);
    EXPECT_EQ(s.log.text(), "");
    s.luma.view().at(20, 20) = 128;
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), "ratio1 = 0.11, fire_area = 100, ratio = 1.00 ==========\n");
    EXPECT_EQ(s.log.hits(branch::verify_too_dark), 1);
}

TEST(reference_verify, twenty_pixels_must_be_foreground) {
    scene s;
    fill_box(s.luma.view(), 20, 20, 10, 10, 250);
    fill_box(s.mask.view(), 20, 20, 10, 2, 255);
    fill_box(s.mask.view(), 20, 22, 10, 1, 254);  // lowest bit clear: not foreground
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 0);
    s.mask.view().at(20, 20) = 0;
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), "ratio1 = 1.00, fire_area = 19, ratio = 0.19 ==========\n");
    EXPECT_EQ(s.log.hits(branch::verify_too_few_fire), 1);
}

TEST(reference_verify, a_sixteenth_of_the_box_must_be_foreground) {
    scene s;
    fill_box(s.luma.view(), 8, 8, 40, 40, 250);
    fill_box(s.mask.view(), 8, 8, 20, 5, 255);
    EXPECT_EQ(s.verify(box(100, 8, 8, 40, 40)), 0);
    s.mask.view().at(8, 8) = 0;
    EXPECT_EQ(s.verify(box(100, 8, 8, 40, 40)), 4);
    EXPECT_EQ(s.log.text(), "ratio1 = 1.00, fire_area = 99, ratio = 0.06 ==========\n");
    EXPECT_EQ(s.log.hits(branch::verify_too_thin_fire), 1);
}

TEST(reference_verify, the_centre_must_be_a_twentieth_brighter) {
    scene s;
    fill_box(s.mask.view(), 0, 0, 60, 60, 255);
    fill_box(s.luma.view(), 0, 0, 80, 80, 200);
    fill_box(s.luma.view(), 20, 20, 10, 10, 210);
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 0);
    EXPECT_EQ(s.log.text(), "");
    fill_box(s.luma.view(), 20, 20, 10, 10, 209);
    EXPECT_EQ(s.verify(box(100, 20, 20, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), " avg_center = 209, avg_arround = 200, ratio = 1.04\n");
}

// A 10 x 10 box has margins of 2: above and below 14 columns x 2 rows each, beside it 2 columns x 10 rows each, 96 in
// all.
TEST(reference_verify, at_the_left_edge_the_box_counts_as_its_own_surround) {
    scene s;
    fill_box(s.mask.view(), 0, 0, 60, 60, 255);
    fill_box(s.luma.view(), 0, 0, 80, 80, 200);
    fill_box(s.luma.view(), 0, 20, 10, 10, 212);
    // (76 * 200 + 20 * 212 + 48) / 96 = 203; 203 * 1.05 = 213.15.
    EXPECT_EQ(s.verify(box(100, 0, 20, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), " avg_center = 212, avg_arround = 203, ratio = 1.04\n");
    EXPECT_EQ(s.log.hits(branch::surround_cut_left), 1);
}

TEST(reference_verify, the_lower_band_runs_on_below_the_region) {
    scene s;
    fill_box(s.mask.view(), 0, 0, 60, 60, 255);
    fill_box(s.luma.view(), 0, 0, 80, 80, 200);
    fill_box(s.luma.view(), 0, 60, 80, 20, 250);
    fill_box(s.luma.view(), 20, 50, 10, 10, 224);
    // (28 * 200 + 28 * 250 + 40 * 200 + 48) / 96 = 215; 215 * 1.05 = 225.75.
    EXPECT_EQ(s.verify(box(100, 20, 50, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), " avg_center = 224, avg_arround = 215, ratio = 1.04\n");
    EXPECT_EQ(s.log.hits(branch::surround_cut_bottom), 1);
}

TEST(reference_verify, the_right_band_runs_on_beside_the_region_and_the_others_are_cut) {
    scene s;
    fill_box(s.mask.view(), 0, 0, 60, 60, 255);
    fill_box(s.luma.view(), 0, 0, 80, 80, 200);
    fill_box(s.luma.view(), 60, 0, 20, 80, 250);
    fill_box(s.luma.view(), 50, 20, 10, 10, 221);
    // 12 columns are left above and below: 2 * (20 + 24) = 88; (68 * 200 + 20 * 250 + 44) / 88 = 211; 211 * 1.05 =
    // 221.55.
    EXPECT_EQ(s.verify(box(100, 50, 20, 10, 10)), 4);
    EXPECT_EQ(s.log.text(), " avg_center = 221, avg_arround = 211, ratio = 1.05\n");
    EXPECT_EQ(s.log.hits(branch::surround_cut_right), 1);
}

TEST(reference_verify, only_the_first_ten_of_twelve_come_through) {
    grey_image luma(352, 288, 352, 10);
    grey_image mask(352, 288, 352, 255);
    std::vector<component> list;
    for (int k = 0; k < 12; ++k) {
        const int x = 10 + 50 * (k % 6);
        const int y = 20 + 100 * (k / 6);
        list.push_back(box(36, x, y, 6, 6));
        fill_box(luma.view(), x, y, 6, 6, 250);
    }
    const std::vector<component> expected(list.begin(), list.begin() + 10);
    ref::log_book log;
    ref::analysis analysis(log);
    std::vector<component> fire;
    bool found = false;
    EXPECT_EQ(analysis.get_fire_rects(luma.view(), mask.view(), list, fire, found), 0);
    EXPECT_TRUE(found);
    EXPECT_EQ(list.size(), 12u);
    EXPECT_TRUE(fire == expected);
    EXPECT_EQ(log.hits(branch::verify_fire), 11) << "the eleventh ends the walk";
}

// --- stability ------------------------------------------------------------------------------------------------------

struct flicker_row {
    const char* name;
    std::vector<int> areas;
    std::string text;  // empty: it flickers
};

class reference_flicker : public testing::TestWithParam<flicker_row> {};

TEST_P(reference_flicker, test) {
    std::vector<component> matches;
    for (const int area : GetParam().areas) matches.push_back(box(area, 0, 0, 20, 20));
    ref::log_book log;
    EXPECT_EQ(ref::flickers(matches, log), GetParam().text.empty());
    EXPECT_EQ(log.text(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(rows, reference_flicker,
                         testing::Values(flicker_row{"a fifth", {100, 140, 60, 100}, ""},
                                         flicker_row{"a twentieth", {100, 110, 90, 100}, "0.05  -----------------\n"},
                                         // (33 + 33 + 2) / 4 = 17, (32 + 32 + 2) / 4 = 16 = 100 / 6.
                                         flicker_row{"just over a sixth", {100, 133, 67, 100}, ""},
                                         flicker_row{"a sixth", {100, 132, 68, 100}, "0.16  -----------------\n"},
                                         flicker_row{"steady", {100, 100, 100}, "0.00  -----------------\n"},
                                         // (3 * 99 + 297 + 2) / 4 = 149.
                                         flicker_row{"wild", {1, 1, 1, 397}, "1.49  -----------------\n"},
                                         // Mean (1 + 199 + 1) / 2 = 100, deviation (99 + 99 + 1) / 2 = 99.
                                         flicker_row{"just under the whole", {1, 199}, ""}),
                         row_name<flicker_row>);

// 50 lists; in the first `matching` of them a component that changes between 140 and 60 pixels, elsewhere one far away.
std::vector<std::vector<component>> flickering_history(int matching) {
    std::vector<std::vector<component>> lists;
    for (int k = 0; k < 50; ++k) {
        const int area = k % 2 == 0 ? 140 : 60;
        lists.push_back({k < matching ? box(area, 10, 10, 20, 20) : box(area, 200, 200, 20, 20)});
    }
    return lists;
}

TEST(reference_stability, needs_as_many_frames_as_the_threshold) {
    ref::log_book log;
    ref::analysis analysis(log);
    fd_result result{};
    analysis.history() = flickering_history(34);
    EXPECT_EQ(analysis.get_stable_rects({box(100, 10, 10, 20, 20)}, result), 0);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(log.text(), "");
    analysis.history() = flickering_history(35);
    EXPECT_EQ(analysis.get_stable_rects({box(100, 10, 10, 20, 20)}, result), 0);
    ASSERT_EQ(result.count, 1);
    EXPECT_EQ(result.rects[0].x, 10);
    EXPECT_EQ(result.rects[0].y, 10);
    EXPECT_EQ(result.rects[0].width, 20);
    EXPECT_EQ(result.rects[0].height, 20);
    EXPECT_EQ(result.rects[0].x_ref, 0);
    analysis.set_sensitive(0);
    EXPECT_EQ(analysis.get_stable_rects({box(100, 10, 10, 20, 20)}, result), 0);
    EXPECT_EQ(result.count, 0) << "47 are needed at grade 0";
}

TEST(reference_stability, averages_with_the_candidate_and_takes_the_first_match_of_a_list) {
    ref::log_book log;
    ref::analysis analysis(log);
    for (int k = 0; k < 50; ++k) {
        // Both match; the second must not count. Half of the lists lie 2 to the right.
        const int area = k % 2 == 0 ? 140 : 60;
        analysis.history().push_back({box(area, k < 25 ? 12 : 10, 10, 20, 20), box(area, 14, 14, 20, 20)});
    }
    fd_result result{};
    analysis.get_stable_rects({box(100, 10, 11, 21, 20)}, result);
    ASSERT_EQ(result.count, 1);
    EXPECT_EQ(result.rects[0].x, 11);       // (25 * 12 + 25 * 10 + 10 + 26) / 51 = 586 / 51
    EXPECT_EQ(result.rects[0].y, 10);       // (50 * 10 + 11 + 26) / 51 = 537 / 51
    EXPECT_EQ(result.rects[0].width, 20);   // (50 * 20 + 21 + 26) / 51 = 1047 / 51
    EXPECT_EQ(result.rects[0].height, 20);  // (51 * 20 + 26) / 51
}

struct match_row {
    const char* name;
    component candidate;
    component stored;
    bool expected;
};

class reference_match : public testing::TestWithParam<match_row> {};

TEST_P(reference_match, is_found) {
    ref::log_book log;
    ref::analysis analysis(log);
    for (int k = 0; k < 50; ++k) analysis.history().push_back({GetParam().stored});
    fd_result result{};
    analysis.get_stable_rects({GetParam().candidate}, result);
    EXPECT_EQ(log.hits(branch::stable_too_few_frames), GetParam().expected ? 0 : 1);
}

// A 20 x 20 candidate at (10, 10) has its centre at (20, 20), a centre limit of 20 and a size limit of 40.
INSTANTIATE_TEST_SUITE_P(
    rows, reference_match,
    testing::Values(
        match_row{"the same box", box(100, 10, 10, 20, 20), box(100, 10, 10, 20, 20), true},
        match_row{"centre 19 away", box(100, 10, 10, 20, 20), box(100, 10, 10, 59, 20), true},
        match_row{"centre 20 away", box(100, 10, 10, 20, 20), box(100, 11, 10, 59, 20), false},
        match_row{"size 39 apart", box(100, 10, 10, 20, 20), box(100, 0, 0, 40, 39), true},
        match_row{"size 40 apart", box(100, 10, 10, 20, 20), box(100, 0, 0, 40, 40), false},
        match_row{"area 199 apart", box(100, 10, 10, 20, 20), box(299, 10, 10, 20, 20), true},
        match_row{"area 200 apart", box(100, 10, 10, 20, 20), box(300, 10, 10, 20, 20), false},
        match_row{"small area, 99 apart", box(30, 10, 10, 20, 20), box(129, 10, 10, 20, 20), true},
        match_row{"small area, 100 apart", box(30, 10, 10, 20, 20), box(130, 10, 10, 20, 20), false},
        // 11 x 19 = 209 and 10 x 19 = 190 against 200.
        match_row{"overlap of a little more than half", box(100, 10, 10, 20, 20), box(100, 18, 10, 20, 20), true},
        match_row{"overlap of a little less than half", box(100, 10, 10, 20, 20), box(100, 19, 10, 20, 20), false},
        match_row{"a shared last column is no overlap", box(100, 10, 10, 3, 20), box(100, 12, 10, 3, 20), false},
        match_row{"a big box, centre 49 away", box(9999, 0, 0, 200, 200), box(9999, 49, 0, 200, 200), true},
        match_row{"a big box, centre 50 away", box(9999, 0, 0, 200, 200), box(9999, 50, 0, 200, 200), false},
        match_row{"a big box, size 159 apart", box(9999, 0, 0, 200, 200), box(9999, 80, 0, 41, 200), true},
        match_row{"a big box, size 160 apart", box(9999, 0, 0, 200, 200), box(9999, 80, 0, 40, 200), false}),
    row_name<match_row>);

TEST(reference_stability, a_full_result_ends_the_scan) {
    ref::log_book log;
    ref::analysis analysis(log);
    analysis.history() = flickering_history(50);
    const std::vector<component> twelve(12, box(100, 10, 10, 20, 20));
    fd_result result{};
    analysis.get_stable_rects(twelve, result);
    EXPECT_EQ(result.count, 10);
    EXPECT_EQ(log.hits(branch::stable_result_full), 1);
}

TEST(reference_history, is_asked_from_the_51st_list_on_and_ages_only_with_components) {
    grey_image luma(100, 100, 100, 10);
    grey_image mask(100, 100, 100, 255);
    fill_box(luma.view(), 10, 10, 20, 20, 250);
    ref::log_book log;
    ref::analysis analysis(log);
    const ref::plane view = luma.view();
    fd_result result{};
    std::vector<component> components;
    for (int frame = 0; frame < 50; ++frame) {
        components = {box(frame % 2 == 0 ? 140 : 60, 10, 10, 20, 20)};
        EXPECT_EQ(analysis.set_frame(&view, mask.view(), components, result), 0);
        EXPECT_EQ(result.count, 0) << frame;
        components.clear();
        EXPECT_EQ(analysis.set_frame(&view, mask.view(), components, result), 0);
        EXPECT_EQ(analysis.history().size(), static_cast<std::size_t>(frame + 1));
    }
    components = {box(100, 10, 10, 20, 20)};
    EXPECT_EQ(analysis.set_frame(&view, mask.view(), components, result), 0);
    EXPECT_EQ(result.count, 1);
    EXPECT_EQ(analysis.history().size(), 50u);
    EXPECT_EQ(analysis.history().front()[0].area, 60);
    EXPECT_EQ(analysis.history().back()[0].area, 100);
    components.clear();
    EXPECT_EQ(analysis.set_frame(&view, mask.view(), components, result), 0);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(analysis.history().back()[0].area, 100);
    analysis.stop();
    EXPECT_TRUE(analysis.history().empty());
}

TEST(reference_history, a_missing_region_is_logged_and_called_a_success) {
    ref::log_book log;
    ref::analysis analysis(log);
    std::vector<component> components = {box(100, 10, 10, 20, 20)};
    fd_result result{};
    result.count = 3;
    EXPECT_EQ(analysis.set_frame(nullptr, ref::plane{}, components, result), 0);
    EXPECT_EQ(result.count, 3);
    EXPECT_EQ(log.text(), "ERR. [Fire Detection: foreground_analysis::set_frame : 49] \n");
}

}  // namespace
