// orva-fire as a process when what it needs goes away: the disk is full, the folder is removed, the reader leaves, the
// camera is switched off, the process is killed. It says what went wrong, and what it wrote up to there can be read.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tests/apps/example_clips.h"
#include "tests/apps/fake_camera.h"
#include "tests/apps/pictures.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
namespace fs = std::filesystem;

program_result orva_fire_on(std::vector<std::string> words, const program_setting& setting = {}) {
    words.insert(words.begin(), {ORVA_FIRE_PROGRAM, "detect"});
    return run_program(words, setting);
}

// A square patch of fire colour whose size changes from picture to picture, gone after `burning` pictures. The ground
// changes a little everywhere, so that a video of it takes some room.
std::string uneasy_clip(const temporary_folder& folder, const std::string& name, int pictures, int burning = 1 << 30) {
    clip_recipe recipe;
    recipe.path = folder.file(name);
    recipe.codec = "libx264";
    recipe.times = steady(pictures, 25);
    recipe.paint = [burning](int index, AVFrame& picture) {
        const double grey = 30 + index % 2 * 4;
        paint(picture, 0, 0, 320, 240, {grey, grey, grey});
        for (int i = 0; i < 12; ++i) paint(picture, (i * 52 + index * 4) % 300, i * 20, 16, 12, {60, 60, 60});
        if (index < burning) paint_patch(index, picture);
    };
    make_clip(recipe);
    return recipe.path;
}

// The lines of a file, each of which must be whole and JSON.
std::vector<nlohmann::json> whole_lines(const std::string& path) {
    const std::string text = read_file(path);
    EXPECT_TRUE(text.empty() || text.back() == '\n') << "the last line is torn: " << text;
    return json_lines(text);
}

// --- a full disk -----------------------------------------------------------------------------------------------------

// A file system of a few pages in memory, if the process may mount one.
class small_disk {
public:
    small_disk(const std::string& path, int kilobytes) : m_path(path) {
        fs::create_directory(path);
        const std::string size = "size=" + std::to_string(kilobytes) + "k";
        m_mounted = mount("none", path.c_str(), "tmpfs", 0, size.c_str()) == 0;
        if (!m_mounted) m_reason = std::strerror(errno);
    }
    ~small_disk() {
        if (m_mounted) umount2(m_path.c_str(), MNT_DETACH);
    }
    small_disk(const small_disk&) = delete;
    small_disk& operator=(const small_disk&) = delete;

    bool mounted() const { return m_mounted; }
    const std::string& reason() const { return m_reason; }

private:
    const std::string m_path;
    bool m_mounted = false;
    std::string m_reason;
};

struct disk_row : support::named_row {
    int kilobytes;
    std::vector<std::string> words;  // "@" stands for the small disk
    const char* fills;               // the file that does not fit
};

class full_disk : public testing::TestWithParam<disk_row> {};

TEST_P(full_disk, ends_the_run_with_3_and_leaves_what_can_be_read) {
    const temporary_folder folder;
    const std::string clip = uneasy_clip(folder, "a.mp4", 600);
    const std::string place = folder.file("disk");
    const small_disk disk(place, GetParam().kilobytes);
    if (!disk.mounted()) GTEST_SKIP() << "no small disk can be mounted here: " << disk.reason();
    std::vector<std::string> words = {clip, "-o", place + "/out"};
    for (const std::string& word : GetParam().words) words.push_back(word[0] == '@' ? place + word.substr(1) : word);
    const program_result result = orva_fire_on(words);
    EXPECT_EQ(result.exit_code, 3) << result.errors;
    EXPECT_TRUE(says(result, "No space left on device")) << result.errors;
    EXPECT_TRUE(says(result, GetParam().fills)) << result.errors;
    for (const char* lines : {"out/events.jsonl", "frames.jsonl"}) {
        if (fs::exists(place + "/" + lines)) (void)whole_lines(place + "/" + lines);
    }
    if (fs::exists(place + "/out/annotated.mp4")) {
        EXPECT_GE(pictures_in(place + "/out/annotated.mp4"), 40);
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, full_disk,
    testing::Values(disk_row{{"with the video"}, 48, {"--no-snapshots", "--no-report"}, "annotated.mp4"},
                    disk_row{{"with the second snapshot"}, 8, {"--no-video", "--no-report"}, "event-0001-largest.jpg"},
                    disk_row{{"with lines of pictures"},
                             24,
                             {"--no-video", "--no-snapshots", "--no-report", "--frames", "@/frames.jsonl"},
                             "frames.jsonl"},
                    disk_row{{"with the report"}, 12, {"--no-video", "--no-snapshots"}, "report.html"}),
    support::row_name());

// --- a folder that goes ----------------------------------------------------------------------------------------------

// A line for each picture goes through a pipe that holds 64 KiB, some hundreds of them: the program cannot get to the
// end of the fire before this side has read the line of picture 200.
TEST(orva_fire_faults, a_folder_that_is_removed_costs_the_pictures_but_no_event) {
    const temporary_folder folder;
    const std::string clip = uneasy_clip(folder, "a.mp4", 2000, 1600);
    program_setting setting;
    setting.incidents = {{"\"frame\":200,", [&] { fs::remove_all(folder.file("out")); }}};
    const program_result result = orva_fire_on({clip, "-o", folder.file("out"), "--events", folder.file("events"),
                                                "--frames", "-", "--no-video", "--no-report"},
                                               setting);
    EXPECT_EQ(result.exit_code, 3) << result.errors;
    EXPECT_TRUE(says(result, "out/event-0001-largest.jpg': No such file or directory")) << result.errors;
    EXPECT_FALSE(fs::exists(folder.file("out")));
    const auto events = whole_lines(folder.file("events"));
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events.front()["snapshot"], "event-0001-start.jpg");
    EXPECT_EQ(events.back()["event"], "end");
    EXPECT_FALSE(events.back().contains("snapshot"));
}

