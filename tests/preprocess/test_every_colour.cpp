// All 16,777,216 colours: the conversion and the colour rule against their plain twins, alone and inside a frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/color_rows.h"
#include "preprocess/pre_process.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/images.h"
#include "tests/support/test_access.h"

namespace {

using support::grey_image;
using support::nv21_picture;

// For one V: columns are pairs of one U, rows are luma; two rows and two columns share a chroma pair.
class every_colour : public testing::Test {
protected:
    static void SetUpTestSuite() {
        orva_fd::pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

TEST_F(every_colour, is_converted_and_judged_like_the_twin) {
    orva_fd::pre_process stage;
    orva_fd::CYuv420_Rgb converter;
    nv21_picture picture(512, 256);
    grey_image rgb(512, 256 * 3);
    fd_yuv_frame src = picture.frame(), dst = rgb.frame();
    dst.height = 256;
    for (int k = 1; k < 3; ++k) {
        dst.virt_addr[k] = rgb.data() + k * 512 * 256;
        dst.stride[k] = 512;
    }
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 512; ++x) picture.luma_at(x, y) = static_cast<unsigned char>(y);
    }
    int judged_as_fire = 0;
    for (int v = 0; v < 256; ++v) {
        for (int y = 0; y < 256; y += 2) {
            for (int x = 0; x < 512; x += 2) {
                picture.chroma_at(x, y) = static_cast<unsigned char>(v);
                picture.chroma_at(x + 1, y) = static_cast<unsigned char>(x / 2);
            }
        }
        ASSERT_EQ(converter.yuv420sp_to_rgb24(&src, &dst), 0);
        for (int y = 0; y < 256; ++y) {
            for (int u = 0; u < 256; ++u) {
                const ref::bgr wanted = ref::convert_pixel(y, u, v);
                const unsigned char blue = rgb.at(2 * u, y), green = rgb.at(2 * u, 256 + y),
                                    red = rgb.at(2 * u, 512 + y);
                ASSERT_TRUE(blue == wanted.blue && green == wanted.green && red == wanted.red)
                    << "Y " << y << ", U " << u << ", V " << v;
                const int judged = stage.check_fire_pt(red, green, blue, static_cast<unsigned char>(y),
                                                       static_cast<unsigned char>(u), static_cast<unsigned char>(v));
                ASSERT_EQ(judged, ref::check_fire_pt(red, green, blue, y, u, v))
                    << "Y " << y << ", U " << u << ", V " << v;
                judged_as_fire += judged;
            }
        }
    }
    EXPECT_GT(judged_as_fire, 100000);
}

// The stage's own road, which works in rows: blocks of one colour lie four pixels apart in a picture that moves
// everywhere, so that each block that has the colour of flame comes out of the second dilation as a square of 4 x 4.
TEST_F(every_colour, is_converted_and_judged_like_the_twin_by_a_whole_frame) {
    const int k_across = 88, k_down = 72, k_stride = 352;
    orva_fd::pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(352, 288);
    fd_yuv_frame frame = picture.frame();
    const fd_yuv_frame& rgb = *stage.get_rgb_img();
    const fd_yuv_frame& mask = *stage.get_fg_img();
    unsigned char* const before = orva_fd::test_access::diff_img(stage).virt_addr[0];
    std::vector<orva_fd::con_info> components;
    unsigned next = 0;
    int judged_as_fire = 0;
    while (next < 1u << 24) {
        const unsigned first = next;
        for (int cell = 0; cell < k_across * k_down; ++cell, ++next) {
            const unsigned colour = std::min(next, (1u << 24) - 1);
            picture.paint(4 * (cell % k_across), 4 * (cell / k_across), 2, 2, static_cast<int>(colour & 255),
                          static_cast<int>(colour >> 8 & 255), static_cast<int>(colour >> 16));
        }
        for (int i = 0; i < 352 * 288; ++i)
            before[i] = static_cast<unsigned char>(picture.bytes()[static_cast<std::size_t>(i)] ^ 128);
        components.clear();
        ASSERT_EQ(stage.set_frame(&frame, components), 0);
        for (int cell = 0; cell < k_across * k_down; ++cell) {
            const unsigned colour = std::min(first + static_cast<unsigned>(cell), (1u << 24) - 1);
            const int y = static_cast<int>(colour & 255), u = static_cast<int>(colour >> 8 & 255),
                      v = static_cast<int>(colour >> 16);
            const int at = 4 * (cell / k_across) * k_stride + 4 * (cell % k_across);
            const ref::bgr wanted = ref::convert_pixel(y, u, v);
            ASSERT_TRUE(rgb.virt_addr[0][at] == wanted.blue && rgb.virt_addr[1][at] == wanted.green &&
                        rgb.virt_addr[2][at] == wanted.red)
                << "Y " << y << ", U " << u << ", V " << v;
            const int fire = ref::check_fire_pt(wanted.red, wanted.green, wanted.blue, y, u, v);
            ASSERT_EQ(mask.virt_addr[0][at + k_stride + 1], fire != 0 ? 255 : 0)
                << "Y " << y << ", U " << u << ", V " << v;
            judged_as_fire += fire;
        }
    }
    EXPECT_GT(judged_as_fire, 100000);
}

#if ORVA_HAS_VECTORS
// All mixtures of red, green and blue, also those that no conversion gives: where planes overlap they meet.
TEST_F(every_colour, is_as_saturated_as_the_rule_says) {
    std::vector<unsigned char> reds(256), greens(256), blues(256), pass(256);
    for (int blue = 0; blue < 256; ++blue) blues[static_cast<std::size_t>(blue)] = static_cast<unsigned char>(blue);
    long passing = 0;
    for (int red = 151; red < 256; ++red) {
        std::fill(reds.begin(), reds.end(), static_cast<unsigned char>(red));
        for (int green = 101; green <= red; ++green) {
            std::fill(greens.begin(), greens.end(), static_cast<unsigned char>(green));
            std::fill(pass.begin(), pass.end(), static_cast<unsigned char>(1));
            orva_fd::flame_saturation_row(reds.data(), greens.data(), blues.data(), pass.data(), 256);
            for (int blue = 81; blue < green; ++blue) {
                const int sum = red + green + blue;
                const int quotient = (blue * 3 * (1 << 20) + sum / 2) / sum;
                const int wanted = sum > 350 && quotient <= ref::saturation_limit(red) ? 1 : 0;
                ASSERT_EQ(pass[static_cast<std::size_t>(blue)], wanted) << red << ", " << green << ", " << blue;
                passing += wanted;
            }
        }
    }
    EXPECT_GT(passing, 100000);
}
#endif

}  // namespace
