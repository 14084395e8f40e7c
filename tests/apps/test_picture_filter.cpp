// Pictures made upright, progressive and of one size.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "apps/orva_fire/picture_filter.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

const AVRational k_time_base = {1, 1000};

frame_ptr stamped(frame_ptr picture, int64_t milliseconds) {
    picture->pts = milliseconds;
    return picture;
}

frame_ptr grey(int width, int height, int64_t milliseconds) {
    return stamped(
        flat_picture(AV_PIX_FMT_YUV420P, width, height, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M),
        milliseconds);
}

// --- turns -----------------------------------------------------------------------------------------------------------

// The display matrix whose upper left numbers are a, b / c, d: a point x, y of the source belongs at a*x + c*y, b*x +
// d*y.
std::array<int32_t, 9> display_matrix(double a, double b, double c, double d) {
    const auto fixed = [](double value) { return static_cast<int32_t>(value * 65536); };
    return {fixed(a), fixed(b), 0, fixed(c), fixed(d), 0, 0, 0, 1 << 30};
}

struct turn_row : support::named_row {
    double a, b, c, d;
    // Where the white corner of the source (its upper left) comes to lie: left or right, top or bottom.
    bool right, bottom;
    bool turned;  // width and height change places
};

class upright : public testing::TestWithParam<turn_row> {};

TEST_P(upright, puts_the_corner_there) {
    const turn_row& row = GetParam();
    const auto matrix = display_matrix(row.a, row.b, row.c, row.d);
    frame_ptr source = grey(64, 32, 40);
    paint(*source, 0, 0, 8, 8, k_white);

    picture_filter filter(k_time_base, upright_filters(matrix.data()));
    filter.push(std::move(source));
    frame_ptr picture;
    double seconds = 0;
    ASSERT_TRUE(filter.pull(picture, seconds));
    EXPECT_EQ(seconds, 0.04);
    ASSERT_EQ(picture->width, row.turned ? 32 : 64);
    ASSERT_EQ(picture->height, row.turned ? 64 : 32);
    const int x = row.right ? picture->width - 4 : 4, y = row.bottom ? picture->height - 4 : 4;
    EXPECT_EQ(component(*picture, x, y, 0), 235);
    EXPECT_EQ(component(*picture, picture->width / 2, picture->height / 2, 0), 102);
}

INSTANTIATE_TEST_SUITE_P(
    table, upright,
    testing::Values(turn_row{{"as it is"}, 1, 0, 0, 1, false, false, false},
                    turn_row{{"a quarter turn clockwise"}, 0, 1, -1, 0, true, false, true},
                    turn_row{{"half a turn"}, -1, 0, 0, -1, true, true, false},
                    turn_row{{"a quarter turn counter clockwise"}, 0, -1, 1, 0, false, true, true},
                    turn_row{{"left and right changed"}, -1, 0, 0, 1, true, false, false},
                    turn_row{{"top and bottom changed"}, 1, 0, 0, -1, false, true, false},
                    turn_row{{"rows and columns changed"}, 0, 1, 1, 0, false, false, true},
                    turn_row{{"rows and columns changed and half a turn"}, 0, -1, -1, 0, true, true, true}),
    row_name());

TEST(upright_filters, leave_odd_angles_alone_and_say_so) {
    const auto odd = display_matrix(0.866, 0.5, -0.5, 0.866);
    EXPECT_EQ(upright_filters(odd.data()), "");
    EXPECT_TRUE(has_odd_angle(odd.data()));
    EXPECT_FALSE(has_odd_angle(display_matrix(0, 1, -1, 0).data()));
    EXPECT_FALSE(has_odd_angle(display_matrix(1, 0, 0, 1).data()));
    EXPECT_EQ(upright_filters(nullptr), "");
    EXPECT_FALSE(has_odd_angle(nullptr));
}

// --- passing ---------------------------------------------------------------------------------------------------------

TEST(picture_filter, passes_upright_progressive_pictures_untouched) {
    picture_filter filter(k_time_base, "");
    frame_ptr source = grey(64, 32, 120);
    const uint8_t* pixels = source->data[0];
    filter.push(std::move(source));
    frame_ptr picture;
    double seconds = 0;
    ASSERT_TRUE(filter.pull(picture, seconds));
    EXPECT_EQ(picture->data[0], pixels);
    EXPECT_EQ(seconds, 0.12);
    EXPECT_FALSE(filter.pull(picture, seconds));
}

