// What is kept for a report while the pictures go by: near misses, courses over time, small pictures.
#include <gtest/gtest.h>

#include <algorithm>

#include "apps/orva_fire/near_misses.h"
#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/timeline.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

const double k_rate = 25;

picture_evidence one_box(double seconds, verdict ended, int matched) {
    picture_evidence seen;
    seen.at = {static_cast<int64_t>(seconds * k_rate), seconds};
    seen.size = {64, 48};
    box_evidence b;
    b.place = {10, 12, 8, 6};
    b.ended = ended;
    b.stored = 50;
    b.matched = matched;
    b.span = 2;
    b.needed = 35;
    b.mean_area = 100;
    b.deviation = 30;
    seen.boxes.push_back(b);
    return seen;
}

class near_misses : public testing::Test {
protected:
    void see(double seconds, verdict ended, int matched, bool raised = false) {
        m_finder.observe(0, one_box(seconds, ended, matched), {100, 100, 128, 96}, raised, m_picture);
    }
    void see_nothing(double seconds, bool raised) {
        picture_evidence seen;
        seen.at.seconds = seconds;
        seen.size = {64, 48};
        m_finder.observe(0, seen, {100, 100, 128, 96}, raised, m_picture);
    }
    std::vector<report_miss> finish() { return m_finder.finish(); }

private:
    nv21_picture m_picture{{64, 48}};
    miss_finder m_finder{1};
};

TEST_F(near_misses, are_shown_at_their_nearest_moment) {
    see(1, verdict::too_rare, 20);
    see(2, verdict::too_rare, 33);
    see(3, verdict::too_rare, 25);
    const auto misses = finish();
    ASSERT_EQ(misses.size(), 1u);
    EXPECT_EQ(misses[0].from, 1);
    EXPECT_EQ(misses[0].to, 3);
    EXPECT_EQ(misses[0].at, 2);
    EXPECT_EQ(misses[0].place, (box{120, 124, 16, 12}));
    EXPECT_EQ(misses[0].reason, "found again in 33 of 50 frames over 2.0 s, needs 35");
    EXPECT_EQ(misses[0].remedy, "would have been reported at grade 80");
    EXPECT_EQ(misses[0].picture.substr(0, 2), "\xff\xd8");
}

TEST_F(near_misses, more_than_two_seconds_apart_are_two_the_nearer_first) {
    see(1, verdict::too_rare, 20);
    see(3.1, verdict::too_rare, 30);
    const auto misses = finish();
    ASSERT_EQ(misses.size(), 2u);
    EXPECT_EQ(misses[0].at, 3.1);
    EXPECT_EQ(misses[1].at, 1);
}

TEST_F(near_misses, are_none_on_the_way_to_an_event_and_right_after_it) {
    see(1, verdict::too_rare, 34);
    see(2, verdict::reported, 35, true);
    see_nothing(3, true);
    see(4.9, verdict::too_rare, 34);
    EXPECT_TRUE(finish().empty());
}

TEST_F(near_misses, may_come_later_than_two_seconds_after_an_event) {
    see_nothing(3, true);
    see(5.1, verdict::too_rare, 34);
    EXPECT_EQ(finish().size(), 1u);
}

TEST_F(near_misses, hold_reports_that_were_not_confirmed) {
    see(1, verdict::reported, 40);
    const auto misses = finish();
    ASSERT_EQ(misses.size(), 1u);
    EXPECT_EQ(misses[0].reason, "seen as fire by the detector, but not for long enough to be confirmed");
}

TEST_F(near_misses, leave_out_what_is_far_from_a_report) {
    see(1, verdict::too_small, 0);
    see(2, verdict::too_dim, 0);
    EXPECT_TRUE(finish().empty());
}

TEST_F(near_misses, are_few) {
    for (int i = 0; i < 40; ++i) see(10 * i, verdict::too_rare, i % 30);
    const auto misses = finish();
    ASSERT_EQ(misses.size(), 8u);
    EXPECT_EQ(misses[0].reason, "found again in 29 of 50 frames over 2.0 s, needs 35");
    for (size_t i = 1; i < misses.size(); ++i) EXPECT_GE(misses[i - 1].nearness, misses[i].nearness);
}

// --- courses over time ----------------------------------------------------------------------------------------------

TEST(a_timeline, keeps_the_largest_of_each_step) {
    timeline course(2);
    course.add(0, 0.0, {0.2, 0.5});
    course.add(0, 0.1, {0.1, 0.7});
    course.add(0, 0.3, {0.4, 0.1});
    EXPECT_EQ(course.step(), 0.125);
    ASSERT_EQ(course.samples(0).size(), 3u);
    EXPECT_EQ(course.samples(0)[0].motion, 0.2);
    EXPECT_EQ(course.samples(0)[0].nearness, 0.7);
    EXPECT_EQ(course.samples(0)[1].motion, 0);
    EXPECT_EQ(course.samples(0)[2].motion, 0.4);
    EXPECT_TRUE(course.samples(1).empty());
}

TEST(a_timeline, doubles_its_steps_when_they_run_out) {
    timeline course(1);
    for (int i = 0; i < 600; ++i) course.add(0, i * 0.125, {i / 600.0, 0});
    EXPECT_EQ(course.step(), 0.125);
    course.add(0, 75, {0.5, 0});
    EXPECT_EQ(course.step(), 0.25);
    ASSERT_EQ(course.samples(0).size(), 301u);
    EXPECT_EQ(course.samples(0)[0].motion, 1 / 600.0);
    EXPECT_EQ(course.samples(0)[299].motion, 599 / 600.0);
    course.add(0, 1e6, {1, 1});
    EXPECT_LE(course.samples(0).size(), 600u);
    EXPECT_EQ(course.samples(0).back().nearness, 1);
}

TEST(a_thumbnail, keeps_the_aspect_and_grows_nothing) {
    const temporary_folder folder;
    const frame_ptr picture = new_picture(AV_PIX_FMT_GRAY8, 640, 480);
    for (const int most : {160, 1000}) {
        save_bytes(folder.file("a.jpg"), thumbnail(*picture, most));
        video_source source(folder.file("a.jpg"));
        source_picture read;
        ASSERT_TRUE(source.next(read));
        EXPECT_EQ(read.frame->width, std::min(most, 640));
        EXPECT_EQ(read.frame->height, read.frame->width * 3 / 4);
    }
}

}  // namespace
