// The command line: what it is read as, and what is refused with 2.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/orva_fire/options.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/capture.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

command parse(std::vector<const char*> words) {
    words.insert(words.begin(), "orva-fire");
    return parse_command_line(static_cast<int>(words.size()), words.data());
}

TEST(options, have_these_defaults) {
    const command got = parse({"a.mp4"});
    ASSERT_TRUE(got.detect);
    EXPECT_EQ(got.detect->source.text, "a.mp4");
    EXPECT_EQ(got.detect->folder, "orva-fire-out");
    EXPECT_EQ(got.detect->events, "");
    EXPECT_TRUE(got.detect->regions.empty());
    EXPECT_FALSE(got.detect->grade);
    EXPECT_EQ(got.detect->rate, 0);
    EXPECT_EQ(got.detect->library_log, "");
    EXPECT_TRUE(got.detect->write_video);
}

TEST(options, are_all_read) {
    const command got = parse({"-o", "out", "--events", "-", "--region", "1,2,30,40", "--region", "5%,6%,7%,8%",
                               "--grade", "0", "--fps", "12.5", "--library-log", "log", "--no-video", "a.mp4"});
    ASSERT_TRUE(got.detect);
    EXPECT_EQ(got.detect->source.text, "a.mp4");
    EXPECT_EQ(got.detect->folder, "out");
    EXPECT_EQ(got.detect->events, "-");
    ASSERT_EQ(got.detect->regions.size(), 2u);
    EXPECT_EQ(got.detect->regions[0].width.number, 30);
    EXPECT_FALSE(got.detect->regions[0].width.percent);
    EXPECT_EQ(got.detect->regions[1].y.number, 6);
    EXPECT_TRUE(got.detect->regions[1].y.percent);
    EXPECT_EQ(got.detect->grade, 0);
    EXPECT_EQ(got.detect->rate, 12.5);
    EXPECT_EQ(got.detect->library_log, "log");
    EXPECT_FALSE(got.detect->write_video);
}

TEST(options, keep_the_video_apart_from_a_region_before_it) {
    const command got = parse({"--region", "1,2,30,40", "a.mp4"});
    ASSERT_TRUE(got.detect);
    EXPECT_EQ(got.detect->regions.size(), 1u);
    EXPECT_EQ(got.detect->source.text, "a.mp4");
}

TEST(options, of_detect_are_those_of_the_short_form) {
    const char* words[] = {"detect", "a.mp4", "--grade", "85"};
    const command got = parse_detect(4, words);
    ASSERT_TRUE(got.detect);
    EXPECT_EQ(got.detect->source.text, "a.mp4");
    EXPECT_EQ(got.detect->grade, 85);
}

TEST(options, can_stand_in_a_file_and_the_command_line_wins) {
    const apps_test::temporary_folder folder;
    const std::string file = folder.file("gate.conf");
    apps_test::write_file(file,
                          "# a camera\nsource = \"a b.mp4\"\ngrade = 85\nfps = 12.5\nno-video = true\n"
                          "region = [\"0,0,50%,100%\", \"50%,0,50%,100%\"]\n");
    const command got = parse({"--config", file.c_str(), "--fps", "5"});
    ASSERT_TRUE(got.detect);
    EXPECT_EQ(got.detect->source.text, "a b.mp4");
    EXPECT_EQ(got.detect->grade, 85);
    EXPECT_EQ(got.detect->rate, 5);
    EXPECT_FALSE(got.detect->write_video);
    ASSERT_EQ(got.detect->regions.size(), 2u);
    EXPECT_EQ(got.detect->regions[1].x.number, 50);
}

struct bad_file_row : support::named_row {
    const char* line;
    const char* said;
};

class bad_file : public testing::TestWithParam<bad_file_row> {};

TEST_P(bad_file, is_refused_with_2_and_the_name_that_is_wrong) {
    const apps_test::temporary_folder folder;
    const std::string file = folder.file("gate.conf");
    apps_test::write_file(file, std::string(GetParam().line) + "\n");
    testing::internal::CaptureStderr();
    const command got = parse({"a.mp4", "--config", file.c_str()});
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(got.detect);
    EXPECT_EQ(got.exit_code, 2);
    EXPECT_NE(said.find(GetParam().said), std::string::npos) << said;
}

INSTANTIATE_TEST_SUITE_P(table, bad_file,
                         testing::Values(bad_file_row{{"an unknown name"}, "grades = 85", "'grades'"},
                                         bad_file_row{{"a grade that is too high"}, "grade = 101", "--grade"},
                                         bad_file_row{{"a region that is none"}, "region = \"1,2\"", "--region"},
                                         bad_file_row{{"another file"}, "config = \"x\"", "config"}),
                         row_name());

TEST(options, refuse_a_file_that_is_missing) {
    EXPECT_EQ(parse({"a.mp4", "--config", "no-such-file.conf"}).exit_code, 2);
}

struct refused_row : support::named_row {
    std::vector<const char*> words;
};

class refused : public testing::TestWithParam<refused_row> {};

TEST_P(refused, with_2) {
    const command got = parse(GetParam().words);
    EXPECT_FALSE(got.detect);
    EXPECT_EQ(got.exit_code, 2);
}

INSTANTIATE_TEST_SUITE_P(table, refused,
                         testing::Values(refused_row{{"no video"}, {}}, refused_row{{"two videos"}, {"a.mp4", "b.mp4"}},
                                         refused_row{{"an unknown option"}, {"a.mp4", "--no-such"}},
                                         refused_row{{"grade 101"}, {"a.mp4", "--grade", "101"}},
                                         refused_row{{"grade below 0"}, {"a.mp4", "--grade", "-1"}},
                                         refused_row{{"a grade that is no number"}, {"a.mp4", "--grade", "high"}},
                                         refused_row{{"fps 0"}, {"a.mp4", "--fps", "0"}},
                                         refused_row{{"fps below 0"}, {"a.mp4", "--fps=-5"}},
                                         refused_row{{"fps that is no number"}, {"a.mp4", "--fps", "fast"}},
                                         refused_row{{"a region of three values"}, {"a.mp4", "--region", "1,2,3"}},
                                         refused_row{{"two regions after one option"},
                                                     {"--region", "0,0,16,16", "0,0,16,16", "a.mp4"}},
                                         refused_row{{"a region without value"}, {"a.mp4", "--region"}},
                                         refused_row{{"an output without value"}, {"a.mp4", "-o"}}),
                         row_name());

TEST(options, refuse_more_regions_than_there_are_channels) {
    std::vector<const char*> words{"a.mp4"};
    for (int i = 0; i < 128; ++i) words.insert(words.end(), {"--region", "0,0,16,16"});
    EXPECT_TRUE(parse(words).detect);
    words.insert(words.end(), {"--region", "0,0,16,16"});
    EXPECT_EQ(parse(words).exit_code, 2);
}

TEST(options, print_help_and_version_on_standard_output) {
    command got;
    const std::string help = support::output_of([&] { got = parse({"--help"}); });
    EXPECT_FALSE(got.detect);
    EXPECT_EQ(got.exit_code, 0);
    for (const char* word : {"--region", "--grade", "--fps", "--events", "--library-log", "Exit codes", "Examples"}) {
        EXPECT_NE(help.find(word), std::string::npos) << word;
    }
    const std::string version = support::output_of([&] { got = parse({"--version"}); });
    EXPECT_EQ(version.rfind("orva-fire ", 0), 0u) << version;
}

}  // namespace
