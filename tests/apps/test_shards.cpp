// The division of recordings among machines: worked out by hand.
#include "apps/orva_fire/shards.h"

#include <gtest/gtest.h>

#include "apps/orva_fire/error.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

struct division_row : support::named_row {
    std::vector<int64_t> lengths;
    int shards;
    std::vector<int> expected;
};

class division : public testing::TestWithParam<division_row> {};

TEST_P(division, is_this_one) {
    EXPECT_EQ(divide(GetParam().lengths, GetParam().shards), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    table, division,
    testing::Values(
        division_row{{"no recordings"}, {}, 3, {}}, division_row{{"one shard takes all"}, {3, 1, 2}, 1, {1, 1, 1}},
        // 7 to the first, 5 and 4 to the second (9), 3 to the first (10), 1 to the second.
        division_row{{"the next longest goes into the lightest shard"}, {7, 5, 4, 3, 1}, 2, {1, 2, 2, 1, 2}},
        // 8, 7, 6 open the shards; 5 goes to the 6 (11), 4 to the 7 (11).
        division_row{{"three shards"}, {8, 7, 6, 5, 4}, 3, {1, 2, 3, 3, 2}},
        // 9 to the first, 8 and 2 to the second (10), 1 to the first.
        division_row{{"the order of names is not that of lengths"}, {1, 9, 2, 8}, 2, {1, 1, 2, 2}},
        division_row{{"equal recordings go round in the order of names"}, {5, 5, 5, 5}, 3, {1, 2, 3, 1}},
        division_row{{"of equal shards that with the lowest number is taken"}, {4, 4, 2}, 2, {1, 2, 1}},
        division_row{{"more shards than recordings leave some empty"}, {2, 1}, 4, {1, 2}},
        division_row{{"recordings without a length go where least is"}, {3, 0, 0}, 2, {1, 2, 2}},
        division_row{
            {"lengths of years do not overflow"}, {31622400000000, 31622400000000, 31622400000000}, 2, {1, 2, 1}}),
    row_name());

struct shard_row : support::named_row {
    const char* text;
};

TEST(shard, is_the_number_and_the_count) {
    EXPECT_EQ(parse_shard("3/8").number, 3);
    EXPECT_EQ(parse_shard("3/8").count, 8);
    EXPECT_EQ(parse_shard("1/1").count, 1);
    EXPECT_EQ(parse_shard("100000/100000").number, 100000);
}

class no_shard : public testing::TestWithParam<shard_row> {};

TEST_P(no_shard, is_refused) {
    EXPECT_THROW((void)parse_shard(GetParam().text), usage_error);
}

INSTANTIATE_TEST_SUITE_P(table, no_shard,
                         testing::Values(shard_row{{"number 0"}, "0/8"}, shard_row{{"a number above the count"}, "9/8"},
                                         shard_row{{"no shards"}, "0/0"}, shard_row{{"a sign"}, "-1/2"},
                                         shard_row{{"a plus"}, "+1/2"}, shard_row{{"no count"}, "1/"},
                                         shard_row{{"no number"}, "/2"}, shard_row{{"a number only"}, "2"},
                                         shard_row{{"nothing"}, ""}, shard_row{{"a blank"}, "1 /2"},
                                         shard_row{{"more behind it"}, "1/2x"}, shard_row{{"three numbers"}, "1/2/3"},
                                         shard_row{{"too many shards"}, "1/100001"},
                                         shard_row{{"more than a number holds"}, "1/99999999999"}),
                         row_name());

}  // namespace
