// tune and eval on recordings made on the spot: a patch that flickers from the second second on, and a still scene.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/eval.h"
#include "apps/orva_fire/tune.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/flicker.h"

namespace {

using namespace orva_fire;
using namespace apps_test;

const int k_first_flicker = 25;  // picture; 1 s

// 6 seconds at 25 pictures a second, 128 x 96.
void make_recording(const std::string& path, bool burning) {
    clip_recipe recipe;
    recipe.path = path;
    recipe.width = 128;
    recipe.height = 96;
    recipe.range = AVCOL_RANGE_JPEG;
    recipe.matrix = AVCOL_SPC_SMPTE170M;
    recipe.times = steady(150, 25);
    recipe.paint = [burning](int index, AVFrame& picture) {
        const frame_ptr still = still_picture(128, 96);
        av_frame_copy(&picture, still.get());
        // Something without colour moves all the time, so that no picture is a repeat.
        picture.data[0][index % 90 * picture.linesize[0] + 120] = 200;
        picture.data[0][index % 90 * picture.linesize[0] + 121] = 200;
        if (burning && index >= k_first_flicker) add_flicker(picture, index, 40, 40, 32);
    };
    make_clip(recipe);
}

class measured : public testing::Test {
protected:
    static void SetUpTestSuite() {
        m_folder = new temporary_folder;
        make_recording(m_folder->file("a fire.mkv"), true);
        make_recording(m_folder->file("b still <&\">.mkv"), false);
    }
    static void TearDownTestSuite() { delete m_folder; }

    static labelled_clip clip(const char* name, const std::vector<labelled_fire>& fires) {
        labelled_clip read;
        read.file = name;
        read.path = m_folder->file(name);
        read.fires = fires;
        return read;
    }
    static labelled_clip burning() {
        labelled_fire fire;
        fire.from = 1;
        return clip("a fire.mkv", {fire});
    }
    static labelled_clip still() { return clip("b still <&\">.mkv", {}); }

