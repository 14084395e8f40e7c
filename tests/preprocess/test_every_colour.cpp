// All 16,777,216 colours: the conversion and the colour rule against their plain twins.
#include <gtest/gtest.h>

#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/pre_process.h"
#include "tests/reference/ref_pixels.h"
#include "tests/support/images.h"

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

}  // namespace
