// Pictures for the detector: layout, and what arrives of known colours from every kind of source.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/nv21.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

// --- layout ----------------------------------------------------------------------------------------------------------

struct layout_row : support::named_row {
    picture_size size;
    uint32_t stride;
};

class nv21_layout : public testing::TestWithParam<layout_row> {};

TEST_P(nv21_layout, is_one_block_with_a_row_to_spare) {
    const layout_row& row = GetParam();
    nv21_picture picture(row.size);
    const fd_yuv_frame view = picture.view();
    EXPECT_EQ(view.format, FD_PIXEL_FORMAT_YUV420SP);
    EXPECT_EQ(view.width, static_cast<uint32_t>(row.size.width));
    EXPECT_EQ(view.height, static_cast<uint32_t>(row.size.height));
    EXPECT_EQ(view.stride[0], row.stride);
    EXPECT_EQ(view.stride[1], row.stride);
    EXPECT_EQ(view.virt_addr[1], view.virt_addr[0] + row.stride * view.height);
    EXPECT_EQ(view.virt_addr[2], nullptr);
    EXPECT_EQ(view.phys_addr[0], 0u);
    // The last byte of the spare row belongs to the picture; the address sanitizer sees to it.
    const size_t bytes = row.stride * (view.height + (view.height + 1) / 2 + 1);
    std::memset(view.virt_addr[0], 1, bytes);
}

INSTANTIATE_TEST_SUITE_P(table, nv21_layout,
                         testing::Values(layout_row{{"largest"}, {352, 288}, 352},
                                         layout_row{{"wide"}, {352, 198}, 352},
                                         layout_row{{"width no multiple of 16"}, {278, 288}, 288},
                                         layout_row{{"one above a multiple"}, {34, 20}, 48},
                                         layout_row{{"smallest"}, {2, 2}, 16}),
                         row_name());

// --- colours ---------------------------------------------------------------------------------------------------------

struct colour_row : support::named_row {
    AVPixelFormat format;
    AVColorRange range;
    AVColorSpace matrix;
    bool full;           // what the range must be taken for
    AVColorSpace taken;  // what the matrix must be taken for
    int width = 320, height = 240;
    // The scaler goes through 8-bit RGB between two matrices and may lose two steps there.
    double tolerance = 1.1;
};

class nv21_colour : public testing::TestWithParam<colour_row> {};

// What a value that the source can hold should become.
triple expected(const AVFrame& source, const colour_row& row) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(row.format);
    triple held{};
    for (int i = 0; i < 3; ++i) {
        const int depth = description->comp[i].depth;
        held[static_cast<size_t>(i)] = component(source, 40, 40, i) / std::pow(2.0, depth - 8);
    }
    if (!(description->flags & AV_PIX_FMT_FLAG_RGB))
        return to_yuv(to_rgb(held, row.full, row.taken), true, AVCOL_SPC_SMPTE170M);
    return to_yuv({held[0], held[1], held[2]}, true, AVCOL_SPC_SMPTE170M);
}

TEST_P(nv21_colour, arrives_full_range_and_bt601) {
    const colour_row& row = GetParam();
    for (const colour& c : {k_white, k_black, k_orange, k_flame, k_blue}) {
        frame_ptr source = new_picture(row.format, row.width, row.height);
        source->color_range = row.full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        source->colorspace = row.taken;
        paint(*source, 0, 0, row.width, row.height, c);
        source->color_range = row.range;
        source->colorspace = row.matrix;
        nv21_converter converter({0, 0, row.width, row.height});
        nv21_picture& seen = converter.convert(*source);
        const triple wanted = expected(*source, row);
        const int x = 100, y = 60;
        EXPECT_NEAR(seen.luma()[y * seen.stride() + x], wanted[0], row.tolerance);
        EXPECT_NEAR(seen.chroma()[y / 2 * seen.stride() + x], wanted[2], row.tolerance) << "V";
        EXPECT_NEAR(seen.chroma()[y / 2 * seen.stride() + x + 1], wanted[1], row.tolerance) << "U";
    }
}

const AVColorRange k_unknown = AVCOL_RANGE_UNSPECIFIED, k_limited = AVCOL_RANGE_MPEG, k_full = AVCOL_RANGE_JPEG;
const AVColorSpace k_no_matrix = AVCOL_SPC_UNSPECIFIED, k_601 = AVCOL_SPC_SMPTE170M, k_709 = AVCOL_SPC_BT709,
                   k_2020 = AVCOL_SPC_BT2020_NCL;

