// The quick merger gives the list of the slow rule: whatever the number, size and order of boxes.
#include "channel/box_merger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/channel/components.h"
#include "tests/reference/ref_boxes.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"

namespace {

using orva_fd::box_merger;
using orva_fd::con_info;
using support::box;
using support::text_of;

using list = std::vector<con_info>;

list merged_by_rule(const list& components) {
    std::vector<ref::component> twin = support::to_ref(components);
    ref::log_book log;
    ref::merge_close(twin, log);
    return support::from_ref(twin);
}

struct crowd_row : support::named_row {
    int count;  // boxes at most
    int width;  // of the picture
    int height;
    int largest;     // side of a box at most
    bool in_raster;  // ordered like a labeller's list
    int rounds;
};

class merging_crowds : public testing::TestWithParam<crowd_row> {};

TEST_P(merging_crowds, equals_the_slow_rule) {
    const crowd_row& row = GetParam();
    support::random_source random;
    box_merger kept;
    kept.reserve(static_cast<std::size_t>(row.count), 200);
    int merges = 0, stayed = 0;
    for (int round = 0; round < row.rounds; ++round) {
        list components;
        for (int i = random.below(row.count + 1); i > 0; --i) {
            const int width = random.between(1, row.largest), height = random.between(1, row.largest);
            components.push_back(
                box(random.below(row.width), random.below(row.height), width, height, random.between(1, 900)));
        }
        if (row.in_raster) {
            std::sort(components.begin(), components.end(), [](const con_info& a, const con_info& b) {
                return a.top != b.top ? a.top < b.top : a.left < b.left;
            });
        }
        const list wanted = merged_by_rule(components);
        list by_kept = components, by_fresh = components;
        kept.merge(by_kept);
        box_merger().merge(by_fresh);
        ASSERT_EQ(text_of(by_kept), text_of(wanted)) << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(text_of(by_fresh), text_of(wanted)) << "round " << round << ", seed " << random.seed();
        merges += static_cast<int>(components.size() - wanted.size());
        stayed += static_cast<int>(wanted.size());
    }
    EXPECT_GT(merges, row.rounds / 10);
    EXPECT_GT(stayed, row.rounds / 10);
}

INSTANTIATE_TEST_SUITE_P(
    table, merging_crowds,
    testing::Values(crowd_row{{"few small ones"}, 12, 352, 288, 12, false, 3000},
                    crowd_row{{"few of all sizes"}, 12, 352, 288, 150, false, 3000},
                    crowd_row{{"two or three"}, 3, 200, 150, 60, false, 3000},
                    crowd_row{{"many small ones in raster order"}, 300, 352, 288, 6, true, 100},
                    crowd_row{{"many small ones in any order"}, 300, 352, 288, 6, false, 100},
                    crowd_row{{"many specks on a picture so large that most stay"}, 400, 4000, 4000, 4, false, 60},
                    crowd_row{{"many of all sizes on a large picture"}, 300, 3000, 3000, 120, false, 100},
                    crowd_row{{"a long strip in raster order"}, 500, 8000, 40, 30, true, 60},
                    crowd_row{{"a long strip in any order"}, 500, 8000, 40, 30, false, 60},
                    crowd_row{{"small ones on the largest picture"}, 300, 16300, 16300, 80, false, 60},
                    crowd_row{{"some of all sizes on the largest picture"}, 60, 12000, 12000, 4383, false, 300},
                    crowd_row{{"along the right edge of the largest picture"}, 300, 16300, 60, 80, false, 60},
                    crowd_row{{"more than a picture can hold"}, 2000, 352, 288, 3, true, 6}),
    support::row_name());

// 70 boxes, far from each other, and one between each two that joins them, at the end of the list: the first grows,
// passes over some, and finds settled boxes before and behind itself.
TEST(merging_chains, grow_over_blocks_in_both_directions) {
    for (const bool backwards : {false, true}) {
        list components;
        for (int i = 0; i < 70; ++i) components.push_back(box(75 * i, 0, 10, 10, 1));
        for (int i = 0; i < 69; ++i) components.push_back(box(75 * i + 37, 0, 10, 10, 1));
        if (backwards) std::reverse(components.begin(), components.end());
        list got = components;
        box_merger().merge(got);
        EXPECT_EQ(text_of(got), text_of(merged_by_rule(components))) << backwards;
        EXPECT_LT(got.size(), components.size());
    }
}

// The first box grows by 5 pixels towards a box that lies in a later block by itself, and is then 79 pixels away from
// it, just near enough. Behind it 30 boxes that nothing reaches.
struct reach_row : support::named_row {
    con_info first;
    con_info growth;
    con_info reached;
    bool near_enough;
};

class reaching_a_later_block : public testing::TestWithParam<reach_row> {};

TEST_P(reaching_a_later_block, happens_at_the_very_pixel) {
    list components = {GetParam().first, GetParam().growth};
    for (int i = 0; i < 30; ++i) components.push_back(box(3000 + 100 * i, 3000, 1, 1, 1));
    components.push_back(GetParam().reached);
    list got = components;
    box_merger().merge(got);
    EXPECT_EQ(got.size(), components.size() - (GetParam().near_enough ? 2 : 1));
    EXPECT_EQ(text_of(got), text_of(merged_by_rule(components)));
}

const con_info k_first = box(500, 500, 100, 100, 1);

INSTANTIATE_TEST_SUITE_P(
    table, reaching_a_later_block,
    testing::Values(
        reach_row{{"to the right"}, k_first, box(590, 500, 15, 100, 1), box(683, 500, 100, 100, 1), true},
        reach_row{{"to the right and one pixel short"},
                  k_first,
                  box(590, 500, 15, 100, 1),
                  box(684, 500, 100, 100, 1),
                  false},
        reach_row{{"to the left"}, k_first, box(495, 500, 15, 100, 1), box(317, 500, 100, 100, 1), true},
        reach_row{
            {"to the left and one pixel short"}, k_first, box(495, 500, 15, 100, 1), box(316, 500, 100, 100, 1), false},
        reach_row{{"downwards"}, k_first, box(500, 590, 100, 15, 1), box(500, 683, 100, 100, 1), true},
        reach_row{
            {"downwards and one pixel short"}, k_first, box(500, 590, 100, 15, 1), box(500, 684, 100, 100, 1), false},
        reach_row{{"upwards"}, k_first, box(500, 495, 100, 15, 1), box(500, 317, 100, 100, 1), true},
        reach_row{
            {"upwards and one pixel short"}, k_first, box(500, 495, 100, 15, 1), box(500, 316, 100, 100, 1), false}),
    support::row_name());

TEST(merging_chains, of_no_box_and_of_one_stay) {
    list none, one = {box(1, 2, 3, 4, 5)};
    box_merger merger;
    merger.merge(none);
    merger.merge(one);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(text_of(one), "5: 1 to 3, 2 to 5; ");
}

}  // namespace
