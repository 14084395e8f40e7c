// The colour filter on blocks of 2 x 2: every pattern of mask and colour, then whole images against the plain twin.
#include <gtest/gtest.h>

#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/pre_process.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/images.h"
#include "tests/support/random.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::pre_process;
using support::first_difference;
using support::grey_image;
using support::nv21_picture;

class color_filter : public testing::Test {
protected:
    static void SetUpTestSuite() {
        pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

// Three planes back to back.
fd_yuv_frame rgb_frame(grey_image& block, int width, int height, int distance) {
    fd_yuv_frame record = block.frame();
    record.width = static_cast<unsigned>(width);
    record.height = static_cast<unsigned>(height);
    for (int k = 1; k < 3; ++k) {
        record.virt_addr[k] = record.virt_addr[0] + static_cast<std::ptrdiff_t>(k) * distance;
        record.stride[k] = record.stride[0];
    }
    return record;
}

int bits_of(unsigned pattern) {
    int count = 0;
    for (; pattern != 0; pattern &= pattern - 1) ++count;
    return count;
}

// Bit i of the patterns is pixel (i % 2, i / 2). Set pixels have different values, so that a block that stays can be
// told from one that was written again.
TEST_F(color_filter, keeps_a_block_that_has_enough_passing_pixels_in_all_256_patterns) {
    const int need[] = {0, 1, 1, 2, 3};
    const unsigned char set_values[] = {1, 254, 255, 128};
    for (unsigned set = 0; set < 16; ++set) {
        for (unsigned passing = 0; passing < 16; ++passing) {
            nv21_picture picture(2, 2);
            picture.paint(0, 0, 2, 2, 200, 100, 160);
            grey_image mask(2, 2), rgb(2, 6);
            for (int i = 0; i < 4; ++i) {
                if ((set >> i & 1) != 0) mask.data()[i] = set_values[i];
                rgb.data()[i] = 150;
                rgb.data()[4 + i] = 188;
                rgb.data()[8 + i] = (passing >> i & 1) != 0 ? 244 : 140;
            }
            const grey_image before = mask;
            fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, 2, 2, 4), yuv = picture.frame();
            EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
            const bool kept = bits_of(set & passing) >= need[bits_of(set)];
            EXPECT_EQ(first_difference(mask, kept ? before : grey_image(2, 2)), "")
                << "set " << set << ", passing " << passing;
        }
    }
}

TEST_F(color_filter, reads_luma_pixel_by_pixel) {
    nv21_picture picture(2, 2);
    picture.paint(0, 0, 2, 2, 130, 100, 160);  // luma 130 is too dark for U 100
    picture.luma_at(1, 1) = 131;
    grey_image rgb(2, 6);
    rgb.fill_rect(0, 0, 2, 2, 150);
    rgb.fill_rect(0, 2, 2, 2, 188);
    rgb.fill_rect(0, 4, 2, 2, 244);
    for (int i = 0; i < 4; ++i) {
        grey_image mask(2, 2);
        mask.data()[i] = 255;
        const grey_image before = mask;
        fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, 2, 2, 4), yuv = picture.frame();
        EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
        EXPECT_EQ(first_difference(mask, i == 3 ? before : grey_image(2, 2)), "") << "pixel " << i;
    }
}

// Four blocks, of which one has its chroma bytes the other way round.
TEST_F(color_filter, reads_V_before_U_of_each_block) {
    nv21_picture picture(4, 4, 6);
    picture.paint(0, 0, 4, 4, 200, 100, 160);
    picture.chroma_at(2, 2) = 100;
    picture.chroma_at(3, 2) = 160;
    grey_image rgb(4, 12, 5), mask(4, 4, 7, 0, 255), wanted = mask;
    rgb.fill_rect(0, 0, 4, 4, 150);
    rgb.fill_rect(0, 4, 4, 4, 188);
    rgb.fill_rect(0, 8, 4, 4, 244);
    wanted.fill_rect(2, 2, 2, 2, 0);
    fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, 4, 4, 20), yuv = picture.frame();
    EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
    EXPECT_EQ(first_difference(mask, wanted), "");
}

TEST_F(color_filter, steps_the_three_planes_with_the_stride_of_the_first) {
    nv21_picture picture(2, 4);
    picture.paint(0, 0, 2, 4, 200, 100, 160);
    grey_image rgb(2, 12, 5), mask(2, 4, 2, 0, 255), wanted = mask;
    rgb.fill_rect(0, 0, 2, 4, 150);
    rgb.fill_rect(0, 4, 2, 4, 188);
    rgb.fill_rect(0, 8, 2, 4, 244);
    fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, 2, 4, 20), yuv = picture.frame();
    rgb_image.stride[1] = rgb_image.stride[2] = 1;
    EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
    EXPECT_EQ(first_difference(mask, wanted), "");
}

