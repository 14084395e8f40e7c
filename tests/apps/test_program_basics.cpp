// orva-fire as a process: every exit code, every option, and a clean standard output, on small clips.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/example_clips.h"
#include "tests/apps/pictures.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using support::row_name;
namespace fs = std::filesystem;

program_result orva_fire_on(std::vector<std::string> words, const program_setting& setting = {}) {
    words.insert(words.begin(), ORVA_FIRE_PROGRAM);
    return run_program(words, setting);
}

// Still grey pictures with a slow square, in which nothing burns.
std::string calm_clip(const temporary_folder& folder, int pictures = 12) {
    clip_recipe recipe;
    recipe.path = folder.file("calm.mkv");
    recipe.width = 160;
    recipe.height = 120;
    recipe.times = steady(pictures, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 160, 120, {90, 90, 90});
        paint(picture, 2 * (index % 50), 40, 20, 20, {60, 60, 200});
    };
    make_clip(recipe);
    return recipe.path;
}

// A patch that keeps its size: refused, with a line of the library about its flicker in each of the last 29 pictures.
std::string steady_clip(const temporary_folder& folder) {
    clip_recipe recipe;
    recipe.path = folder.file("steady.mkv");
    recipe.times = steady(80, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 320, 240, {30, 30, 30});
        paint(picture, 180 + 2 * (index % 2), 100, 40, 40, k_flame);
    };
    make_clip(recipe);
    return recipe.path;
}

// --- exit codes ------------------------------------------------------------------------------------------------------

TEST(orva_fire, ends_with_0_when_nothing_is_reported) {
    const temporary_folder folder;
    const program_result result = orva_fire_on({calm_clip(folder), "-o", folder.file("out")});
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(says(result, "events    none"));
    EXPECT_EQ(read_file(folder.file("out/events.jsonl")), "");
    orva_fire::video_source video(folder.file("out/annotated.mp4"));
    orva_fire::source_picture picture;
    int count = 0;
    while (video.next(picture)) ++count;
    EXPECT_EQ(count, 12);
}

TEST(orva_fire, ends_with_10_when_fire_is_reported) {
    const temporary_folder folder;
    const program_result result = orva_fire_on({burning_clip(folder), "-o", folder.file("out")});
    EXPECT_EQ(result.exit_code, 10) << result.errors;
    EXPECT_EQ(result.output, "");
    const auto events = json_lines(read_file(folder.file("out/events.jsonl")));
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events.front()["event"], "start");
    EXPECT_EQ(events.front()["snapshot"], "event-0001-start.jpg");
    EXPECT_EQ(events.back()["event"], "end");
    EXPECT_EQ(events.back()["reason"], "input ended");
    for (const auto& event : events) {
        EXPECT_EQ(event["schema"], 1);
        EXPECT_EQ(event["zone"], "picture");
        const auto& box = event["boxes"].at(0);
        EXPECT_LT(box["x"], 200);
        EXPECT_GT(box["x"].get<int>() + box["width"].get<int>(), 200);
    }
    EXPECT_TRUE(fs::exists(folder.file("out/event-0001-start.jpg")));
    EXPECT_TRUE(fs::exists(folder.file("out/event-0001-largest.jpg")));
}

struct error_row : support::named_row {
    std::vector<std::string> words;  // "@" stands for the folder with the clips
    int exit_code;
    const char* said;
};

class failing : public testing::TestWithParam<error_row> {};

