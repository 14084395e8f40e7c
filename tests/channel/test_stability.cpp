// Which candidates are reported: the four tests of a match, the count, the flicker, the averages, and the history.
#include <gtest/gtest.h>

#include <cstring>
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

fd_result zeroed() {
    fd_result result;
    std::memset(&result, 0, sizeof result);
    return result;
}

// --- one match ------------------------------------------------------------------------------------------------------

// The candidate against one stored list that holds one component. With a threshold of 1 the two are enough, and their
// areas flicker by choice: the report tells whether they matched.
struct match_row : support::named_row {
    con_info candidate;
    con_info stored;
    bool matches;
};

class matching : public testing::TestWithParam<match_row> {};

TEST_P(matching, decides) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    test_access::history(analysis) = {{GetParam().stored}};
    list fire_rects = {GetParam().candidate};
    fd_result result = zeroed();
    const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(result.count, GetParam().matches ? 1 : 0);
}

// Areas 150 and 300: mean 225, deviation 75 (rounded from 75), above 225 / 6.
con_info large(int x, int y, int width, int height) {
    return box(x, y, width, height, 150);
}
con_info stored(int x, int y, int width, int height) {
    return box(x, y, width, height, 300);
}

// 200 x 200: a centre limit of 50, a size limit of 160; half of the area is 20000.
INSTANTIATE_TEST_SUITE_P(
    centre, matching,
    testing::Values(match_row{{"the same place"}, large(50, 50, 200, 200), stored(50, 50, 200, 200), true},
                    match_row{{"49 to the right"}, large(50, 50, 200, 200), stored(99, 50, 200, 200), true},
                    match_row{{"50 to the right"}, large(50, 50, 200, 200), stored(100, 50, 200, 200), false},
                    match_row{{"49 to the left"}, large(50, 50, 200, 200), stored(1, 50, 200, 200), true},
                    match_row{{"50 to the left"}, large(50, 50, 200, 200), stored(0, 50, 200, 200), false},
                    match_row{{"49 down"}, large(50, 0, 200, 200), stored(50, 49, 200, 200), true},
                    match_row{{"50 down"}, large(50, 0, 200, 200), stored(50, 50, 200, 200), false},
                    match_row{{"49 up"}, large(50, 50, 200, 200), stored(50, 1, 200, 200), true},
                    match_row{{"50 up"}, large(50, 50, 200, 200), stored(50, 0, 200, 200), false},
                    match_row{{"24 and 25"}, large(50, 50, 200, 200), stored(74, 75, 200, 200), true},
                    match_row{{"25 and 25"}, large(50, 50, 200, 200), stored(75, 75, 200, 200), false},
                    // 40 x 40 in a corner of 79 x 79: (40 + 40 + 1) / 2 = 40. Centres (120, 120) and (139, 139), then
                    // one pixel further.
                    match_row{{"a small one 38 away"}, large(100, 100, 40, 40), stored(100, 100, 79, 79), true},
                    match_row{{"a small one 39 away"}, large(99, 100, 40, 40), stored(100, 100, 79, 79), true},
                    match_row{{"a small one 40 away"}, large(98, 100, 40, 40), stored(100, 100, 79, 79), false},
                    // 40 x 41: (81 + 1) / 2 = 41; centres (119, 120) and (139, 139)
                    match_row{{"an odd sum is rounded up"}, large(98, 100, 40, 41), stored(100, 100, 79, 79), true}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    size, matching,
    testing::Values(
        match_row{{"79 of 80 larger"}, large(100, 100, 40, 40), stored(80, 80, 79, 80), true},
        match_row{{"80 of 80 larger"}, large(100, 100, 40, 40), stored(80, 80, 80, 80), false},
        match_row{{"159 of 160 larger"}, large(100, 100, 90, 90), stored(60, 60, 169, 170), true},
        match_row{{"160 of 160 larger"}, large(100, 100, 90, 90), stored(60, 60, 170, 170), false},
        match_row{{"159 of 160 smaller"}, large(50, 50, 180, 180), stored(90, 90, 100, 101), true},
        match_row{{"160 of 160 smaller"}, large(50, 50, 180, 180), stored(90, 90, 100, 100), false},
        match_row{{"wider by 40 and lower by 39"}, large(100, 100, 100, 100), stored(80, 119, 140, 61), true},
        match_row{{"wider by 80 and lower by 79"}, large(100, 60, 90, 180), stored(60, 100, 170, 101), true},
        match_row{{"wider by 80 and lower by 80"}, large(100, 60, 90, 180), stored(60, 100, 170, 100), false}),
    row_name());

// Areas of the two differ by less than twice the candidate's, or by less than 100.
INSTANTIATE_TEST_SUITE_P(
    area, matching,
    testing::Values(match_row{{"299 more than 150"}, box(50, 50, 40, 40, 150), box(50, 50, 40, 40, 449), true},
                    match_row{{"300 more than 150"}, box(50, 50, 40, 40, 150), box(50, 50, 40, 40, 450), false},
                    match_row{{"99 more than 49"}, box(50, 50, 40, 40, 49), box(50, 50, 40, 40, 148), true},
                    match_row{{"100 more than 49"}, box(50, 50, 40, 40, 49), box(50, 50, 40, 40, 149), false},
                    match_row{{"100 more than 51"}, box(50, 50, 40, 40, 51), box(50, 50, 40, 40, 151), true},
                    match_row{{"99 less than 149"}, box(50, 50, 40, 40, 149), box(50, 50, 40, 40, 50), true}),
    row_name());

// 41 x 41: an area of 1681, of which half is 840; extents are edge differences, 40 for equal boxes.
INSTANTIATE_TEST_SUITE_P(
    overlap, matching,
    testing::Values(match_row{{"22 times 40 columns"}, large(50, 50, 41, 41), stored(68, 50, 41, 41), true},
                    match_row{{"21 times 40 is just half"}, large(50, 50, 41, 41), stored(69, 50, 41, 41), false},
                    match_row{{"22 times 40 columns to the left"}, large(68, 50, 41, 41), stored(50, 50, 41, 41), true},
                    match_row{
                        {"21 times 40 columns to the left"}, large(69, 50, 41, 41), stored(50, 50, 41, 41), false},
                    match_row{{"22 times 40 rows"}, large(50, 50, 41, 41), stored(50, 68, 41, 41), true},
                    match_row{{"21 times 40 rows"}, large(50, 50, 41, 41), stored(50, 69, 41, 41), false},
                    match_row{{"22 times 40 rows up"}, large(50, 68, 41, 41), stored(50, 50, 41, 41), true},
                    match_row{{"21 times 40 rows up"}, large(50, 69, 41, 41), stored(50, 50, 41, 41), false},
                    match_row{{"touching along an edge"}, large(50, 50, 10, 60), stored(59, 50, 10, 60), false},
                    match_row{{"apart"}, large(50, 50, 10, 60), stored(61, 50, 10, 60), false},
                    match_row{{"apart in both ways"}, large(50, 50, 10, 10), stored(62, 62, 4, 4), false},
                    // The smaller area counts: 20 x 20 inside 41 x 41 has 19 * 19 = 361 against 200
                    match_row{{"a smaller one inside"}, large(50, 50, 41, 41), stored(55, 55, 20, 20), true},
                    match_row{{"a larger one around"}, large(55, 55, 20, 20), stored(46, 46, 39, 39), true},
                    // 4 x 4: extents of 3 give 9 against 8; one pixel out, 6
                    match_row{{"a small one in the corner"}, large(50, 50, 41, 41), stored(87, 60, 4, 4), true},
                    match_row{{"a small one half out"}, large(50, 50, 41, 41), stored(88, 60, 4, 4), false}),
    row_name());

// --- how many -------------------------------------------------------------------------------------------------------

// `count` lists with a matching component, of alternating area 100 and 200, and as many without as make 50.
std::vector<list> stored_lists(int count, int x = 50) {
    std::vector<list> lists;
    for (int i = 0; i < count; ++i) lists.push_back({box(x, 50, 40, 40, i % 2 == 0 ? 100 : 200)});
    while (lists.size() < 50) lists.push_back({box(300, 200, 20, 20, 150)});
    return lists;
}

struct number_row : support::named_row {
    int thresh;
    int matches;
    int wanted;
};

class numbers : public testing::TestWithParam<number_row> {};

TEST_P(numbers, decide_without_a_word) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = GetParam().thresh;
    test_access::history(analysis) = stored_lists(GetParam().matches);
    list fire_rects = {box(50, 50, 40, 40, 150)};
    fd_result result = zeroed();
    const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(result.count, GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(table, numbers,
                         testing::Values(number_row{{"34 of 35"}, 35, 34, 0}, number_row{{"35 of 35"}, 35, 35, 1},
                                         number_row{{"29 of 30"}, 30, 29, 0}, number_row{{"30 of 30"}, 30, 30, 1},
                                         number_row{{"46 of 47"}, 47, 46, 0}, number_row{{"47 of 47"}, 47, 47, 1},
                                         number_row{{"50 of 50"}, 50, 50, 1}, number_row{{"none"}, 35, 0, 0}),
                         row_name());

TEST(one_list, gives_one_match_at_most_and_the_first_that_fits) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 2;
    // Two that fit in one list are one match: n is 2.
    test_access::history(analysis) = {{box(50, 50, 40, 40, 100), box(54, 50, 40, 40, 200)}};
    list fire_rects = {box(50, 50, 40, 40, 150)};
    fd_result result = zeroed();
    analysis.get_stable_rects(fire_rects, result);
    EXPECT_EQ(result.count, 0);
    // Of each list the first that fits is averaged, not the better one behind it, nor the one before it that does not
    // fit: lefts 50 + 58 + 62, and 1 for rounding, over 3 are 57.
    test_access::history(analysis) = {{box(200, 50, 40, 40, 100), box(58, 50, 40, 40, 100), box(50, 50, 40, 40, 150)},
                                      {box(62, 50, 40, 40, 200), box(50, 50, 40, 40, 150)}};
    result = zeroed();
    analysis.get_stable_rects(fire_rects, result);
    ASSERT_EQ(result.count, 1);
    EXPECT_EQ(result.rects[0].x, 57);
}

// --- flicker --------------------------------------------------------------------------------------------------------

struct flicker_row : support::named_row {
    std::vector<int> areas;  // the candidate's is the last
    bool reported;
    const char* text;
};

class flicker : public testing::TestWithParam<flicker_row> {};

TEST_P(flicker, decides) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    list fire_rects = {box(50, 50, 40, 40, GetParam().areas.back())};
    for (std::size_t i = 0; i + 1 < GetParam().areas.size(); ++i) {
        test_access::history(analysis).push_back({box(50, 50, 40, 40, GetParam().areas[i])});
    }
    fd_result result = zeroed();
    const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, GetParam().text);
    EXPECT_EQ(result.count, GetParam().reported ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    table, flicker,
    testing::Values(
        flicker_row{{"20 of 100"}, {100, 140, 60, 100}, true, ""},
        flicker_row{{"5 of 100"}, {110, 90, 100, 100}, false, "0.05  -----------------\n"},
        flicker_row{{"none"}, {100, 100, 100, 100}, false, "0.00  -----------------\n"},
        // mean 100, a sixth of it is 16; (32 + 32 + 2) / 4 = 16 and (34 + 34 + 2) / 4 = 17
        flicker_row{{"16 is not above 16"}, {132, 68, 100, 100}, false, "0.16  -----------------\n"},
        flicker_row{{"17 is"}, {134, 66, 100, 100}, true, ""},
        // mean 102, a sixth is 17; (34 + 34 + 2) / 4 = 17: not above; mean 101, a sixth is 16
        flicker_row{{"17 of 102 is not"}, {136, 68, 102, 102}, false, "0.17  -----------------\n"},
        flicker_row{{"17 of 101 is"}, {135, 67, 101, 101}, true, ""},
        // sum 404 + 2 over 4: the mean of 100, 101, 102 and 101 is 101; deviations 1, 0, 1, 0 and 2: 1
        flicker_row{{"means are rounded"}, {100, 101, 102, 101}, false, "0.01  -----------------\n"},
        // sum 350 + 2 over 4 is 88; deviations 13, 12, 13, 12 and 2 over 4 are 13, not above 14
        flicker_row{{"a mean of 87 and a half is 88"}, {75, 100, 75, 100}, false, "0.15  -----------------\n"},
        // mean (66 + 2) / 3 = 22; deviations 32 + 11 + 21 and 2 over 3 are 22
        flicker_row{{"as large as the mean is not flicker"}, {54, 11, 1}, false, "1.00  -----------------\n"},
        // mean (99 + 5) / 10 = 10; deviations 80 + 9 * 9 and 5 over 10 are 16
        flicker_row{
            {"nor is more than the mean"}, {90, 1, 1, 1, 1, 1, 1, 1, 1, 1}, false, "1.60  -----------------\n"}),
    row_name());

