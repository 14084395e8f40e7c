// The dispatching operations in a build without the accelerator: sizes, software paths, and silence about eligibility.
#include "backend/hisi_ive_func.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "preprocess/CYuv420_Rgb.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/capture.h"
#include "tests/support/fenced_block.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using namespace orva_fd;
using support::first_difference;
using support::grey_image;
using support::nv21_picture;
using support::outcome;
using support::outcome_of;
using support::row_name;
using support::shape;

class hisi_ive_func_test : public testing::Test {
protected:
    static void SetUpTestSuite() {
        fd_table::init();
        CYuv420_Rgb::init();
    }
};

// A three-plane image: 0 blue, 1 green, 2 red, back to back.
struct rgb_image {
    rgb_image(int width, int height) : planes(width, height * 3, width, 0, 77), m_height(height) {}

    fd_yuv_frame frame() {
        fd_yuv_frame record = planes.frame();
        record.height = static_cast<unsigned>(m_height);
        for (int k = 1; k < 3; ++k) {
            record.virt_addr[k] = record.virt_addr[0] + k * planes.stride() * m_height;
            record.stride[k] = record.stride[0];
        }
        return record;
    }

    grey_image planes;
    int m_height;
};

// --- sizes that differ ----------------------------------------------------------------------------------------------

// Runs one operation on images of 16 x 8, of which image `which` has another size. Returns status and text.
using operation = std::function<int(fd_yuv_frame* images)>;

struct size_row : support::named_row {
    operation run;
    int which;
    const char* text;
};

int sub_of(fd_yuv_frame* images) {
    return hisi_ive_func().do_sub(&images[0], &images[1], &images[2], true);
}
int dma_of(fd_yuv_frame* images) {
    return hisi_ive_func().do_dma(&images[0], &images[1], true);
}
int dilate_of(fd_yuv_frame* images) {
    return hisi_ive_func().do_dilate(&images[0], &images[1], true);
}
int thres_of(fd_yuv_frame* images) {
    return hisi_ive_func().do_thres(&images[0], &images[1], 20, true);
}

class sizes_that_differ : public testing::TestWithParam<size_row> {
protected:
    static void SetUpTestSuite() { fd_table::init(); }
};

TEST_P(sizes_that_differ, are_refused_and_nothing_is_written) {
    for (const auto& size : {std::pair<unsigned, unsigned>{15, 8}, {17, 8}, {16, 7}, {16, 9}, {8, 16}}) {
        grey_image memory[3] = {{20, 20, 20, 0, 1}, {20, 20, 20, 0, 2}, {20, 20, 20, 0, 3}};
        const grey_image before[3] = {memory[0], memory[1], memory[2]};
        fd_yuv_frame images[3];
        for (int i = 0; i < 3; ++i) {
            images[i] = memory[i].frame();
            images[i].width = 16;
            images[i].height = 8;
        }
        images[GetParam().which].width = size.first;
        images[GetParam().which].height = size.second;
        const outcome got = outcome_of([&] { return GetParam().run(images); });
        EXPECT_EQ(got.status, 7) << size.first << " x " << size.second;
        EXPECT_EQ(got.text, GetParam().text) << size.first << " x " << size.second;
        for (int i = 0; i < 3; ++i) EXPECT_TRUE(memory[i] == before[i]) << "image " << i;
    }
}

const char k_sub_sizes[] = "ERR. [Fire Detection: hisi_ive_func::do_sub : 84] \n";
const char k_dma_sizes[] = "ERR. [Fire Detection: hisi_ive_func::do_dma : 162] \n";
const char k_dilate_sizes[] = "ERR. [Fire Detection: hisi_ive_func::do_dilate : 236] \n";
const char k_thres_sizes[] = "ERR. [Fire Detection: hisi_ive_func::do_thres : 313] \n";

INSTANTIATE_TEST_SUITE_P(table, sizes_that_differ,
                         testing::Values(size_row{{"do_sub with another first source"}, sub_of, 0, k_sub_sizes},
                                         size_row{{"do_sub with another second source"}, sub_of, 1, k_sub_sizes},
                                         size_row{{"do_sub with another output"}, sub_of, 2, k_sub_sizes},
                                         size_row{{"do_dma with another source"}, dma_of, 0, k_dma_sizes},
                                         size_row{{"do_dma with another output"}, dma_of, 1, k_dma_sizes},
                                         size_row{{"do_dilate with another source"}, dilate_of, 0, k_dilate_sizes},
                                         size_row{{"do_dilate with another output"}, dilate_of, 1, k_dilate_sizes},
                                         size_row{{"do_thres with another source"}, thres_of, 0, k_thres_sizes},
                                         size_row{{"do_thres with another output"}, thres_of, 1, k_thres_sizes}),
                         row_name());

