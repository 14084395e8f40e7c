// Otsu's threshold: histograms worked out by hand, then random ones against the plain twin.
#include <gtest/gtest.h>

#include <vector>

#include "imgproc/common.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using support::grey_image;
using support::row_name;

// `count` pixels of `value`.
struct share {
    int value;
    int count;
};

grey_image image_of(const std::vector<share>& shares) {
    int total = 0;
    for (const share& s : shares) total += s.count;
    grey_image image(total, 1);
    int x = 0;
    for (const share& s : shares) {
        for (int i = 0; i < s.count; ++i) image.at(x++, 0) = static_cast<unsigned char>(s.value);
    }
    return image;
}

struct histogram_row : support::named_row {
    std::vector<share> shares;
    int t_min;
    int t_max;
    int wanted;
};

class getThreshVal_Otsu : public testing::TestWithParam<histogram_row> {};

TEST_P(getThreshVal_Otsu, finds_the_threshold) {
    grey_image image = image_of(GetParam().shares);
    fd_yuv_frame img = image.frame();
    EXPECT_EQ(orva_fd::getThreshVal_Otsu(&img, 0, 0, GetParam().t_min, GetParam().t_max), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    by_hand, getThreshVal_Otsu,
    testing::Values(
        histogram_row{{"an all zero image gives t_min"}, {{0, 64}}, 20, 35, 20},
        histogram_row{{"an image of one value in the range gives t_min"}, {{25, 64}}, 20, 35, 20},
        histogram_row{{"an image above the range gives t_min"}, {{200, 32}, {220, 32}}, 20, 35, 20},
        histogram_row{{"two values tie from the lower one on and the lowest wins"}, {{22, 32}, {30, 32}}, 20, 35, 22},
        histogram_row{{"t_max itself is searched"}, {{35, 32}, {200, 32}}, 20, 35, 35},
        histogram_row{{"the value behind t_max is not"}, {{36, 32}, {200, 32}}, 20, 35, 20},
        histogram_row{{"t_min itself is searched"}, {{20, 32}, {21, 1}, {90, 32}}, 20, 20 + 1, 21},
        // The lower class 0 alone: v = 4200 * 840 = 3528000; 0 and 24 together: 6361 * 579 = 3683019.
        histogram_row{
            {"three clusters are cut where the product is larger"}, {{0, 100}, {24, 10}, {60, 10}}, 20, 35, 24},
        // With 20 pixels of 24: before 24, d = -1080 * 256 / 30 = -9216, a = -3600, b = -1080, v = 3888000; from 24 on,
        // m0 = 1024, m1 = 15360, d = -14336, a = -6720, b = -560, v = 3763200.
        histogram_row{{"and before the middle one when it is larger"}, {{0, 100}, {24, 20}, {60, 10}}, 20, 35, 20},
        // From 25 on the product 100376 * -65257 wraps to a positive number, v becomes negative and loses; without the
        // wrap 25 would win.
        histogram_row{{"products wrap in 32 bits"}, {{0, 100000}, {25, 376}, {255, 1000}}, 20, 35, 20},
        // Both cuts have d = -384, rounded down after the scaling: a = -1.5 to -2, b = -3, v = 6 at 22; -3 and -2,
        // again 6, at 23.
        histogram_row{{"the lower class is scaled by 256 and rounded down"}, {{22, 1}, {23, 1}, {24, 1}}, 20, 35, 22},
        // Both have d = -768: -3 and -6 at 31, -6 and -3 at 33. A b of half the scale would be -3 and -2.
        histogram_row{{"so is the upper class"}, {{31, 1}, {33, 1}, {35, 1}}, 20, 35, 31},
        histogram_row{{"equal bounds are returned unseen"}, {{22, 32}, {30, 32}}, 35, 35, 35},
        histogram_row{{"crossed bounds give t_min"}, {{22, 32}, {30, 32}}, 40, 35, 40},
        histogram_row{{"the whole range can be searched"}, {{0, 3}, {255, 5}}, 0, 255, 0},
        histogram_row{{"an empty image gives t_min"}, {}, 20, 35, 20}),
    row_name());

struct margin_row : support::named_row {
    int margin_x;
    int margin_y;
    int wanted;
};

class otsu_margins : public testing::TestWithParam<margin_row> {};

// Columns 0 and 7 hold 24 and 250, rows 0 and 7 hold 26 and 250, inside them 22 and 30.
grey_image framed_image() {
    grey_image image(8, 8, 11);
    image.fill_rect(0, 0, 11, 8, 33);
    image.fill_rect(0, 0, 8, 8, 22);
    image.fill_rect(4, 0, 4, 8, 30);
    for (int i = 0; i < 8; ++i) {
        image.at(i, 0) = i < 4 ? 26 : 250;
        image.at(i, 7) = i < 4 ? 26 : 250;
    }
    for (int i = 1; i < 7; ++i) {
        image.at(0, i) = 24;
        image.at(7, i) = 250;
    }
    return image;
}

TEST_P(otsu_margins, are_left_out) {
    grey_image image = framed_image();
    fd_yuv_frame img = image.frame();
    EXPECT_EQ(orva_fd::getThreshVal_Otsu(&img, GetParam().margin_x, GetParam().margin_y, 20, 35), GetParam().wanted);
}

// With no margins: 18 of 22, 6 of 24, 8 of 26, 18 of 30, 14 of 250; the cut below 250 is best, from 30 on.
// With one column: 18 of 22, 6 of 26, 18 of 30, 6 of 250: again 30. With one row: 18 of 22, 6 of 24, 18 of 30, 6 of
// 250.
INSTANTIATE_TEST_SUITE_P(by_hand, otsu_margins,
                         testing::Values(margin_row{{"no margin takes the bright edges in"}, 0, 0, 30},
                                         margin_row{{"a column of margin leaves bright rows"}, 1, 0, 30},
                                         margin_row{{"a row of margin leaves a bright column"}, 0, 1, 30},
                                         margin_row{{"both leave 22 and 30"}, 1, 1, 22},
                                         margin_row{{"a margin of half the height leaves nothing"}, 0, 4, 20},
                                         margin_row{{"a margin of more than the height leaves nothing"}, 0, 9, 20},
                                         margin_row{{"a margin of half the width leaves nothing"}, 4, 0, 20}),
                         row_name());

// Values in clusters, so that every branch of the search is met: classes that are empty, ties, wrapped products.
void fill_clusters(grey_image& image, support::random_source& random) {
    const int clusters = 1 + random.below(4);
    int centre[4];
    for (int& value : centre) value = random.below(2) == 0 ? random.below(50) : random.below(256);
    for (std::size_t i = 0; i < image.length(); ++i) {
        const int value = centre[random.below(clusters)] + random.below(4);
        image.data()[i] = static_cast<unsigned char>(value > 255 ? 255 : value);
    }
}

TEST(otsu_random, equals_the_plain_twin) {
    support::random_source random;
    for (int round = 0; round < 3000; ++round) {
        const bool large = round % 20 == 0;
        const int width = large ? 352 : random.below(40), height = large ? 288 : random.below(20);
        grey_image image(width, height, width + random.below(5));
        fill_clusters(image, random);
        const int margin_x = random.below(4), margin_y = random.below(4);
        const int t_min = round % 3 == 0 ? random.below(256) : 20;
        const int t_max = round % 3 == 0 ? random.below(256) : 35;
        fd_yuv_frame img = image.frame();
        const grey_image before = image;
        ASSERT_EQ(orva_fd::getThreshVal_Otsu(&img, margin_x, margin_y, t_min, t_max),
                  ref::otsu_threshold(plane_of(image), margin_x, margin_y, t_min, t_max))
            << "round " << round << ": " << width << " x " << height << ", margins " << margin_x << ", " << margin_y
            << ", range " << t_min << " to " << t_max << ", seed " << random.seed();
        ASSERT_TRUE(image == before);
    }
}

}  // namespace
