// flame-clip as a process: what it writes, and what it refuses.
#include <gtest/gtest.h>

#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using support::row_name;

program_result flame_clip_with(std::vector<std::string> words) {
    words.insert(words.begin(), FLAME_CLIP_PROGRAM);
    return run_program(words);
}

TEST(flame_clip, writes_a_clip_as_asked_for) {
    const temporary_folder folder;
    const program_result result = flame_clip_with(
        {folder.file("a.mp4"), "--size", "320x180", "--fps", "10", "--seconds", "3", "--onset", "1.5", "--seed", "9"});
    ASSERT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(result.output, "");
    orva_fire::video_source source(folder.file("a.mp4"));
    orva_fire::source_picture picture;
    int count = 0;
    while (source.next(picture)) {
        EXPECT_EQ(picture.frame->width, 320);
        EXPECT_EQ(picture.frame->height, 180);
        EXPECT_NEAR(picture.seconds, count / 10.0, 0.001);
        EXPECT_EQ(picture.frame->color_range, AVCOL_RANGE_MPEG);
        EXPECT_EQ(picture.frame->colorspace, AVCOL_SPC_SMPTE170M);
        ++count;
    }
    EXPECT_EQ(count, 30);

    const auto truth = json_lines(read_file(folder.file("a.truth.jsonl")));
    ASSERT_GT(truth.size(), 10u);
    EXPECT_EQ(truth[0]["seed"], 9);
    EXPECT_EQ(truth[0]["onset"], 1.5);
    for (size_t i = 1; i < truth.size(); ++i) {
        EXPECT_GT(truth[i]["seconds"], 1.5);
        EXPECT_EQ(truth[i]["boxes"].size(), 1u);
    }
    EXPECT_EQ(truth.back()["frame"], 29);
}

TEST(flame_clip, writes_the_same_clip_for_the_same_seed) {
    const temporary_folder folder;
    const auto make = [&](const char* name, const char* seed) {
        EXPECT_EQ(
            flame_clip_with({folder.file(name), "--size", "160x120", "--seconds", "1", "--onset", "0", "--seed", seed})
                .exit_code,
            0);
        return read_file(folder.file(name));
    };
    const std::string first = make("a.mp4", "3");
    EXPECT_EQ(make("b.mp4", "3"), first);
    EXPECT_NE(make("c.mp4", "4"), first);
}

struct refused_row : support::named_row {
    std::vector<std::string> words;
    int exit_code;
};

class flame_clip_refuses : public testing::TestWithParam<refused_row> {};

TEST_P(flame_clip_refuses, with_a_code_and_a_word) {
    const program_result result = flame_clip_with(GetParam().words);
    EXPECT_EQ(result.exit_code, GetParam().exit_code);
    EXPECT_NE(result.errors, "");
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(table, flame_clip_refuses,
                         testing::Values(refused_row{{"no clip"}, {}, 2},
                                         refused_row{{"an odd size"}, {"a.mp4", "--size", "321x180"}, 2},
                                         refused_row{{"a size with a tail"}, {"a.mp4", "--size", "320x180p"}, 2},
                                         refused_row{{"a tiny size"}, {"a.mp4", "--size", "16x16"}, 2},
                                         refused_row{{"no size"}, {"a.mp4", "--size", "large"}, 2},
                                         refused_row{{"fps 0"}, {"a.mp4", "--fps", "0"}, 2},
                                         refused_row{{"a negative onset"}, {"a.mp4", "--onset", "-1"}, 2},
                                         refused_row{{"a folder that is not there"}, {"/dev/null/a.mp4"}, 3}),
                         row_name());

}  // namespace
