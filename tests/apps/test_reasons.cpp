// Decisions in plain words, and how near each came to a report.
#include <gtest/gtest.h>

#include "apps/orva_fire/reasons.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

box_evidence ended(verdict v) {
    box_evidence seen;
    seen.ended = v;
    seen.place = {10, 10, 10, 10};
    seen.area = 60;
    seen.pixels = 100;
    return seen;
}

box_evidence small(int width, int height, int area) {
    box_evidence seen = ended(verdict::too_small);
    seen.place.width = width;
    seen.place.height = height;
    seen.area = area;
    return seen;
}

box_evidence dim(int pixels, int bright, int fire) {
    box_evidence seen = ended(verdict::too_dim);
    seen.pixels = pixels;
    seen.bright = bright;
    seen.fire = fire;
    return seen;
}

box_evidence compared(verdict v, int matched, int needed, double span, int mean, int deviation) {
    box_evidence seen = ended(v);
    seen.stored = 50;
    seen.matched = matched;
    seen.needed = needed;
    seen.span = span;
    seen.mean_area = mean;
    seen.deviation = deviation;
    return seen;
}

box_evidence brightness(int centre, int around) {
    box_evidence seen = ended(verdict::not_brighter);
    seen.centre = centre;
    seen.around = around;
    return seen;
}

box_evidence gathering(int stored) {
    box_evidence seen = ended(verdict::gathering);
    seen.stored = stored;
    return seen;
}

struct reason_row : support::named_row {
    box_evidence seen;
    std::string reason, remedy;
};

class a_decision : public testing::TestWithParam<reason_row> {};

TEST_P(a_decision, is_put_into_words) {
    EXPECT_EQ(reason(GetParam().seen), GetParam().reason);
    EXPECT_EQ(remedy(GetParam().seen), GetParam().remedy);
}

INSTANTIATE_TEST_SUITE_P(
    table, a_decision,
    testing::Values(
        reason_row{{"covered"}, ended(verdict::covered), "left out: it lies in a box at least as large", ""},
        reason_row{{"two columns"}, small(2, 9, 60), "too small: 2 x 9 pixels, needs 3 x 5", ""},
        reason_row{{"four rows"}, small(9, 4, 60), "too small: 9 x 4 pixels, needs 3 x 5", ""},
        reason_row{{"19 pixels"}, small(9, 9, 19), "too small: 19 pixels of moving fire colour, needs 20", ""},
        reason_row{{"dark"}, dim(100, 6, 50), "too few bright pixels: 6 % of its box, needs 12 %", ""},
        reason_row{
            {"nearly bright enough"}, dim(800, 99, 500), "too few bright pixels: 12.4 % of its box, needs 12.5 %", ""},
        reason_row{{"19 of fire colour"}, dim(100, 50, 19), "too few pixels of fire colour: 19, needs 20", ""},
        reason_row{{"little fire colour for its size"},
                   dim(1600, 800, 48),
                   "too few pixels of fire colour: 3 % of its box, needs 6 %",
                   ""},
        reason_row{{"no brighter than its surround"},
                   brightness(204, 200),
                   "hardly brighter than its surround: 1.02 times, needs 1.05",
                   ""},
        reason_row{{"brighter by less than a hair"},
                   brightness(178, 170),
                   "hardly brighter than its surround: 1.047 times, needs 1.050",
                   ""},
        reason_row{{"the eleventh"}, ended(verdict::beyond_ten), "left out: ten other candidates came before it", ""},
        reason_row{{"not enough stored"}, gathering(32), "evidence still gathering: 32 of 50 frames", ""},
        reason_row{{"a higher grade would do"},
                   compared(verdict::too_rare, 33, 35, 2.04, 100, 30),
                   "found again in 33 of 50 frames over 2.0 s, needs 35",
                   "would have been reported at grade 80"},
        reason_row{{"30 are enough at 98"},
                   compared(verdict::too_rare, 30, 47, 75, 100, 30),
                   "found again in 30 of 50 frames over 1 min 15 s, needs 47",
                   "would have been reported at grade 98"},
        reason_row{{"29 never are"},
                   compared(verdict::too_rare, 29, 35, 2, 100, 30),
                   "found again in 29 of 50 frames over 2.0 s, needs 35",
                   "too rare at any grade"},
        reason_row{{"found nowhere"},
                   compared(verdict::too_rare, 0, 35, 0, 101, 2),
                   "found again in 0 of 50 frames, needs 35",
                   "too rare at any grade"},
        reason_row{{"rare and steady"},
                   compared(verdict::too_rare, 34, 35, 2, 96, 16),
                   "found again in 34 of 50 frames over 2.0 s, needs 35",
                   "at grade 74 it would have been refused as too steady"},
        reason_row{{"rare and wild"},
                   compared(verdict::too_rare, 34, 35, 2, 96, 96),
                   "found again in 34 of 50 frames over 2.0 s, needs 35",
                   "at grade 74 it would have been refused as too wild"},
        reason_row{{"steady"},
                   compared(verdict::too_steady, 50, 35, 2, 100, 9),
                   "too steady: its area changes by 9 %, needs 17 %",
                   ""},
        reason_row{{"steady by a hair"},
                   compared(verdict::too_steady, 50, 35, 2, 96, 16),
                   "too steady: its area changes by 16.7 %, needs 16.7 %",
                   ""},
        reason_row{{"wild"},
                   compared(verdict::too_wild, 50, 35, 2, 100, 105),
                   "too wild: its area changes by 105 %, must stay below 100 %",
                   ""},
        reason_row{{"reported"},
                   compared(verdict::reported, 41, 35, 1.96, 100, 31),
                   "taken for fire: found again in 41 of 50 frames over 2.0 s, area changes by 31 %",
                   ""}),
    row_name());

