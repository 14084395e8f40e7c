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

// Rows that end within a word or begin beside one; what lies around them stays.
TEST(convert_row, takes_rows_of_every_even_width_from_anywhere) {
    support::random_source random;
    for (int width = 2; width <= k_widest_row; width += width < 40 ? 2 : 26) {
        for (const int place : {0, 1, 2, 3, 4, 5, 6}) {
            const std::size_t at = static_cast<std::size_t>(place % 4), length = static_cast<std::size_t>(width) + 8;
            bytes luma(length), chroma(static_cast<std::size_t>(width)), planes[3];
            random.fill(luma.data(), luma.size());
            random.fill(chroma.data(), chroma.size());
            for (bytes& plane : planes) plane.assign(length, 77);
            // One plane aside alone, or all three.
            const std::size_t plane_at[3] = {place == 3 || place > 5 ? 2u : 0u, place == 4 || place > 5 ? 1u : 0u,
                                             place == 5 || place > 5 ? 3u : 0u};
            color_offsets offsets;
            color_offsets_row(chroma.data(), width, &offsets);
            convert_row(luma.data() + at, offsets, planes[0].data() + plane_at[0], planes[1].data() + plane_at[1],
                        planes[2].data() + plane_at[2], width);
            bytes wanted[3] = {bytes(length, 77), bytes(length, 77), bytes(length, 77)};
            for (std::size_t x = 0; x < chroma.size(); ++x) {
                const std::size_t pair = x / 2 * 2;
                const ref::bgr pixel = ref::convert_pixel(luma[at + x], chroma[pair + 1], chroma[pair]);
                wanted[0][plane_at[0] + x] = byte_of(pixel.blue);
                wanted[1][plane_at[1] + x] = byte_of(pixel.green);
                wanted[2][plane_at[2] + x] = byte_of(pixel.red);
            }
            for (int plane = 0; plane < 3; ++plane)
                ASSERT_EQ(planes[plane], wanted[plane]) << plane << ", " << width << ", seed " << random.seed();
        }
    }
}

#if ORVA_HAS_VECTORS
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

