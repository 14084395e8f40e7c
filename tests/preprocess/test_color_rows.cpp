// The row functions of colour, each against the rule that it stands for, over all of its inputs where they are few.
#include "preprocess/color_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/reference/ref_pixels.h"
#include "tests/support/random.h"

namespace {

using namespace orva_fd;

using bytes = std::vector<unsigned char>;

unsigned char byte_of(int value) {
    return static_cast<unsigned char>(value);
}

// One V with 128 values of U in a row.
bytes chroma_row(int v, int first_u) {
    bytes chroma;
    for (int u = first_u; u < first_u + 128; ++u) {
        chroma.push_back(byte_of(v));
        chroma.push_back(byte_of(u));
    }
    return chroma;
}

TEST(luma_floor_row, lets_pass_what_the_rule_lets_pass_for_all_chroma) {
    uint16_t floors[k_widest_row / 2];
    for (int v = 0; v < 256; ++v) {
        for (const int first_u : {0, 128}) {
            const bytes chroma = chroma_row(v, first_u);
            luma_floor_row(chroma.data(), 256, floors);
            for (int i = 0; i < 256; ++i) {
                const int u = first_u + i / 2, floor = as_bytes(floors)[i];
                // The least luma that passes, 256 if none does.
                const int wanted = v > u && v > 120 ? std::min(256, u + 31) : 256;
                ASSERT_EQ(std::min(256, floor + 1), wanted) << "U " << u << ", V " << v << ", column " << i;
            }
        }
    }
}

TEST(convert_row, gives_the_colours_of_the_twin_for_all_chroma) {
    support::random_source random;
    bytes luma(256), blue(256), green(256), red(256);
    for (int v = 0; v < 256; ++v) {
        for (const int first_u : {0, 128}) {
            const bytes chroma = chroma_row(v, first_u);
            color_offsets offsets;
            color_offsets_row(chroma.data(), 256, &offsets);
            for (const int kind : {0, 1, 2}) {
                for (unsigned char& y : luma)
                    y = kind == 0 ? byte_of(random.below(256))
                                  : byte_of(kind == 1 ? random.below(40) : 255 - random.below(40));
                convert_row(luma.data(), offsets, blue.data(), green.data(), red.data(), 256);
                for (int i = 0; i < 256; ++i) {
                    const std::size_t at = static_cast<std::size_t>(i);
                    const ref::bgr wanted = ref::convert_pixel(luma[at], first_u + i / 2, v);
                    ASSERT_TRUE(blue[at] == wanted.blue && green[at] == wanted.green && red[at] == wanted.red)
                        << "Y " << +luma[at] << ", U " << first_u + i / 2 << ", V " << v << ", seed " << random.seed();
                }
            }
        }
    }
}

TEST(flame_tint_row, follows_its_tests_for_all_mixtures) {
    bytes reds(256), greens(256), blues(256), luma(256, 100), floors(256, 99), pass(256, 7);
    for (int blue = 0; blue < 256; ++blue) blues[static_cast<std::size_t>(blue)] = byte_of(blue);
    for (int red = 0; red < 256; ++red) {
        std::fill(reds.begin(), reds.end(), byte_of(red));
        for (int green = 0; green < 256; ++green) {
            std::fill(greens.begin(), greens.end(), byte_of(green));
            const bool any =
                flame_tint_row(reds.data(), greens.data(), blues.data(), luma.data(), floors.data(), pass.data(), 256);
            bool wanted_any = false;
            for (int blue = 0; blue < 256; ++blue) {
                const bool wanted =
                    red >= green && green > blue && blue > 80 && red > 150 && green > 100 && red < 2 * green;
                ASSERT_EQ(pass[static_cast<std::size_t>(blue)], wanted ? 1 : 0) << red << ", " << green << ", " << blue;
                wanted_any = wanted_any || wanted;
            }
            ASSERT_EQ(any, wanted_any) << red << ", " << green;
        }
    }
}

TEST(flame_tint_row, compares_luma_with_its_floor) {
    bytes reds(256, 244), greens(256, 188), blues(256, 150), luma(256), floors(256), pass(256);
    for (int i = 0; i < 256; ++i) luma[static_cast<std::size_t>(i)] = byte_of(i);
    for (int floor = 0; floor < 256; ++floor) {
        std::fill(floors.begin(), floors.end(), byte_of(floor));
        EXPECT_EQ(
            flame_tint_row(reds.data(), greens.data(), blues.data(), luma.data(), floors.data(), pass.data(), 256),
            floor < 255);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(pass[static_cast<std::size_t>(i)], i > floor ? 1 : 0) << i << " above " << floor;
    }
}

TEST(flame_saturation_row, clears_and_never_sets) {
    bytes reds(64, 244), greens(64, 188), blues(64, 150), pass(64, 0);
    flame_saturation_row(reds.data(), greens.data(), blues.data(), pass.data(), 64);
    EXPECT_EQ(pass, bytes(64, 0));
    std::fill(pass.begin(), pass.end(), byte_of(1));
    flame_saturation_row(reds.data(), greens.data(), blues.data(), pass.data(), 64);
    EXPECT_EQ(pass, bytes(64, 1));
}

// At least 0, 1, 1, 2, 3 of the set pixels must pass. Every pattern stands in every place of rows of several widths.
TEST(filter_block_row, keeps_and_clears_all_256_patterns) {
    const int need[] = {0, 1, 1, 2, 3};
    support::random_source random;
    for (const int width : {2, 4, 16, 30, 32, 34, 62, 64, 66, 128, 350, 352}) {
        for (int round = 0; round < 300; ++round) {
            const std::size_t length = static_cast<std::size_t>(width);
            bytes mask[2] = {bytes(length), bytes(length)}, pass[2] = {bytes(length), bytes(length)};
            const bool sparse = round % 4 == 0;
            for (int row = 0; row < 2; ++row) {
                for (std::size_t x = 0; x < length; ++x) {
                    mask[row][x] = random.below(sparse ? 200 : 2) == 0 ? byte_of(random.between(1, 255)) : byte_of(0);
                    pass[row][x] = byte_of(random.below(2));
                }
            }
            bytes wanted[2] = {mask[0], mask[1]};
            bool wanted_any = false;
            for (std::size_t x = 0; x < length; x += 2) {
                int set = 0, fire = 0;
                for (int i = 0; i < 4; ++i) {
                    const std::size_t at = x + static_cast<std::size_t>(i % 2);
                    if (mask[i / 2][at] == 0) continue;
                    ++set;
                    fire += pass[i / 2][at];
                }
                if (fire < need[set]) wanted[0][x] = wanted[0][x + 1] = wanted[1][x] = wanted[1][x + 1] = 0;
                wanted_any = wanted_any || (set > 0 && fire >= need[set]);
            }
            const bool any = filter_block_row(mask[0].data(), mask[1].data(), pass[0].data(), pass[1].data(), width);
            ASSERT_EQ(mask[0], wanted[0]) << width << ", seed " << random.seed();
            ASSERT_EQ(mask[1], wanted[1]) << width << ", seed " << random.seed();
            ASSERT_EQ(any, wanted_any) << width << ", seed " << random.seed();
        }
    }
}

}  // namespace