INSTANTIATE_TEST_SUITE_P(
    at_the_targets_size, nv21_colour,
    testing::Values(
        colour_row{{"untagged 4 2 0 is limited BT 601"}, AV_PIX_FMT_YUV420P, k_unknown, k_no_matrix, false, k_601},
        colour_row{{"limited 4 2 0"}, AV_PIX_FMT_YUV420P, k_limited, k_601, false, k_601},
        colour_row{{"full 4 2 0"}, AV_PIX_FMT_YUV420P, k_full, k_601, true, k_601},
        colour_row{{"BT 470 BG is BT 601"}, AV_PIX_FMT_YUV420P, k_limited, AVCOL_SPC_BT470BG, false, k_601},
        colour_row{{"an old full range name, untagged"}, AV_PIX_FMT_YUVJ420P, k_unknown, k_no_matrix, true, k_601},
        colour_row{{"an old full range name for 4 2 2"}, AV_PIX_FMT_YUVJ422P, k_full, k_601, true, k_601},
        colour_row{{"an old full range name for 4 4 4"}, AV_PIX_FMT_YUVJ444P, k_unknown, k_601, true, k_601},
        colour_row{{"NV12"}, AV_PIX_FMT_NV12, k_unknown, k_no_matrix, false, k_601},
        colour_row{{"NV21, limited"}, AV_PIX_FMT_NV21, k_limited, k_601, false, k_601},
        colour_row{{"NV21 as the detector wants it"}, AV_PIX_FMT_NV21, k_full, k_601, true, k_601, 320, 240, 0.51},
        colour_row{{"4 2 2"}, AV_PIX_FMT_YUV422P, k_unknown, k_no_matrix, false, k_601},
        colour_row{{"4 4 4"}, AV_PIX_FMT_YUV444P, k_limited, k_601, false, k_601},
        colour_row{{"10 bits"}, AV_PIX_FMT_YUV420P10LE, k_unknown, k_no_matrix, false, k_601},
        colour_row{{"10 bits, full"}, AV_PIX_FMT_YUV420P10LE, k_full, k_601, true, k_601},
        colour_row{{"10 bits, semi planar"}, AV_PIX_FMT_P010LE, k_limited, k_601, false, k_601},
        colour_row{{"packed YUV"}, AV_PIX_FMT_YUYV422, k_unknown, k_no_matrix, false, k_601},
        colour_row{{"RGB, untagged"}, AV_PIX_FMT_RGB24, k_unknown, k_no_matrix, true, k_601},
        colour_row{{"RGB, tagged"}, AV_PIX_FMT_BGRA, k_full, AVCOL_SPC_RGB, true, k_601},
        colour_row{{"planar RGB"}, AV_PIX_FMT_GBRP, k_unknown, AVCOL_SPC_RGB, true, k_601},
        colour_row{{"BT 709, limited"}, AV_PIX_FMT_YUV420P, k_limited, k_709, false, k_709, 320, 240, 2.1},
        colour_row{{"BT 709, full"}, AV_PIX_FMT_YUV420P, k_full, k_709, true, k_709, 320, 240, 2.1},
        colour_row{{"BT 709 in 10 bits"}, AV_PIX_FMT_YUV420P10LE, k_limited, k_709, false, k_709, 320, 240, 2.1},
        colour_row{{"BT 2020"}, AV_PIX_FMT_YUV420P10LE, k_limited, k_2020, false, k_2020, 320, 240, 2.1}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    scaled, nv21_colour,
    testing::Values(
        colour_row{{"limited 4 2 0"}, AV_PIX_FMT_YUV420P, k_limited, k_601, false, k_601, 720, 576},
        colour_row{{"untagged SD is BT 601"}, AV_PIX_FMT_YUV420P, k_unknown, k_no_matrix, false, k_601, 720, 576},
        colour_row{{"untagged HD is BT 709"}, AV_PIX_FMT_YUV420P, k_unknown, k_no_matrix, false, k_709, 1280, 720, 2.1},
        colour_row{{"untagged HD on its side is BT 709"},
                   AV_PIX_FMT_YUV420P,
                   k_unknown,
                   k_no_matrix,
                   false,
                   k_709,
                   720,
                   1280,
                   2.1},
        colour_row{{"tagged HD is what the tag says"}, AV_PIX_FMT_YUV420P, k_unknown, k_601, false, k_601, 1280, 720},
        colour_row{{"full 4 2 0"}, AV_PIX_FMT_YUVJ420P, k_full, k_601, true, k_601, 640, 480},
        colour_row{{"10 bits"}, AV_PIX_FMT_YUV420P10LE, k_limited, k_601, false, k_601, 640, 480},
        colour_row{{"RGB"}, AV_PIX_FMT_RGB24, k_unknown, k_no_matrix, true, k_601, 640, 480},
        colour_row{{"an odd size"}, AV_PIX_FMT_YUV420P, k_unknown, k_no_matrix, false, k_601, 433, 321}),
    row_name());

struct exact_row : support::named_row {
    AVPixelFormat format;
    AVColorRange range;
    std::array<uint16_t, 3> coded;  // in the source: Y, U, V or R, G, B
    std::array<int, 3> wanted;      // Y, V, U
    int tolerance;
};

class nv21_value : public testing::TestWithParam<exact_row> {};

// Numbers from a table of colours, not from any formula in the tests.
TEST_P(nv21_value, is_this) {
    const exact_row& row = GetParam();
    const frame_ptr source = flat_picture(row.format, 352, 288, k_black, row.range, AVCOL_SPC_SMPTE170M);
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(row.format);
    for (int i = 0; i < 3; ++i) {
        const bool halved = i > 0 && description->log2_chroma_w > 0;
        for (int y = 0; y < (halved ? 144 : 288); ++y) {
            for (int x = 0; x < (halved ? 176 : 352); ++x)
                set_component(*source, x, y, i, row.coded[static_cast<size_t>(i)]);
        }
    }
    nv21_converter converter({0, 0, 352, 288});
    nv21_picture& seen = converter.convert(*source);
    EXPECT_NEAR(seen.luma()[50 * 352 + 50], row.wanted[0], row.tolerance);
    EXPECT_NEAR(seen.chroma()[25 * 352 + 50], row.wanted[1], row.tolerance);
    EXPECT_NEAR(seen.chroma()[25 * 352 + 51], row.wanted[2], row.tolerance);
}

INSTANTIATE_TEST_SUITE_P(
    table, nv21_value,
    testing::Values(
        exact_row{{"limited white becomes 255"}, AV_PIX_FMT_YUV420P, k_unknown, {235, 128, 128}, {255, 128, 128}, 0},
        exact_row{{"limited black becomes 0"}, AV_PIX_FMT_YUV420P, k_unknown, {16, 128, 128}, {0, 128, 128}, 0},
        exact_row{{"whiter than white stays 255"}, AV_PIX_FMT_YUV420P, k_limited, {254, 128, 128}, {255, 128, 128}, 0},
        exact_row{{"full white stays 255"}, AV_PIX_FMT_YUVJ420P, k_full, {255, 128, 128}, {255, 128, 128}, 0},
        // FF8000 in limited BT.601 is 145.6, 53.1, 193.0.
        exact_row{{"limited orange"}, AV_PIX_FMT_YUV420P, k_unknown, {146, 53, 193}, {151, 202, 43}, 1},
        exact_row{{"full orange"}, AV_PIX_FMT_YUV420P, k_full, {151, 43, 202}, {151, 202, 43}, 0},
        exact_row{{"RGB white"}, AV_PIX_FMT_GBRP, k_unknown, {255, 255, 255}, {255, 128, 128}, 0},
        exact_row{{"RGB orange"}, AV_PIX_FMT_GBRP, k_unknown, {255, 128, 0}, {151, 202, 43}, 1},
        exact_row{{"10 bit white"}, AV_PIX_FMT_YUV420P10LE, k_unknown, {940, 512, 512}, {255, 128, 128}, 0}),
    row_name());

// --- regions ---------------------------------------------------------------------------------------------------------

TEST(nv21_region, is_cut_before_it_is_scaled) {
    const frame_ptr source =
        flat_picture(AV_PIX_FMT_YUV420P, 1280, 720, k_black, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    paint(*source, 200, 100, 160, 120, k_white);
    nv21_converter converter({200, 100, 160, 120});
    nv21_picture& seen = converter.convert(*source);
    ASSERT_EQ(seen.size(), (picture_size{160, 120}));
    // Every pixel to the edges is white: nothing from beside the region has been mixed in.
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 160; ++x) ASSERT_EQ(seen.luma()[y * seen.stride() + x], 255) << x << "," << y;
    }
}