TEST_P(failing, ends_with_its_code_and_says_why) {
    const temporary_folder folder;
    (void)calm_clip(folder);
    write_file(folder.file("empty.mp4"), "");
    write_file(folder.file("text.mp4"), "no video at all\n");
    fs::create_directory(folder.file("nothing"));
    std::vector<std::string> words = GetParam().words;
    for (std::string& word : words) {
        if (word[0] == '@') word = folder.path() + word.substr(1);
    }
    program_setting setting;
    setting.folder = folder.path();
    const program_result result = orva_fire_on(words, setting);
    EXPECT_EQ(result.exit_code, GetParam().exit_code) << result.errors;
    EXPECT_TRUE(says(result, GetParam().said)) << result.errors;
    EXPECT_TRUE(says(result, "orva-fire: ")) << result.errors;
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(
    table, failing,
    testing::Values(
        error_row{{"no video"}, {"-o", "out"}, 2, "VIDEO"},
        error_row{{"an unknown option"}, {"@/calm.mkv", "--nonsense"}, 2, "--nonsense"},
        error_row{{"grade 101"}, {"@/calm.mkv", "--grade", "101"}, 2, "101"},
        error_row{{"a region that is no region"}, {"@/calm.mkv", "--region", "1,2,3"}, 2, "X,Y,WIDTH,HEIGHT"},
        error_row{{"a region beyond the picture"}, {"@/calm.mkv", "--region", "100,0,100,50"}, 2, "reaches beyond"},
        error_row{{"a region that is too small"}, {"@/calm.mkv", "--region", "0,0,10,50"}, 2, "at least 16"},
        error_row{{"results over the video"}, {"@/calm.mkv", "--events", "@/./calm.mkv"}, 2, "the video itself"},
        error_row{{"a log over the video"}, {"@/calm.mkv", "--library-log", "calm.mkv"}, 2, "the video itself"},
        error_row{{"a missing video"}, {"@/missing.mp4"}, 3, "does not exist"},
        error_row{{"a folder without videos"}, {"@/nothing"}, 3, "holds no videos"},
        error_row{{"an empty video"}, {"@/empty.mp4"}, 3, "is empty"},
        error_row{{"a text for a video"}, {"@/text.mp4"}, 3, "text.mp4"},
        error_row{{"a folder that cannot be made"}, {"@/calm.mkv", "-o", "@/text.mp4/out"}, 3, "text.mp4/out"},
        error_row{{"a file in place of the folder"}, {"@/calm.mkv", "-o", "@/text.mp4"}, 3, "text.mp4"},
        error_row{{"a log that cannot be made"}, {"@/calm.mkv", "--library-log", "@/no/log"}, 3, "no/log"},
        error_row{{"events that cannot be made"}, {"@/calm.mkv", "--events", "@/no/events"}, 3, "no/events"}),
    row_name());

TEST(orva_fire, ends_with_3_when_the_disk_is_full) {
    const temporary_folder folder;
    const program_result result =
        orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--events", "/dev/full"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(says(result, "/dev/full")) << result.errors;
}

TEST(orva_fire, leaves_no_folder_behind_for_a_video_that_is_none) {
    const temporary_folder folder;
    write_file(folder.file("text.mp4"), "no video at all\n");
    EXPECT_EQ(orva_fire_on({folder.file("text.mp4"), "-o", folder.file("out")}).exit_code, 3);
    EXPECT_FALSE(fs::exists(folder.file("out")));
}

// --- broken files ----------------------------------------------------------------------------------------------------

TEST(orva_fire, reports_what_a_cut_file_holds_and_ends_with_3) {
    const temporary_folder folder;
    const std::string clip = burning_clip(folder, "burning.mkv", 120);
    const std::string bytes = read_file(clip);
    write_file(clip, bytes.substr(0, bytes.size() * 3 / 5));
    const program_result result = orva_fire_on({clip, "-o", folder.file("out")});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(says(result, "cut short")) << result.errors;
    EXPECT_TRUE(says(result, "what was found up to there is written")) << result.errors;
    const auto events = json_lines(read_file(folder.file("out/events.jsonl")));
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.front()["event"], "start");
    EXPECT_EQ(events.back()["event"], "end");
    orva_fire::video_source video(folder.file("out/annotated.mp4"));
    orva_fire::source_picture picture;
    EXPECT_TRUE(video.next(picture));
}

TEST(orva_fire, reports_what_a_damaged_file_holds_and_ends_with_3) {
    const temporary_folder folder;
    const std::string clip = burning_clip(folder, "burning.mkv", 120);
    std::string bytes = read_file(clip);
    // Far behind the first report, inside coded pictures, which carry check sums.
    for (size_t at = bytes.size() * 7 / 10; at < bytes.size() * 8 / 10; at += 97)
        bytes[at] = static_cast<char>(~bytes[at]);
    write_file(clip, bytes);
    const program_result result = orva_fire_on({clip, "-o", folder.file("out")});
    EXPECT_EQ(result.exit_code, 3) << result.errors;
    EXPECT_TRUE(says(result, clip)) << result.errors;
    ASSERT_FALSE(json_lines(read_file(folder.file("out/events.jsonl"))).empty());
}

// --- options ---------------------------------------------------------------------------------------------------------

TEST(orva_fire, writes_into_orva_fire_out_by_default) {
    const temporary_folder folder;
    (void)calm_clip(folder);
    program_setting setting;
    setting.folder = folder.path();
    EXPECT_EQ(orva_fire_on({"calm.mkv"}, setting).exit_code, 0);
    EXPECT_TRUE(fs::exists(folder.file("orva-fire-out/annotated.mp4")));
    EXPECT_TRUE(fs::exists(folder.file("orva-fire-out/events.jsonl")));
}

