// The synthetic clip: repeatable, still where it should be, and burning where it says.
#include <gtest/gtest.h>

#include "apps/flame_clip/clip.h"
#include "apps/flame_clip/noise.h"
#include "apps/flame_clip/scene.h"

namespace {

using namespace flame_clip;

scene_settings small(uint32_t seed) {
    scene_settings settings;
    settings.seed = seed;
    settings.width = 160;
    settings.height = 120;
    settings.onset = 1;
    return settings;
}

bool equal(const canvas& a, const canvas& b) {
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.at(x, y).r != b.at(x, y).r || a.at(x, y).g != b.at(x, y).g || a.at(x, y).b != b.at(x, y).b)
                return false;
        }
    }
    return true;
}

TEST(scene, is_the_same_for_the_same_seed_and_moment) {
    scene a(small(5)), b(small(5)), other(small(6));
    std::optional<pixel_box> truth;
    const canvas first = a.paint(2.0, 50, truth);
    (void)b.paint(0.5, 12, truth);
    EXPECT_TRUE(equal(first, b.paint(2.0, 50, truth))) << "whatever was painted before";
    EXPECT_FALSE(equal(first, other.paint(2.0, 50, truth)));
}

TEST(scene, has_a_flame_from_the_onset_on) {
    scene painter(small(7));
    std::optional<pixel_box> truth;
    for (const double before : {0.0, 0.5, 1.0}) {
        (void)painter.paint(before, 0, truth);
        EXPECT_FALSE(truth) << before;
    }
    for (int i = 0; i < 50; ++i) {
        (void)painter.paint(1.5 + i * 0.2, i, truth);
        ASSERT_TRUE(truth) << i;
        EXPECT_GE(truth->x, 0);
        EXPECT_GE(truth->y, 0);
        EXPECT_LE(truth->x + truth->width, 160);
        EXPECT_LE(truth->y + truth->height, 120);
    }
}

TEST(scene, has_no_flame_if_none_is_wanted) {
    scene_settings settings = small(7);
    settings.with_flame = false;
    scene painter(settings);
    std::optional<pixel_box> truth;
    for (int i = 0; i < 10; ++i) {
        (void)painter.paint(i, i, truth);
        EXPECT_FALSE(truth);
    }
}

TEST(scene, differs_with_a_flame_inside_the_true_box_most) {
    scene_settings without = small(7);
    without.with_flame = false;
    scene burning(small(7)), calm(without);
    std::optional<pixel_box> truth, none;
    const canvas& hot = burning.paint(6.0, 150, truth);
    const canvas& cold = calm.paint(6.0, 150, none);
    ASSERT_TRUE(truth);
    float inside = 0, outside = 0;
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 160; ++x) {
            const bool in =
                x >= truth->x && x < truth->x + truth->width && y >= truth->y && y < truth->y + truth->height;
            const float change = std::fabs(hot.at(x, y).r - cold.at(x, y).r);
            float& most = in ? inside : outside;
            most = std::max(most, change);
        }
    }
    EXPECT_GT(inside, 0.6f);
    EXPECT_LT(outside, inside);
}

TEST(noise, stays_between_0_and_1_and_uses_the_range) {
    const noise source(3);
    float low = 1, high = 0;
    for (int i = 0; i < 20000; ++i) {
        const float value = source.smooth_at(static_cast<float>(i) * 0.37f, static_cast<float>(i % 91) * 0.11f);
        low = std::min(low, value);
        high = std::max(high, value);
    }
    EXPECT_GE(low, 0);
    EXPECT_LE(high, 1);
    EXPECT_LT(low, 0.05f);
    EXPECT_GT(high, 0.95f);
}

TEST(truth_name, stands_beside_the_clip) {
    EXPECT_EQ(truth_name("a/fire.mp4"), "a/fire.truth.jsonl");
    EXPECT_EQ(truth_name("fire"), "fire.truth.jsonl");
}

}  // namespace
