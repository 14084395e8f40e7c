// Boxes drawn into pictures.
#include <gtest/gtest.h>

#include "apps/orva_fire/annotate.h"
#include "apps/orva_fire/colour.h"
#include "tests/apps/pictures.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

// Limited BT.601: grey 100 is 16 + 219 * 100 / 255 = 101.9; the red of the boxes, 255,32,32, has luma
// 16 + 219 * (0.299 * 255 + 0.701 * 32) / 255 = 100.7 and V 128 + 112 * (255 - 98.7) / 255 / 0.701 = 225.9.
const int k_grey = 102, k_red_luma = 101, k_red_v = 226;

frame_ptr grey(int width, int height, AVPixelFormat format = AV_PIX_FMT_YUV420P) {
    return flat_picture(format, width, height, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
}

int luma(const AVFrame& picture, int x, int y) {
    return component(picture, x, y, 0);
}
int red_chroma(const AVFrame& picture, int x, int y) {
    return component(picture, x, y, 2);
}

TEST(annotator, leaves_a_picture_without_boxes_as_it_is) {
    const frame_ptr source = grey(64, 48);
    const frame_ptr painted = annotator().paint(*source, {}, {});
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) ASSERT_EQ(luma(*painted, x, y), k_grey);
    }
    EXPECT_EQ(painted->color_range, AVCOL_RANGE_MPEG);
    EXPECT_EQ(painted->colorspace, AVCOL_SPC_SMPTE170M);
    EXPECT_NE(painted->data[0], source->data[0]) << "the decoder's picture is never painted on";
}

TEST(annotator, draws_a_red_line_with_dark_edges_around_a_box) {
    const frame_ptr painted = annotator().paint(*grey(320, 240), {}, {{100, 80, 60, 40}});
    // From the box outwards: two dark pixels, two red ones, two dark ones. Checked on all four sides.
    struct side {
        int x, y, step_x, step_y;
    };
    for (const side& s : {side{99, 100, -1, 0}, side{160, 100, 1, 0}, side{130, 79, 0, -1}, side{130, 120, 0, 1}}) {
        const auto at = [&](int outwards) {
            return luma(*painted, s.x + outwards * s.step_x, s.y + outwards * s.step_y);
        };
        EXPECT_EQ(at(-1), k_grey) << "the inside stays";
        EXPECT_EQ(at(0), 16);
        EXPECT_EQ(at(1), 16);
        EXPECT_EQ(at(2), k_red_luma);
        EXPECT_EQ(at(3), k_red_luma);
        EXPECT_EQ(red_chroma(*painted, s.x + 2 * s.step_x, s.y + 2 * s.step_y), k_red_v);
        EXPECT_EQ(at(4), 16);
        EXPECT_EQ(at(5), 16);
        EXPECT_EQ(at(6), k_grey);
    }
}

TEST(annotator, draws_zones_thin_and_grey) {
    const frame_ptr painted = annotator().paint(*grey(320, 240), {{100, 80, 60, 40}}, {});
    // 150 of 255 is 16 + 219 * 150 / 255 = 144.8.
    EXPECT_EQ(luma(*painted, 99, 100), 145);
    EXPECT_EQ(luma(*painted, 98, 100), 145);
    EXPECT_EQ(luma(*painted, 97, 100), k_grey);
    EXPECT_EQ(red_chroma(*painted, 99, 100), 128);
}

TEST(annotator, draws_thicker_lines_on_larger_pictures) {
    const frame_ptr painted = annotator().paint(*grey(1920, 1080), {}, {{600, 400, 200, 200}});
    EXPECT_EQ(luma(*painted, 597, 500), k_red_luma);
    EXPECT_EQ(luma(*painted, 592, 500), k_red_luma);
    EXPECT_EQ(luma(*painted, 591, 500), 16);
}

TEST(annotator, cuts_lines_at_the_pictures_edge) {
    const frame_ptr painted = annotator().paint(*grey(64, 48), {}, {{0, 0, 64, 48}});
    EXPECT_EQ(luma(*painted, 0, 0), k_grey);
    EXPECT_EQ(luma(*painted, 63, 47), k_grey);
}

TEST(annotator, repeats_the_last_column_and_row_of_an_odd_picture) {
    const frame_ptr source = grey(63, 47);
    paint(*source, 62, 0, 1, 47, k_white);
    const frame_ptr painted = annotator().paint(*source, {}, {});
    EXPECT_EQ(painted->width, 64);
    EXPECT_EQ(painted->height, 48);
    EXPECT_EQ(luma(*painted, 63, 10), 235);
    EXPECT_EQ(luma(*painted, 63, 47), 235);
    EXPECT_EQ(luma(*painted, 20, 47), k_grey);
}

TEST(annotator, keeps_range_matrix_and_pixel_aspect) {
    const frame_ptr source = flat_picture(AV_PIX_FMT_YUV420P, 64, 48, k_white, AVCOL_RANGE_JPEG, AVCOL_SPC_BT709);
    source->sample_aspect_ratio = av_make_q(16, 11);
    source->color_trc = AVCOL_TRC_BT709;
    const frame_ptr painted = annotator().paint(*source, {}, {});
    EXPECT_EQ(luma(*painted, 5, 5), 255);
    EXPECT_EQ(painted->color_range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(painted->colorspace, AVCOL_SPC_BT709);
    EXPECT_EQ(painted->color_trc, AVCOL_TRC_BT709);
    EXPECT_EQ(painted->sample_aspect_ratio.num, 16);
}

TEST(annotator, turns_every_format_into_limited_or_equal_range) {
    const frame_ptr rgb = annotator().paint(*grey(64, 48, AV_PIX_FMT_RGB24), {}, {});
    EXPECT_NEAR(luma(*rgb, 5, 5), k_grey, 1);
    EXPECT_EQ(rgb->color_range, AVCOL_RANGE_MPEG);
    const frame_ptr deep = annotator().paint(*grey(64, 48, AV_PIX_FMT_YUV422P10LE), {}, {});
    EXPECT_NEAR(luma(*deep, 5, 5), k_grey, 1);
    EXPECT_EQ(deep->format, AV_PIX_FMT_YUV420P);
}

}  // namespace
