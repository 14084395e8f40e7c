// Reading files of many kinds: count, order, times, size, and what is said of broken ones.
#include <gtest/gtest.h>

#include <cmath>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

// Picture i is grey, a little lighter than the one before, with a white corner at the upper left.
void paint_numbered(int index, AVFrame& picture) {
    const double level = 40 + 5 * index;
    paint(picture, 0, 0, picture.width, picture.height, {level, level, level});
    paint(picture, 0, 0, 32, 32, k_white);
}

clip_recipe recipe(const std::string& path, const char* codec) {
    clip_recipe result;
    result.path = path;
    result.codec = codec;
    result.times = steady(20, 25);
    result.paint = paint_numbered;
    return result;
}

std::vector<source_picture> read_all(video_source& source) {
    std::vector<source_picture> pictures(1);
    while (source.next(pictures.back())) pictures.emplace_back();
    pictures.pop_back();
    return pictures;
}

struct kind_row : support::named_row {
    const char* file;
    const char* codec;
    AVPixelFormat format;
};

class every_kind : public testing::TestWithParam<kind_row> {};

TEST_P(every_kind, is_read_whole_in_order_and_with_its_times) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file(GetParam().file), GetParam().codec);
    wanted.format = GetParam().format;
    make_clip(wanted);
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    EXPECT_EQ(source.problem(), "");
    EXPECT_TRUE(source.take_warnings().empty());
    EXPECT_NEAR(source.nominal_rate(), 25, 0.01);
    ASSERT_EQ(pictures.size(), 20u);
    int last = 0;
    for (size_t i = 0; i < pictures.size(); ++i) {
        EXPECT_EQ(pictures[i].index, static_cast<int64_t>(i));
        EXPECT_NEAR(pictures[i].seconds, static_cast<double>(i) / 25, 0.002);
        EXPECT_EQ(pictures[i].frame->width, 320);
        EXPECT_EQ(pictures[i].frame->height, 240);
        const int level = component(*pictures[i].frame, 200, 100, 0);
        EXPECT_GT(level, last) << i;
        last = level;
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, every_kind,
    testing::Values(kind_row{{"H264 in mp4"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P},
                    kind_row{{"H264 in Matroska"}, "a.mkv", "libx264", AV_PIX_FMT_YUV420P},
                    kind_row{{"H264 in a transport stream"}, "a.ts", "libx264", AV_PIX_FMT_YUV420P},
                    kind_row{{"H264 of 10 bits"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P10LE},
                    kind_row{{"MPEG 4 in AVI"}, "a.avi", "mpeg4", AV_PIX_FMT_YUV420P},
                    kind_row{{"motion JPEG in AVI"}, "a.avi", "mjpeg", AV_PIX_FMT_YUVJ422P},
                    kind_row{{"MPEG 2 in a transport stream"}, "a.ts", "mpeg2video", AV_PIX_FMT_YUV420P},
                    kind_row{{"lossless RGB"}, "a.mkv", "ffv1", AV_PIX_FMT_BGR0},
                    kind_row{{"a name with a colon"}, "a:b.mp4", "libx264", AV_PIX_FMT_YUV420P}),
    row_name());

TEST(video_source, keeps_the_times_of_a_varying_rate) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.mp4"), "libx264");
    wanted.times = {0, 0.02, 0.04, 0.5, 0.52, 1.7, 1.71, 3.0};
    make_clip(wanted);
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    ASSERT_EQ(pictures.size(), wanted.times.size());
    for (size_t i = 0; i < pictures.size(); ++i) EXPECT_NEAR(pictures[i].seconds, wanted.times[i], 0.001) << i;
    EXPECT_EQ(source.problem(), "");
}

TEST(video_source, counts_time_from_the_first_picture) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.mkv"), "ffv1");
    wanted.times = {5.0, 5.04, 5.08};
    make_clip(wanted);
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    ASSERT_EQ(pictures.size(), 3u);
    EXPECT_EQ(pictures[0].seconds, 0);
    EXPECT_NEAR(pictures[2].seconds, 0.08, 0.001);
    EXPECT_EQ(source.problem(), "");
}

TEST(video_source, lets_time_grow_where_joined_recordings_turn_it_back) {
    const temporary_folder folder;
    const clip_recipe wanted = recipe(folder.file("a.ts"), "libx264");
    make_clip(wanted);
    const std::string bytes = read_file(wanted.path);
    write_file(wanted.path, bytes + bytes);
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    ASSERT_EQ(pictures.size(), 40u);
    for (size_t i = 1; i < pictures.size(); ++i) EXPECT_GT(pictures[i].seconds, pictures[i - 1].seconds) << i;
    EXPECT_NEAR(pictures[25].seconds, 1.0, 0.1);
}

TEST(video_source, makes_times_for_a_stream_without_any) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.h264"), "libx264");
    make_clip(wanted);
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    ASSERT_EQ(pictures.size(), 20u);
    for (size_t i = 0; i < pictures.size(); ++i) EXPECT_NEAR(pictures[i].seconds, static_cast<double>(i) / 25, 0.001);
}

