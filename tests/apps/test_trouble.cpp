// Pictures in which nothing can be seen, when that becomes trouble, and when it is over.
#include <gtest/gtest.h>

#include <string>

#include "apps/orva_fire/trouble.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using apps_test::colour;
using apps_test::flat_picture;
using support::row_name;

// --- what a picture looks like ---------------------------------------------------------------------------------------

struct look_row : support::named_row {
    AVPixelFormat format;
    colour ground;
    AVColorRange range;
    double luma;    // full range
    double chroma;  // distance from grey
};

class look_of : public testing::TestWithParam<look_row> {};

TEST_P(look_of, is_that_of_its_colour) {
    const look_row& row = GetParam();
    picture_gauge gauge;
    const picture_look look =
        gauge.measure(*flat_picture(row.format, 640, 360, row.ground, row.range, AVCOL_SPC_SMPTE170M));
    EXPECT_NEAR(look.bright, row.luma, 1.01);
    EXPECT_NEAR(look.colour, row.chroma, 1.5);
    EXPECT_EQ(look.clipped, row.luma >= 252 ? 1 : 0);
}

// Pure red in BT.601: luma 0.299 * 255 = 76, U 128 - 0.1687 * 255 = 85, V 255, distance hypot(43, 127) = 134.
INSTANTIATE_TEST_SUITE_P(
    table, look_of,
    testing::Values(look_row{{"grey"}, AV_PIX_FMT_YUV420P, {100, 100, 100}, AVCOL_RANGE_MPEG, 100, 0},
                    look_row{{"black in limited range"}, AV_PIX_FMT_YUV420P, {0, 0, 0}, AVCOL_RANGE_MPEG, 0, 0},
                    look_row{{"black in full range"}, AV_PIX_FMT_YUV420P, {0, 0, 0}, AVCOL_RANGE_JPEG, 0, 0},
                    look_row{{"white in limited range"}, AV_PIX_FMT_YUV420P, {255, 255, 255}, AVCOL_RANGE_MPEG, 255, 0},
                    look_row{{"red"}, AV_PIX_FMT_YUV420P, {255, 0, 0}, AVCOL_RANGE_MPEG, 76, 134},
                    look_row{{"red as RGB"}, AV_PIX_FMT_RGB24, {255, 0, 0}, AVCOL_RANGE_UNSPECIFIED, 76, 134},
                    look_row{{"red in ten bits"}, AV_PIX_FMT_YUV420P10LE, {255, 0, 0}, AVCOL_RANGE_MPEG, 76, 134},
                    look_row{{"a picture of one plane"}, AV_PIX_FMT_GRAY8, {100, 100, 100}, AVCOL_RANGE_JPEG, 100, 0}),
    row_name());

