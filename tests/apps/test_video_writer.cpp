// The annotated video as a file: tags, times, an index at the front.
#include <gtest/gtest.h>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/video_source.h"
#include "apps/orva_fire/video_writer.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

TEST(video_writer, writes_what_can_be_read_back) {
    const temporary_folder folder;
    const frame_ptr picture = flat_picture(AV_PIX_FMT_YUV420P, 128, 96, k_orange, AVCOL_RANGE_JPEG, AVCOL_SPC_BT709);
    picture->color_trc = AVCOL_TRC_BT709;
    picture->color_primaries = AVCOL_PRI_BT709;
    picture->sample_aspect_ratio = av_make_q(16, 11);
    const std::vector<double> times{0, 0.04, 0.08, 0.5, 0.54, 2.0};
    video_writer writer(folder.file("a.mp4"), *picture, {});
    for (const double seconds : times) writer.write(*picture, seconds);
    writer.close();

    video_source source(folder.file("a.mp4"));
    source_picture got;
    for (const double seconds : times) {
        ASSERT_TRUE(source.next(got));
        EXPECT_NEAR(got.seconds, seconds, 0.0001);
        EXPECT_EQ(got.frame->color_range, AVCOL_RANGE_JPEG);
        EXPECT_EQ(got.frame->colorspace, AVCOL_SPC_BT709);
        EXPECT_EQ(got.frame->color_trc, AVCOL_TRC_BT709);
        EXPECT_EQ(got.frame->color_primaries, AVCOL_PRI_BT709);
        EXPECT_EQ(av_cmp_q(got.frame->sample_aspect_ratio, av_make_q(16, 11)), 0);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(component(*got.frame, 60, 40, i), component(*picture, 60, 40, i), 2);
    }
    EXPECT_FALSE(source.next(got));
    EXPECT_EQ(source.problem(), "");
    const std::string bytes = read_file(folder.file("a.mp4"));
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << "the index comes first";
}

TEST(video_writer, finishes_a_file_that_nobody_closed) {
    const temporary_folder folder;
    const frame_ptr picture =
        flat_picture(AV_PIX_FMT_YUV420P, 128, 96, k_orange, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    { video_writer(folder.file("a.mp4"), *picture, {}).write(*picture, 0); }
    video_source source(folder.file("a.mp4"));
    source_picture got;
    EXPECT_TRUE(source.next(got));
}

TEST(video_writer, names_a_file_that_cannot_be_made) {
    const frame_ptr picture =
        flat_picture(AV_PIX_FMT_YUV420P, 128, 96, k_orange, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    try {
        video_writer writer("/dev/null/a.mp4", *picture, {});
        FAIL() << "made it";
    } catch (const io_error& error) {
        EXPECT_NE(std::string(error.what()).find("/dev/null/a.mp4"), std::string::npos);
    }
}

}  // namespace
