// Labelling row by row: the same components as labelling the whole image, in all its special cases.
#include "imgproc/run_labeller.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/reference/ref_label.h"
#include "tests/support/images.h"
#include "tests/support/random.h"

namespace {

using orva_fd::con_info;
using orva_fd::run_labeller;
using support::grey_image;

std::string text_of(const std::vector<con_info>& components) {
    std::string text;
    for (const con_info& c : components) {
        text += std::to_string(c.area) + ": " + std::to_string(c.left) + " to " + std::to_string(c.right) + ", " +
                std::to_string(c.top) + " to " + std::to_string(c.bottom) + "; ";
    }
    return text;
}

// Rows without foreground are left out when `sparse`.
std::vector<con_info> label(run_labeller& labeller, const grey_image& image, bool sparse,
                            std::vector<con_info> out = {}) {
    labeller.begin();
    for (int y = 0; y < image.height(); ++y) {
        bool any = false;
        for (int x = 0; x < image.width(); ++x) any = any || image.at(x, y) != 0;
        if (any || !sparse) labeller.add_row(image.data() + y * image.stride(), 0, image.width(), y);
    }
    labeller.finish(out);
    return out;
}

std::vector<con_info> twin_label(grey_image& image, const std::vector<con_info>& held = {}) {
    std::vector<ref::component> out;
    for (const con_info& c : held) out.push_back({c.area, c.left, c.right, c.top, c.bottom});
    ref::label_components({image.data(), image.width(), image.height(), image.stride()}, out);
    std::vector<con_info> same;
    for (const ref::component& c : out) same.push_back({c.area, c.left, c.right, c.top, c.bottom});
    return same;
}

TEST(run_labeller, leaves_out_alone_without_foreground) {
    run_labeller labeller;
    grey_image image(8, 8);
    EXPECT_EQ(text_of(label(labeller, image, false, {{5, 1, 2, 3, 4}})), "5: 1 to 2, 3 to 4; ");
    EXPECT_EQ(text_of(label(labeller, image, true, {{5, 1, 2, 3, 4}})), "5: 1 to 2, 3 to 4; ");
}

TEST(run_labeller, adds_to_the_records_that_out_held) {
    run_labeller labeller;
    const grey_image image = grey_image::drawn({"..#.", "#..."});
    EXPECT_EQ(text_of(label(labeller, image, false, {{5, 3, 4, 2, 3}})), "6: 2 to 4, 0 to 3; 1: 0 to 0, 1 to 1; ");
    EXPECT_EQ(text_of(label(labeller, image, false, {{5, 3, 4, 2, 3}, {1, 2, 2, 2, 2}, {1, 2, 2, 2, 2}})),
              "6: 2 to 4, 0 to 3; 2: 0 to 2, 1 to 2; ");
}

TEST(run_labeller, does_not_join_over_a_row_that_was_left_out) {
    run_labeller labeller;
    const grey_image image = grey_image::drawn({"###", "...", "###"});
    EXPECT_EQ(text_of(label(labeller, image, true)), "3: 0 to 2, 0 to 0; 3: 0 to 2, 2 to 2; ");
}

TEST(run_labeller, begins_each_image_anew) {
    run_labeller labeller;
    grey_image first = grey_image::drawn({"...", "...", "###"}),
               second = grey_image::drawn({"...", "...", "...", "###"});
    EXPECT_EQ(text_of(label(labeller, first, true)), "3: 0 to 2, 2 to 2; ");
    EXPECT_EQ(text_of(label(labeller, second, true)), "3: 0 to 2, 3 to 3; ");
    EXPECT_EQ(text_of(label(labeller, first, true)), "3: 0 to 2, 2 to 2; ");
}

TEST(run_labeller, joins_arms_whose_labels_are_far_apart) {
    run_labeller labeller;
    // A comb of 100 teeth, then a bar that joins all, then another comb.
    grey_image image(200, 9);
    for (int x = 0; x < 200; x += 2) image.fill_rect(x, 0, 1, 4, 255);
    image.fill_rect(0, 4, 200, 1, 255);
    for (int x = 0; x < 200; x += 2) image.fill_rect(x, 6, 1, 3, 255);
    const std::vector<con_info> found = label(labeller, image, true);
    ASSERT_EQ(found.size(), 101u);
    EXPECT_EQ(text_of({found[0]}), "600: 0 to 199, 0 to 4; ");
    EXPECT_EQ(text_of({found[100]}), "3: 198 to 198, 6 to 8; ");
}

// Rows are read in parts of 384 columns; a run may end with a part or go on in the next.
TEST(run_labeller, follows_runs_to_the_end_of_rows_of_any_width) {
    run_labeller labeller;
    for (const int width : {63, 64, 65, 383, 384, 385, 767, 768, 769}) {
        grey_image image(width, 1);
        image.fill_rect(1, 0, width - 1, 1, 255);
        const std::vector<con_info> found = label(labeller, image, false);
        ASSERT_EQ(found.size(), 1u) << width;
        EXPECT_EQ(found[0].area, width - 1);
        EXPECT_EQ(found[0].right, width - 1);
    }
}

TEST(run_labeller, equals_a_flood_fill_over_all_images_of_4_x_4) {
    run_labeller labeller;
    grey_image image(4, 4);
    for (unsigned bits = 0; bits < 65536; ++bits) {
        for (int i = 0; i < 16; ++i) image.data()[i] = static_cast<unsigned char>((bits >> i & 1) != 0 ? 255 : 0);
        ASSERT_EQ(text_of(label(labeller, image, bits % 2 == 0)), text_of(twin_label(image))) << "bits " << bits;
    }
}

// One object for all images, as in a channel; with and without memory obtained beforehand.
TEST(run_labeller, equals_a_flood_fill_on_random_images) {
    support::random_source random;
    run_labeller kept;
    kept.reserve(352, 352 * 288 / 2);
    for (int round = 0; round < 2000; ++round) {
        const bool large = round % 100 == 0;
        const int width = large ? 352 : random.between(1, 70), height = large ? 288 : random.between(1, 30);
        const int percent = random.between(2, 98);
        grey_image image(width, height, width + random.below(4));
        for (std::size_t i = 0; i < image.length(); ++i) {
            image.data()[i] = static_cast<unsigned char>(random.below(100) < percent ? random.between(1, 255) : 0);
        }
        std::vector<con_info> held;
        for (int i = random.below(3); i > 0; --i) held.push_back({random.below(99), 3, 9, 2, 7});
        run_labeller fresh;
        const std::string wanted = text_of(twin_label(image, held));
        const bool sparse = random.below(2) == 0;
        ASSERT_EQ(text_of(label(kept, image, sparse, held)), wanted) << "round " << round << ", seed " << random.seed();
        ASSERT_EQ(text_of(label(fresh, image, sparse, held)), wanted)
            << "round " << round << ", seed " << random.seed();
    }
}

// Runs that touch no run of the row above, each of which gets a label.
int count_labels(const grey_image& image, int width, int height) {
    int labels = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned char* row = image.data() + y * width;
            if (row[x] == 0 || (x > 0 && row[x - 1] != 0)) continue;
            bool touches = false;
            for (int i = x; i < width && row[i] != 0; ++i) touches |= y > 0 && row[i - width] != 0;
            labels += touches ? 0 : 1;
        }
    }
    return labels;
}