TEST(grades, need_frames_as_the_library_counts_them) {
    EXPECT_EQ(frames_needed(0), 47);
    EXPECT_EQ(frames_needed(70), 35);
    EXPECT_EQ(frames_needed(100), 30);
    EXPECT_EQ(least_grade(50), 0);
    EXPECT_EQ(least_grade(46), 2);
    EXPECT_EQ(least_grade(35), 68);
    EXPECT_EQ(least_grade(30), 98);
    EXPECT_EQ(least_grade(29), -1);
}

TEST(closeness, grows_from_test_to_test) {
    const box_evidence order[] = {ended(verdict::too_small),
                                  dim(100, 6, 50),
                                  brightness(204, 200),
                                  gathering(10),
                                  gathering(49),
                                  compared(verdict::too_rare, 10, 35, 1, 100, 30),
                                  compared(verdict::too_steady, 50, 35, 2, 100, 9),
                                  compared(verdict::too_rare, 34, 35, 1, 100, 30),
                                  ended(verdict::reported)};
    for (size_t i = 1; i < std::size(order); ++i) EXPECT_LT(closeness(order[i - 1]), closeness(order[i])) << i;
    EXPECT_EQ(closeness(order[8]), 1);
    EXPECT_LT(closeness(compared(verdict::too_steady, 50, 35, 2, 96, 16)), 1);
}

TEST(times, are_written_as_clocks_show_them) {
    EXPECT_EQ(clock_text(0), "0:00.0");
    EXPECT_EQ(clock_text(5.64), "0:05.6");
    EXPECT_EQ(clock_text(59.96), "1:00.0");
    EXPECT_EQ(clock_text(3599.96), "1:00:00.0");
    EXPECT_EQ(clock_text(-1), "0:00.0");
    EXPECT_EQ(duration_text(0.44), "0.4 s");
    EXPECT_EQ(duration_text(59.4), "59 s");
    EXPECT_EQ(duration_text(60), "1 min 0 s");
    EXPECT_EQ(duration_text(7260), "2 h 1 min");
}

}  // namespace