TEST(orva_fire_faults, a_player_that_is_closed_ends_the_run_with_3) {
    const temporary_folder folder;
    program_setting setting;
    setting.reader_leaves_after = 4000;
    const program_result result =
        orva_fire_on({uneasy_clip(folder, "a.mp4", 2000), "-o", folder.file("out"), "--video", "-"}, setting);
    EXPECT_EQ(result.exit_code, 3) << result.errors;
    EXPECT_TRUE(says(result, "standard output")) << result.errors;
    EXPECT_TRUE(says(result, "Broken pipe")) << result.errors;
    (void)whole_lines(folder.file("out/events.jsonl"));
}

// --- a camera that goes and comes back ------------------------------------------------------------------------------

TEST(orva_fire_faults, a_camera_that_is_switched_off_and_on_is_looked_at_again) {
    const temporary_folder folder;
    fake_camera camera({uneasy_clip(folder, "a.mp4", 120), after_clip::fall_silent, "", ""});
    program_setting setting;
    setting.incidents = {{"\"event\":\"start\"", [&] { camera.switch_off(); }},
                         {"trying again", [&] { camera.switch_on(); }}};
    setting.until = "\"id\":2";
    const program_result result =
        orva_fire_on({camera.address(), "-o", folder.file("out"), "--events", "-", "--retry", "0.05"}, setting);
    EXPECT_EQ(result.exit_code, 10) << result.errors;
    std::vector<std::string> course;
    for (const auto& event : json_lines(result.output)) {
        if (event["event"] == "update" || !event.contains("id")) continue;
        course.push_back(event["event"].get<std::string>() + event["id"].dump() + event.value("reason", ""));
    }
    const std::vector<std::string> wanted = {"start1", "end1source lost", "start2", "end2input ended"};
    EXPECT_EQ(course, wanted) << result.output;
    EXPECT_GE(camera.viewers(), 2);
}

// --- a process that is killed ----------------------------------------------------------------------------------------

TEST(orva_fire_faults, a_killed_process_leaves_whole_lines_and_a_video_that_plays) {
    const temporary_folder folder;
    const std::string clip = uneasy_clip(folder, "a.mp4", 2000);
    program_setting setting;
    setting.until = "\"frame\":400,";
    setting.signal = SIGKILL;
    const program_result killed = orva_fire_on({clip, "-o", folder.file("out"), "--frames", "-"}, setting);
    EXPECT_EQ(killed.exit_code, -1) << killed.errors;
    const auto events = whole_lines(folder.file("out/events.jsonl"));
    ASSERT_GE(events.size(), 1u);
    EXPECT_EQ(events[0]["event"], "start");
    EXPECT_TRUE(fs::exists(folder.file("out/event-0001-start.jpg")));
    // A fragment of the video is 50 pictures long, and the encoder looks some dozens ahead.
    EXPECT_GE(pictures_in(folder.file("out/annotated.mp4")), 300);

    setting.until = "";
    const program_result after = orva_fire_on({uneasy_clip(folder, "b.mp4", 120), "-o", folder.file("out")});
    EXPECT_EQ(after.exit_code, 10) << after.errors;
    EXPECT_EQ(pictures_in(folder.file("out/annotated.mp4")), 120);
}

}  // namespace
