// Fresh and held answers, tiles, the age of evidence, gaps and restarts, on pictures with a patch that flickers.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/fresh_channel.h"
#include "apps/orva_fire/zone_watcher.h"
#include "tests/apps/flicker.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using apps_test::flicker_picture;
using apps_test::still_picture;
using support::row_name;

// --- fresh and held --------------------------------------------------------------------------------------------------

struct size_row : support::named_row {
    picture_size size;
    picture_size region;  // what the channel looks at
};

class fresh_answers : public testing::TestWithParam<size_row> {
protected:
    // The pictures are passed without scaling, so that a channel opened by hand can be given the same. The flicker's
    // light changes with every second picture and its size with every seventh.
    nv21_picture& show(bool burning, int index) {
        const picture_size size = GetParam().size;
        const size_t kind = burning ? static_cast<size_t>(index % 14) : 14;
        while (m_pictures.size() <= kind) {
            const int next = static_cast<int>(m_pictures.size());
            nv21_converter converter(box{0, 0, size.width, size.height});
            m_pictures.push_back(converter.convert(next == 14
                                                       ? *still_picture(size.width, size.height)
                                                       : *flicker_picture(size.width, size.height, next, 32, 28, 32)));
        }
        return m_pictures[kind];
    }

    detector_session m_session;
    std::vector<nv21_picture> m_pictures;
};

// A report ends with the 16th picture after its last fresh one. So each picture is tried as the last of a fire: if it
// was fresh, the report ends 16 pictures later, and if not, sooner.
TEST_P(fresh_answers, are_those_from_which_the_hold_is_counted) {
    int fresh_pictures = 0;
    for (int burning = 51; burning <= 72; ++burning) {
        fresh_channel channel(GetParam().size);
        int last_fresh = -1, last_boxes = -1;
        for (int i = 0; i < burning + 20; ++i) {
            const channel_answer answer = channel.analyse(show(i < burning, i));
            if (answer.fresh) last_fresh = i;
            if (!answer.boxes.empty()) last_boxes = i;
            ASSERT_TRUE(!answer.fresh || !answer.boxes.empty());
        }
        ASSERT_GE(last_fresh, 50) << "nothing was reported";
        ASSERT_EQ(last_boxes, last_fresh + 15) << "with " << burning << " pictures of fire";
        fresh_pictures += last_fresh == burning - 1 ? 1 : 0;
    }
    EXPECT_EQ(fresh_pictures, 4) << "pictures 50, 57, 64 and 71 are fresh: whenever the library looks";
}

TEST_P(fresh_answers, have_the_boxes_of_a_channel_that_is_used_plainly) {
    const auto ref = [](int value) { return static_cast<uint16_t>(value); };
    const picture_size size = GetParam().size, region = GetParam().region;
    fresh_channel channel(size);
    int plain = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&plain, {0, ref(size.width), 0, ref(size.height), ref(region.width),
                                                ref(size.width), ref(region.height), ref(size.height)}),
              FD_OK);
    int reported = 0, equal_though_fresh = 0;
    std::vector<box> before;
    for (int i = 0; i < 200; ++i) {
        nv21_picture& picture = show(i < 120 || i > 150, i);
        const channel_answer answer = channel.analyse(picture);
        fd_result result = {};
        ASSERT_EQ(ORVA_FireDetection_SetFrame(plain, picture.view(), &result), FD_OK);
        ASSERT_EQ(answer.boxes.size(), result.count) << i;
        for (size_t b = 0; b < answer.boxes.size(); ++b) {
            const fd_rect& rect = result.rects[b];
            EXPECT_EQ(answer.boxes[b], (box{rect.x, rect.y, rect.width, rect.height})) << i;
        }
        reported += result.count > 0 ? 1 : 0;
        equal_though_fresh += answer.fresh && answer.boxes == before ? 1 : 0;
        EXPECT_TRUE(answer.fresh || answer.boxes.empty() || answer.boxes == before) << i;
        before = answer.boxes;
    }
    EXPECT_EQ(ORVA_FireDetection_Stop(plain), FD_OK);
    EXPECT_GT(reported, 100);
    EXPECT_GT(equal_though_fresh, 0) << "equal boxes alone do not make an answer held";
}