struct conversion_row : support::named_row {
    int src_width;
    int src_height;
    int dst_width;
    int dst_height;
    ive_color_trans mode;
    int status;
    const char* text;
};

class do_color_trans : public testing::TestWithParam<conversion_row> {
protected:
    static void SetUpTestSuite() { CYuv420_Rgb::init(); }
};

TEST_P(do_color_trans, is_refused) {
    const conversion_row& row = GetParam();
    nv21_picture picture(row.src_width, row.src_height);
    rgb_image image(row.dst_width, row.dst_height);
    const grey_image before = image.planes;
    fd_yuv_frame src = picture.frame(), dst = image.frame();
    const outcome got = outcome_of([&] { return hisi_ive_func().do_color_trans(&src, &dst, row.mode, true); });
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(got.text, row.text);
    EXPECT_TRUE(image.planes == before);
}

const char k_no_software[] = "[Fire Detection: hisi_ive_func: do_color_trans] 414 entered \n";

INSTANTIATE_TEST_SUITE_P(
    table, do_color_trans,
    testing::Values(
        conversion_row{{"another height"},
                       16,
                       8,
                       16,
                       10,
                       color_trans_rgb,
                       7,
                       "ERR. [Fire Detection: hisi_ive_func::do_color_trans : 391] \n"
                       "img_h = 8, dst_h = 10, img_w = 16, dst_w = 16\n"},
        conversion_row{{"another width"},
                       16,
                       8,
                       18,
                       8,
                       color_trans_rgb,
                       7,
                       "ERR. [Fire Detection: hisi_ive_func::do_color_trans : 391] \n"
                       "img_h = 8, dst_h = 8, img_w = 16, dst_w = 18\n"},
        conversion_row{{"both and one pair of lines"},
                       16,
                       8,
                       8,
                       16,
                       color_trans_rgb,
                       7,
                       "ERR. [Fire Detection: hisi_ive_func::do_color_trans : 391] \n"
                       "img_h = 8, dst_h = 16, img_w = 16, dst_w = 8\n"},
        conversion_row{{"lab has no software"}, 16, 8, 16, 8, color_trans_lab, 5, k_no_software},
        conversion_row{{"hsv has no software"}, 16, 8, 16, 8, color_trans_hsv, 5, k_no_software},
        conversion_row{{"nor has an unknown space"}, 16, 8, 16, 8, static_cast<ive_color_trans>(3), 5, k_no_software},
        conversion_row{{"odd sizes change nothing about it"}, 15, 7, 15, 7, color_trans_lab, 5, k_no_software},
        conversion_row{{"a size that differs wins over a space without software"},
                       16,
                       8,
                       16,
                       10,
                       color_trans_hsv,
                       7,
                       "ERR. [Fire Detection: hisi_ive_func::do_color_trans : 391] \n"
                       "img_h = 8, dst_h = 10, img_w = 16, dst_w = 16\n"}),
    row_name());

// --- software paths -------------------------------------------------------------------------------------------------

