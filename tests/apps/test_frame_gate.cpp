// Which pictures are passed on: thinning by time stamps, and repeats.
#include <gtest/gtest.h>

#include <cmath>

#include "apps/orva_fire/frame_gate.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

int passed(double limit, const std::vector<double>& times) {
    rate_limiter limiter(limit);
    int count = 0;
    for (const double seconds : times) count += limiter.passes(seconds);
    return count;
}

std::vector<double> every(double rate, int count, double rounded_to) {
    std::vector<double> times;
    for (int i = 0; i < count; ++i) times.push_back(std::round(i / rate / rounded_to) * rounded_to);
    return times;
}

struct rate_row : support::named_row {
    double source, limit;
    int pictures;
    double rounded_to;
    int wanted;
};

class rate_limit : public testing::TestWithParam<rate_row> {};

TEST_P(rate_limit, passes_so_many) {
    const rate_row& row = GetParam();
    EXPECT_EQ(passed(row.limit, every(row.source, row.pictures, row.rounded_to)), row.wanted);
}

const double k_fine = 1e-6, k_milliseconds = 1e-3;

INSTANTIATE_TEST_SUITE_P(
    table, rate_limit,
    testing::Values(
        rate_row{{"no limit passes all"}, 25, 0, 250, k_fine, 250}, rate_row{{"one in five"}, 25, 5, 250, k_fine, 50},
        rate_row{{"two in three"}, 30, 20, 300, k_fine, 200}, rate_row{{"two in five"}, 25, 10, 250, k_fine, 100},
        rate_row{{"a limit above the rate passes all"}, 25, 30, 250, k_fine, 250},
        rate_row{{"a limit equal to the rate passes all"}, 25, 25, 250, k_fine, 250},
        rate_row{{"an equal limit with time stamps in milliseconds"}, 30, 30, 300, k_milliseconds, 300},
        rate_row{{"an odd rate in milliseconds"}, 29.97, 29.97, 300, k_milliseconds, 300},
        rate_row{{"one a second"}, 25, 1, 250, k_fine, 10}, rate_row{{"one in ten seconds"}, 25, 0.1, 250, k_fine, 1}),
    row_name());

TEST(rate_limiter, starts_afresh_after_a_gap) {
    // 5 a second: 0, then after the gap 10.0 and 10.2; what lies between is dropped, nothing is made up for.
    EXPECT_EQ(passed(5, {0, 0.1, 10.0, 10.04, 10.08, 10.2}), 3);
}

TEST(rate_limiter, thins_out_bursts_of_a_varying_rate) {
    EXPECT_EQ(passed(10, {0, 0.01, 0.02, 0.03, 0.5, 0.51, 0.52, 1.0}), 3);
}

// --- repeats ---------------------------------------------------------------------------------------------------------

frame_ptr grey_picture() {
    return flat_picture(AV_PIX_FMT_YUV420P, 320, 240, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
}

void brighten(AVFrame& picture, int x, int y, int width, int height, int by) {
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            uint8_t& pixel = picture.data[0][row * picture.linesize[0] + column];
            pixel = static_cast<uint8_t>(pixel + by);
        }
    }
}

TEST(same_picture, holds_for_equal_bytes_in_other_memory) {
    EXPECT_TRUE(same_picture(*grey_picture(), *grey_picture()));
}

TEST(same_picture, forgives_the_trace_of_coding) {
    const frame_ptr noisy = grey_picture();
    // 3000 of 76800 pixels by one: 0.039 on average, 4 at most in a block of 64.
    for (int i = 0; i < 3000; ++i) brighten(*noisy, (i * 5) % 320, (i * 5) / 320 * 5, 1, 1, 1);
    EXPECT_TRUE(same_picture(*grey_picture(), *noisy));
}

TEST(same_picture, sees_more_than_a_trace_over_the_whole) {
    const frame_ptr noisy = grey_picture();
    for (int i = 0; i < 4000; ++i) brighten(*noisy, (i * 4) % 320, (i * 4) / 320 * 4, 1, 1, 1);
    EXPECT_FALSE(same_picture(*grey_picture(), *noisy)) << "4000 of 76800 pixels is 0.052 on average";
}

TEST(same_picture, sees_a_small_flicker) {
    // 8 x 8 pixels by 2 in a picture of 76800: nothing on average, but all in one block.
    const frame_ptr flicker = grey_picture();
    brighten(*flicker, 160, 120, 8, 8, 2);
    EXPECT_FALSE(same_picture(*grey_picture(), *flicker));
    const frame_ptr fainter = grey_picture();
    brighten(*fainter, 160, 120, 8, 8, 1);
    EXPECT_TRUE(same_picture(*grey_picture(), *fainter));
}

TEST(same_picture, sees_a_flicker_in_a_narrow_block_at_the_edge) {
    const auto odd = [] {
        return flat_picture(AV_PIX_FMT_YUV420P, 322, 242, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    };
    const frame_ptr flicker = odd();
    brighten(*flicker, 320, 240, 2, 2, 2);
    EXPECT_FALSE(same_picture(*odd(), *flicker));
}

TEST(same_picture, compares_other_formats_byte_by_byte) {
    for (const AVPixelFormat format : {AV_PIX_FMT_RGB24, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUYV422}) {
        const auto make = [format] {
            return flat_picture(format, 64, 48, {100, 100, 100}, AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED);
        };
        const frame_ptr changed = make();
        changed->data[0][47 * changed->linesize[0] + 63] ^= 1;
        EXPECT_TRUE(same_picture(*make(), *make())) << format;
        EXPECT_FALSE(same_picture(*make(), *changed)) << format;
    }
}

TEST(same_picture, fails_for_another_size_or_format) {
    const frame_ptr narrow =
        flat_picture(AV_PIX_FMT_YUV420P, 318, 240, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    const frame_ptr dense =
        flat_picture(AV_PIX_FMT_YUV444P, 320, 240, {100, 100, 100}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    EXPECT_FALSE(same_picture(*grey_picture(), *narrow));
    EXPECT_FALSE(same_picture(*grey_picture(), *dense));
}

TEST(repeat_finder, compares_with_the_last_new_picture) {
    // Each picture differs too little from the one before to be new, but the third is new beside the first.
    repeat_finder finder;
    const frame_ptr first = grey_picture(), second = grey_picture(), third = grey_picture();
    brighten(*second, 160, 120, 8, 8, 1);
    brighten(*third, 160, 120, 8, 8, 2);
    EXPECT_FALSE(finder.repeats(*first));
    EXPECT_TRUE(finder.repeats(*second));
    EXPECT_FALSE(finder.repeats(*third));
    EXPECT_TRUE(finder.repeats(*third));
}

}  // namespace