TEST(flame_saturation_row, judges_all_mixtures_of_flame_tint_like_the_twin) {
    bytes reds(256), greens(256), blues(256), luma(256, 200), floors(256, 130), pass(256);
    for (int blue = 0; blue < 256; ++blue) blues[static_cast<std::size_t>(blue)] = byte_of(blue);
    for (int red = 151; red < 256; ++red) {
        std::fill(reds.begin(), reds.end(), byte_of(red));
        for (int green = 101; green <= red; ++green) {
            std::fill(greens.begin(), greens.end(), byte_of(green));
            flame_tint_row(reds.data(), greens.data(), blues.data(), luma.data(), floors.data(), pass.data(), 256);
            flame_saturation_row(reds.data(), greens.data(), blues.data(), pass.data(), 256);
            for (int blue = 0; blue < 256; ++blue)
                ASSERT_EQ(pass[static_cast<std::size_t>(blue)], ref::check_fire_pt(red, green, blue, 200, 100, 150))
                    << red << ", " << green << ", " << blue;
        }
    }
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
#else
// Two rows of a picture, of their mask and of their colours.
struct picture_pair {
    explicit picture_pair(int width)
        : chroma(static_cast<std::size_t>(width)),
          mask{chroma, chroma},
          luma{chroma, chroma},
          blue{chroma, chroma},
          green{chroma, chroma},
          red{chroma, chroma} {}

    pair_rows rows(std::size_t shift = 0) {
        pair_rows all;
        all.chroma = chroma.data() + shift;
        for (int i = 0; i < 2; ++i) {
            all.mask[i] = mask[i].data() + shift;
            all.luma[i] = luma[i].data() + shift;
            all.blue[i] = blue[i].data() + shift;
            all.green[i] = green[i].data() + shift;
            all.red[i] = red[i].data() + shift;
        }
        return all;
    }
    // A pixel of these colours, in a block of this chroma.
    void paint(int i, std::size_t x, const int (&bgr)[3], int y, int u, int v) {
        blue[i][x] = byte_of(bgr[0]);
        green[i][x] = byte_of(bgr[1]);
        red[i][x] = byte_of(bgr[2]);
        luma[i][x] = byte_of(y);
        chroma[x / 2 * 2] = byte_of(v);
        chroma[x / 2 * 2 + 1] = byte_of(u);
    }
    int judged(int i, std::size_t x) const {
        const std::size_t pair = x / 2 * 2;
        return ref::check_fire_pt(red[i][x], green[i][x], blue[i][x], luma[i][x], chroma[pair + 1], chroma[pair]);
    }

    bytes chroma, mask[2], luma[2], blue[2], green[2], red[2];
};

// One set pixel in each block, in each of its four places: the block stays if the pixel passes.
TEST(filter_pair_rows, judges_all_mixtures_like_the_twin) {
    picture_pair pair(512);
    for (int red = 148; red < 256; ++red) {
        for (int green = 99; green < 256; ++green) {
            const int i = green % 2;
            const std::size_t side = static_cast<std::size_t>(red % 2);
            for (bytes& mask : pair.mask) std::fill(mask.begin(), mask.end(), byte_of(0));
            for (int blue = 0; blue < 256; ++blue) {
                const std::size_t x = static_cast<std::size_t>(2 * blue) + side;
                pair.paint(i, x, {blue, green, red}, 200, 100, 150);
                pair.mask[i][x] = 255;
            }
            filter_pair_rows(pair.rows(), 0, 512);
            for (std::size_t x = side; x < 512; x += 2) {
                ASSERT_EQ(pair.mask[i][x], pair.judged(i, x) != 0 ? 255 : 0) << red << ", " << green << ", " << x / 2;
            }
        }
    }
}

TEST(filter_pair_rows, judges_all_chroma_at_the_least_luma_and_below) {
    picture_pair pair(512);
    for (int v = 0; v < 256; ++v) {
        for (const int more : {30, 31}) {
            for (bytes& mask : pair.mask) std::fill(mask.begin(), mask.end(), byte_of(0));
            for (int u = 0; u < 256; ++u) {
                const std::size_t x = static_cast<std::size_t>(2 * u);
                pair.paint(0, x, {150, 188, 244}, std::min(255, u + more), u, v);
                pair.mask[0][x] = 255;
            }
            filter_pair_rows(pair.rows(), 0, 512);
            for (std::size_t x = 0; x < 512; x += 2)
                ASSERT_EQ(pair.mask[0][x], pair.judged(0, x) != 0 ? 255 : 0)
                    << "U " << x / 2 << ", V " << v << ", " << more;
        }
    }
}

// At least 0, 1, 1, 2, 3 of the set pixels must pass. Whole and part words, masks with few and many pixels, from
// columns at a word and beside one.
TEST(filter_pair_rows, keeps_and_clears_blocks) {
    const int need[] = {0, 1, 1, 2, 3};
    support::random_source random;
    for (int round = 0; round < 4000; ++round) {
        const int first = 2 * random.below(4), last = first + 2 * random.between(0, 40);
        const std::size_t shift = static_cast<std::size_t>(random.below(8) == 0 ? 2 * random.below(2) + 1 : 0);
        picture_pair pair(last + 8);
        for (int i = 0; i < 2; ++i) {
            for (std::size_t x = 0; x < pair.chroma.size(); ++x) {
                if (random.below(2) == 0) pair.paint(i, x, {150, 188, 244}, 200, 100, 150);
                const bool set = random.below(round % 3 == 0 ? 20 : 2) == 0;
                pair.mask[i][x] = set ? byte_of(random.between(1, 255)) : byte_of(0);
            }
        }
        picture_pair wanted = pair;
        pair_rows rows = pair.rows(shift), kept = wanted.rows(shift);
        const int aside = random.below(8);  // one mask row of its own place, or none
        for (int i = 0; i < 2; ++i) {
            if (aside != i) continue;
            rows.mask[i] += 2;
            kept.mask[i] += 2;
        }
        bool wanted_any = false;
        for (int x = first; x < last; x += 2) {
            int set = 0, fire = 0;
            for (int pixel = 0; pixel < 4; ++pixel) {
                const int i = pixel / 2, at = x + pixel % 2;
                if (kept.mask[i][at] == 0) continue;
                ++set;
                fire += ref::check_fire_pt(kept.red[i][at], kept.green[i][at], kept.blue[i][at], kept.luma[i][at],
                                           kept.chroma[x + 1], kept.chroma[x]);
            }
            wanted_any = wanted_any || (set > 0 && fire >= need[set]);
            for (int i = 0; fire < need[set] && i < 2; ++i) kept.mask[i][x] = kept.mask[i][x + 1] = 0;
        }
        ASSERT_EQ(filter_pair_rows(rows, first, last), wanted_any) << "round " << round << ", seed " << random.seed();
        for (int i = 0; i < 2; ++i)
            ASSERT_EQ(pair.mask[i], wanted.mask[i]) << "round " << round << ", seed " << random.seed();
    }
}
#endif

}  // namespace