// A coloured patch of 2 % of the picture is seen, one of 0.4 % is not: 99 of 100 points count.
TEST(look, needs_more_than_one_point_in_a_hundred) {
    for (const int side : {90, 30}) {
        const frame_ptr picture =
            flat_picture(AV_PIX_FMT_YUV420P, 640, 360, {20, 20, 20}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
        apps_test::paint(*picture, 100, 100, side, side, {255, 0, 0});
        picture_gauge gauge;
        const picture_look look = gauge.measure(*picture);
        EXPECT_EQ(look.colour > 100, side == 90) << side;
        EXPECT_EQ(look.bright > 70, side == 90) << side;
    }
}

// --- the switch ------------------------------------------------------------------------------------------------------

TEST(slow_switch, waits_for_its_onset_and_its_relief) {
    slow_switch button(10, 5);
    for (int t = 100; t < 110; ++t) {
        button.observe(true, t);
        EXPECT_FALSE(button.raised()) << t;
    }
    button.observe(true, 110);
    EXPECT_TRUE(button.raised());
    EXPECT_EQ(button.since(), 100);
    for (int t = 120; t < 125; ++t) {
        button.observe(false, t);
        EXPECT_TRUE(button.raised()) << t;
    }
    button.observe(false, 125);
    EXPECT_FALSE(button.raised());
}

TEST(slow_switch, starts_counting_again_after_each_break) {
    slow_switch button(10, 5);
    button.observe(true, 0);
    button.observe(false, 9);
    button.observe(true, 10);
    button.observe(true, 19);
    EXPECT_FALSE(button.raised());
    button.observe(true, 20);
    EXPECT_TRUE(button.raised());
    EXPECT_EQ(button.since(), 10);
    button.observe(false, 21);
    button.observe(true, 25);
    button.observe(false, 26);
    button.observe(false, 30);
    EXPECT_TRUE(button.raised());
    button.observe(false, 31);
    EXPECT_FALSE(button.raised());
}

// --- trouble ---------------------------------------------------------------------------------------------------------

const colour k_scene{120, 90, 60}, k_grey_scene{90, 90, 90};

class troubled : public testing::Test {
protected:
    static frame_ptr picture_of(const colour& c) {
        return flat_picture(AV_PIX_FMT_YUV420P, 64, 36, c, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    }

    // Passes pictures of one colour from `from` up to but not including `to`.
    void show(const colour& c, double from, double to, double rate = 10, bool repeated = false) {
        const frame_ptr picture = picture_of(c);
        const int count = static_cast<int>((to - from) * rate + 0.5);
        for (int i = 0; i < count; ++i) note(m_watcher.observe(*picture, from + i / rate, repeated));
    }

    void silence(double from, double to) {
        for (double t = from; t < to; ++t) note(m_watcher.no_picture(t));
    }

    void note(const std::vector<trouble_event>& events) {
        for (const trouble_event& event : events) {
            char text[80];
            std::snprintf(text, sizeof text, "%s%s%s@%.1f since %.1f", m_said.empty() ? "" : ", ",
                          event.started ? "+" : "-", trouble_name(event.reason), event.seconds, event.since);
            m_said += text;
        }
    }

    trouble_watcher m_watcher;
    std::string m_said;  // "+dark@12.0 since 2.0, -dark@30.0 since 2.0"
};

TEST_F(troubled, by_nothing_in_a_normal_scene) {
    show(k_scene, 0, 60, 5);
    EXPECT_EQ(m_said, "");
    EXPECT_EQ(m_watcher.current(), std::nullopt);
}

TEST_F(troubled, by_a_picture_without_colour) {
    show(k_scene, 0, 20);
    show(k_grey_scene, 20, 40);
    EXPECT_EQ(m_said, "+no_colour@30.0 since 20.0");
    EXPECT_EQ(m_watcher.current(), trouble_reason::no_colour);
    show(k_scene, 40, 60);
    EXPECT_EQ(m_said, "+no_colour@30.0 since 20.0, -no_colour@50.0 since 20.0");
}

TEST_F(troubled, by_darkness_which_has_no_colour_either) {
    show({0, 0, 0}, 0, 30);
    EXPECT_EQ(m_said, "+dark@10.0 since 0.0");
    show(k_scene, 30, 60);
    EXPECT_EQ(m_said,
              "+dark@10.0 since 0.0, -dark@35.0 since 0.0, +no_colour@35.0 since 0.0, -no_colour@40.0 since 0.0");
}

TEST_F(troubled, by_a_washed_out_picture) {
    show(k_scene, 0, 10);
    show({255, 255, 255}, 10, 30);
    EXPECT_EQ(m_said, "+washed_out@20.0 since 10.0");
}

TEST_F(troubled, not_by_half_a_white_picture) {
    const frame_ptr picture = picture_of({255, 255, 255});
    apps_test::paint(*picture, 0, 0, 32, 36, k_scene);
    for (int i = 0; i < 300; ++i) note(m_watcher.observe(*picture, i / 10.0, false));
    EXPECT_EQ(m_said, "");
}

// Between the two levels of each measure the state stays what it is.
TEST_F(troubled, until_it_is_clearly_better) {
    show({30, 24, 20}, 0, 30);
    EXPECT_EQ(m_said, "") << "luma 25 is not dark yet";
    show({10, 8, 6}, 30, 50);
    EXPECT_EQ(m_said, "+dark@40.0 since 30.0");
    show({34, 28, 20}, 50, 80);
    EXPECT_EQ(m_said, "+dark@40.0 since 30.0") << "luma 29 is still dark";
    show({60, 44, 30}, 80, 90);
    EXPECT_EQ(m_said, "+dark@40.0 since 30.0, -dark@85.0 since 30.0");
}

TEST_F(troubled, by_a_frozen_picture) {
    show(k_scene, 0, 10);
    show(k_scene, 10, 40, 10, true);
    EXPECT_EQ(m_said, "") << "30 seconds of repeats are not over";
    show(k_scene, 40, 41, 10, true);
    EXPECT_EQ(m_said, "+frozen@40.0 since 10.0");
    show(k_scene, 41, 45);
    EXPECT_EQ(m_said, "+frozen@40.0 since 10.0, -frozen@43.0 since 10.0");
}

TEST_F(troubled, not_by_a_still_scene_in_which_a_new_picture_comes_now_and_then) {
    for (int i = 0; i < 20; ++i) {
        show(k_scene, i * 10, i * 10 + 9.5, 10, true);
        show(k_scene, i * 10 + 9.5, i * 10 + 10, 10, false);
    }
    EXPECT_EQ(m_said, "");
}

// 3 pictures a second are fewer than 40 in 10 seconds; the rate is known after 10 seconds and must stay for 5.
TEST_F(troubled, by_too_few_pictures) {
    show(k_scene, 0, 20, 3);
    EXPECT_EQ(m_said, "+too_slow@15.0 since 10.0");
    show(k_scene, 20, 40, 10);
    EXPECT_EQ(m_said.substr(0, 38), "+too_slow@15.0 since 10.0, -too_slow@2") << m_said;
    EXPECT_EQ(m_watcher.current(), std::nullopt);
}

TEST_F(troubled, not_by_four_pictures_a_second) {
    show(k_scene, 0, 60, 4.05);
    EXPECT_EQ(m_said, "");
}

TEST_F(troubled, by_a_silent_source) {
    show(k_scene, 0, 10);
    silence(10, 19);
    EXPECT_EQ(m_said, "");
    silence(19, 40);
    EXPECT_EQ(m_said, "+absent@20.0 since 9.9");
    show(k_scene, 40, 60);
    EXPECT_EQ(m_said, "+absent@20.0 since 9.9, -absent@42.0 since 9.9");
}

TEST_F(troubled, by_a_source_that_never_gave_a_picture) {
    silence(100, 120);
    EXPECT_EQ(m_said, "+absent@110.0 since 100.0");
}

TEST_F(troubled, by_a_silence_in_the_times_of_a_file) {
    show(k_scene, 0, 10);
    show(k_scene, 100, 110);
    EXPECT_EQ(m_said, "+absent@100.0 since 9.9, -absent@102.0 since 9.9");
}

TEST_F(troubled, not_by_the_rate_of_the_time_before_a_silence) {
    show(k_scene, 0, 10, 5);
    show(k_scene, 100, 130, 5);
    EXPECT_EQ(m_said, "+absent@100.0 since 9.8, -absent@102.0 since 9.8");
}

TEST_F(troubled, by_the_worst_of_several_reasons) {
    show({0, 0, 0}, 0, 20);
    show({0, 0, 0}, 20, 60, 10, true);
    EXPECT_EQ(m_said, "+dark@10.0 since 0.0, -dark@50.0 since 0.0, +frozen@50.0 since 20.0");
}

TEST(trouble_texts, say_something_for_each_reason) {
    for (int i = 0; i < k_trouble_reasons; ++i) {
        EXPECT_GT(std::string(trouble_name(static_cast<trouble_reason>(i))).size(), 3u);
        EXPECT_GT(std::string(trouble_sentence(static_cast<trouble_reason>(i))).size(), 20u);
    }
}

}  // namespace