INSTANTIATE_TEST_SUITE_P(
    table, fresh_answers,
    testing::Values(size_row{{"a small picture"}, {64, 48}, {64, 48}},
                    size_row{{"a width that is no multiple of 16"}, {100, 80}, {100, 80}},
                    size_row{{"a picture of full height"}, {160, 288}, {160, 288}},
                    size_row{{"two rows below full height"}, {160, 286}, {160, 286}},
                    size_row{{"a picture of full width"}, {352, 100}, {352, 100}},
                    size_row{{"a picture of full width and height loses two rows"}, {352, 288}, {352, 286}}),
    row_name());

// --- the plan of two channels ----------------------------------------------------------------------------------------

// The steps as letters: r restart, h hand over, y start of the younger; the moment before each.
std::string plan_of(double max_age, const std::vector<double>& times) {
    age_plan plan(max_age);
    std::string text;
    for (const double seconds : times) {
        const age_plan::step step = plan.next(seconds);
        std::string letters;
        if (step.restart) letters += 'r';
        if (step.hand_over) letters += 'h';
        if (step.start_younger) letters += 'y';
        if (!letters.empty()) text += (text.empty() ? "" : " ") + std::to_string(std::lround(seconds)) + letters;
    }
    return text;
}

std::vector<double> every_second(double from, double to) {
    std::vector<double> times;
    for (double t = from; t <= to; ++t) times.push_back(t);
    return times;
}

