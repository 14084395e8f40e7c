// What the caps say about colours reaches the detector: range and matrix.
#include <gtest/gtest.h>

#include "apps/orva_fire/nv21.h"
#include "tests/apps/pictures.h"
#include "tests/gst/harness.h"

namespace gst_test {
namespace {

struct caps_row {
    const char* name;
    const char* colorimetry;
    AVColorRange range;
    AVColorSpace matrix;
};

const caps_row k_caps_rows[] = {
    {"bt601 is limited", "bt601", AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M},
    {"bt709 is limited", "bt709", AVCOL_RANGE_MPEG, AVCOL_SPC_BT709},
    {"smpte240m is limited", "smpte240m", AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE240M},
    {"bt2020 is limited", "bt2020", AVCOL_RANGE_MPEG, AVCOL_SPC_BT2020_NCL},
    {"full range with the BT.601 matrix", "1:4:0:0", AVCOL_RANGE_JPEG, AVCOL_SPC_SMPTE170M},
    {"full range with the BT.709 matrix", "1:3:5:1", AVCOL_RANGE_JPEG, AVCOL_SPC_BT709},
    {"full range with the FCC matrix", "1:2:0:0", AVCOL_RANGE_JPEG, AVCOL_SPC_FCC},
    {"limited range with an unknown matrix", "2:0:0:0", AVCOL_RANGE_MPEG, AVCOL_SPC_UNSPECIFIED},
    {"full range with an unknown matrix", "1:0:0:0", AVCOL_RANGE_JPEG, AVCOL_SPC_UNSPECIFIED},
    {"unknown range with the BT.709 matrix", "0:3:0:0", AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_BT709},
    {"caps that say nothing", "", AVCOL_RANGE_UNSPECIFIED, AVCOL_SPC_UNSPECIFIED},
};

TEST(colour_of_caps, is_what_they_say) {
    for (const caps_row& row : k_caps_rows) {
        SCOPED_TRACE(row.name);
        const camera source({"NV12", 176, 144, row.colorimetry});
        EXPECT_EQ(source.colour().range, row.range);
        EXPECT_EQ(source.colour().matrix, row.matrix);
    }
}

struct format_row {
    const char* format;
    const char* colorimetry;
};

const format_row k_format_rows[] = {
    {"NV21", "1:4:0:0"}, {"NV21", "bt601"}, {"NV12", "1:4:0:0"}, {"NV12", "bt601"},
    {"NV12", "bt709"},   {"I420", "bt601"}, {"I420", "bt709"},   {"I420", "1:3:5:1"},
    {"YUY2", "1:4:0:0"}, {"YUY2", "bt709"}, {"BGRx", "sRGB"},
};

// One orange, written in each format's own numbers, is the same orange in the detector's.
TEST(a_view, is_converted_to_the_detector_s_full_range_and_matrix) {
    const apps_test::triple wanted = apps_test::to_yuv(apps_test::k_orange, true, AVCOL_SPC_SMPTE170M);
    for (const format_row& row : k_format_rows) {
        SCOPED_TRACE(std::string(row.format) + " " + row.colorimetry);
        const camera source({row.format, 176, 144, row.colorimetry});
        const buffer_ptr buffer = source.picture(0);
        GstVideoFrame frame;
        ASSERT_TRUE(
            gst_video_frame_map(&frame, const_cast<GstVideoInfo*>(&source.info()), buffer.get(), GST_MAP_READWRITE));
        const orva_fire::frame_ptr view = orva_gst::view_of(frame, source.colour());
        apps_test::paint(*view, 0, 0, 176, 144, apps_test::k_orange);
        orva_fire::nv21_converter converter({0, 0, 176, 144});
        orva_fire::nv21_picture& seen = converter.convert(*view);
        gst_video_frame_unmap(&frame);
        // A step of limited range is 255 / 219 steps of full range, and each conversion rounds once.
        EXPECT_NEAR(seen.luma()[88 + 72 * seen.stride()], wanted[0], 2);
        EXPECT_NEAR(seen.chroma()[88 + 36 * seen.stride()], wanted[2], 2);
        EXPECT_NEAR(seen.chroma()[89 + 36 * seen.stride()], wanted[1], 2);
    }
}

// Colours of flame that are flame's only once limited range has been expanded.
TEST(a_pale_fire, in_limited_range_is_found_by_the_range_in_the_caps_alone) {
    struct range_row {
        const char* name;
        const char* painted;
        const char* said;
        size_t boxes;
    };
    const range_row rows[] = {
        {"limited and said so", "bt601", "bt601", 1},
        {"limited and nothing said", "bt601", "", 1},
        {"limited but said to be full", "bt601", "1:4:0:0", 0},
        {"full and said so", "1:4:0:0", "1:4:0:0", 1},
    };
    for (const range_row& row : rows) {
        SCOPED_TRACE(row.name);
        camera source({"NV12", 176, 144, row.painted});
        source.set_warmth(-27);
        const camera said({"NV12", 176, 144, row.said});
        element_harness harness;
        harness.set_caps(said);
        EXPECT_EQ(harness.run(source, 0, 60).size(), row.boxes);
    }
}

}  // namespace
}  // namespace gst_test