TEST(nv21_region, lies_where_it_was_asked_for) {
    const frame_ptr source = flat_picture(AV_PIX_FMT_YUV420P, 640, 480, k_black, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
    paint(*source, 280, 160, 360, 320, k_white);
    nv21_converter converter({200, 100, 160, 120});
    nv21_picture& seen = converter.convert(*source);
    const auto luma = [&](int x, int y) { return seen.luma()[y * seen.stride() + x]; };
    EXPECT_EQ(luma(79, 60), 0);
    EXPECT_EQ(luma(80, 60), 255);
    EXPECT_EQ(luma(80, 59), 0);
    EXPECT_EQ(luma(159, 119), 255);
}

TEST(nv21_region, takes_the_matrix_of_the_whole_picture) {
    // Untagged HD is BT.709 in all its parts, also in one that is small.
    const frame_ptr source = flat_picture(AV_PIX_FMT_YUV420P, 1280, 720, k_orange, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709);
    source->colorspace = AVCOL_SPC_UNSPECIFIED;
    nv21_converter converter({64, 64, 160, 120});
    nv21_picture& seen = converter.convert(*source);
    EXPECT_NEAR(seen.luma()[20 * seen.stride() + 20], 151, 2);
    EXPECT_NEAR(seen.chroma()[20 * seen.stride() + 20], 202, 2);
    EXPECT_NEAR(seen.chroma()[20 * seen.stride() + 21], 43, 2);
}

TEST(nv21_converter, follows_a_change_of_format_and_range) {
    nv21_converter converter({0, 0, 320, 240});
    const frame_ptr limited = flat_picture(AV_PIX_FMT_YUV420P, 320, 240, k_white, k_limited, k_601);
    const frame_ptr full = flat_picture(AV_PIX_FMT_YUV420P, 320, 240, k_white, k_full, k_601);
    const frame_ptr deep = flat_picture(AV_PIX_FMT_YUV444P10LE, 320, 240, k_white, k_limited, k_601);
    for (const AVFrame* source : {limited.get(), full.get(), deep.get(), limited.get()}) {
        EXPECT_EQ(converter.convert(*source).luma()[1000], 255);
    }
}

}  // namespace
