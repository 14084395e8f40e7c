// orva-fire batch and merge as processes: tasks that are killed, repeated and shared, and their results joined.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/apps/example_clips.h"
#include "tests/apps/pictures.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using support::row_name;
namespace fs = std::filesystem;

class batch : public testing::Test {
protected:
    batch() { fs::create_directories(m_folder.file("recordings/gate")); }

    // Dark pictures, with a patch of fire colour that changes its size if it burns.
    std::string clip(const std::string& name, int pictures, bool burning) {
        clip_recipe recipe;
        recipe.path = m_folder.file("recordings/" + name);
        recipe.width = 160;
        recipe.height = 120;
        recipe.times = steady(pictures, 25);
        recipe.paint = [burning](int index, AVFrame& picture) {
            paint(picture, 0, 0, 160, 120, {30, 30, 30});
            paint_patch(index, picture, burning ? k_flame : colour{60, 60, 60});
        };
        make_clip(recipe);
        return recipe.path;
    }

    program_result run(std::vector<std::string> words) {
        words.insert(words.begin(), ORVA_FIRE_PROGRAM);
        program_setting setting;
        setting.folder = m_folder.path();
        return run_program(words, setting);
    }

    program_result look(std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"batch", "recordings", "-o", "out", "--no-video"});
        return run(more);
    }

    std::string out(const std::string& name) const { return m_folder.file("out/" + name); }

    temporary_folder m_folder;
};

TEST_F(batch, does_what_is_not_done_and_nothing_else) {
    clip("gate/1.mkv", 5, false);
    clip("2.mkv", 5, false);
    program_result result = look();
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_TRUE(says(result, "shard 1 of 1: 2 done, 0 done before, 0 failed")) << result.errors;
    const auto first = fs::last_write_time(out("gate/1.mkv/done.json"));
    EXPECT_TRUE(fs::exists(out("gate/1.mkv/events.jsonl")));

    result = look();
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(says(result, "0 done, 2 done before, 0 failed")) << result.errors;
    EXPECT_EQ(fs::last_write_time(out("gate/1.mkv/done.json")), first);

    result = run({"batch", "--base", "recordings", "-o", "out", "--no-video", "recordings/gate/1.mkv"});
    EXPECT_TRUE(says(result, "0 done, 1 done before")) << "named by itself: " << result.errors;

    clip("gate/1.mkv", 6, false);
    result = look();
    EXPECT_TRUE(says(result, "1 done, 1 done before, 0 failed")) << "one has changed: " << result.errors;
    result = look();
    EXPECT_TRUE(says(result, "0 done, 2 done before, 0 failed")) << result.errors;

    result = look({"--grade", "84"});
    EXPECT_TRUE(says(result, "2 done, 0 done before, 0 failed")) << "one more option: " << result.errors;
    result = look({"--grade", "85"});
    EXPECT_TRUE(says(result, "2 done, 0 done before, 0 failed")) << "other options: " << result.errors;
    write_file(m_folder.file("options"), "grade = 85\nno-video = true\n");
    result = run({"batch", "recordings", "-o", "out", "--config", "options", "--on-event", "true", "--mqtt-discovery",
                  "home", "--mqtt", "mqtt://user@localhost:1"});
    EXPECT_TRUE(says(result, "0 done, 2 done before, 0 failed")) << "the same from a file: " << result.errors;
}

TEST_F(batch, tells_options_apart_by_what_a_file_of_zones_holds) {
    clip("1.mkv", 5, false);
    const auto zones = [&](const char* x) {
        write_file(m_folder.file("zones"), std::string(R"({"zones":[{"name":"z","rectangles":[{"x":)") + x +
                                               R"(,"y":0,"width":64,"height":64}]}]})");
        return look({"--zones", "zones"});
    };
    EXPECT_TRUE(says(zones("0"), "1 done, 0 done before"));
    EXPECT_TRUE(says(zones("0"), "0 done, 1 done before"));
    EXPECT_TRUE(says(zones("2"), "1 done, 0 done before"));
    write_file(m_folder.file("zones"), "{");
    EXPECT_EQ(look({"--zones", "zones"}).exit_code, 2) << "a fault in the zones is none of the recordings";
}