TEST(orva_fire, runs_twice_into_the_same_folder) {
    const temporary_folder folder;
    const std::string clip = burning_clip(folder);
    EXPECT_EQ(orva_fire_on({clip, "-o", folder.file("out")}).exit_code, 10);
    const std::string first = read_file(folder.file("out/events.jsonl"));
    EXPECT_EQ(orva_fire_on({clip, "-o", folder.file("out")}).exit_code, 10);
    EXPECT_EQ(read_file(folder.file("out/events.jsonl")), first);
    EXPECT_EQ(orva_fire_on({calm_clip(folder), "-o", folder.file("out")}).exit_code, 0);
    EXPECT_FALSE(fs::exists(folder.file("out/event-0001-start.jpg"))) << "a picture of the earlier run";
}

TEST(orva_fire, gives_clean_json_lines_on_standard_output) {
    const temporary_folder folder;
    const program_result result = orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--events", "-"});
    EXPECT_EQ(result.exit_code, 10);
    const auto events = json_lines(result.output);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events.front()["event"], "start");
    EXPECT_EQ(events.back()["event"], "end");
    EXPECT_FALSE(fs::exists(folder.file("out/events.jsonl")));
}

TEST(orva_fire, writes_events_into_a_file_of_choice) {
    const temporary_folder folder;
    EXPECT_EQ(orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--events", folder.file("e")}).exit_code,
              10);
    EXPECT_GE(json_lines(read_file(folder.file("e"))).size(), 2u);
}

TEST(orva_fire, ends_with_3_when_nobody_reads_its_events) {
    const temporary_folder folder;
    program_setting setting;
    setting.reader_goes_away = true;
    const program_result result =
        orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--events", "-"}, setting);
    EXPECT_EQ(result.exit_code, 3) << result.errors;
    EXPECT_TRUE(says(result, "standard output"));
}

TEST(orva_fire, works_without_standard_output_unless_events_go_there) {
    const temporary_folder folder;
    program_setting setting;
    setting.closed_output = true;
    const std::string clip = burning_clip(folder);
    EXPECT_EQ(orva_fire_on({clip, "-o", folder.file("out")}, setting).exit_code, 10);
    EXPECT_GE(json_lines(read_file(folder.file("out/events.jsonl"))).size(), 2u);
    const program_result refused = orva_fire_on({clip, "-o", folder.file("out"), "--events", "-"}, setting);
    EXPECT_EQ(refused.exit_code, 3);
    EXPECT_TRUE(says(refused, "standard output is closed")) << refused.errors;
}

TEST(orva_fire, keeps_the_librarys_lines_in_a_file) {
    const temporary_folder folder;
    const program_result result = orva_fire_on(
        {steady_clip(folder), "-o", folder.file("out"), "--events", "-", "--library-log", folder.file("log")});
    EXPECT_EQ(result.output, "");
    EXPECT_NE(read_file(folder.file("log")), "");
}

TEST(orva_fire, ends_the_librarys_file_at_its_limit_while_it_runs) {
    const temporary_folder folder;
    orva_fire::detect_options options;
    options.source.text = steady_clip(folder);
    options.folder = folder.file("out");
    options.library_log = folder.file("log");
    options.library_log_limit = 60;
    EXPECT_EQ(orva_fire::run_detect(options), 0);
    const std::string log = read_file(options.library_log);
    EXPECT_NE(log.find("the log ends here"), std::string::npos) << log;
    EXPECT_LT(log.size(), 300u);
}

TEST(orva_fire, looks_only_into_its_regions) {
    const temporary_folder folder;
    const std::string clip = burning_clip(folder);  // burns around 200,120
    const program_result beside = orva_fire_on({clip, "-o", folder.file("out"), "--region", "0,0,100,240"});
    EXPECT_EQ(beside.exit_code, 0) << beside.errors;
    const program_result both = orva_fire_on(
        {clip, "-o", folder.file("out"), "--events", "-", "--region", "0,0,100,240", "--region", "40%,20%,50%,60%"});
    EXPECT_EQ(both.exit_code, 10) << both.errors;
    orva_fire::video_source video(folder.file("out/annotated.mp4"));
    orva_fire::source_picture picture;
    ASSERT_TRUE(video.next(picture));
    // The frame around the first region, grey on the dark ground: 16 + 219 * 150 / 255 = 145.
    EXPECT_NEAR(component(*picture.frame, 100, 60, 0), 145, 12);
    EXPECT_NEAR(component(*picture.frame, 90, 60, 0), 42, 12);
    for (const auto& event : json_lines(both.output)) {
        EXPECT_EQ(event["zone"], "region 2");
        const auto& box = event["boxes"].at(0);
        EXPECT_LT(box["x"], 200);
        EXPECT_GT(box["x"].get<int>() + box["width"].get<int>(), 200);
        EXPECT_LT(box["y"], 120);
        EXPECT_GT(box["y"].get<int>() + box["height"].get<int>(), 120);
    }
}

