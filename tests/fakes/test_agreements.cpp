// Where software and accelerator agree, and where they differ by design: one test each. The same picture is given to
// both; software is chosen by an unaligned physical address.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "imgproc/common.h"
#include "preprocess/CYuv420_Rgb.h"
#include "tests/fakes/chip_test.h"
#include "tests/fakes/twin_engine.h"
#include "tests/support/capture.h"

namespace {

using fakes::chip_picture;
using orva_fd::con_info;

const int k_width = 96;
const int k_height = 64;

class two_ways : public fakes::chip_test {
protected:
    two_ways() {
        orva_fd::fd_table::init();
        orva_fd::CYuv420_Rgb::init();
    }

    static fd_yuv_frame for_software(chip_picture& picture) {
        fd_yuv_frame frame = picture.frame();
        frame.phys_addr[0] += 8;
        frame.stride[0] = static_cast<std::uint32_t>(k_width);
        return frame;
    }

    std::vector<con_info> components(chip_picture& picture, bool software) {
        chip_picture copy(k_width, k_height);
        copy.bytes() = picture.bytes();
        fd_yuv_frame frame = software ? for_software(copy) : copy.frame();
        orva_fd::hisi_mmz_mem blob;
        EXPECT_EQ(blob.alloc_mmz(3052, true), 0);
        std::vector<con_info> out;
        const support::captured_output silence;
        EXPECT_EQ(ive.do_ccl(&frame, &blob, out, true), 0);
        return out;
    }

    // Sets a rectangle of pixels.
    static void draw(chip_picture& picture, int x, int y, int width, int height) {
        for (int row = y; row < y + height; ++row) {
            for (int column = x; column < x + width; ++column) picture.plane().at(column, row) = 255;
        }
    }

    orva_fd::hisi_ive_func ive;
};

TEST_F(two_ways, difference_agrees) {
    chip_picture a(k_width, k_height), b(k_width, k_height), by_engine(k_width, k_height),
        by_software(k_width, k_height);
    a.fill_noise(1);
    b.fill_noise(2);
    fd_yuv_frame first = a.frame(), second = b.frame(), dst = by_engine.frame();
    EXPECT_EQ(ive.do_sub(&first, &second, &dst, true), 0);
    fd_yuv_frame soft = for_software(by_software);
    const support::captured_output silence;
    EXPECT_EQ(ive.do_sub(&first, &second, &soft, true), 0);
    EXPECT_EQ(by_engine.bytes(), by_software.bytes());
    EXPECT_EQ(standin::calls(standin::call::sub), 1);
}

TEST_F(two_ways, threshold_agrees_for_every_threshold) {
    chip_picture src(k_width, k_height), by_engine(k_width, k_height), by_software(k_width, k_height);
    src.fill_noise(3);
    for (int threshold = 0; threshold < 256; ++threshold) {
        fd_yuv_frame from = src.frame(), dst = by_engine.frame(), soft = for_software(by_software);
        EXPECT_EQ(ive.do_thres(&from, &dst, threshold, true), 0);
        const support::captured_output silence;
        EXPECT_EQ(ive.do_thres(&from, &soft, threshold, true), 0);
        EXPECT_EQ(by_engine.bytes(), by_software.bytes()) << threshold;
    }
}

TEST_F(two_ways, copy_agrees) {
    chip_picture src(k_width, k_height), by_engine(k_width, k_height);
    src.fill_noise(4);
    fd_yuv_frame from = src.frame(), dst = by_engine.frame();
    EXPECT_EQ(ive.do_dma(&from, &dst, true), 0);
    chip_picture odd(k_width, k_height, 1, 104);
    fd_yuv_frame soft = odd.frame();
    EXPECT_EQ(ive.do_dma(&from, &soft, true), 0);
    for (int y = 0; y < k_height; ++y) {
        for (int x = 0; x < k_width; ++x) ASSERT_EQ(by_engine.plane().at(x, y), odd.plane().at(x, y));
    }
}

TEST_F(two_ways, dilation_differs_in_the_last_column_but_one_and_nowhere_else) {
    chip_picture src(k_width, k_height), by_engine(k_width, k_height), by_software(k_width, k_height);
    src.fill_binary_noise(5, 240);
    fd_yuv_frame from = src.frame(), dst = by_engine.frame(), soft = for_software(by_software);
    EXPECT_EQ(ive.do_dilate(&from, &dst, true), 0);
    {
        const support::captured_output silence;
        EXPECT_EQ(ive.do_dilate(&from, &soft, true), 0);
    }
    int differing = 0;
    for (int y = 0; y < k_height; ++y) {
        for (int x = 0; x < k_width; ++x) {
            const unsigned char engine = by_engine.plane().at(x, y);
            const unsigned char software = by_software.plane().at(x, y);
            if (engine == software) continue;
            ++differing;
            EXPECT_EQ(x, k_width - 2) << "row " << y;
            EXPECT_EQ(software, src.plane().at(x, y)) << "software copies that column";
        }
    }
    EXPECT_GT(differing, 0);
}

// Two squares of 16 pixels whose corners touch.
TEST_F(two_ways, corners_connect_on_the_engine_and_not_in_software) {
    chip_picture mask(k_width, k_height);
    draw(mask, 8, 8, 4, 4);
    draw(mask, 12, 12, 4, 4);
    const std::vector<con_info> engine = components(mask, false);
    ASSERT_EQ(engine.size(), 1u);
    EXPECT_EQ(engine[0].area, 32);
    EXPECT_EQ(engine[0].left, 8);
    EXPECT_EQ(engine[0].right, 15);
    const std::vector<con_info> software = components(mask, true);
    ASSERT_EQ(software.size(), 2u);
    EXPECT_EQ(software[0].area, 16);
    EXPECT_EQ(software[1].area, 16);
}

TEST_F(two_ways, components_of_10_pixels_are_dropped_by_the_engine_and_kept_in_software) {
    chip_picture mask(k_width, k_height);
    draw(mask, 8, 8, 10, 1);
    draw(mask, 8, 20, 11, 1);
    draw(mask, 8, 30, 1, 1);
    const std::vector<con_info> engine = components(mask, false);
    ASSERT_EQ(engine.size(), 1u);
    EXPECT_EQ(engine[0].area, 11);
    const std::vector<con_info> software = components(mask, true);
    ASSERT_EQ(software.size(), 3u);
    EXPECT_EQ(software[0].area, 10);
    EXPECT_EQ(software[2].area, 1);
}

// 255 bars of 12 pixels and one of 13: the engine's bound grows from 10 to 12 and leaves one.
TEST_F(two_ways, more_than_254_components_lose_the_small_ones_on_the_engine_alone) {
    chip_picture mask(352, 288);
    fd_yuv_frame frame = mask.frame();
    for (int i = 0; i < 255; ++i) draw(mask, i % 20 * 16, i / 20 * 4, 12, 1);
    draw(mask, 0, 200, 13, 1);
    chip_picture copy(352, 288);
    copy.bytes() = mask.bytes();
    orva_fd::hisi_mmz_mem blob;
    ASSERT_EQ(blob.alloc_mmz(3052, true), 0);
    std::vector<con_info> engine;
    EXPECT_EQ(ive.do_ccl(&frame, &blob, engine, true), 0);
    ASSERT_EQ(engine.size(), 1u);
    EXPECT_EQ(engine[0].area, 13);
    fd_yuv_frame soft = copy.frame();
    soft.phys_addr[0] += 8;
    std::vector<con_info> software;
    const support::captured_output silence;
    EXPECT_EQ(ive.do_ccl(&soft, &blob, software, true), 0);
    EXPECT_EQ(software.size(), 256u);
}

TEST_F(two_ways, components_agree_where_all_are_large_and_none_touch_by_corners) {
    chip_picture mask(k_width, k_height);
    for (int i = 0; i < 12; ++i) draw(mask, 4 + i % 4 * 22, 4 + i / 4 * 18, 5 + i, 3 + i % 3);
    const std::vector<con_info> engine = components(mask, false);
    const std::vector<con_info> software = components(mask, true);
    ASSERT_EQ(engine.size(), 12u);
    ASSERT_EQ(software.size(), 12u);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(engine[i].area, software[i].area) << i;
        EXPECT_EQ(engine[i].left, software[i].left) << i;
        EXPECT_EQ(engine[i].right, software[i].right) << i;
        EXPECT_EQ(engine[i].top, software[i].top) << i;
        EXPECT_EQ(engine[i].bottom, software[i].bottom) << i;
    }
}