// --- reports --------------------------------------------------------------------------------------------------------

TEST(report, averages_all_matches_and_leaves_references_alone) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    // left 50, 52, 53: (155 + 2 / ... r is 2) with n 3: 157 / 3 = 52; top 60, 60, 61: 183 / 3 = 61;
    // width 40, 41, 43: 126 / 3 = 42; height 30, 30, 31: 93 / 3 = 31
    test_access::history(analysis) = {{box(50, 60, 40, 30, 100)}, {box(52, 60, 41, 30, 200)}};
    list fire_rects = {box(53, 61, 43, 31, 150)};
    fd_result result = zeroed();
    result.rects[0].x_ref = 7;
    result.rects[0].y_ref = 8;
    result.rects[0].width_ref = 9;
    result.rects[0].height_ref = 10;
    EXPECT_EQ(analysis.get_stable_rects(fire_rects, result), 0);
    EXPECT_EQ(text_of(result), "1: (52/7, 61/8, 42/9, 31/10)");
}

// n 2, r 1: halves are rounded up. n 3, r 2: two thirds are rounded up, and one third too.
TEST(report, rounds_averages_by_half_of_n_rounded_up) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    test_access::history(analysis) = {{box(50, 60, 40, 40, 100)}};
    list fire_rects = {box(51, 60, 40, 40, 200)};
    fd_result result = zeroed();
    analysis.get_stable_rects(fire_rects, result);
    EXPECT_EQ(result.rects[0].x, 51);
    test_access::history(analysis) = {{box(50, 60, 40, 40, 100)}, {box(50, 60, 40, 40, 100)}};
    result = zeroed();
    analysis.get_stable_rects(fire_rects, result);
    ASSERT_EQ(result.count, 1);
    EXPECT_EQ(result.rects[0].x, 51) << "(151 + 2) / 3";
}

