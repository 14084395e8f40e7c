// The colour conversion: its tables, single colours by hand, and whole images against the plain twin.
#include "preprocess/CYuv420_Rgb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/reference/ref_pixels.h"
#include "tests/support/fenced_block.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::chroma_table;
using orva_fd::CYuv420_Rgb;
using support::first_difference;
using support::grey_image;
using support::nv21_picture;
using support::row_name;
using support::shape;

// --- tables ---------------------------------------------------------------------------------------------------------

int floor_of_256th(int value) {
    return value >= 0 ? value / 256 : -((-value + 255) / 256);
}

struct table_row : support::named_row {
    const chroma_table* table;
    int coefficient;
    int at_0;
    int at_255;
};

class chroma_tables : public testing::TestWithParam<table_row> {};

TEST_P(chroma_tables, round_every_offset_down) {
    const chroma_table& table = *GetParam().table;
    EXPECT_EQ(table[0], GetParam().at_0);
    EXPECT_EQ(table[128], 0);
    EXPECT_EQ(table[255], GetParam().at_255);
    for (int c = 0; c < 256; ++c) EXPECT_EQ(table[c], floor_of_256th((c - 128) * GetParam().coefficient)) << c;
}

INSTANTIATE_TEST_SUITE_P(table, chroma_tables,
                         testing::Values(table_row{{"red from V"}, &CYuv420_Rgb::m_table_fv1, 359, -180, 178},
                                         table_row{{"green from V"}, &CYuv420_Rgb::m_table_fv2, 183, -92, 90},
                                         table_row{{"green from U"}, &CYuv420_Rgb::m_table_fu1, 88, -44, 43},
                                         table_row{{"blue from U"}, &CYuv420_Rgb::m_table_fu2, 454, -227, 225}),
                         row_name());

class conversion : public testing::Test {
protected:
    static void SetUpTestSuite() { EXPECT_EQ(CYuv420_Rgb::init(), 0); }
};

TEST_F(conversion, clips_through_a_table_of_1024) {
    for (int i = 0; i < 1024; ++i) {
        const int wanted = i < 384 ? 0 : i < 640 ? i - 384 : 255;
        ASSERT_EQ(CYuv420_Rgb::m_table_clp[i], wanted) << i;
    }
}

TEST_F(conversion, keeps_its_table_after_destroy) {
    EXPECT_EQ(CYuv420_Rgb::destroy(), 0);
    EXPECT_EQ(CYuv420_Rgb::m_table_clp[384 + 77], 77);
    EXPECT_EQ(CYuv420_Rgb::m_table_clp[1023], 255);
}

// --- single colours -------------------------------------------------------------------------------------------------

// Three planes that may lie anywhere in one block.
fd_yuv_frame rgb_frame(grey_image& block, int width, int height, int plane_distance) {
    fd_yuv_frame record = block.frame();
    record.width = static_cast<unsigned>(width);
    record.height = static_cast<unsigned>(height);
    for (int k = 1; k < 3; ++k) {
        record.virt_addr[k] = record.virt_addr[0] + static_cast<std::ptrdiff_t>(k) * plane_distance;
        record.stride[k] = record.stride[0];
    }
    return record;
}

struct colour_row : support::named_row {
    int y, u, v;
    int red, green, blue;
};

class colours : public testing::TestWithParam<colour_row> {
protected:
    static void SetUpTestSuite() { CYuv420_Rgb::init(); }
};

TEST_P(colours, become_red_green_blue) {
    const colour_row& row = GetParam();
    nv21_picture picture(2, 2);
    picture.paint(0, 0, 2, 2, row.y, row.u, row.v);
    grey_image rgb(2, 6);
    fd_yuv_frame src = picture.frame(), dst = rgb_frame(rgb, 2, 2, 4);
    EXPECT_EQ(CYuv420_Rgb().yuv420sp_to_rgb24(&src, &dst), 0);
    grey_image wanted(2, 6);
    wanted.fill_rect(0, 0, 2, 2, static_cast<unsigned char>(row.blue));
    wanted.fill_rect(0, 2, 2, 2, static_cast<unsigned char>(row.green));
    wanted.fill_rect(0, 4, 2, 2, static_cast<unsigned char>(row.red));
    EXPECT_EQ(first_difference(rgb, wanted), "");
}