std::vector<double> joined(std::vector<double> a, const std::vector<double>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct plan_row : support::named_row {
    double max_age;
    std::vector<double> times;
    const char* wanted;
};

class age_plan_over : public testing::TestWithParam<plan_row> {};

TEST_P(age_plan_over, takes_these_steps) {
    EXPECT_EQ(plan_of(GetParam().max_age, GetParam().times), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, age_plan_over,
    testing::Values(
        plan_row{{"without an age there is one channel for ever"}, 0, every_second(0, 1000), "0r"},
        plan_row{{"channels take turns"}, 20, every_second(0, 50), "0r 10y 20hy 30hy 40hy 50hy"},
        plan_row{
            {"an odd age has halves between pictures"}, 9, every_second(0, 28), "0r 5y 9h 10y 14h 15y 19h 20y 24h 25y"},
        plan_row{{"times may start anywhere"}, 20, every_second(1000, 1025), "1000r 1010y 1020hy"},
        plan_row{{"5 seconds are no gap"}, 20, {0, 5, 10, 15, 20}, "0r 10y 20hy"},
        plan_row{{"more than 5 seconds are one"}, 20, {0, 5, 10.5, 15, 20, 25, 30}, "0r 11r 25y"},
        plan_row{{"time that runs backwards is one"}, 20, {0, 1, 2, 1.5, 2, 3}, "0r 2r"},
        plan_row{{"without an age a gap counts too"}, 0, {0, 1, 7, 8}, "0r 7r"},
        plan_row{{"a gap drops the younger channel"},
                 20,
                 joined(every_second(0, 12), every_second(30, 52)),
                 "0r 10y 30r 40y 50hy"},
        plan_row{{"an age below the pictures' distance never gathers anything"}, 0.5, {0, 1, 2, 3}, "0r 1r 2r 3r"},
        // at 4 both channels are too old: the first is 4, the second 3 seconds
        plan_row{{"both may run out at one picture"}, 2, {0, 1, 4, 5}, "0r 1y 4r 5y"}),
    row_name());

TEST(age_plan, starts_afresh_when_asked) {
    age_plan plan(20);
    for (int i = 0; i < 15; ++i) (void)plan.next(i);
    plan.restart();
    EXPECT_TRUE(plan.next(15).restart);
    for (int i = 16; i < 25; ++i) EXPECT_FALSE(plan.next(i).start_younger) << i;
    EXPECT_TRUE(plan.next(25).start_younger);
}

// Whatever the times are, the channel that answers was started less than max_age ago.
TEST(age_plan, never_lets_evidence_grow_older) {
    for (const double interval : {0.04, 0.3, 0.7, 1.0, 3.0}) {
        age_plan plan(4);
        double older = 0, younger = 0;
        for (int i = 0; i < 500; ++i) {
            const double now = i * interval + (i % 3) * 0.1 * interval;
            const age_plan::step step = plan.next(now);
            if (step.hand_over) older = younger;
            if (step.restart) older = now;
            if (step.start_younger) younger = now;
            ASSERT_LT(now - older, 4) << interval << " at " << now;
        }
    }
}

// --- a zone ----------------------------------------------------------------------------------------------------------

class watched_zone : public testing::Test {
protected:
    zone_answer look(zone_watcher& zone, const frame_ptr& picture, double seconds) {
        return zone.observe(*picture, seconds, m_converting, m_detecting);
    }

    // Passes 25 pictures a second from picture `first` on; returns the first with a report, or nothing.
    std::optional<int> first_report(zone_watcher& zone, int first, int count, int x = 100, int y = 60, int size = 48) {
        for (int i = first; i < first + count; ++i) {
            if (!look(zone, flicker_picture(320, 240, i, x, y, size), i / 25.0).boxes.empty()) return i;
        }
        return std::nullopt;
    }

    int open_channels() const {
        // Handles are given from the lowest free one, so a new one is the number of those in use if none below is free.
        int handle = -1;
        EXPECT_EQ(ORVA_FireDetection_Start(&handle, {0, 1, 0, 1, 1, 1, 1, 1}), FD_OK);
        EXPECT_EQ(ORVA_FireDetection_Stop(handle), FD_OK);
        return handle;
    }

    detector_session m_session;
    stopwatch m_converting, m_detecting;
    const std::vector<box> m_whole{{0, 0, 320, 240}};
    const std::vector<box> m_small{{0, 0, 128, 96}};  // for long runs
};

bool covers(const box& outer, int x, int y) {
    return outer.x <= x && x < outer.x + outer.width && outer.y <= y && y < outer.y + outer.height;
}

TEST_F(watched_zone, reports_in_source_pixels_from_the_51st_picture) {
    zone_watcher zone(m_whole, {});
    EXPECT_EQ(first_report(zone, 0, 60), 50);
    const zone_answer answer = look(zone, flicker_picture(320, 240, 51, 100, 60, 48), 2.04);
    ASSERT_EQ(answer.boxes.size(), 1u);
    EXPECT_FALSE(answer.fresh) << "one picture after a fresh report it is held";
    EXPECT_TRUE(covers(answer.boxes[0], 100, 60));
    EXPECT_LE(answer.boxes[0].width, 64);
    EXPECT_GT(m_converting.seconds(), 0);
    EXPECT_GT(m_detecting.seconds(), 0);
}

TEST_F(watched_zone, sees_nothing_outside_its_parts) {
    zone_watcher zone({{160, 0, 160, 240}, {0, 120, 160, 120}}, {});
    EXPECT_EQ(first_report(zone, 0, 200), std::nullopt) << "the fire is in the upper left quarter";
    EXPECT_TRUE(first_report(zone, 200, 100, 240, 60));
    zone_watcher lower({{160, 0, 160, 240}, {0, 120, 160, 120}}, {});
    EXPECT_TRUE(first_report(lower, 0, 100, 80, 180));
}

TEST_F(watched_zone, joins_what_two_tiles_see_of_one_fire) {
    watch_settings settings;
    settings.tiles.columns = 2;
    zone_watcher zone(m_whole, settings);
    // Two columns of 320 are 172 wide and share 148 to 172, in which this fire lies across the middle.
    EXPECT_EQ(zone.tiles(), (std::vector<box>{{0, 0, 172, 240}, {148, 0, 172, 240}}));
    ASSERT_EQ(first_report(zone, 0, 60, 160, 120, 48), 50);
    const zone_answer answer = look(zone, flicker_picture(320, 240, 51, 160, 120, 48), 2.04);
    ASSERT_EQ(answer.boxes.size(), 1u);
    EXPECT_LT(answer.boxes[0].x, 148);
    EXPECT_GT(answer.boxes[0].x + answer.boxes[0].width, 172);
}

TEST_F(watched_zone, passes_the_grade_to_channels_of_every_generation) {
    // The patch burns in 33 of 50 pictures with evidence: enough for grade 100, which asks for 30, not for 0, which
    // asks for 47. A patch elsewhere gives evidence to the pictures between.
    const auto reports = [&](int grade, double max_age) {
        watch_settings settings;
        settings.grade = grade;
        settings.max_age = max_age;
        zone_watcher zone(m_small, settings);
        bool reported_late = false;
        for (int i = 0; i < 320; ++i) {
            const frame_ptr picture =
                i % 3 < 2 ? flicker_picture(128, 96, i, 32, 32, 32) : flicker_picture(128, 96, i, 96, 64, 32);
            if (!look(zone, picture, i / 25.0).boxes.empty() && i > 160) reported_late = true;
        }
        return reported_late;
    };
    EXPECT_TRUE(reports(100, 0));
    EXPECT_TRUE(reports(100, 8));
    EXPECT_FALSE(reports(0, 0));
    EXPECT_FALSE(reports(0, 8));
}

TEST_F(watched_zone, gathers_slow_evidence_without_an_age_and_not_with_one) {
    // One flicker a second in a still scene: 51 moments take most of a minute, and each lasts for two pictures since
    // the patch that goes out moves as well, but shows no fire.
    for (const double max_age : {0.0, 20.0}) {
        watch_settings settings;
        settings.max_age = max_age;
        zone_watcher zone(m_small, settings);
        bool reported = false;
        for (int i = 0; i < 80 * 5; ++i) {
            const frame_ptr picture = i % 5 == 0 ? flicker_picture(128, 96, i / 5, 32, 32, 32) : still_picture(128, 96);
            reported = reported || !look(zone, picture, i / 5.0).boxes.empty();
        }
        EXPECT_EQ(reported, max_age == 0) << "age " << max_age;
    }
}

TEST_F(watched_zone, keeps_reporting_a_steady_fire_when_channels_change) {
    watch_settings settings;
    settings.max_age = 6;
    zone_watcher zone(m_small, settings);
    for (int i = 0; i < 25 * 20; ++i) {
        const zone_answer answer = look(zone, flicker_picture(128, 96, i, 32, 32, 32), i / 25.0);
        ASSERT_EQ(answer.boxes.empty(), i < 50) << i;
    }
}

TEST_F(watched_zone, needs_50_pictures_again_after_a_gap_and_after_a_restart) {
    zone_watcher zone(m_whole, {});
    ASSERT_EQ(first_report(zone, 0, 60), 50);
    ASSERT_EQ(first_report(zone, 200, 60), 250) << "6 seconds were missing";
    ASSERT_EQ(first_report(zone, 255, 60), 255) << "a short hiccup changes nothing";
    zone.restart();
    ASSERT_EQ(first_report(zone, 260, 60), 310);
}

TEST_F(watched_zone, opens_one_channel_a_tile_and_a_second_when_evidence_ages) {
    {
        watch_settings settings;
        settings.tiles.columns = 3;
        settings.max_age = 10;
        zone_watcher zone(m_whole, settings);
        EXPECT_EQ(open_channels(), 0) << "none before the first picture";
        look(zone, still_picture(320, 240), 0);
        EXPECT_EQ(open_channels(), 3);
        for (int i = 1; i <= 40; ++i) {
            look(zone, still_picture(320, 240), i);
            EXPECT_LE(open_channels(), 6);
        }
    }
    EXPECT_EQ(open_channels(), 0);
}

TEST_F(watched_zone, takes_pictures_that_own_no_memory) {
    zone_watcher zone({{160, 120, 160, 120}}, {});
    std::optional<int> reported;
    for (int i = 0; i < 60 && !reported; ++i) {
        const frame_ptr owner = flicker_picture(320, 240, i, 240, 180, 48);
        AVFrame* const bare = av_frame_alloc();
        const frame_ptr keeper(bare);
        bare->format = owner->format;
        bare->width = owner->width;
        bare->height = owner->height;
        bare->color_range = owner->color_range;
        bare->colorspace = owner->colorspace;
        for (int plane = 0; plane < 3; ++plane) {
            bare->data[plane] = owner->data[plane];
            bare->linesize[plane] = owner->linesize[plane];
        }
        if (!look(zone, keeper, i / 25.0).boxes.empty()) reported = i;
    }
    EXPECT_EQ(reported, 50);
}

}  // namespace