TEST(report, clears_the_count_first) {
    foreground_analysis analysis;
    list fire_rects;
    fd_result result = zeroed();
    result.count = 5;
    EXPECT_EQ(analysis.get_stable_rects(fire_rects, result), 0);
    EXPECT_EQ(result.count, 0);
}

// Twelve candidates that flicker and one that does not: the eleventh good one ends the search, so that the last is
// never looked at.
TEST(report, holds_ten_boxes_at_most) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    list first, second, fire_rects;
    for (int i = 0; i < 13; ++i) {
        const int x = 25 * i;
        first.push_back(box(x, 0, 20, 20, i == 12 ? 150 : 100));
        second.push_back(box(x, 0, 20, 20, i == 12 ? 150 : 200));
        fire_rects.push_back(box(x, 0, 20, 20, 150));
    }
    test_access::history(analysis) = {first, second};
    fd_result result = zeroed();
    const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    ASSERT_EQ(result.count, 10);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(result.rects[i].x, 25 * i);
}

TEST(report, goes_on_behind_a_candidate_that_does_not_flicker) {
    foreground_analysis analysis;
    test_access::stable_thresh(analysis) = 1;
    test_access::history(analysis) = {{box(0, 0, 20, 20, 150), box(50, 0, 20, 20, 100)},
                                      {box(0, 0, 20, 20, 150), box(50, 0, 20, 20, 200)}};
    list fire_rects = {box(0, 0, 20, 20, 150), box(50, 0, 20, 20, 150), box(200, 0, 20, 20, 150)};
    fd_result result = zeroed();
    const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
    EXPECT_EQ(got.text, "0.00  -----------------\n");
    ASSERT_EQ(result.count, 1);
    EXPECT_EQ(result.rects[0].x, 50);
}

