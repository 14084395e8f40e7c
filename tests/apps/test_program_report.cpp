// The program's report and explanations, as files of a run.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"

namespace {

using namespace apps_test;
namespace fs = std::filesystem;

// A short fire in a small picture, under a name that a page has to write out.
const std::string& clip() {
    static const temporary_folder folder;
    static const std::string path = [] {
        const std::string made = folder.file("yard <b>&'1'.mp4");
        EXPECT_EQ(
            run_program({FLAME_CLIP_PROGRAM, made, "--size", "320x180", "--seconds", "8", "--onset", "2"}).exit_code,
            0);
        return made;
    }();
    return path;
}

class a_run : public testing::Test {
protected:
    program_result run(std::vector<std::string> options, const std::string& folder = "out") {
        std::vector<std::string> command{ORVA_FIRE_PROGRAM, "detect", clip(), "-o", m_folder.file(folder)};
        command.insert(command.end(), options.begin(), options.end());
        return run_program(command);
    }
    std::string text(const std::string& name) const { return read_file(m_folder.file(name)); }
    bool has(const std::string& name) const { return fs::exists(m_folder.file(name)); }

    const temporary_folder m_folder;
};

TEST_F(a_run, leaves_a_report_that_leads_into_its_video) {
    const auto result = run({"--grade", "90"});
    ASSERT_EQ(result.exit_code, 10) << result.errors;
    const std::string page = text("out/report.html");
    EXPECT_NE(page.find("yard &lt;b&gt;&amp;&#39;1&#39;"), std::string::npos);
    EXPECT_NE(page.find("Fire was reported once"), std::string::npos);
    EXPECT_NE(page.find("href=\"annotated.mp4#t="), std::string::npos);
    EXPECT_NE(page.find("alt=\"event 1, start at"), std::string::npos);
    EXPECT_NE(page.find("<th scope=\"row\">--grade</th><td>90</td>"), std::string::npos);
    EXPECT_FALSE(has("out/report.html.part"));
    EXPECT_FALSE(has("out/explain"));
}

TEST_F(a_run, has_the_same_events_and_library_lines_with_a_report_and_without) {
    ASSERT_EQ(run({"--no-video", "--tiles", "2x2", "--library-log", m_folder.file("a.log")}, "a").exit_code, 10);
    ASSERT_EQ(
        run({"--no-video", "--tiles", "2x2", "--library-log", m_folder.file("b.log"), "--no-report"}, "b").exit_code,
        10);
    EXPECT_EQ(text("a/events.jsonl"), text("b/events.jsonl"));
    EXPECT_EQ(text("a.log"), text("b.log"));
    EXPECT_FALSE(text("a.log").empty());
    EXPECT_TRUE(has("a/report.html"));
    EXPECT_FALSE(has("b/report.html"));
    EXPECT_EQ(text("a/report.html").find("<a "), std::string::npos) << "no video, no links";
}

TEST_F(a_run, links_into_the_segments_of_its_video) {
    ASSERT_EQ(run({"--segment", "2", "--grade", "90"}).exit_code, 10);
    const std::string page = text("out/report.html");
    const size_t at = page.find("href=\"annotated-000");
    ASSERT_NE(at, std::string::npos);
    EXPECT_TRUE(has("out/" + page.substr(at + 6, page.find('#', at) - at - 6)));
}

TEST_F(a_run, explains_the_pictures_that_were_chosen_in_every_tile) {
    ASSERT_EQ(run({"--explain=7,100-101", "--tiles", "2x1", "--no-video"}).exit_code, 10);
    int folders = 0;
    for (const auto& entry : fs::directory_iterator(m_folder.file("out/explain"))) folders += entry.is_directory();
    EXPECT_EQ(folders, 6);
    const auto numbers = nlohmann::json::parse(text("out/explain/picture-000101-zone-1-2/numbers.json"));
    EXPECT_EQ(numbers["frame"], 101);
    EXPECT_EQ(numbers["channel"], 2);
    EXPECT_GT(numbers["area"]["x"], 0);
    EXPECT_NE(text("out/explain/index.html").find("picture-000007-zone-1-1/1-seen.png"), std::string::npos);
}

TEST_F(a_run, explains_nothing_that_it_does_not_understand) {
    const auto result = run({"--explain=5-3"});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_NE(result.errors.find("5-3"), std::string::npos) << result.errors;
    EXPECT_FALSE(has("out"));
}

}  // namespace