TEST(picture_filter, scales_later_pictures_to_the_size_of_the_first) {
    picture_filter filter(k_time_base, "");
    filter.push(grey(64, 32, 0));
    filter.push(grey(128, 96, 40));
    filter.push(grey(64, 32, 80));
    filter.finish();
    frame_ptr picture;
    double seconds = 0;
    for (const double wanted : {0.0, 0.04, 0.08}) {
        ASSERT_TRUE(filter.pull(picture, seconds));
        EXPECT_EQ(picture->width, 64);
        EXPECT_EQ(picture->height, 32);
        EXPECT_NEAR(component(*picture, 30, 15, 0), 102, 1);
        EXPECT_DOUBLE_EQ(seconds, wanted);
    }
    EXPECT_FALSE(filter.pull(picture, seconds));
}

TEST(picture_filter, makes_palettes_plain) {
    frame_ptr source = new_picture(AV_PIX_FMT_PAL8, 64, 32);
    for (int y = 0; y < 32; ++y) std::fill_n(source->data[0] + y * source->linesize[0], 64, uint8_t{3});
    const uint32_t orange = 0xffff8000u;
    std::memcpy(source->data[1] + 12, &orange, 4);
    picture_filter filter(k_time_base, "");
    filter.push(stamped(std::move(source), 0));
    frame_ptr picture;
    double seconds = 0;
    ASSERT_TRUE(filter.pull(picture, seconds));
    ASSERT_EQ(picture->format, AV_PIX_FMT_RGB24);
    EXPECT_EQ(component(*picture, 10, 10, 0), 255);
    EXPECT_EQ(component(*picture, 10, 10, 1), 128);
    EXPECT_EQ(component(*picture, 10, 10, 2), 0);
}

// --- interlaced pictures ---------------------------------------------------------------------------------------------

// A white bar that moves by 8 pixels from one field to the next: its rows stand beside each other like a comb.
frame_ptr woven(int index) {
    frame_ptr picture = grey(128, 64, index * 40);
    for (int y = 0; y < 64; ++y) paint(*picture, 8 + index * 16 + (y % 2) * 8, y, 8, 1, k_white);
    picture->interlaced_frame = 1;
    picture->top_field_first = 1;
    return picture;
}

// Places where a pixel differs from both its neighbours above and below, which are alike.
int teeth(const AVFrame& picture) {
    int count = 0;
    for (int y = 1; y < picture.height - 1; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int above = component(picture, x, y - 1, 0), here = component(picture, x, y, 0),
                      below = component(picture, x, y + 1, 0);
            count += std::abs(above - below) < 20 && std::abs(here - above) > 60;
        }
    }
    return count;
}

TEST(picture_filter, deinterlaces_and_keeps_count_and_times) {
    ASSERT_GT(teeth(*woven(1)), 900) << "62 rows with two bars of 8";
    picture_filter filter(k_time_base, "");
    for (int i = 0; i < 5; ++i) filter.push(woven(i));
    filter.finish();
    frame_ptr picture;
    double seconds = 0;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(filter.pull(picture, seconds)) << i;
        EXPECT_DOUBLE_EQ(seconds, i * 0.04);
        EXPECT_LT(teeth(*picture), 90) << i;
    }
    EXPECT_FALSE(filter.pull(picture, seconds));
}

TEST(picture_filter, leaves_progressive_pictures_of_a_mixed_stream_alone) {
    picture_filter filter(k_time_base, "");
    filter.push(woven(0));
    frame_ptr progressive = grey(128, 64, 40);
    // Single rows, which a deinterlacer would take for a comb.
    for (int y = 0; y < 64; y += 2) paint(*progressive, 0, y, 128, 1, k_white);
    filter.push(std::move(progressive));
    filter.push(woven(2));
    filter.finish();
    frame_ptr picture;
    double seconds = 0;
    ASSERT_TRUE(filter.pull(picture, seconds));
    ASSERT_TRUE(filter.pull(picture, seconds));
    EXPECT_EQ(component(*picture, 60, 20, 0), 235);
    EXPECT_EQ(component(*picture, 60, 21, 0), 102);
}

}  // namespace