TEST_F(batch, tries_again_what_cannot_be_read_and_goes_on_with_the_others) {
    clip("2.mkv", 5, false);
    write_file(m_folder.file("recordings/1.mp4"), "no video at all\n");
    for (int i = 0; i < 2; ++i) {
        const program_result result = look();
        EXPECT_EQ(result.exit_code, 3);
        EXPECT_TRUE(says(result, std::to_string(i) + " done before, 1 failed")) << result.errors;
        EXPECT_TRUE(says(result, "cannot read 'recordings/1.mp4'")) << result.errors;
    }
    EXPECT_EQ(run({"batch", "recordings/none.mp4", "--base", "recordings", "-o", "out"}).exit_code, 3);
}

TEST_F(batch, goes_on_with_the_others_if_results_cannot_be_put_in_their_place) {
    clip("1.mkv", 5, false);
    clip("2.mkv", 5, false);
    fs::create_directories(m_folder.file("out"));
    write_file(out("1.mkv"), "in the way");
    const program_result result = look();
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(says(result, "'out/1.mkv' is no folder")) << result.errors;
    EXPECT_TRUE(says(result, "1 done, 0 done before, 1 failed")) << result.errors;
    EXPECT_EQ(read_file(out("1.mkv")), "in the way");
}

TEST_F(batch, takes_nothing_for_done_that_changed_while_it_was_looked_at) {
    clip("burning.mkv", 80, true);
    const std::string command = "touch -d 2001-02-03 recordings/burning.mkv";
    const program_result result = look({"--on-event", command});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(says(result, "'recordings/burning.mkv' changed while it was looked at")) << result.errors;
    EXPECT_TRUE(says(look(), "1 done, 0 done before, 0 failed"));
    EXPECT_TRUE(says(look(), "0 done, 1 done before, 0 failed"));
}

struct end_row : support::named_row {
    const char* signal;
    int exit_code;
    bool leaves_a_part;
};

class ended_in_the_middle : public batch, public testing::WithParamInterface<end_row> {};

