// What the tables are made of: quantiles, ratios, sizes of a library file, the drawing.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "bench/machine.h"
#include "bench/measure.h"
#include "bench/plot.h"

namespace {

struct quantile_row {
    const char* name;
    std::vector<double> values;
    double share;
    double expected;
};

void PrintTo(const quantile_row& row, std::ostream* out) {
    *out << row.name;
}

const quantile_row k_quantiles[] = {
    {"none", {}, 0.5, 0},
    {"one", {7}, 0.99, 7},
    {"median_of_three", {9, 1, 5}, 0.5, 5},
    {"upper_median_of_four", {4, 1, 3, 2}, 0.5, 3},
    {"least", {4, 1, 3, 2}, 0, 1},
    {"most", {4, 1, 3, 2}, 1, 4},
    {"quarter_of_eight", {8, 7, 6, 5, 4, 3, 2, 1}, 0.25, 3},
};

class quantiles : public testing::TestWithParam<quantile_row> {};

TEST_P(quantiles, are_values_of_the_list) {
    EXPECT_EQ(bench::quantile(GetParam().values, GetParam().share), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(, quantiles, testing::ValuesIn(k_quantiles),
                         [](const testing::TestParamInfo<quantile_row>& row) { return std::string(row.param.name); });

TEST(figures, ratios_are_taken_turn_by_turn) {
    bench::timing slow;
    bench::timing fast;
    slow.block_medians_ns = {100, 400, 900};
    fast.block_medians_ns = {50, 100, 100};
    const bench::spread r = bench::ratio(slow, fast);
    EXPECT_EQ(r.low, 2);
    EXPECT_EQ(r.mid, 4);
    EXPECT_EQ(r.high, 9);
}

TEST(figures, a_library_file_shows_its_code) {
    const bench::library_file file = bench::inspect_library(ORVA_LIBRARY_PATH);
    EXPECT_GT(file.code_bytes, 10000u);
    EXPECT_LT(file.code_bytes, file.file_bytes);
    EXPECT_NE(file.compiler.find_first_of("Gc"), std::string::npos) << file.compiler;
}

TEST(figures, what_is_no_library_file_shows_nothing) {
    EXPECT_EQ(bench::inspect_library(__FILE__).code_bytes, 0u);
    EXPECT_EQ(bench::inspect_library("there is no such file").file_bytes, 0u);
}

TEST(figures, frames_cost_processor_time) {
    const std::int64_t before = bench::spent_ns();
    while (bench::spent_ns() - before < 2000000) {
    }
    EXPECT_GE(bench::spent_since_ns(before), 1.5e6);
}

TEST(figures, a_drawing_holds_every_panel_curve_and_point) {
    const std::string svg = bench::draw({{"first", "pixels", "us", {{"a curve", {{10, 100}, {20, 300}}}}},
                                         {"second", "channels", "us", {{"another", {{1, 5}}}}}},
                                        "caption");
    EXPECT_EQ(svg.find("<svg "), 0u);
    EXPECT_NE(svg.find("</svg>"), std::string::npos);
    for (const char* word : {"first", "second", "a curve", "another", "pixels", "channels", "caption"})
        EXPECT_NE(svg.find(">" + std::string(word) + "<"), std::string::npos) << word;
    std::size_t points = 0;
    for (std::size_t at = svg.find("<circle"); at != std::string::npos; at = svg.find("<circle", at + 1)) ++points;
    EXPECT_EQ(points, 3u);
}

}  // namespace
