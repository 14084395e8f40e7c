// Which images may go to the accelerator: every limit at, below and above, and which check comes first.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "tests/support/capture.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fd;
using support::captured_output;
using support::row_name;

const char k_odd_size[] = "[Fire Detection: hisi_ive_func: check_ive_support] 33 entered \n";
const char k_odd_address[] = "[Fire Detection: hisi_ive_func: check_ive_support] 39 entered \n";
const char k_silent[] = "";

struct answer {
    bool qualifies;
    std::string text;
};

answer ask(unsigned phys_addr, int stride, int width, int height, int type) {
    captured_output output;
    const bool qualifies =
        hisi_ive_func().check_ive_support(phys_addr, stride, width, height, static_cast<hisi_ive_type>(type));
    return {qualifies, output.text()};
}

// --- the numbers of the types ---------------------------------------------------------------------------------------

TEST(hisi_ive_type, has_its_numbers) {
    EXPECT_EQ(ive_type_dma, 0);
    EXPECT_EQ(ive_type_dilate, 1);
    EXPECT_EQ(ive_type_spare, 2);
    EXPECT_EQ(ive_type_sub, 3);
    EXPECT_EQ(ive_type_thresh, 4);
    EXPECT_EQ(ive_type_csc, 5);
    EXPECT_EQ(ive_type_ccl, 6);
}

TEST(ive_color_trans, has_its_numbers) {
    EXPECT_EQ(color_trans_lab, 0);
    EXPECT_EQ(color_trans_rgb, 1);
    EXPECT_EQ(color_trans_hsv, 2);
}

// --- size limits ----------------------------------------------------------------------------------------------------

struct limit_row : support::named_row {
    int type;
    int width;
    int height;
};

class size_limit : public testing::TestWithParam<limit_row> {};