INSTANTIATE_TEST_SUITE_P(by_hand, colours,
                         testing::Values(colour_row{{"luma 0 is black"}, 0, 128, 128, 0, 0, 0},
                                         colour_row{{"luma 255 is white"}, 255, 128, 128, 255, 255, 255},
                                         colour_row{{"luma 16 is not black"}, 16, 128, 128, 16, 16, 16},
                                         // 127 * 359 / 256 = 178.1; green - 90
                                         colour_row{{"red is clipped at 255"}, 255, 128, 255, 255, 165, 255},
                                         colour_row{{"blue is clipped at 255"}, 255, 255, 128, 255, 212, 255},
                                         // -180 for red, + 92 for green; -227 for blue, + 44 for green
                                         colour_row{{"red and blue are clipped at 0"}, 100, 0, 0, 0, 236, 0},
                                         colour_row{{"green is clipped at 0"}, 100, 255, 255, 255, 0, 255},
                                         colour_row{{"green is clipped at 255"}, 200, 0, 0, 20, 255, 0},
                                         // V 202: + 103, - 52; U 43: + 30, - 151
                                         colour_row{{"orange"}, 151, 43, 202, 254, 129, 0},
                                         // One below neutral: -359, -183, -88, -454 over 256, all rounded down
                                         colour_row{{"one below neutral rounds down"}, 100, 127, 127, 98, 102, 98},
                                         colour_row{{"one above neutral rounds down"}, 100, 129, 129, 101, 100, 101}),
                         row_name());

TEST_F(conversion, gives_each_block_its_own_chroma_and_each_pixel_its_own_luma) {
    nv21_picture picture(4, 4, 6);
    for (int i = 0; i < 16; ++i) picture.luma_at(i % 4, i / 4) = static_cast<unsigned char>(10 * i);
    picture.chroma_at(2, 0) = 255;  // V of the upper right block: red + 178, green - 90
    picture.chroma_at(1, 2) = 255;  // U of the lower left block: blue + 225, green - 43
    grey_image rgb(4, 12, 5, 0, 77);
    fd_yuv_frame src = picture.frame(), dst = rgb_frame(rgb, 4, 4, 20);
    EXPECT_EQ(CYuv420_Rgb().yuv420sp_to_rgb24(&src, &dst), 0);
    grey_image wanted(4, 12, 5, 0, 77);
    for (int i = 0; i < 16; ++i) {
        const int x = i % 4, y = i / 4, luma = 10 * i;
        const bool upper_right = x >= 2 && y < 2, lower_left = x < 2 && y >= 2;
        const auto clipped = [](int value) { return static_cast<unsigned char>(std::min(255, std::max(0, value))); };
        wanted.at(x, y) = clipped(luma + (lower_left ? 225 : 0));
        wanted.at(x, y + 4) = clipped(luma - (upper_right ? 90 : 0) - (lower_left ? 43 : 0));
        wanted.at(x, y + 8) = clipped(luma + (upper_right ? 178 : 0));
    }
    EXPECT_EQ(first_difference(rgb, wanted), "");
}

struct empty_row : support::named_row {
    unsigned width;
    unsigned height;
};

class empty_images : public testing::TestWithParam<empty_row> {
protected:
    static void SetUpTestSuite() { CYuv420_Rgb::init(); }
};

TEST_P(empty_images, write_nothing) {
    nv21_picture picture(4, 4);
    grey_image rgb(4, 12, 4, 0, 77);
    const grey_image before = rgb;
    fd_yuv_frame src = picture.frame(), dst = rgb_frame(rgb, 4, 4, 16);
    src.width = dst.width = GetParam().width;
    src.height = dst.height = GetParam().height;
    EXPECT_EQ(CYuv420_Rgb().yuv420sp_to_rgb24(&src, &dst), 0);
    EXPECT_TRUE(rgb == before);
}

