// What a picture's tags are taken for, and which ones bring a warning.
#include <gtest/gtest.h>

#include "apps/orva_fire/colour.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

struct warning_row : support::named_row {
    AVColorTransferCharacteristic transfer;
    AVColorSpace matrix;
    const char* said;  // part of the warning, or null for none
};

class colour_warning_for : public testing::TestWithParam<warning_row> {};

TEST_P(colour_warning_for, names_what_cannot_be_mapped) {
    const frame_ptr picture = new_picture(AV_PIX_FMT_YUV420P, 16, 16);
    picture->color_trc = GetParam().transfer;
    picture->colorspace = GetParam().matrix;
    const std::string warning = colour_warning(*picture);
    if (GetParam().said) {
        EXPECT_NE(warning.find(GetParam().said), std::string::npos) << warning;
    } else {
        EXPECT_EQ(warning, "");
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, colour_warning_for,
    testing::Values(warning_row{{"PQ"}, AVCOL_TRC_SMPTE2084, AVCOL_SPC_BT2020_NCL, "high dynamic range (PQ)"},
                    warning_row{{"HLG"}, AVCOL_TRC_ARIB_STD_B67, AVCOL_SPC_BT2020_NCL, "high dynamic range (HLG)"},
                    warning_row{{"linear light"}, AVCOL_TRC_LINEAR, AVCOL_SPC_BT709, "linear"},
                    warning_row{{"YCgCo"}, AVCOL_TRC_BT709, AVCOL_SPC_YCGCO, "matrix (ycgco)"},
                    warning_row{{"ICtCp"}, AVCOL_TRC_BT709, AVCOL_SPC_ICTCP, "matrix (ictcp)"},
                    warning_row{{"ordinary HD"}, AVCOL_TRC_BT709, AVCOL_SPC_BT709, nullptr},
                    warning_row{
                        {"BT 2020 with an ordinary transfer"}, AVCOL_TRC_BT2020_10, AVCOL_SPC_BT2020_NCL, nullptr},
                    warning_row{{"nothing known"}, AVCOL_TRC_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED, nullptr}),
    row_name());

struct ink_row : support::named_row {
    int red, green, blue;
    bool full;
    AVColorSpace matrix;
    int y, u, v;
};

class ink : public testing::TestWithParam<ink_row> {};

TEST_P(ink, has_these_bytes) {
    const ink_row& row = GetParam();
    const yuv_colour got = yuv_of(row.red, row.green, row.blue, row.full, row.matrix);
    EXPECT_EQ(got.y, row.y);
    EXPECT_EQ(got.u, row.u);
    EXPECT_EQ(got.v, row.v);
}

INSTANTIATE_TEST_SUITE_P(
    table, ink,
    testing::Values(ink_row{{"limited white"}, 255, 255, 255, false, AVCOL_SPC_SMPTE170M, 235, 128, 128},
                    ink_row{{"full white"}, 255, 255, 255, true, AVCOL_SPC_BT709, 255, 128, 128},
                    ink_row{{"limited black"}, 0, 0, 0, false, AVCOL_SPC_BT709, 16, 128, 128},
                    // 16 + 219 * 0.299 = 81.5; 128 - 224 * 0.299 / 1.772 = 90.2; 128 + 112 = 240
                    ink_row{{"limited red, BT 601"}, 255, 0, 0, false, AVCOL_SPC_SMPTE170M, 81, 90, 240},
                    // 16 + 219 * 0.2126 = 62.6; 128 - 224 * 0.2126 / 1.8556 = 102.3
                    ink_row{{"limited red, BT 709"}, 255, 0, 0, false, AVCOL_SPC_BT709, 63, 102, 240},
                    ink_row{{"full red, BT 601"}, 255, 0, 0, true, AVCOL_SPC_SMPTE170M, 76, 85, 255}),
    row_name());

}  // namespace