    static temporary_folder* m_folder;
    detector_session m_session;
};

temporary_folder* measured::m_folder = nullptr;

// The 51st picture with the patch is number 75, at 3 s. Half a second is covered after 13 pictures; the library looks
// again at every 7th, so pictures 75, 82 and 89 are fresh, and the last one raises the event at 3.56 s.
TEST_F(measured, program_and_bare_grades_are_scored_side_by_side) {
    evaluation_settings settings;
    settings.confirm = {0.5, 10};
    settings.watch.max_age = 30;
    settings.confirms = {0};
    settings.grades = {0, 100};
    EXPECT_EQ(evaluated_ways(settings), (std::vector<std::string>{"program", "confirm 0 s", "grade 0", "grade 100"}));
    const clip_evaluation result = evaluate_clip(burning(), settings);
    EXPECT_EQ(result.problem, "");
    ASSERT_EQ(result.scores.size(), 4u);
    EXPECT_NEAR(*result.scores[0].fires[0].found, 89 / 25.0, 1e-9);
    EXPECT_NEAR(*result.scores[1].fires[0].found, 75 / 25.0, 1e-9);
    EXPECT_NEAR(*result.scores[2].fires[0].found, 75 / 25.0, 1e-9);
    EXPECT_NEAR(*result.scores[3].fires[0].delay(), 75 / 25.0 - 1, 1e-9);
    EXPECT_EQ(result.scores[0].pictures, 150);
    EXPECT_NEAR(result.scores[0].seconds, 6, 1e-9);

    const std::vector<clip_evaluation> both{result, evaluate_clip(still(), settings)};
    EXPECT_EQ(sum_up(both, 0, true, true).found, 1);
    EXPECT_EQ(sum_up(both, 0, true, false).clips, 0) << "neither is of the tuning set";
    EXPECT_EQ(sum_up(both, 0, false, true).false_alarms, 0);

    const auto json = nlohmann::json::parse(evaluation_json(both, settings));
    EXPECT_EQ(json["schema"], 1);
    ASSERT_EQ(json["recordings"].size(), 2u);
    EXPECT_EQ(json["recordings"][1]["file"], "b still <&\">.mkv");
    EXPECT_EQ(json["recordings"][1]["results"][0]["first_report"], nullptr);
    EXPECT_EQ(json["totals"].size(), 12u) << "four ways, three sets";
    const std::string text = evaluation_text(both, settings);
    EXPECT_NE(text.find("2 recordings, 0.2 minutes"), std::string::npos) << text;
    EXPECT_NE(text.find("100 % (21 to 100)"), std::string::npos) << "Wilson's interval for 1 of 1:\n" << text;
    EXPECT_EQ(text.find("missed"), std::string::npos) << text;
}

TEST_F(measured, a_recording_that_cannot_be_read_is_named_and_does_not_count) {
    const clip_evaluation result = evaluate_clip(clip("missing.mkv", {}), {});
    EXPECT_NE(result.problem.find("missing.mkv"), std::string::npos);
    EXPECT_TRUE(result.scores.empty());
    EXPECT_EQ(sum_up({result}, 0, true, true).clips, 0);
    EXPECT_NE(evaluation_text({result}, {}).find("not read"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(evaluation_json({result}, {}))["recordings"][0]["results"].size(), 0u);
}

TEST(grade_steps, are_18_from_0_to_100) {
    const std::vector<grade_step> steps = grade_steps();
    ASSERT_EQ(steps.size(), 18u);
    EXPECT_EQ(steps.front().first, 0);
    EXPECT_EQ(steps.front().last, 1);
    EXPECT_EQ(steps.front().needed, 47);
    EXPECT_EQ(steps[12].first, 68);
    EXPECT_EQ(steps[12].last, 73);
    EXPECT_EQ(steps[12].needed, 35);
    EXPECT_EQ(steps.back().first, 98);
    EXPECT_EQ(steps.back().last, 100);
    EXPECT_EQ(steps.back().needed, 30);
}

TEST_F(measured, tune_tries_all_grades_at_once) {
    tune_options options;
    options.labels = "given";
    const std::vector<tuned_clip> results{tune_clip(burning(), options), tune_clip(still(), options)};
    ASSERT_EQ(results[0].reports.size(), 18u);
    for (const auto& step : results[0].reports) {
        ASSERT_EQ(step.size(), 1u);
        EXPECT_NEAR(step[0].from, 3, 1e-9);
        EXPECT_NEAR(step[0].to, 149 / 25.0, 1e-9);
    }
    for (const auto& step : results[1].reports) EXPECT_TRUE(step.empty());

    const std::string text = tune_text(results, true);
    EXPECT_NE(
        text.find("* 68-73      35        1              1           3.0 s       1      1           2.0 s      0"),
        std::string::npos)
        << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3 + 18 + 2);

    const std::string chart = draw_tune_chart(tune_chart_of(results, true));
    EXPECT_EQ(chart.find("<&\">"), std::string::npos) << "names are no markup";
    EXPECT_NE(chart.find("b still &lt;&amp;&quot;&gt;.mkv"), std::string::npos);
    size_t reports = 0;
    for (size_t at = 0; (at = chart.find("class=\"report\"", at)) != std::string::npos; ++at) ++reports;
    EXPECT_EQ(reports, 18u);
    EXPECT_NE(chart.find("class=\"fire\""), std::string::npos);
    EXPECT_EQ(chart.find("nan"), std::string::npos);
    EXPECT_EQ(chart.find("inf"), std::string::npos);
}

TEST(tune_chart_picture, is_drawn_of_nothing_too) {
    EXPECT_NE(draw_tune_chart({}).find("</svg>"), std::string::npos);
}

TEST_F(measured, all_grades_need_many_channels) {
    watch_settings settings;
    settings.tiles.columns = 7;
    EXPECT_NO_THROW(grade_sweep({640, 360}, settings)) << "7 tiles x 18 are 126";
    settings.max_age = 30;
    EXPECT_THROW(grade_sweep({640, 360}, settings), usage_error);
    settings.tiles.columns = 3;
    EXPECT_NO_THROW(grade_sweep({640, 360}, settings));
}

}  // namespace
