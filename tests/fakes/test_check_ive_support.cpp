// Which images may go to the accelerator: every operation at, below and above each of its limits.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/capture.h"
#include "tests/support/log_text.h"
#include "tests/support/rows.h"

namespace {

const std::string k_odd = support::entered("hisi_ive_func", "check_ive_support", 33);
const std::string k_unaligned = support::entered("hisi_ive_func", "check_ive_support", 39);

support::outcome ask(unsigned int phys_addr, int stride, int width, int height, int type) {
    return support::outcome_of([&] {
        orva_fd::hisi_ive_func ive;
        return ive.check_ive_support(phys_addr, stride, width, height, static_cast<orva_fd::hisi_ive_type>(type)) ? 1
                                                                                                                  : 0;
    });
}

struct limit_row : support::named_row {
    int type;
    int width;
    int height;
};

class image_limits : public fakes::chip_test, public testing::WithParamInterface<limit_row> {};

TEST_P(image_limits, are_inclusive) {
    const limit_row& row = GetParam();
    EXPECT_EQ(ask(0x1000, 1920, row.width, row.height, row.type).status, 1);
    EXPECT_EQ(ask(0x1000, 1920, row.width - 2, row.height, row.type).status, 1);
    EXPECT_EQ(ask(0x1000, 1920, row.width, row.height - 2, row.type).status, 1);
    for (const int more : {1, 2}) {
        EXPECT_EQ(ask(0x1000, 1936, row.width + more, row.height, row.type).status, 0);
        EXPECT_EQ(ask(0x1000, 1920, row.width, row.height + more, row.type).status, 0);
    }
    EXPECT_EQ(ask(0x1000, 1936, row.width + 2, 2, row.type).text, "") << "too large is refused without a line";
}

TEST_P(image_limits, have_no_lower_bound) {
    for (const int size : {0, 2, 16, 30, 62, -2, -64, INT_MIN}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(ask(0x1000, 352, size, 64, GetParam().type).status, 1);
        EXPECT_EQ(ask(0x1000, 352, 64, size, GetParam().type).status, 1);
    }
}

TEST_P(image_limits, ask_for_a_stride_of_whole_16s_first) {
    for (const int stride : {1, 8, 15, 17, 24, 360, 1928, -8, INT_MAX}) {
        SCOPED_TRACE(stride);
        const support::outcome got = ask(0x1001, stride, 65, 65, GetParam().type);
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "") << "the stride comes before the other tests, and says nothing";
    }
    for (const int stride : {0, 16, 352, 384, -16, INT_MIN}) {
        SCOPED_TRACE(stride);
        EXPECT_EQ(ask(0x1000, stride, 64, 64, GetParam().type).status, 1) << "not compared with the width";
    }
}

TEST_P(image_limits, refuse_odd_sizes_with_a_line_except_for_dma) {
    const bool is_dma = GetParam().type == orva_fd::ive_type_dma;
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{65, 64}, {64, 65}, {65, 65}, {-1, 64}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        const support::outcome got = ask(0x1000, 352, width, height, GetParam().type);
        EXPECT_EQ(got.status, is_dma ? 1 : 0);
        EXPECT_EQ(got.text, is_dma ? "" : k_odd);
    }
}

TEST_P(image_limits, refuse_unaligned_addresses_with_a_line_except_for_dma) {
    const bool is_dma = GetParam().type == orva_fd::ive_type_dma;
    for (const unsigned int address : {1u, 2u, 4u, 8u, 15u, 17u, 0x1008u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(address);
        const support::outcome got = ask(address, 352, 64, 64, GetParam().type);
        EXPECT_EQ(got.status, is_dma ? 1 : 0);
        EXPECT_EQ(got.text, is_dma ? "" : k_unaligned);
    }
    for (const unsigned int address : {0u, 16u, 0x1010u, 0xFFFFFFF0u}) {
        SCOPED_TRACE(address);
        EXPECT_EQ(ask(address, 352, 64, 64, GetParam().type).status, 1);
    }
}

TEST_P(image_limits, print_the_odd_size_before_the_address_and_both_before_the_size) {
    if (GetParam().type == orva_fd::ive_type_dma) return;
    EXPECT_EQ(ask(0x1001, 352, 65, 64, GetParam().type).text, k_odd);
    EXPECT_EQ(ask(0x1001, 352, 4000, 4000, GetParam().type).text, k_unaligned);
    EXPECT_EQ(ask(0x1000, 352, 4001, 4000, GetParam().type).text, k_odd);
}

INSTANTIATE_TEST_SUITE_P(ive, image_limits,
                         testing::Values(limit_row{{"dma up to 1920 x 1080"}, 0, 1920, 1080},
                                         limit_row{{"dilation up to 1920 x 1024"}, 1, 1920, 1024},
                                         limit_row{{"the spare type up to 1920 x 1024"}, 2, 1920, 1024},
                                         limit_row{{"difference up to 1920 x 1080"}, 3, 1920, 1080},
                                         limit_row{{"threshold up to 1920 x 1080"}, 4, 1920, 1080},
                                         limit_row{{"colour up to 1920 x 1080"}, 5, 1920, 1080},
                                         limit_row{{"labelling up to 1280 x 720"}, 6, 1280, 720}),
                         support::row_name());

class check_ive_support : public fakes::chip_test {};

TEST_F(check_ive_support, refuses_unknown_types_after_the_lines_of_the_others) {
    for (const int type : {7, 8, 255, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(ask(0x1000, 352, 64, 64, type).status, 0);
        EXPECT_EQ(ask(0x1000, 352, 64, 64, type).text, "");
        EXPECT_EQ(ask(0x1000, 352, 63, 64, type).text, k_odd);
        EXPECT_EQ(ask(0x1004, 352, 64, 64, type).text, k_unaligned);
    }
}

TEST_F(check_ive_support, calls_nothing) {
    ask(0x1000, 352, 64, 64, 3);
    EXPECT_EQ(standin::all_calls(), 0);
}

// The rule allows more for labelling than the headers of the fitting chips (720 x 640): such a picture is refused.
TEST_F(check_ive_support, labelling_of_1280_x_720_qualifies_and_the_chip_refuses_it) {
    fakes::chip_picture large(1280, 720);
    orva_fd::hisi_mmz_mem blob;
    ASSERT_EQ(blob.alloc_mmz(3052, true), 0);
    fd_yuv_frame frame = large.frame();
    std::vector<orva_fd::con_info> out;
    orva_fd::hisi_ive_func ive;
    const support::outcome got = support::outcome_of([&] { return ive.do_ccl(&frame, &blob, out, true); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(standin::calls(standin::call::ccl), 1);
}

}  // namespace