struct turn_row : support::named_row {
    int turn, width, height, x, y;  // the size that is read, and a point in the white corner
};

class turned : public testing::TestWithParam<turn_row> {};

TEST_P(turned, is_read_upright) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.mp4"), "libx264");
    wanted.turn = GetParam().turn;
    make_clip(wanted);
    video_source source(wanted.path);
    source_picture picture;
    ASSERT_TRUE(source.next(picture));
    EXPECT_EQ(picture.frame->width, GetParam().width);
    EXPECT_EQ(picture.frame->height, GetParam().height);
    EXPECT_NEAR(component(*picture.frame, GetParam().x, GetParam().y, 0), 235, 6);
}

INSTANTIATE_TEST_SUITE_P(table, turned,
                         testing::Values(turn_row{{"by 90 degrees"}, 90, 240, 320, 224, 16},
                                         turn_row{{"by 180 degrees"}, 180, 320, 240, 304, 224},
                                         turn_row{{"by 270 degrees"}, 270, 240, 320, 16, 304}),
                         row_name());

TEST(video_source, warns_of_high_dynamic_range_once) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.mkv"), "libx264");
    wanted.format = AV_PIX_FMT_YUV420P10LE;
    wanted.transfer = AVCOL_TRC_SMPTE2084;
    wanted.matrix = AVCOL_SPC_BT2020_NCL;
    make_clip(wanted);
    video_source source(wanted.path);
    (void)read_all(source);
    const auto warnings = source.take_warnings();
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings[0].find("PQ"), std::string::npos);
}

TEST(video_source, warns_of_an_odd_angle) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file("a.mp4"), "libx264");
    wanted.turn = 30;
    make_clip(wanted);
    video_source source(wanted.path);
    EXPECT_EQ(source.take_warnings().size(), 1u);
    EXPECT_TRUE(source.take_warnings().empty());
}

// --- broken files ----------------------------------------------------------------------------------------------------

struct broken_row : support::named_row {
    const char* file;
    const char* codec;
    double kept;  // share of the file
};

class cut_short : public testing::TestWithParam<broken_row> {};

TEST_P(cut_short, is_read_up_to_there_and_said) {
    const temporary_folder folder;
    clip_recipe wanted = recipe(folder.file(GetParam().file), GetParam().codec);
    wanted.times = steady(100, 25);
    wanted.index_first = true;
    wanted.width = 160;
    wanted.height = 120;
    fire_pictures fire(160, 120, 0.2);
    wanted.paint = [&fire](int index, AVFrame& picture) { fire.paint(index / 25.0, index, picture); };
    make_clip(wanted);
    const std::string bytes = read_file(wanted.path);
    // An odd length, so that no packet of a transport stream ends there by chance.
    const auto kept = static_cast<size_t>(GetParam().kept * static_cast<double>(bytes.size())) / 188 * 188 + 91;
    write_file(wanted.path, bytes.substr(0, kept));
    video_source source(wanted.path);
    const auto pictures = read_all(source);
    EXPECT_GT(pictures.size(), 20u);
    EXPECT_LT(pictures.size(), 90u);
    EXPECT_NE(source.problem().find("cut short"), std::string::npos) << source.problem();
    EXPECT_NE(source.problem().find(wanted.path), std::string::npos) << source.problem();
}

INSTANTIATE_TEST_SUITE_P(table, cut_short,
                         testing::Values(broken_row{{"mp4 with its index in front"}, "a.mp4", "libx264", 0.6},
                                         broken_row{{"Matroska"}, "a.mkv", "libx264", 0.6},
                                         broken_row{{"a transport stream"}, "a.ts", "libx264", 0.6},
                                         broken_row{{"AVI"}, "a.avi", "mpeg4", 0.6},
                                         broken_row{{"FLV"}, "a.flv", "libx264", 0.6}),
                         row_name());

void expect_refused(const std::string& path, const std::string& word) {
    try {
        video_source source(path);
        FAIL() << path << " was opened";
    } catch (const io_error& error) {
        EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
}

TEST(video_source, refuses_what_is_no_video_and_names_it) {
    const temporary_folder folder;
    expect_refused(folder.file("missing.mp4"), "does not exist");
    expect_refused(folder.path(), "is a folder");
    write_file(folder.file("empty.mp4"), "");
    expect_refused(folder.file("empty.mp4"), "is empty");
    write_file(folder.file("text.mp4"), std::string(5000, 'x') + "\n");
    expect_refused(folder.file("text.mp4"), "it is no video");
}

TEST(video_source, refuses_an_mp4_that_was_never_finished) {
    const temporary_folder folder;
    const clip_recipe wanted = recipe(folder.file("a.mp4"), "libx264");
    make_clip(wanted);
    // The index lies at the end of this file.
    write_file(wanted.path, read_file(wanted.path).substr(0, 4000));
    expect_refused(wanted.path, "cut short");
}

}  // namespace