TEST(orva_fire, can_leave_out_the_annotated_video) {
    const temporary_folder folder;
    EXPECT_EQ(orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--no-video"}).exit_code, 10);
    EXPECT_FALSE(fs::exists(folder.file("out/annotated.mp4")));
    EXPECT_TRUE(fs::exists(folder.file("out/event-0001-start.jpg")));
    EXPECT_TRUE(fs::exists(folder.file("out/event-0001-largest.jpg")));
}

TEST(orva_fire, thins_out_by_time_stamps) {
    const temporary_folder folder;
    // 80 pictures in 3.2 seconds at 10 a second leave 32, too few for a report.
    const program_result result = orva_fire_on({burning_clip(folder), "-o", folder.file("out"), "--fps", "10"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(says(result, "32 frames passed, 0 repeated and 48 beyond the rate left out")) << result.errors;
}

TEST(orva_fire, leaves_out_repeats) {
    const temporary_folder folder;
    clip_recipe recipe;
    recipe.path = folder.file("repeats.mkv");
    recipe.times = steady(30, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 320, 240, {90, 90, 90});
        paint(picture, 10 * (index / 3), 40, 20, 20, k_blue);
    };
    make_clip(recipe);
    const program_result result = orva_fire_on({recipe.path, "-o", folder.file("out")});
    EXPECT_TRUE(says(result, "10 frames passed, 20 repeated and 0 beyond")) << result.errors;
}

TEST(orva_fire, grades_change_how_much_evidence_is_needed) {
    // The patch burns in 65 of 100 pictures that have moving fire colour somewhere: elsewhere in the other 35.
    const temporary_folder folder;
    clip_recipe recipe;
    recipe.path = folder.file("half.mkv");
    recipe.times = steady(200, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 320, 240, {30, 30, 30});
        const bool here = index % 20 < 14;
        const int size = 24 + 8 * (index * 7 % 5);
        paint(picture, (here ? 240 : 60) - size / 2, 120 - size / 2, size, size, k_flame);
    };
    make_clip(recipe);
    const auto code = [&](const char* grade) {
        return orva_fire_on({recipe.path, "-o", folder.file("out"), "--grade", grade, "--no-video"}).exit_code;
    };
    EXPECT_EQ(code("0"), 0);
    EXPECT_EQ(code("100"), 10);
}

TEST(orva_fire, shows_progress_on_a_terminal_only) {
    const temporary_folder folder;
    // Long enough that a line of progress is due.
    clip_recipe recipe;
    recipe.path = folder.file("long.mkv");
    recipe.width = 640;
    recipe.height = 480;
    recipe.times = steady(200, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 640, 480, {90, 90, 90});
        paint(picture, index, 40, 200, 200, k_blue);
    };
    make_clip(recipe);
    program_setting setting;
    setting.error_terminal = true;
    const program_result shown = orva_fire_on({recipe.path, "-o", folder.file("out")}, setting);
    EXPECT_TRUE(says(shown, "frames/s, 0:0")) << shown.errors;
    EXPECT_TRUE(says(shown, "] ")) << shown.errors;
    EXPECT_TRUE(says(shown, "\r")) << shown.errors;
    const program_result hidden = orva_fire_on({recipe.path, "-o", folder.file("out")});
    EXPECT_FALSE(says(hidden, "\r")) << hidden.errors;
    EXPECT_FALSE(says(hidden, " left\n")) << hidden.errors;
}

TEST(orva_fire, detect_is_the_long_form) {
    const temporary_folder folder;
    const std::string clip = burning_clip(folder);
    const program_result brief = orva_fire_on({clip, "-o", folder.file("out"), "--events", "-"});
    const program_result full = orva_fire_on({"detect", clip, "-o", folder.file("out"), "--events", "-"});
    EXPECT_EQ(full.exit_code, 10) << full.errors;
    EXPECT_EQ(full.output, brief.output);
    EXPECT_NE(orva_fire_on({"--help"}).output.find("  detect "), std::string::npos);
}

TEST(orva_fire, prints_help_and_version) {
    const program_result help = orva_fire_on({"--help"});
    EXPECT_EQ(help.exit_code, 0);
    EXPECT_NE(help.output.find("--region"), std::string::npos);
    EXPECT_EQ(help.errors, "");
    const program_result version = orva_fire_on({"--version"});
    EXPECT_EQ(version.exit_code, 0);
    EXPECT_EQ(version.output.rfind("orva-fire ", 0), 0u);
}

}  // namespace