INSTANTIATE_TEST_SUITE_P(table, empty_images,
                         testing::Values(empty_row{{"no row"}, 4, 0}, empty_row{{"no column"}, 0, 4},
                                         empty_row{{"neither"}, 0, 0}),
                         row_name());

// --- whole images ---------------------------------------------------------------------------------------------------

class conversion_loop : public testing::TestWithParam<support::content_row> {
protected:
    static void SetUpTestSuite() { CYuv420_Rgb::init(); }
};

// Odd sizes read and write one more column and row; planes that lie stride * height apart then overlap.
TEST_P(conversion_loop, equals_the_plain_twin_in_all_shapes) {
    support::random_source random;
    for (const shape& s : support::all_shapes()) {
        if (s.height == 288 && s.width % 2 == 0 && s.width < 40) continue;
        const int rows = s.height + 2;
        grey_image luma(s.width, rows, s.stride, s.offset),
            chroma(s.width, rows / 2, s.stride + random.below(3), s.offset);
        fill(luma, GetParam().what, random);
        fill(chroma, support::content::noise, random);
        const int distance = s.stride * s.height + (random.below(2) == 0 ? 0 : 2 * s.stride + 1);
        // Room behind the last plane for one more row and column.
        grey_image rgb(1, 3 * distance + 3 * s.stride + 4, 1, s.offset);
        random.fill(rgb.data(), rgb.length());
        grey_image twin_rgb = rgb;

        fd_yuv_frame src = luma.frame(), dst = rgb_frame(rgb, s.width, s.height, distance);
        dst.stride[0] = dst.stride[1] = dst.stride[2] = static_cast<unsigned>(s.stride);
        src.height = static_cast<unsigned>(s.height);
        src.virt_addr[1] = chroma.data();
        src.stride[1] = static_cast<unsigned>(chroma.stride());
        ASSERT_EQ(CYuv420_Rgb().yuv420sp_to_rgb24(&src, &dst), 0);

        const ref::yuv_view twin_src = {{luma.data(), s.width, s.height, s.stride}, chroma.data(), chroma.stride()};
        ref::convert_image(twin_src, {{twin_rgb.data(), s.width, s.height, s.stride},
                                      twin_rgb.data() + distance,
                                      twin_rgb.data() + 2 * distance});
        ASSERT_EQ(first_difference(rgb, twin_rgb), "")
            << text_of(s) << ", planes " << distance << " apart, seed " << random.seed();
    }
}

INSTANTIATE_TEST_SUITE_P(contents, conversion_loop, testing::ValuesIn(support::all_contents()), row_name());

TEST_F(conversion, touches_nothing_behind_the_last_pixel_of_even_sizes) {
    for (const int width : {2, 14, 16, 18, 30, 34, 62, 66, 350, 352}) {
        const std::size_t luma_length = static_cast<std::size_t>(384 * 3 + width),
                          chroma_length = static_cast<std::size_t>(384 + width);
        support::fenced_block luma(luma_length), chroma(chroma_length), blue(luma_length), green(luma_length),
            red(luma_length);
        fd_yuv_frame src = {}, dst = {};
        src.width = dst.width = static_cast<unsigned>(width);
        src.height = dst.height = 4;
        for (int k = 0; k < 3; ++k) src.stride[k] = dst.stride[k] = 384;
        src.virt_addr[0] = luma.data();
        src.virt_addr[1] = chroma.data();
        dst.virt_addr[0] = blue.data();
        dst.virt_addr[1] = green.data();
        dst.virt_addr[2] = red.data();
        std::fill_n(luma.data(), luma_length, static_cast<unsigned char>(50));
        std::fill_n(chroma.data(), chroma_length, static_cast<unsigned char>(128));
        luma.make_read_only();
        chroma.make_read_only();
        EXPECT_EQ(CYuv420_Rgb().yuv420sp_to_rgb24(&src, &dst), 0);
        for (support::fenced_block* plane : {&blue, &green, &red}) EXPECT_EQ(plane->data()[luma_length - 1], 50);
    }
}

}  // namespace