// Even sizes: 2 below, at, 2 above. For DMA also 1 below and above.
TEST_P(size_limit, is_inclusive) {
    const limit_row& row = GetParam();
    const int step = row.type == ive_type_dma ? 1 : 2;
    for (const int width : {row.width - step, row.width, row.width + step}) {
        for (const int height : {row.height - step, row.height, row.height + step}) {
            const answer got = ask(0x1000, 2048, width, height, row.type);
            EXPECT_EQ(got.qualifies, width <= row.width && height <= row.height) << width << " x " << height;
            EXPECT_EQ(got.text, k_silent) << width << " x " << height;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, size_limit,
    testing::Values(limit_row{{"dma 1920 x 1080"}, 0, 1920, 1080}, limit_row{{"dilate 1920 x 1024"}, 1, 1920, 1024},
                    limit_row{{"spare 1920 x 1024"}, 2, 1920, 1024}, limit_row{{"sub 1920 x 1080"}, 3, 1920, 1080},
                    limit_row{{"thresh 1920 x 1080"}, 4, 1920, 1080}, limit_row{{"csc 1920 x 1080"}, 5, 1920, 1080},
                    limit_row{{"ccl 1280 x 720"}, 6, 1280, 720}),
    row_name());

TEST(size_limit_of_all, takes_1280_x_720_for_every_type) {
    for (int type = 0; type <= 6; ++type) EXPECT_TRUE(ask(0x1000, 1280, 1280, 720, type).qualifies) << type;
}

TEST(size_limit_of_all, takes_1920_x_1080_for_some_types) {
    for (int type = 0; type <= 6; ++type) {
        const bool wanted =
            type == ive_type_dma || type == ive_type_sub || type == ive_type_thresh || type == ive_type_csc;
        EXPECT_EQ(ask(0x1000, 1920, 1920, 1080, type).qualifies, wanted) << type;
    }
}

// --- single checks --------------------------------------------------------------------------------------------------

struct check_row : support::named_row {
    unsigned phys_addr;
    int stride;
    int width;
    int height;
    bool dma_qualifies;
    bool others_qualify;
    const char* others_print;
};

class check_ive_support : public testing::TestWithParam<check_row> {};

TEST_P(check_ive_support, answers_for_dma_and_for_the_others) {
    const check_row& row = GetParam();
    for (int type = 0; type <= 6; ++type) {
        const answer got = ask(row.phys_addr, row.stride, row.width, row.height, type);
        EXPECT_EQ(got.qualifies, type == ive_type_dma ? row.dma_qualifies : row.others_qualify) << "type " << type;
        EXPECT_EQ(got.text, type == ive_type_dma ? k_silent : row.others_print) << "type " << type;
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, check_ive_support,
    testing::Values(
        check_row{{"everything in order"}, 0x80000010u, 352, 352, 288, true, true, k_silent},
        check_row{{"address 0"}, 0, 352, 352, 288, true, true, k_silent},
        check_row{{"a stride of 1928"}, 0x1000, 1928, 352, 288, false, false, k_silent},
        check_row{{"a stride one below a multiple"}, 0x1000, 351, 350, 288, false, false, k_silent},
        check_row{{"a stride one above a multiple"}, 0x1000, 353, 352, 288, false, false, k_silent},
        check_row{{"a stride of 8"}, 0x1000, 8, 8, 8, false, false, k_silent},
        check_row{{"a stride of 0"}, 0x1000, 0, 352, 288, true, true, k_silent},
        check_row{{"a negative stride that is a multiple"}, 0x1000, -352, 352, 288, true, true, k_silent},
        check_row{{"a negative stride that is none"}, 0x1000, -8, 352, 288, false, false, k_silent},
        check_row{{"an odd width"}, 0x1000, 352, 351, 288, true, false, k_odd_size},
        check_row{{"an odd height"}, 0x1000, 352, 352, 287, true, false, k_odd_size},
        check_row{{"both odd and one line"}, 0x1000, 352, 351, 287, true, false, k_odd_size},
        check_row{{"an address off by 1"}, 0x1001, 352, 352, 288, true, false, k_odd_address},
        check_row{{"an address off by 8"}, 0x1008, 352, 352, 288, true, false, k_odd_address},
        check_row{{"an address off by 15"}, 0x100f, 352, 352, 288, true, false, k_odd_address},
        check_row{{"the highest aligned address"}, 0xfffffff0u, 352, 352, 288, true, true, k_silent},
        check_row{{"the highest address"}, 0xffffffffu, 352, 352, 288, true, false, k_odd_address},
        check_row{{"an empty image"}, 0x1000, 352, 0, 0, true, true, k_silent},
        check_row{{"a negative even width"}, 0x1000, 352, -2, 288, true, true, k_silent},
        check_row{{"a negative odd width"}, 0x1000, 352, -1, 288, true, false, k_odd_size},
        check_row{{"a negative odd height"}, 0x1000, 352, 352, -3, true, false, k_odd_size},
        // Which of two breaches is told.
        check_row{{"a bad stride wins over an odd size"}, 0x1000, 353, 351, 288, false, false, k_silent},
        check_row{{"a bad stride wins over a bad address"}, 0x1001, 353, 352, 288, false, false, k_silent},
        check_row{{"a bad stride wins over a size above the limit"}, 0x1000, 1928, 4096, 288, false, false, k_silent},
        check_row{{"an odd size wins over a bad address"}, 0x1001, 352, 351, 288, true, false, k_odd_size},
        check_row{{"an odd size wins over a size above the limit"}, 0x1000, 4096, 4095, 288, false, false, k_odd_size},
        check_row{
            {"a bad address wins over a size above the limit"}, 0x1001, 4096, 4096, 288, false, false, k_odd_address}),
    row_name());

// --- unknown types --------------------------------------------------------------------------------------------------

class unknown_type : public testing::TestWithParam<int> {};

TEST_P(unknown_type, never_qualifies_but_is_checked_like_the_others) {
    EXPECT_FALSE(ask(0x1000, 352, 352, 288, GetParam()).qualifies);
    EXPECT_EQ(ask(0x1000, 352, 352, 288, GetParam()).text, k_silent);
    EXPECT_EQ(ask(0x1000, 352, 351, 288, GetParam()).text, k_odd_size);
    EXPECT_EQ(ask(0x1001, 352, 352, 288, GetParam()).text, k_odd_address);
    EXPECT_EQ(ask(0x1000, 352, 0, 0, GetParam()).qualifies, false);
}

INSTANTIATE_TEST_SUITE_P(types, unknown_type, testing::Values(7, 8, -1, 255, 2147483647, -2147483647 - 1));

}  // namespace