// The program that is told of the first event ends its teller, which waits for it before it goes on to the last steps.
TEST_P(ended_in_the_middle, leaves_nothing_that_looks_done) {
    clip("burning.mkv", 80, true);
    const std::string command =
        std::string("sh -c 'mkdir told 2> /dev/null && kill -") + GetParam().signal + " $PPID; true'";
    program_result result = look({"--on-event", command});
    EXPECT_EQ(result.exit_code, GetParam().exit_code) << result.errors;
    EXPECT_FALSE(fs::exists(out("burning.mkv")));
    const bool left = !fs::is_empty(m_folder.file("out"));
    EXPECT_EQ(left, GetParam().leaves_a_part);

    result = run({"merge", "out", "--expect", "recordings"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_TRUE(says(result, left ? "a task for it was begun and has not finished" : "no task has finished for it"))
        << result.errors;

    result = look();
    EXPECT_EQ(result.exit_code, 0) << "fire is no failure: " << result.errors;
    EXPECT_TRUE(says(result, "1 done, 0 done before, 0 failed")) << result.errors;
    EXPECT_TRUE(fs::exists(out("burning.mkv/event-0001-start.jpg")));
    std::set<std::string> all;
    for (const auto& entry : fs::directory_iterator(m_folder.file("out"))) all.insert(entry.path().filename().string());
    EXPECT_EQ(all, (std::set<std::string>{"burning.mkv", "events.jsonl", "report.html"}));
    EXPECT_EQ(run({"merge", "out", "--expect", "recordings"}).exit_code, 10);
}

INSTANTIATE_TEST_SUITE_P(table, ended_in_the_middle,
                         testing::Values(end_row{{"a task that is killed"}, "KILL", -1, true},
                                         end_row{{"a task that is asked to stop"}, "TERM", 3, false}),
                         row_name());

TEST_F(batch, divides_recordings_by_their_length) {
    // 4, 3, 2 and 2 seconds: the first shard gets 4 and the second 2, the second shard 3 and the first 2.
    clip("a.mkv", 50, false);
    clip("b.mkv", 100, false);
    clip("gate/c.mkv", 50, false);
    clip("d.mkv", 75, false);
    const program_result plan = run({"batch", "recordings", "--plan", "2"});
    EXPECT_EQ(plan.exit_code, 0);
    EXPECT_EQ(plan.output,
              "2\t2.000\trecordings/a.mkv\n"
              "1\t4.000\trecordings/b.mkv\n"
              "2\t3.000\trecordings/d.mkv\n"
              "1\t2.000\trecordings/gate/c.mkv\n");
    EXPECT_FALSE(fs::exists(m_folder.file("out"))) << "a plan looks at nothing";
    EXPECT_EQ(look({"--shard", "1/2", "--fps", "1"}).exit_code, 0);
    EXPECT_FALSE(fs::exists(out("a.mkv")));
    EXPECT_TRUE(fs::exists(out("b.mkv")));
    EXPECT_FALSE(fs::exists(out("d.mkv")));
    EXPECT_TRUE(fs::exists(out("gate/c.mkv")));
    EXPECT_TRUE(says(look({"--shard", "2/2", "--fps", "1"}), "shard 2 of 2: 2 done, 0 done before"));
    const program_result none = look({"--shard", "9/9", "--fps", "1"});
    EXPECT_EQ(none.exit_code, 0) << none.errors;
    EXPECT_TRUE(says(none, "shard 9 of 9: 0 done, 0 done before")) << none.errors;
}

TEST_F(batch, is_joined_into_one_report) {
    const std::string hostile = "<b onclick=alert(1)>\"'&%41 #?.mkv";
    clip("calm.mkv", 5, false);
    clip("gate/" + hostile, 80, true);
    write_file(m_folder.file("recordings/cut.mp4"), "no video at all\n");
    ASSERT_EQ(look().exit_code, 3);
    const program_result result = run({"merge", "out", "--expect", "recordings", "-o", "joined"});
    EXPECT_EQ(result.exit_code, 3) << "one has failed";
    EXPECT_TRUE(says(result, "3 recordings, 1 with fire reported, 1 failed, 0 missing")) << result.errors;
    EXPECT_TRUE(says(result, "cut.mp4: cannot read 'recordings/cut.mp4'")) << result.errors;

    const auto events = json_lines(read_file(m_folder.file("joined/events.jsonl")));
    const auto own = json_lines(read_file(out("gate/" + hostile + "/events.jsonl")));
    ASSERT_GE(own.size(), 2u);
    ASSERT_EQ(events.size(), own.size());
    for (size_t i = 0; i < events.size(); ++i) {
        auto expected = own[i];
        expected["source"] = "gate/" + hostile;
        if (expected.contains("snapshot")) {
            expected["snapshot"] = "../out/gate/" + hostile + "/" + own[i]["snapshot"].get<std::string>();
        }
        EXPECT_EQ(events[i], expected);
    }
    const std::string page = read_file(m_folder.file("joined/report.html"));
    EXPECT_EQ(page.find("<b onclick"), std::string::npos);
    EXPECT_NE(page.find("&lt;b onclick=alert(1)&gt;"), std::string::npos);
    EXPECT_NE(page.find("<td data-l=\"state\">failed</td>"), std::string::npos);
}

struct refusal_row : support::named_row {
    std::vector<std::string> words;
    int exit_code;
    const char* said;
};

class refused : public batch, public testing::WithParamInterface<refusal_row> {};

TEST_P(refused, with_a_message) {
    fs::create_directories(m_folder.file("empty"));
    const program_result result = run(GetParam().words);
    EXPECT_EQ(result.exit_code, GetParam().exit_code);
    EXPECT_TRUE(says(result, GetParam().said)) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(
    table, refused,
    testing::Values(
        refusal_row{{"no source"}, {"batch"}, 2, "name what to look at"},
        refusal_row{{"a shard beyond the last"}, {"batch", "empty", "--shard", "3/2"}, 2, "--shard"},
        refusal_row{{"a plan of one shard"}, {"batch", "empty", "--shard", "1/2", "--plan", "2"}, 2, "--plan"},
        refusal_row{{"one file for the events of all"}, {"batch", "empty", "--events", "e"}, 2, "--events"},
        refusal_row{{"a camera"}, {"batch", "rtsp://c/main"}, 2, "no recording"},
        refusal_row{{"a folder without recordings"}, {"batch", "empty"}, 3, "no recordings"},
        refusal_row{{"a recording outside of the base"}, {"batch", "/none/a.mp4", "--base", "empty"}, 2, "--base"},
        refusal_row{{"a recording outside of the current folder"}, {"batch", "/none/a.mp4"}, 2, "--base"},
        refusal_row{{"nothing to join"}, {"merge", "empty"}, 3, "'empty' holds no results"},
        refusal_row{{"a folder that is not there"}, {"merge", "none"}, 3, "'none'"},
        refusal_row{{"several folders and no place for the whole"}, {"merge", "empty", "empty"}, 2, "--output"},
        refusal_row{{"a base for nothing"}, {"merge", "empty", "--base", "r"}, 2, "--base needs"}),
    row_name());

}  // namespace
