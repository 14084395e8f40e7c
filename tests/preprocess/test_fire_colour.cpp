// The colour of flame: the saturation table and every test of the rule at its edge.
#include <gtest/gtest.h>

#include <cstdlib>

#include "preprocess/pre_process.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/rows.h"

namespace {

using orva_fd::pre_process;
using support::row_name;

// --- saturation table -----------------------------------------------------------------------------------------------

class saturation : public testing::Test {
protected:
    static void SetUpTestSuite() { EXPECT_EQ(pre_process::init(), 0); }
};

struct entry_row : support::named_row {
    int red;
    int wanted;
};

class saturation_entries : public testing::TestWithParam<entry_row> {
protected:
    static void SetUpTestSuite() { pre_process::init(); }
};

TEST_P(saturation_entries, are_exact) {
    EXPECT_EQ(pre_process::m_sat_table[GetParam().red], GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(telling, saturation_entries,
                         testing::Values(entry_row{{"0"}, 0, -912260},
                                         entry_row{{"3 differs from exact arithmetic"}, 3, -889192},
                                         entry_row{{"118 is the last negative one"}, 118, -4892},
                                         entry_row{{"119 is the first positive one"}, 119, 2796},
                                         entry_row{{"150"}, 150, 241172}, entry_row{{"200"}, 200, 625650},
                                         entry_row{{"254"}, 254, 1040886}, entry_row{{"255 is 1"}, 255, 1048576}),
                         row_name());

// 2^20 * (1 - 1.1 * (255 - i) / 150) + 0.5 in whole numbers, cut towards zero.
int exact_entry(int red) {
    return static_cast<int>(((1500LL - 11LL * (255 - red)) * 1048576 + 750) / 1500);
}

TEST_F(saturation, differs_from_exact_arithmetic_by_1_in_12_entries) {
    int differing = 0;
    for (int red = 0; red < 256; ++red) {
        const int distance = std::abs(pre_process::m_sat_table[red] - exact_entry(red));
        EXPECT_LE(distance, 1) << red;
        differing += distance;
    }
    EXPECT_EQ(differing, 12);
}

TEST_F(saturation, equals_the_plain_twin_in_all_entries) {
    for (int red = 0; red < 256; ++red) EXPECT_EQ(pre_process::m_sat_table[red], ref::saturation_limit(red)) << red;
}

TEST_F(saturation, stays_after_destroy) {
    EXPECT_EQ(pre_process::destroy(), 0);
    EXPECT_EQ(pre_process::m_sat_table[255], 1048576);
}

// --- the rule -------------------------------------------------------------------------------------------------------

struct pixel_row : support::named_row {
    int r, g, b, y, u, v;
    int wanted;
};

int answer_for(const pixel_row& p) {
    const auto byte = [](int value) { return static_cast<unsigned char>(value); };
    return pre_process().check_fire_pt(byte(p.r), byte(p.g), byte(p.b), byte(p.y), byte(p.u), byte(p.v));
}

class check_fire_pt : public testing::TestWithParam<pixel_row> {
protected:
    static void SetUpTestSuite() { pre_process::init(); }
};

TEST_P(check_fire_pt, answers) {
    EXPECT_EQ(answer_for(GetParam()), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, check_fire_pt,
    testing::Values(pixel_row{{"a flame passes"}, 244, 188, 150, 200, 100, 160, 1},
                    pixel_row{{"red equal to green passes"}, 200, 200, 90, 200, 100, 160, 1},
                    pixel_row{{"red one below green fails"}, 199, 200, 90, 200, 100, 160, 0},
                    pixel_row{{"green one above blue passes"}, 255, 200, 199, 200, 100, 160, 1},
                    pixel_row{{"green equal to blue fails"}, 255, 200, 200, 200, 100, 160, 0},
                    pixel_row{{"blue 81 passes"}, 255, 200, 81, 200, 100, 160, 1},
                    pixel_row{{"blue 80 fails"}, 255, 200, 80, 200, 100, 160, 0},
                    pixel_row{{"red 150 fails"}, 150, 140, 81, 200, 100, 160, 0},
                    pixel_row{{"red one below twice green passes"}, 239, 120, 90, 200, 100, 160, 1},
                    pixel_row{{"red equal to twice green fails"}, 240, 120, 90, 200, 100, 160, 0},
                    pixel_row{{"luma 31 above U passes"}, 244, 188, 150, 131, 100, 160, 1},
                    pixel_row{{"luma 30 above U fails"}, 244, 188, 150, 130, 100, 160, 0},
                    pixel_row{{"U plus 30 does not wrap"}, 244, 188, 150, 20, 240, 250, 0},
                    pixel_row{{"U plus 30 of 254 is below luma 255 of U 224"}, 244, 188, 150, 255, 224, 250, 1},
                    pixel_row{{"V one above U passes"}, 244, 188, 150, 200, 160, 161, 1},
                    pixel_row{{"V equal to U fails"}, 244, 188, 150, 200, 160, 160, 0},
                    pixel_row{{"V 121 passes"}, 244, 188, 150, 200, 80, 121, 1},
                    pixel_row{{"V 120 fails"}, 244, 188, 150, 200, 80, 120, 0},
                    // limit 625650 for red 200; 3 * 99 / 499 is 624103, 3 * 100 / 500 is 629146
                    pixel_row{{"saturated just enough passes"}, 200, 200, 99, 200, 100, 160, 1},
                    pixel_row{{"a little too pale fails"}, 200, 200, 100, 200, 100, 160, 0},
                    pixel_row{{"white fails"}, 255, 255, 255, 255, 128, 128, 0},
                    pixel_row{{"black fails"}, 0, 0, 0, 0, 128, 128, 0}),
    row_name());

// With the real table the saturation test covers some of the others. Raised to its highest value it lets them be seen.
class check_fire_pt_pale : public testing::TestWithParam<pixel_row> {
protected:
    void SetUp() override {
        for (int& limit : pre_process::m_sat_table) limit = 0x7fffffff;
    }
    void TearDown() override { pre_process::init(); }
};

TEST_P(check_fire_pt_pale, answers) {
    EXPECT_EQ(answer_for(GetParam()), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(table, check_fire_pt_pale,
                         testing::Values(pixel_row{{"red 151 passes"}, 151, 140, 81, 200, 100, 160, 1},
                                         pixel_row{{"red 150 fails"}, 150, 140, 81, 200, 100, 160, 0},
                                         pixel_row{{"green 101 passes"}, 199, 101, 81, 200, 100, 160, 1},
                                         pixel_row{{"green 100 fails"}, 199, 100, 81, 200, 100, 160, 0},
                                         pixel_row{{"blue 80 fails"}, 200, 150, 80, 200, 100, 160, 0},
                                         pixel_row{{"a sum of 351 passes"}, 164, 105, 82, 200, 100, 160, 1},
                                         pixel_row{{"a sum of 350 fails"}, 163, 105, 82, 200, 100, 160, 0}),
                         row_name());

// Sum 582: (150 * 3 * 2^20 + 291) / 582 = 810755; without the rounding it would be 810754.
// Sum 659: (155 * 3 * 2^20 + 329) / 659 = 739891 exactly; half of the sum is rounded down, and not less is added.
TEST_F(saturation, is_compared_with_the_rounded_quotient) {
    const pixel_row flame = {{"the flame"}, 244, 188, 150, 200, 100, 160, 1};
    const pixel_row exact = {{"an exact quotient"}, 255, 249, 155, 200, 100, 160, 1};
    pre_process::m_sat_table[244] = 810755;
    pre_process::m_sat_table[255] = 739891;
    EXPECT_EQ(answer_for(flame), 1);
    EXPECT_EQ(answer_for(exact), 1);
    pre_process::m_sat_table[244] = 810754;
    pre_process::m_sat_table[255] = 739890;
    EXPECT_EQ(answer_for(flame), 0);
    EXPECT_EQ(answer_for(exact), 0);
    pre_process::init();
}

}  // namespace