// The same three colours: software takes full range with BT.601, the engine studio range with BT.709.
TEST_F(two_ways, colours_differ_by_matrix_and_range) {
    struct row {
        int y, u, v;
        int software[3];  // blue, green, red
        int engine[3];
    };
    const row rows[] = {
        // Studio black and white: 16 and 235 to software, the ends of the range to the engine.
        {16, 128, 128, {16, 16, 16}, {0, 0, 0}},
        {235, 128, 128, {235, 235, 235}, {255, 255, 255}},
        // A flame. Software: 200 + ((-28 * 454) >> 8) = 150, 200 - (-10) - 15 = 195, 200 + ((22 * 359) >> 8) = 230.
        // Engine: 255/219 * 184 = 214.25; blue - 2.1124 * 28 = 155.1, green + 0.2132 * 28 - 0.5329 * 22 = 208.49,
        // red + 1.7927 * 22 = 253.7.
        {200, 100, 150, {150, 195, 230}, {155, 208, 254}},
    };
    for (const row& one : rows) {
        chip_picture nv21(k_width, k_height, 2), by_engine(k_width, k_height, 3), by_software(k_width, k_height, 3);
        for (int y = 0; y < k_height; ++y) {
            for (int x = 0; x < k_width; ++x) {
                nv21.plane(0).at(x, y) = static_cast<unsigned char>(one.y);
                nv21.plane(1).at(x, y / 2) = static_cast<unsigned char>(x % 2 == 0 ? one.v : one.u);
            }
        }
        fd_yuv_frame from = nv21.frame(), dst = by_engine.frame(), soft = for_software(by_software);
        EXPECT_EQ(ive.do_color_trans(&from, &dst, orva_fd::color_trans_rgb, true), 0);
        {
            const support::captured_output silence;
            EXPECT_EQ(ive.do_color_trans(&from, &soft, orva_fd::color_trans_rgb, true), 0);
        }
        for (int plane = 0; plane < 3; ++plane) {
            EXPECT_EQ(by_software.plane(plane).at(40, 30), one.software[plane]) << one.y << " plane " << plane;
            EXPECT_EQ(by_engine.plane(plane).at(40, 30), one.engine[plane]) << one.y << " plane " << plane;
        }
    }
}

}  // namespace