// --- the history ----------------------------------------------------------------------------------------------------

// A bright square of 30 x 30 at (50, 50) on black, which passes as fire, and the mask of it.
class analysis_of_frames : public testing::Test {
protected:
    analysis_of_frames() : m_luma(352, 288), m_mask(352, 288, 352, 0, 255) { m_luma.fill_rect(50, 50, 30, 30, 200); }

    // One frame with these components; gives what was printed.
    std::string frame(list components) {
        fd_yuv_frame roi = m_luma.frame(), fg = m_mask.frame();
        m_result = zeroed();
        m_components = components;
        const outcome got =
            outcome_of([&] { return m_analysis.set_frame(&roi, &fg, nullptr, m_components, m_result); });
        EXPECT_EQ(got.status, 0);
        return got.text;
    }
    // Frame `number` of a flickering square.
    std::string flickering(int number) { return frame({box(50, 50, 30, 30, number % 2 == 0 ? 400 : 800)}); }

    std::vector<list>& stored() { return test_access::history(m_analysis); }

    grey_image m_luma, m_mask;
    foreground_analysis m_analysis;
    list m_components;
    fd_result m_result;
};

TEST_F(analysis_of_frames, a_null_region_gives_0_and_changes_nothing) {
    stored() = {{box(1, 2, 3, 4, 5)}};
    list components = {box(0, 0, 10, 10, 50), box(12, 0, 10, 10, 60)};
    const list before = components;
    fd_result result;
    std::memset(&result, 0x5a, sizeof result);
    const fd_result result_before = result;
    const outcome got = outcome_of([&] { return m_analysis.set_frame(nullptr, nullptr, nullptr, components, result); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "ERR. [Fire Detection: foreground_analysis::set_frame : 49] \n");
    EXPECT_EQ(text_of(components), text_of(before));
    EXPECT_EQ(std::memcmp(&result, &result_before, sizeof result), 0);
    EXPECT_EQ(stored().size(), 1u);
}

TEST_F(analysis_of_frames, the_51st_frame_with_components_is_the_first_to_be_compared) {
    for (int number = 1; number <= 50; ++number) {
        EXPECT_EQ(flickering(number), "");
        EXPECT_EQ(m_result.count, 0) << number;
        EXPECT_EQ(stored().size(), static_cast<std::size_t>(number));
    }
    EXPECT_EQ(flickering(51), "");
    EXPECT_EQ(text_of(m_result), "1: (50/0, 50/0, 30/0, 30/0)");
    EXPECT_EQ(stored().size(), 50u);
}

TEST_F(analysis_of_frames, frames_without_components_neither_age_nor_add) {
    for (int number = 1; number <= 49; ++number) flickering(number);
    frame({});
    EXPECT_EQ(stored().size(), 49u);
    flickering(50);
    EXPECT_EQ(m_result.count, 0);
    frame({});
    EXPECT_EQ(stored().size(), 50u);
    EXPECT_EQ(stored()[0][0].area, 800) << "the first frame's list is still the oldest";
    EXPECT_EQ(stored()[49][0].area, 400);
    EXPECT_EQ(m_result.count, 0);
    flickering(51);
    EXPECT_EQ(m_result.count, 1);
}

TEST_F(analysis_of_frames, the_oldest_list_leaves_and_the_merged_list_of_the_frame_enters) {
    for (int number = 1; number <= 50; ++number) frame({box(100, 100, 10, 10, 1000 + number)});
    frame({box(0, 0, 10, 10, 1), box(12, 0, 10, 10, 2), box(200, 200, 10, 10, 4)});
    ASSERT_EQ(stored().size(), 50u);
    EXPECT_EQ(stored().front()[0].area, 1002);
    EXPECT_EQ(stored()[48][0].area, 1050);
    EXPECT_EQ(text_of(stored().back()), text_of(list{box(0, 0, 22, 10, 3), box(200, 200, 10, 10, 4)}));
    EXPECT_EQ(text_of(m_components), text_of(stored().back())) << "the caller gets it too";
}

// The first frame's component alone matches: compared with the frame's own list, n would be higher.
TEST_F(analysis_of_frames, a_frame_is_compared_before_its_own_list_is_stored) {
    test_access::stable_thresh(m_analysis) = 2;
    for (int number = 1; number <= 50; ++number)
        frame({number == 1 ? box(50, 50, 30, 30, 400) : box(300, 250, 10, 10, 7)});
    flickering(51);
    EXPECT_EQ(m_result.count, 0) << "n is 2, not 3";
    flickering(52);
    EXPECT_EQ(m_result.count, 0) << "and the match of frame 1 is gone, that of frame 51 is there";
}

TEST_F(analysis_of_frames, the_oldest_list_is_compared_before_it_leaves) {
    test_access::stable_thresh(m_analysis) = 1;
    for (int number = 1; number <= 50; ++number)
        frame({number == 1 ? box(50, 50, 30, 30, 400) : box(300, 250, 10, 10, 7)});
    flickering(51);
    EXPECT_EQ(m_result.count, 1);
}

TEST_F(analysis_of_frames, more_or_fewer_than_50_lists_report_nothing) {
    for (const std::size_t count : {std::size_t{49}, std::size_t{51}}) {
        stored().assign(count, {box(50, 50, 30, 30, 400)});
        flickering(1);
        EXPECT_EQ(m_result.count, 0) << count;
        EXPECT_EQ(stored().size(), count + 1) << count;
    }
}

// With 50 lists and components that are no candidates the result is computed, and empty.
TEST_F(analysis_of_frames, unverified_components_are_stored_but_not_reported) {
    for (int number = 1; number <= 50; ++number) flickering(number);
    m_luma.fill_rect(50, 50, 30, 30, 0);
    EXPECT_EQ(flickering(51), "ratio1 = 0.00, fire_area = 900, ratio = 1.00 ==========\n");
    EXPECT_EQ(m_result.count, 0);
    EXPECT_EQ(stored().back()[0].area, 800);
}

TEST_F(analysis_of_frames, stop_begins_the_count_of_50_again) {
    for (int number = 1; number <= 51; ++number) flickering(number);
    EXPECT_EQ(m_result.count, 1);
    EXPECT_EQ(m_analysis.stop(), 0);
    EXPECT_EQ(m_analysis.start(), 0);
    for (int number = 1; number <= 50; ++number) {
        flickering(number);
        EXPECT_EQ(m_result.count, 0) << number;
    }
    flickering(51);
    EXPECT_EQ(m_result.count, 1);
}

// --- against the twin -----------------------------------------------------------------------------------------------

// Components near a few places, so that every test of a match is met from both sides.
TEST(get_stable_rects_random, equals_the_plain_twin) {
    support::random_source random;
    int reported = 0, steady = 0;
    for (int round = 0; round < 3000; ++round) {
        const int size = random.between(4, 120), shake = random.between(0, 30), area = random.between(10, 2000);
        const int spread = random.below(area);
        const auto near_box = [&](int place) {
            const int width = std::max(1, size + random.between(-shake, shake)),
                      height = std::max(1, size + random.between(-shake, shake));
            return box(place * 60 + random.between(0, shake), random.between(0, shake), width, height,
                       std::max(1, area + random.between(-spread, spread)));
        };
        foreground_analysis analysis;
        ref::log_book log;
        ref::analysis twin(log);
        const int grade = random.below(101);
        analysis.set_sensitive(grade);
        twin.set_sensitive(grade);
        for (int frame = 0; frame < 50; ++frame) {
            list components;
            for (int i = random.below(4); i >= 0; --i) components.push_back(near_box(random.below(3)));
            test_access::history(analysis).push_back(components);
            twin.history().push_back(support::to_ref(components));
        }
        list fire_rects;
        for (int i = random.below(12); i > 0; --i) fire_rects.push_back(near_box(random.below(3)));
        fd_result result = zeroed(), wanted = zeroed();
        const outcome got = outcome_of([&] { return analysis.get_stable_rects(fire_rects, result); });
        twin.get_stable_rects(support::to_ref(fire_rects), wanted);
        ASSERT_EQ(text_of(result), text_of(wanted)) << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(got.text, log.text()) << "round " << round << ", seed " << random.seed();
        reported += result.count;
        steady += !got.text.empty();
    }
    EXPECT_GT(reported, 100);
    EXPECT_GT(steady, 10);
}

}  // namespace