TEST_F(hisi_ive_func_test, do_sub_gives_the_difference) {
    grey_image a(20, 6, 24, 0, 10), b(20, 6, 24, 0, 13), c(20, 6, 24, 0, 99);
    fd_yuv_frame src1 = a.frame(), src2 = b.frame(), dst = c.frame();
    const outcome got = outcome_of([&] { return hisi_ive_func().do_sub(&src1, &src2, &dst, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    grey_image wanted(20, 6, 24, 0, 99);
    wanted.fill_rect(0, 0, 20, 6, 3);
    EXPECT_EQ(first_difference(c, wanted), "");
}

TEST_F(hisi_ive_func_test, do_thres_gives_the_threshold) {
    grey_image a(20, 6, 24, 0, 21), c(20, 6, 24, 0, 99);
    a.at(3, 2) = 20;
    fd_yuv_frame src = a.frame(), dst = c.frame();
    const outcome got = outcome_of([&] { return hisi_ive_func().do_thres(&src, &dst, 20, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    grey_image wanted(20, 6, 24, 0, 99);
    wanted.fill_rect(0, 0, 20, 6, 255);
    wanted.at(3, 2) = 0;
    EXPECT_EQ(first_difference(c, wanted), "");
}

TEST_F(hisi_ive_func_test, do_thres_passes_the_code_of_a_missing_plane_up) {
    grey_image c(20, 6, 24, 0, 99);
    fd_yuv_frame src = c.frame(), dst = c.frame();
    src.virt_addr[0] = nullptr;
    const outcome got = outcome_of([&] { return hisi_ive_func().do_thres(&src, &dst, 20, true); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "[Fire Detection: common: threshold_binary] 198 entered \n");
}

TEST_F(hisi_ive_func_test, do_dilate_gives_the_square_and_the_padding_of_the_source) {
    grey_image a(8, 5, 12, 0, 0), c(8, 5, 12, 0, 99), wanted(8, 5, 12, 0, 0);
    a.at(3, 2) = 255;
    a.at(9, 1) = 44;
    wanted.fill_rect(2, 1, 3, 3, 255);
    wanted.at(9, 1) = 44;
    fd_yuv_frame src = a.frame(), dst = c.frame();
    const outcome got = outcome_of([&] { return hisi_ive_func().do_dilate(&src, &dst, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(first_difference(c, wanted), "");
}

TEST_F(hisi_ive_func_test, do_ccl_appends_nothing_and_resizes) {
    grey_image image = grey_image::drawn({"#..#", "....", ".##."});
    fd_yuv_frame img = image.frame();
    hisi_mmz_mem blob;
    std::vector<con_info> out = {{7, 0, 0, 0, 0}};
    const outcome got = outcome_of([&] { return hisi_ive_func().do_ccl(&img, &blob, out, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].area, 8);
    EXPECT_EQ(out[1].left, 3);
    EXPECT_EQ(out[2].area, 2);
    EXPECT_EQ(blob.size(), 0u) << "the accelerator's buffer is not used";
}

TEST_F(hisi_ive_func_test, do_ccl_joins_no_corners) {
    grey_image image = grey_image::drawn({"#.", ".#"});
    fd_yuv_frame img = image.frame();
    hisi_mmz_mem blob;
    std::vector<con_info> out;
    EXPECT_EQ(hisi_ive_func().do_ccl(&img, &blob, out, true), 0);
    EXPECT_EQ(out.size(), 2u);
}

TEST_F(hisi_ive_func_test, do_color_trans_gives_blue_green_red) {
    nv21_picture picture(4, 2);
    // U 100, V 160: red + 44, green - 12, blue - 50.
    picture.paint(0, 0, 4, 2, 200, 100, 160);
    rgb_image image(4, 2);
    fd_yuv_frame src = picture.frame(), dst = image.frame();
    const outcome got = outcome_of([&] { return hisi_ive_func().do_color_trans(&src, &dst, color_trans_rgb, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    grey_image wanted(4, 6);
    wanted.fill_rect(0, 0, 4, 2, 150);
    wanted.fill_rect(0, 2, 4, 2, 188);
    wanted.fill_rect(0, 4, 4, 2, 244);
    EXPECT_EQ(first_difference(image.planes, wanted), "");
}

// --- eligibility is not asked ---------------------------------------------------------------------------------------

struct quiet_row : support::named_row {
    unsigned phys_addr;
    int width;
    int height;
    int stride;
};

class without_accelerator : public testing::TestWithParam<quiet_row> {
protected:
    static void SetUpTestSuite() {
        fd_table::init();
        CYuv420_Rgb::init();
    }
};

// Images that qualify, and images that would be told about: software does all of them, with and without waiting, and no
// line is printed.
TEST_P(without_accelerator, every_operation_runs_in_software_without_a_word) {
    const quiet_row& row = GetParam();
    grey_image memory[3] = {
        {row.width, row.height, row.stride}, {row.width, row.height, row.stride}, {row.width, row.height, row.stride}};
    fd_yuv_frame images[3];
    for (int i = 0; i < 3; ++i) {
        images[i] = memory[i].frame();
        images[i].phys_addr[0] = row.phys_addr;
    }
    nv21_picture picture(row.width, row.height, row.stride);
    rgb_image rgb((row.width + 1) / 2 * 2, (row.height + 1) / 2 * 2);
    fd_yuv_frame yuv = picture.frame(), bgr = rgb.frame();
    yuv.phys_addr[0] = bgr.phys_addr[0] = row.phys_addr;
    bgr.width = yuv.width;
    bgr.height = yuv.height;
    hisi_mmz_mem blob;
    std::vector<con_info> out;
    for (const bool instant : {true, false}) {
        hisi_ive_func ive;
        const outcome got = outcome_of([&] {
            return ive.do_sub(&images[0], &images[1], &images[2], instant) +
                   ive.do_dma(&images[0], &images[1], instant) + ive.do_dilate(&images[0], &images[1], instant) +
                   ive.do_thres(&images[0], &images[1], 20, instant) +
                   ive.do_color_trans(&yuv, &bgr, color_trans_rgb, instant) +
                   ive.do_ccl(&images[0], &blob, out, instant);
        });
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "");
        const outcome lab = outcome_of([&] { return ive.do_color_trans(&yuv, &bgr, color_trans_lab, instant); });
        EXPECT_EQ(lab.status, 5);
        EXPECT_EQ(lab.text, k_no_software);
    }
}

INSTANTIATE_TEST_SUITE_P(table, without_accelerator,
                         testing::Values(quiet_row{{"images that would qualify"}, 0x1000, 64, 64, 64},
                                         quiet_row{{"an odd width"}, 0x1000, 63, 64, 64},
                                         quiet_row{{"an odd height"}, 0x1000, 64, 63, 64},
                                         quiet_row{{"an unaligned address"}, 0x1004, 64, 64, 64},
                                         quiet_row{{"an unaligned stride"}, 0x1000, 64, 64, 72},
                                         quiet_row{{"sizes of 2 x 2"}, 0, 2, 2, 16}),
                         row_name());

// --- copying rows ---------------------------------------------------------------------------------------------------

class do_dma_loop : public testing::TestWithParam<support::content_row> {};

TEST_P(do_dma_loop, equals_the_plain_twin_in_all_shapes) {
    support::random_source random;
    for (const shape& s : support::all_shapes()) {
        // The output's stride differs from the source's in half of the rounds.
        const shape other = {s.width, s.height, s.stride + (random.below(2) == 0 ? 0 : 5), s.offset};
        grey_image src = support::make_image(s), dst = support::make_image(other);
        fill(src, GetParam().what, random);
        fill(dst, support::content::noise, random);
        grey_image twin_src = src, twin_dst = support::with_other_pixels(dst);
        fd_yuv_frame from = src.frame(), to = dst.frame();
        ASSERT_EQ(hisi_ive_func().do_dma(&from, &to, true), 0);
        ref::copy_rows(plane_of(twin_src), plane_of(twin_dst));
        ASSERT_EQ(first_difference(dst, twin_dst), "") << text_of(s) << ", seed " << random.seed();
        ASSERT_EQ(first_difference(src, twin_src), "") << text_of(s) << ", seed " << random.seed();
    }
}

INSTANTIATE_TEST_SUITE_P(contents, do_dma_loop, testing::ValuesIn(support::all_contents()), row_name());

TEST_F(hisi_ive_func_test, do_dma_copies_nothing_for_a_height_below_1) {
    grey_image a(8, 4, 8, 0, 1), b(8, 4, 8, 0, 2);
    fd_yuv_frame src = a.frame(), dst = b.frame();
    for (const unsigned height : {0u, 0x80000000u, 0xffffffffu}) {
        src.height = dst.height = height;
        EXPECT_EQ(hisi_ive_func().do_dma(&src, &dst, true), 0);
        EXPECT_TRUE(b == grey_image(8, 4, 8, 0, 2)) << height;
    }
}

TEST_F(hisi_ive_func_test, do_dma_touches_nothing_behind_the_last_pixel) {
    support::fenced_block a(384 * 2 + 352), b(384 * 2 + 352);
    fd_yuv_frame src, dst;
    init_yuv_frame(&src, 352, 3, 384, 0, a.data(), FD_PIXEL_FORMAT_YUV420SP);
    init_yuv_frame(&dst, 352, 3, 384, 0, b.data(), FD_PIXEL_FORMAT_YUV420SP);
    a.data()[384 * 2 + 351] = 9;
    a.make_read_only();
    EXPECT_EQ(hisi_ive_func().do_dma(&src, &dst, true), 0);
    EXPECT_EQ(b.data()[384 * 2 + 351], 9);
}

}  // namespace