// The densest arrangement known: set pixels at (4, 1), (-3, 3) and their sums. It needs more labels than squares of 4 x
// 4 pixels would fit, and fewer than are reserved.
TEST(run_labeller, reserves_enough_labels_for_the_densest_dilated_mask) {
    const int width = 352, height = 288;
    grey_image mask(width, height), dilated(width, height);
    for (int a = -400; a < 400; ++a) {
        for (int b = -400; b < 400; ++b) {
            const int x = 4 * a - 3 * b, y = a + 3 * b;
            if (x >= 2 && x < width - 3 && y >= 2 && y < height - 2) mask.data()[y * width + x] = 255;
        }
    }
    for (int y = 1; y < height - 1; ++y) {
        for (int x = 1; x < width - 2; ++x) {
            for (int k = 0; k < 9; ++k) {
                if (mask.data()[(y + k / 3 - 1) * width + x + k % 3 - 1] != 0) dilated.data()[y * width + x] = 255;
            }
        }
    }
    const int reserved = run_labeller::k_most_components;
    EXPECT_EQ(reserved, 8096);  // 353 * 290 / 14 is 7312, and 352 + 432 for the edges
    EXPECT_GT(count_labels(dilated, width, height), 88 * 72);
    EXPECT_LE(count_labels(dilated, width, height), reserved);
}

}  // namespace
