// The stage before a channel's analysis: its buffers, its size changes, the order and failures of one frame's steps,
// and all bytes of its working images against the plain twin.
#include "preprocess/pre_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "preprocess/CYuv420_Rgb.h"
#include "tests/reference/ref_channel.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"
#include "tests/support/scene.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::con_info;
using orva_fd::hisi_mmz_mem;
using orva_fd::pre_process;
using orva_fd::test_access;
using support::grey_image;
using support::nv21_picture;
using support::outcome;
using support::outcome_of;
using support::row_name;

class pre_process_test : public testing::Test {
protected:
    static void SetUpTestSuite() {
        orva_fd::fd_table::init();
        pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

const unsigned char* bytes_of(const hisi_mmz_mem& memory) {
    return static_cast<const unsigned char*>(memory.virt_addr());
}

bool all_are(const hisi_mmz_mem& memory, unsigned char value) {
    return std::all_of(bytes_of(memory), bytes_of(memory) + memory.size(),
                       [=](unsigned char byte) { return byte == value; });
}

// --- start and stop -------------------------------------------------------------------------------------------------

TEST_F(pre_process_test, start_obtains_zeroed_images_of_352_x_288) {
    pre_process stage;
    const outcome got = outcome_of([&] { return stage.start(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(test_access::width(stage), 352);
    EXPECT_EQ(test_access::height(stage), 288);
    EXPECT_EQ(test_access::fg_mem(stage).size(), 101376u);
    EXPECT_EQ(test_access::diff_mem(stage).size(), 101376u);
    EXPECT_EQ(test_access::rgb_mem(stage).size(), 304128u);
    EXPECT_EQ(test_access::blob_mem(stage).size(), 3052u);
    for (hisi_mmz_mem* memory : {&test_access::fg_mem(stage), &test_access::diff_mem(stage),
                                 &test_access::rgb_mem(stage), &test_access::blob_mem(stage)}) {
        EXPECT_TRUE(all_are(*memory, 0));
    }
    const std::pair<fd_yuv_frame*, hisi_mmz_mem*> images[] = {
        {&test_access::fg_img(stage), &test_access::fg_mem(stage)},
        {&test_access::diff_img(stage), &test_access::diff_mem(stage)},
        {&test_access::rgb_img(stage), &test_access::rgb_mem(stage)}};
    for (const auto& image : images) {
        EXPECT_EQ(image.first->width, 352u);
        EXPECT_EQ(image.first->height, 288u);
        EXPECT_EQ(image.first->stride[0], 352u);
        EXPECT_EQ(image.first->phys_addr[0], 0u);
        EXPECT_EQ(image.first->virt_addr[0], image.second->virt_addr());
    }
    const fd_yuv_frame& rgb = test_access::rgb_img(stage);
    EXPECT_EQ(rgb.virt_addr[1], rgb.virt_addr[0] + 101376);
    EXPECT_EQ(rgb.virt_addr[2], rgb.virt_addr[0] + 2 * 101376);
    EXPECT_EQ(rgb.stride[1], 352u);
    EXPECT_EQ(rgb.stride[2], 352u);
    EXPECT_EQ(rgb.phys_addr[1], 101376u);
    EXPECT_EQ(rgb.phys_addr[2], 202752u);
    EXPECT_EQ(stage.get_fg_img(), &test_access::fg_img(stage));
    EXPECT_EQ(stage.get_rgb_img(), &test_access::rgb_img(stage));
    EXPECT_EQ(stage.stop(), 0);
}

TEST_F(pre_process_test, stop_frees_the_four_buffers_and_start_may_follow) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(64, 32);
    fd_yuv_frame frame = picture.frame();
    std::vector<con_info> components;
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    std::fill_n(test_access::diff_img(stage).virt_addr[0], 101376, static_cast<unsigned char>(9));
    const outcome got = outcome_of([&] { return stage.stop(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    for (hisi_mmz_mem* memory : {&test_access::fg_mem(stage), &test_access::diff_mem(stage),
                                 &test_access::rgb_mem(stage), &test_access::blob_mem(stage)}) {
        EXPECT_EQ(memory->size(), 0u);
    }
    ASSERT_EQ(stage.start(), 0);
    EXPECT_EQ(test_access::width(stage), 352);
    EXPECT_EQ(test_access::height(stage), 288);
    EXPECT_EQ(test_access::diff_img(stage).width, 352u);
    EXPECT_TRUE(all_are(test_access::diff_mem(stage), 0));
}

TEST_F(pre_process_test, stop_without_start_is_fine) {
    pre_process stage;
    EXPECT_EQ(stage.stop(), 0);
}

// --- size changes ---------------------------------------------------------------------------------------------------

TEST_F(pre_process_test, reinit_adopts_the_size_and_copies_luma_into_the_blue_plane) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    std::fill_n(test_access::rgb_img(stage).virt_addr[0], 304128, static_cast<unsigned char>(5));
    std::fill_n(test_access::diff_img(stage).virt_addr[0], 101376, static_cast<unsigned char>(6));
    nv21_picture picture(50, 30, 64);
    picture.paint_all(77, 128, 128);
    fd_yuv_frame frame = picture.frame();
    const outcome got = outcome_of([&] { return stage.reinit(&frame); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(test_access::width(stage), 50);
    EXPECT_EQ(test_access::height(stage), 30);
    for (fd_yuv_frame* image :
         {&test_access::fg_img(stage), &test_access::diff_img(stage), &test_access::rgb_img(stage)}) {
        EXPECT_EQ(image->width, 50u);
        EXPECT_EQ(image->height, 30u);
        EXPECT_EQ(image->stride[0], 352u);
    }
    const fd_yuv_frame& rgb = test_access::rgb_img(stage);
    EXPECT_EQ(rgb.virt_addr[1], rgb.virt_addr[0] + 352 * 30);
    EXPECT_EQ(rgb.virt_addr[2], rgb.virt_addr[0] + 352 * 60);
    EXPECT_EQ(rgb.phys_addr[1], 352u * 30);
    EXPECT_EQ(rgb.phys_addr[2], 352u * 60);
    EXPECT_EQ(rgb.stride[1], 352u);
    EXPECT_EQ(rgb.stride[2], 352u);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 352; ++x) {
            ASSERT_EQ(rgb.virt_addr[0][y * 352 + x], x < 50 && y < 30 ? 77 : 5) << x << ", " << y;
        }
    }
    EXPECT_TRUE(all_are(test_access::diff_mem(stage), 6)) << "the previous luma stays";
}

TEST_F(pre_process_test, reinit_cuts_sizes_to_16_bits_and_ignores_that_the_copy_is_refused) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(16, 16);
    fd_yuv_frame frame = picture.frame();
    frame.width = 0x10010;
    const outcome got = outcome_of([&] { return stage.reinit(&frame); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "ERR. [Fire Detection: hisi_ive_func::do_dma : 162] \n");
    EXPECT_EQ(test_access::width(stage), 16);
    EXPECT_EQ(test_access::diff_img(stage).width, 16u);
}

// A tampered image shows whether sizes were set again: reinit repairs it, an unchanged size does not.
TEST_F(pre_process_test, a_region_of_352_x_288_is_no_size_change_even_on_the_first_frame) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    test_access::fg_img(stage).width = 350;
    nv21_picture picture(352, 288);
    fd_yuv_frame frame = picture.frame();
    std::vector<con_info> components;
    outcome_of([&] { return stage.set_frame(&frame, components); });
    EXPECT_EQ(test_access::fg_img(stage).width, 350u);
}

struct change_row : support::named_row {
    int width;
    int height;
};

class size_change : public testing::TestWithParam<change_row> {
protected:
    static void SetUpTestSuite() {
        orva_fd::fd_table::init();
        pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

TEST_P(size_change, is_adopted) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    test_access::fg_img(stage).width = 1;
    nv21_picture picture(GetParam().width, GetParam().height);
    fd_yuv_frame frame = picture.frame();
    std::vector<con_info> components;
    EXPECT_EQ(stage.set_frame(&frame, components), 0);
    EXPECT_EQ(test_access::width(stage), GetParam().width);
    EXPECT_EQ(test_access::height(stage), GetParam().height);
    EXPECT_EQ(test_access::fg_img(stage).width, static_cast<unsigned>(GetParam().width));
}

INSTANTIATE_TEST_SUITE_P(table, size_change,
                         testing::Values(change_row{{"another width"}, 350, 288},
                                         change_row{{"another height"}, 352, 286}, change_row{{"both"}, 16, 16}),
                         row_name());

// --- one frame, by hand ---------------------------------------------------------------------------------------------

std::string text_of(const std::vector<con_info>& components) {
    std::string text;
    for (const con_info& c : components) {
        text += std::to_string(c.area) + ": " + std::to_string(c.left) + " to " + std::to_string(c.right) + ", " +
                std::to_string(c.top) + " to " + std::to_string(c.bottom) + "; ";
    }
    return text;
}

TEST_F(pre_process_test, a_flame_is_one_component_widened_by_one_pixel) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(352, 288);
    for (int number = 1; number <= 4; ++number) {
        support::paint_flame_frame(picture, number, 100, 60);
        fd_yuv_frame frame = picture.frame();
        std::vector<con_info> components;
        const outcome got = outcome_of([&] { return stage.set_frame(&frame, components); });
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "");
        EXPECT_EQ(text_of(components),
                  number % 2 == 1 ? "676: 107 to 132, 67 to 92; " : "1764: 99 to 140, 59 to 100; ");
        const fd_yuv_frame& mask = *stage.get_fg_img();
        EXPECT_EQ(mask.virt_addr[0][67 * 352 + 107], 255);
        EXPECT_EQ(mask.virt_addr[0][58 * 352 + 107], 0);
        EXPECT_EQ(test_access::diff_img(stage).virt_addr[0][70 * 352 + 115], number % 2 == 1 ? 200 : 240)
            << "previous luma";
        EXPECT_EQ(stage.get_rgb_img()->virt_addr[2][70 * 352 + 115], number % 2 == 1 ? 244 : 255) << "red";
    }
}

TEST_F(pre_process_test, what_does_not_move_has_no_component) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(352, 288);
    support::paint_flame_frame(picture, 1, 100, 60);
    fd_yuv_frame frame = picture.frame();
    std::vector<con_info> components;
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    EXPECT_EQ(components.size(), 1u) << "the first frame differs from black";
    components.clear();
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    EXPECT_EQ(components.size(), 0u);
}

// The whole picture has the colour of flame and brightens by `step`: all of it moves, or nothing does.
struct motion_row : support::named_row {
    int left_step;
    int right_step;
    const char* wanted;
};

class motion_threshold : public testing::TestWithParam<motion_row> {
protected:
    static void SetUpTestSuite() {
        orva_fd::fd_table::init();
        pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
};

TEST_P(motion_threshold, lies_in_20_to_35) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture picture(352, 288);
    picture.paint_all(200, support::k_flame_u, support::k_flame_v);
    fd_yuv_frame frame = picture.frame();
    std::vector<con_info> components;
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    for (int y = 0; y < 288; ++y) {
        for (int x = 0; x < 352; ++x) {
            picture.luma_at(x, y) =
                static_cast<unsigned char>(200 + (x < 176 ? GetParam().left_step : GetParam().right_step));
        }
    }
    components.clear();
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    EXPECT_EQ(text_of(components), GetParam().wanted);
}

const char k_all[] = "101376: 0 to 351, 0 to 287; ";
// Of two steps the larger moves: 176 columns in 288 rows. Both dilations add a column to the left, but not in the first
// and last row, and everything has the colour of flame: 176 * 288 + 2 * 286.
INSTANTIATE_TEST_SUITE_P(
    table, motion_threshold,
    testing::Values(motion_row{{"a step of 20 is still"}, 20, 20, ""},
                    motion_row{{"a step of 21 moves"}, 21, 21, k_all},
                    motion_row{{"a step of 35 moves"}, 35, 35, k_all},
                    motion_row{{"a step of 36 moves"}, 36, 36, k_all},
                    motion_row{{"steps of 22 and 30 are cut at 22"}, 22, 30, "51260: 174 to 351, 0 to 287; "}),
    row_name());

TEST_F(pre_process_test, after_a_size_change_the_first_difference_is_against_what_lay_there) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    nv21_picture large(352, 288), small(64, 64);
    large.paint_all(200, support::k_flame_u, support::k_flame_v);
    small.paint_all(200, support::k_flame_u, support::k_flame_v);
    small.paint(16, 16, 16, 16, 240, support::k_flame_u, support::k_flame_v);
    fd_yuv_frame frame = large.frame();
    std::vector<con_info> components;
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    components.clear();
    frame = small.frame();
    ASSERT_EQ(stage.set_frame(&frame, components), 0);
    // Only the square differs from the large picture's luma. All neighbours have the colour of flame, so that both
    // dilations count: 20 x 20.
    EXPECT_EQ(text_of(components), "400: 14 to 33, 14 to 33; ");
}

// --- failures -------------------------------------------------------------------------------------------------------

TEST_F(pre_process_test, a_null_frame_is_refused) {
    pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    std::vector<con_info> components = {{1, 2, 3, 4, 5}};
    const outcome got = outcome_of([&] { return stage.set_frame(nullptr, components); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "ERR. [Fire Detection: pre_process::set_frame : 105] \n");
    EXPECT_EQ(components.size(), 1u);
}

// --- all bytes against the twin -------------------------------------------------------------------------------------

// "" if the library's buffer holds the twin's bytes, else the first difference.
std::string difference(const hisi_mmz_mem& memory, const std::vector<unsigned char>& twin) {
    if (memory.size() != twin.size())
        return "sizes " + std::to_string(memory.size()) + " and " + std::to_string(twin.size());
    if (std::memcmp(bytes_of(memory), twin.data(), twin.size()) == 0) return "";
    const auto place = std::mismatch(twin.begin(), twin.end(), bytes_of(memory));
    const auto offset = place.first - twin.begin();
    return "offset " + std::to_string(offset) + " (x " + std::to_string(offset % 352) + ", y " +
           std::to_string(offset / 352) + "): got " + std::to_string(*place.second) + ", wanted " +
           std::to_string(*place.first);
}

// A stage and its twin, which take the same pictures.
class stage_and_twin {
public:
    stage_and_twin() { EXPECT_EQ(m_stage.start(), 0); }

    // "" if all bytes and components are equal after this picture.
    std::string step(const fd_yuv_frame& picture) {
        fd_yuv_frame frame = picture;
        std::vector<con_info> components, wanted;
        std::vector<ref::component> twin_components;
        if (m_stage.set_frame(&frame, components) != 0) return "the stage failed";
        if (m_twin.set_frame(picture, twin_components) != 0) return "the twin failed";
        for (const ref::component& c : twin_components) wanted.push_back({c.area, c.left, c.right, c.top, c.bottom});
        m_components += static_cast<int>(components.size());
        if (text_of(components) != text_of(wanted))
            return "components " + text_of(components) + "wanted " + text_of(wanted);
        const std::string mask = difference(test_access::fg_mem(m_stage), m_twin.foreground().bytes());
        if (!mask.empty()) return "mask, " + mask;
        const std::string rgb = difference(test_access::rgb_mem(m_stage), m_twin.rgb().bytes());
        if (!rgb.empty()) return "RGB, " + rgb;
        const std::string luma = difference(test_access::diff_mem(m_stage), m_twin.difference().bytes());
        return luma.empty() ? "" : "difference, " + luma;
    }

    int components_seen() const { return m_components; }

private:
    pre_process m_stage;
    ref::log_book m_log;
    ref::pre_stage m_twin{m_log};
    int m_components = 0;
};

// Flames and greys of random size and place, even and inside the picture.
void paint_spots(nv21_picture& picture, int count, int largest, support::random_source& random) {
    for (int spot = 0; spot < count; ++spot) {
        const int size = 2 * random.between(1, largest / 2);
        if (picture.width() <= size || picture.height() <= size) continue;
        const int luma = random.below(256), u = random.between(60, 140), v = random.between(115, 220);
        picture.paint(random.below((picture.width() - size) / 2 + 1) * 2,
                      random.below((picture.height() - size) / 2 + 1) * 2, size, size, luma, u, v);
    }
}

// Noise, flames and greys on a picture whose size changes now and then, odd sizes included.
TEST_F(pre_process_test, holds_the_bytes_of_the_plain_twin_after_every_frame) {
    support::random_source random;
    stage_and_twin both;
    int width = 352, height = 288;
    for (int number = 0; number < 250; ++number) {
        if (random.below(8) == 0) {
            width = random.below(4) == 0 ? 352 : random.between(1, 352);
            height = random.below(4) == 0 ? 288 : random.between(1, 288);
        }
        nv21_picture picture(width, height, (width + 1) / 2 * 2 + 2 * random.below(9));
        random.fill(picture.bytes().data(), picture.bytes().size());
        if (random.below(3) != 0) picture.paint_all(random.between(30, 60), 128, 128);
        paint_spots(picture, 6, 40, random);
        ASSERT_EQ(both.step(picture.frame()), "")
            << "frame " << number << ", " << width << " x " << height << ", seed " << random.seed();
    }
    EXPECT_GT(both.components_seen(), 100);
}

// Every width up to two vectors and every small height: first a picture of flames, then one in which single pixels of
// fire colour, blocks of it or everything moves by about the threshold.
TEST_F(pre_process_test, holds_the_bytes_of_the_plain_twin_in_all_small_sizes) {
    support::random_source random;
    stage_and_twin both;
    for (int width = 1; width <= 70; ++width) {
        for (const int height : {1, 2, 3, 4, 5, 6, 7, 17}) {
            nv21_picture picture(width, height, (width + 1) / 2 * 2 + 2 * random.below(9));
            picture.paint_all(200, support::k_flame_u, support::k_flame_v);
            for (int step = 0; step < 4; ++step) {
                const int share = random.between(1, 12), most = random.between(20, 60);
                for (unsigned char& byte : picture.bytes()) {
                    if (random.below(share) == 0) byte = static_cast<unsigned char>(byte + random.between(-most, most));
                }
                ASSERT_EQ(both.step(picture.frame()), "")
                    << "step " << step << ", " << width << " x " << height << ", seed " << random.seed();
            }
        }
    }
    EXPECT_GT(both.components_seen(), 1000);
}

// Differences of every value from 0 to 45 in random shares, beside clusters of larger ones, on pictures in which all
// pixels have the colour of flame: a threshold that is off by one changes the mask. Large pictures let the products of
// the search wrap.
TEST_F(pre_process_test, finds_the_threshold_of_the_plain_twin) {
    support::random_source random;
    stage_and_twin both;
    for (int round = 0; round < 400; ++round) {
        const bool large = round % 4 == 0;
        const int width = large ? 352 : random.between(8, 90), height = large ? 288 : random.between(4, 60);
        nv21_picture before(width, height), after(width, height);
        const int luma = random.between(140, 170), shares = random.between(1, 6);
        int values[6], weights[6];
        for (int i = 0; i < shares; ++i) {
            values[i] = random.below(3) == 0 ? random.between(40, luma) : random.between(0, 45);
            weights[i] = random.between(1, 1 << random.below(12));
        }
        before.paint_all(luma, support::k_flame_u, support::k_flame_v);
        after.paint_all(luma, support::k_flame_u, support::k_flame_v);
        int total = 0;
        for (int i = 0; i < shares; ++i) total += weights[i];
        const int stray = random.between(1, 60);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int pick = random.below(total), i = 0;
                while (pick >= weights[i]) pick -= weights[i++];
                int difference = random.below(stray) == 0 ? random.below(46) : values[i];
                if (random.below(2) == 0 && luma + difference <= 255) difference = -difference;
                after.luma_at(x, y) = static_cast<unsigned char>(luma - difference);
            }
        }
        ASSERT_EQ(both.step(before.frame()), "") << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(both.step(after.frame()), "")
            << "round " << round << ", " << width << " x " << height << ", seed " << random.seed();
    }
}

// A step of 15 everywhere, four of 30, and one of 21, by which the cut lies at 21 and not at 20.
TEST_F(pre_process_test, counts_a_difference_that_is_alone_in_its_row) {
    stage_and_twin both;
    for (int x = 0; x < 32; ++x) {
        nv21_picture before(32, 16), after(32, 16);
        before.paint_all(200, support::k_flame_u, support::k_flame_v);
        after.paint_all(215, support::k_flame_u, support::k_flame_v);
        after.luma_at(x, 4) = 221;
        for (const int column : {3, 10, 17, 24}) after.luma_at(column, 10) = 230;
        ASSERT_EQ(both.step(before.frame()), "") << x;
        ASSERT_EQ(both.step(after.frame()), "") << x;
    }
}

}  // namespace