struct size_row : support::named_row {
    unsigned width;
    unsigned height;
};

class empty_masks : public testing::TestWithParam<size_row> {};

TEST_P(empty_masks, are_left_alone) {
    nv21_picture picture(4, 4);
    grey_image rgb(4, 12), mask(4, 4, 4, 0, 255), before = mask;
    fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, 4, 4, 16), yuv = picture.frame();
    mask_frame.width = GetParam().width;
    mask_frame.height = GetParam().height;
    EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
    EXPECT_TRUE(mask == before);
}

INSTANTIATE_TEST_SUITE_P(table, empty_masks,
                         testing::Values(size_row{{"no row"}, 4, 0}, size_row{{"no column"}, 0, 4},
                                         size_row{{"neither"}, 0, 0}),
                         support::row_name());

// --- whole images ---------------------------------------------------------------------------------------------------

// About half of the pixels are flames; the rest is noise.
void fill_colours(nv21_picture& picture, grey_image& rgb, int width, int height, int distance,
                  support::random_source& random) {
    random.fill(rgb.data(), rgb.length());
    random.fill(picture.bytes().data(), picture.bytes().size());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (random.below(2) == 0) continue;
            unsigned char* blue = rgb.data() + y * rgb.stride() + x;
            blue[0] = static_cast<unsigned char>(random.between(70, 170));
            blue[distance] = static_cast<unsigned char>(random.between(95, 200));
            blue[2 * distance] = static_cast<unsigned char>(random.between(145, 255));
            picture.luma_at(x, y) = static_cast<unsigned char>(random.between(120, 255));
            picture.chroma_at(x / 2 * 2, y) = static_cast<unsigned char>(random.between(115, 200));
            picture.chroma_at(x / 2 * 2 + 1, y) = static_cast<unsigned char>(random.between(60, 130));
        }
    }
}

TEST_F(color_filter, equals_the_plain_twin_on_random_images) {
    support::random_source random;
    int kept = 0, cleared = 0;
    for (int round = 0; round < 3000; ++round) {
        const int width = random.below(round % 50 == 0 ? 353 : 67), height = random.below(round % 50 == 0 ? 289 : 20);
        // Odd sizes are rounded up: the mask has room for one more column and row.
        grey_image mask(width + 1, height + 1, width + 1 + random.below(20), random.below(16));
        const int rgb_stride = width + 1 + random.below(20), distance = rgb_stride * (height + random.below(3));
        grey_image rgb(1, 3 * distance + 3 * rgb_stride, 1);
        nv21_picture picture(width + 1, height + 1, (width + 2 + random.below(20)) / 2 * 2);
        random.fill(mask.data(), mask.length());
        for (std::size_t i = 0; i < mask.length(); ++i) {
            if (random.below(3) == 0) mask.data()[i] = 0;
        }
        fd_yuv_frame mask_frame = mask.frame(), rgb_image = rgb_frame(rgb, width, height, distance),
                     yuv = picture.frame();
        rgb_image.stride[0] = static_cast<unsigned>(rgb_stride);
        mask_frame.width = yuv.width = static_cast<unsigned>(width);
        mask_frame.height = yuv.height = static_cast<unsigned>(height);
        fill_colours(picture, rgb, width, height, distance, random);
        grey_image twin = mask, before = mask;
        EXPECT_EQ(pre_process().color_filter(&mask_frame, &rgb_image, &yuv), 0);
        const ref::rgb_view twin_rgb = {
            {rgb.data(), width, height, rgb_stride}, rgb.data() + distance, rgb.data() + 2 * distance};
        const ref::yuv_view twin_yuv = {
            {picture.bytes().data(), width, height, picture.stride()}, yuv.virt_addr[1], picture.stride()};
        ref::color_filter({twin.data(), width, height, twin.stride()}, twin_rgb, twin_yuv);
        ASSERT_EQ(first_difference(mask, twin), "")
            << "round " << round << ", " << width << " x " << height << ", seed " << random.seed();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (before.at(x, y) == 0) continue;
                ++(mask.at(x, y) != 0 ? kept : cleared);
            }
        }
    }
    EXPECT_GT(kept, 10000);
    EXPECT_GT(cleared, 10000);
}

}  // namespace
