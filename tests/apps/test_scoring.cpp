// Found fires, delays and false alarms from answers that are written down here.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/orva_fire/scoring.h"

namespace {

using namespace orva_fire;

const picture_size k_size{100, 100};
const box k_left{10, 10, 10, 10}, k_right{80, 10, 10, 10};

labelled_fire fire(double from, std::optional<double> to) {
    labelled_fire read;
    read.from = from;
    read.to = to;
    return read;
}

labelled_clip clip_of(const std::vector<labelled_fire>& fires) {
    labelled_clip clip;
    clip.fires = fires;
    return clip;
}

// One picture a second; in the text L is a report on the left, R on the right, B on both sides, . nothing.
clip_score score(const labelled_clip& clip, const std::string& text) {
    clip_scorer scorer(clip, k_size);
    for (size_t i = 0; i < text.size(); ++i) {
        std::vector<box> boxes;
        if (text[i] == 'L' || text[i] == 'B') boxes.push_back(k_left);
        if (text[i] == 'R' || text[i] == 'B') boxes.push_back(k_right);
        scorer.observe(static_cast<double>(i), boxes);
    }
    return scorer.finish(static_cast<double>(text.size()));
}

TEST(scoring, finds_a_fire_and_its_delay) {
    const clip_score result = score(clip_of({fire(5, 20)}), ".........LLLL.......");
    ASSERT_EQ(result.fires.size(), 1u);
    EXPECT_EQ(result.fires[0].found, 9);
    EXPECT_EQ(result.fires[0].delay(), 4);
    EXPECT_EQ(result.first_report, 9);
    EXPECT_TRUE(result.false_alarms.empty());
    EXPECT_EQ(result.pictures, 20);
    EXPECT_EQ(result.reported, 4);
    EXPECT_EQ(result.burning, 15) << "pictures 5 to 19";
    EXPECT_EQ(result.burning_reported, 4);
    EXPECT_EQ(result.quiet_seconds, 4) << "up to a second before the fire";
}

TEST(scoring, misses_a_fire_that_is_not_reported) {
    const clip_score result = score(clip_of({fire(5, std::nullopt)}), "....................");
    EXPECT_EQ(result.fires[0].found, std::nullopt);
    EXPECT_EQ(result.fires[0].delay(), std::nullopt);
}

TEST(scoring, counts_each_start_without_a_fire_as_a_false_alarm) {
    const clip_score result = score(clip_of({}), "..LLL...R..L");
    EXPECT_EQ(result.false_alarms, (std::vector<double>{2, 8, 11}));
    EXPECT_EQ(result.quiet_seconds, 12);
    EXPECT_EQ(result.burning, 0);
}

TEST(scoring, forgives_a_second_at_either_end) {
    const clip_score early = score(clip_of({fire(5, 10)}), "....L...............");
    EXPECT_TRUE(early.false_alarms.empty());
    EXPECT_EQ(early.fires[0].delay(), 0) << "never below nothing";
    const clip_score late = score(clip_of({fire(5, 10)}), "...........L........");
    EXPECT_TRUE(late.false_alarms.empty());
    const clip_score too_early = score(clip_of({fire(5, 10)}), "...L................");
    EXPECT_EQ(too_early.false_alarms, std::vector<double>{3});
    EXPECT_FALSE(too_early.fires[0].found);
    const clip_score too_late = score(clip_of({fire(5, 10)}), "............L.......");
    EXPECT_EQ(too_late.false_alarms, std::vector<double>{12});
}

TEST(scoring, calls_a_report_that_lasts_into_the_fire_both_false_and_a_find) {
    const clip_score result = score(clip_of({fire(5, 20)}), ".LLLLLLLLLL.........");
    EXPECT_EQ(result.false_alarms, std::vector<double>{1});
    EXPECT_EQ(result.fires[0].found, 4);
}

TEST(scoring, wants_the_box_to_touch_the_label) {
    labelled_fire left = fire(5, 20);
    left.where = labelled_fire::edges{0, 0, 0.5, 1};
    const clip_score elsewhere = score(clip_of({left}), ".........RRRR.......");
    EXPECT_FALSE(elsewhere.fires[0].found);
    EXPECT_EQ(elsewhere.false_alarms, std::vector<double>{9});
    const clip_score later = score(clip_of({left}), ".........RRBB.......");
    EXPECT_EQ(later.fires[0].found, 11);
    EXPECT_EQ(later.false_alarms, std::vector<double>{9});
    EXPECT_TRUE(score(clip_of({left}), ".........BBBB.......").false_alarms.empty());
}

TEST(scoring, judges_each_fire_by_itself) {
    const clip_score result =
        score(clip_of({fire(2, 6), fire(10, 14), fire(17, std::nullopt)}), "...L.......LL.......");
    EXPECT_EQ(result.fires[0].delay(), 1);
    EXPECT_EQ(result.fires[1].delay(), 1);
    EXPECT_FALSE(result.fires[2].found);
    // Quiet: 0 to 1, 7 to 9, 15 to 16.
    EXPECT_EQ(result.quiet_seconds, 4);
}

TEST(scoring, counts_overlapping_fires_once_as_time) {
    EXPECT_EQ(score(clip_of({fire(12, 15), fire(5, 14)}), "....................").quiet_seconds, 4 + 4);
}

TEST(total, adds_up) {
    total_score total;
    total.add(score(clip_of({fire(5, 20)}), ".........LLLL......."));
    total.add(score(clip_of({fire(5, 20)}), "...................."));
    total.add(score(clip_of({}), "..L.L..............."));
    EXPECT_EQ(total.clips, 3);
    EXPECT_EQ(total.fires, 2);
    EXPECT_EQ(total.found, 1);
    EXPECT_EQ(total.delays, std::vector<double>{4});
    EXPECT_EQ(total.false_alarms, 2);
    EXPECT_EQ(total.clips_with_false_alarms, 1);
    EXPECT_DOUBLE_EQ(total.quiet_hours * 3600, 4 + 4 + 20);
}

}  // namespace
