// The demo's own clip: the fire is found, where and when it burns, and not before.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"

namespace {

using namespace apps_test;
using nlohmann::json;

// The clip that scripts/demo makes, made once for all tests here.
const std::string& demo_clip() {
    static const temporary_folder folder;
    static const std::string clip = [] {
        EXPECT_EQ(run_program({FLAME_CLIP_PROGRAM, folder.file("flame.mp4")}).exit_code, 0);
        return folder.file("flame.mp4");
    }();
    return clip;
}

struct demo_run {
    temporary_folder folder;
    program_result result;
    std::vector<json> events;
    json about;                 // first line of the truth
    std::map<int, json> truth;  // box by frame

    explicit demo_run(const std::string& clip = demo_clip()) {
        result = run_program({ORVA_FIRE_PROGRAM, clip, "-o", folder.file("out")});
        events = json_lines(read_file(folder.file("out/events.jsonl")));
        const auto lines = json_lines(read_file(std::filesystem::path(clip).replace_extension(".truth.jsonl")));
        about = lines.at(0);
        for (size_t i = 1; i < lines.size(); ++i) truth[lines[i]["frame"].get<int>()] = lines[i]["boxes"].at(0);
    }
};

// One run over the clip, for all tests that only look at its results.
const demo_run& the_run() {
    static const demo_run run;
    return run;
}

// The part of box a that lies in box b.
double share_inside(const json& a, const json& b) {
    const auto overlap = [&](const char* at, const char* length) {
        const int from = std::max(a[at].get<int>(), b[at].get<int>());
        const int to = std::min(a[at].get<int>() + a[length].get<int>(), b[at].get<int>() + b[length].get<int>());
        return std::max(0, to - from);
    };
    return 1.0 * overlap("x", "width") * overlap("y", "height") / (a["width"].get<int>() * a["height"].get<int>());
}

TEST(demo_clip, is_reported_soon_after_the_onset_and_to_the_end) {
    const demo_run& run = the_run();
    EXPECT_EQ(run.result.exit_code, 10) << run.result.errors;
    ASSERT_FALSE(run.events.empty());
    const double onset = run.about["onset"];
    EXPECT_GT(run.events.front()["seconds"], onset) << "nothing before the fire";
    EXPECT_LT(run.events.front()["seconds"], onset + 4);
    EXPECT_EQ(run.events.back()["reason"], "input ended");
}

TEST(demo_clip, has_boxes_where_it_burns) {
    const demo_run& run = the_run();
    ASSERT_FALSE(run.events.empty());
    for (const json& event : run.events) {
        for (const json& box : event["boxes"]) {
            ASSERT_TRUE(run.truth.count(event["frame"].get<int>())) << event;
            // The flame flickers; a reported box is its mean over two seconds.
            EXPECT_GT(share_inside(box, run.truth.at(event["frame"].get<int>())), 0.3) << event;
        }
    }
}

TEST(demo_clip, is_annotated_where_it_burns) {
    const demo_run& run = the_run();
    orva_fire::video_source plain(demo_clip()), annotated(run.folder.file("out/annotated.mp4"));
    const int first = run.events.at(0)["frame"];
    const json box = run.events.at(0)["boxes"].at(0);
    orva_fire::source_picture a, b;
    int count = 0;
    const auto difference_at = [&](int x, int y) {
        return std::abs(a.frame->data[0][y * a.frame->linesize[0] + x] -
                        b.frame->data[0][y * b.frame->linesize[0] + x]);
    };
    while (plain.next(a)) {
        ASSERT_TRUE(annotated.next(b));
        EXPECT_NEAR(a.seconds, b.seconds, 0.001);
        if (a.index == first) {
            // A dark edge runs directly around the box and a red one around that; what lies there may be as dark as
            // the one or as bright as the other, but not both.
            int changed = 0;
            for (int y = box["y"]; y < box["y"].get<int>() + box["height"].get<int>(); ++y) {
                const int left = box["x"].get<int>() / 2 * 2;
                changed += difference_at(left - 1, y) > 8 || difference_at(left - 3, y) > 8;
            }
            EXPECT_GT(changed, box["height"].get<int>() / 2);
        }
        ++count;
    }
    EXPECT_EQ(count, 350);
    EXPECT_FALSE(annotated.next(b));
}

TEST(demo_clip, gives_the_same_events_every_time) {
    EXPECT_EQ(demo_run().events, the_run().events);
}

TEST(demo_clip, without_its_flame_is_not_reported) {
    const temporary_folder folder;
    ASSERT_EQ(run_program({FLAME_CLIP_PROGRAM, folder.file("calm.mp4"), "--no-flame"}).exit_code, 0);
    const demo_run run(folder.file("calm.mp4"));
    EXPECT_EQ(run.result.exit_code, 0) << run.result.errors;
    EXPECT_TRUE(run.events.empty());
    EXPECT_TRUE(run.truth.empty());
    EXPECT_TRUE(run.about["onset"].is_null());
}

TEST(demo_clip, is_found_in_a_region_at_full_resolution) {
    const temporary_folder folder;
    const program_result result = run_program(
        {ORVA_FIRE_PROGRAM, demo_clip(), "-o", folder.file("out"), "--events", "-", "--region", "60%,40%,30%,50%"});
    EXPECT_EQ(result.exit_code, 10) << result.errors;
    for (const json& event : json_lines(result.output)) {
        EXPECT_EQ(event["zone"], "region 1");
        for (const json& box : event["boxes"]) {
            EXPECT_GE(box["x"], 384);
            EXPECT_LE(box["x"].get<int>() + box["width"].get<int>(), 576);
        }
    }
}

}  // namespace
