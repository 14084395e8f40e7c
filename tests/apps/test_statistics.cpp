// Intervals against printed tables and closed forms.
#include <gtest/gtest.h>

#include <cmath>

#include "apps/orva_fire/statistics.h"

namespace {

using namespace orva_fire;

// With z = 1.959964: for 0 of n the upper end is z^2 / (n + z^2), for n of n the lower n / (n + z^2).
TEST(share_interval, has_closed_forms_at_its_ends) {
    const double z2 = 1.959964 * 1.959964;
    EXPECT_EQ(share_interval(0, 10).low, 0);
    EXPECT_NEAR(share_interval(0, 10).high, z2 / (10 + z2), 1e-6);
    EXPECT_NEAR(share_interval(10, 10).low, 10 / (10 + z2), 1e-6);
    EXPECT_EQ(share_interval(10, 10).high, 1);
    // A half stays a half: the centre is (0.5 + z2 / 2n) / (1 + z2 / n) = 0.5.
    EXPECT_NEAR((share_interval(8, 16).low + share_interval(8, 16).high) / 2, 0.5, 1e-12);
}

// Worked out by hand for 12 of 15: p = 0.8, z2 = 3.841459; scale 1.256097, centre (0.8 + 0.128049) / 1.256097 =
// 0.738835, half width 1.959964 * sqrt(0.16 / 15 + 3.841459 / 900) / 1.256097 = 0.190689.
TEST(share_interval, is_wilsons) {
    EXPECT_NEAR(share_interval(12, 15).low, 0.548146, 1e-5);
    EXPECT_NEAR(share_interval(12, 15).high, 0.929524, 1e-5);
}

TEST(share_interval, knows_nothing_without_trials) {
    EXPECT_EQ(share_interval(0, 0).low, 0);
    EXPECT_EQ(share_interval(0, 0).high, 1);
}

// Garwood's table, 95 %: 0: 0 to 3.689; 1: 0.0253 to 5.572; 5: 1.623 to 11.668; 10: 4.795 to 18.390; 50: 37.11
// to 65.92.
TEST(count_interval, is_that_of_printed_tables) {
    const struct {
        int count;
        double low, high;
    } table[] = {{0, 0, 3.689}, {1, 0.0253, 5.572}, {5, 1.623, 11.668}, {10, 4.795, 18.390}, {50, 37.11, 65.92}};
    for (const auto& row : table) {
        EXPECT_NEAR(count_interval(row.count).low, row.low, 0.006) << row.count;
        EXPECT_NEAR(count_interval(row.count).high, row.high, 0.006) << row.count;
    }
    // P(0) = exp(-x) = 0.025 and, for one event, 1 - exp(-x) = 0.025.
    EXPECT_NEAR(count_interval(0).high, -std::log(0.025), 1e-9);
    EXPECT_NEAR(count_interval(1).low, -std::log(0.975), 1e-9);
}

TEST(count_interval, takes_large_counts) {
    EXPECT_NEAR(count_interval(10000).low, 10000 - 1.96 * 100, 5);
    EXPECT_NEAR(count_interval(10000).high, 10000 + 1.96 * 100, 5);
}

TEST(median, is_the_middle) {
    EXPECT_EQ(median({}), std::nullopt);
    EXPECT_EQ(median({7}), 7);
    EXPECT_EQ(median({9, 1, 5}), 5);
    EXPECT_EQ(median({9, 1, 5, 4}), 4.5);
}

TEST(quantile, is_a_number_of_the_list) {
    EXPECT_EQ(quantile({}, 0.9), std::nullopt);
    EXPECT_EQ(quantile({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 0.9), 9);
    EXPECT_EQ(quantile({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 1), 10);
    EXPECT_EQ(quantile({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 0.91), 10);
    EXPECT_EQ(quantile({1, 2, 3}, 0.01), 1);
}

}  // namespace
