// Connected components: pictures drawn by hand, each pass on its own, and random images against a flood fill.
#include "imgproc/bwlabel_ccl.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/reference/ref_label.h"
#include "tests/support/images.h"
#include "tests/support/shapes.h"

namespace {

using orva_fd::bwlabel_ccl;
using orva_fd::con_info;
using support::grey_image;
using support::row_name;

using numbers = std::vector<unsigned short>;
using pairs = std::vector<std::pair<int, int>>;

std::string text_of(const con_info& c) {
    return "area " + std::to_string(c.area) + ", columns " + std::to_string(c.left) + " to " + std::to_string(c.right) +
           ", rows " + std::to_string(c.top) + " to " + std::to_string(c.bottom);
}

template <class Component>
std::vector<std::string> texts_of(const std::vector<Component>& components) {
    std::vector<std::string> texts;
    for (const Component& c : components) texts.push_back(text_of(con_info{c.area, c.left, c.right, c.top, c.bottom}));
    return texts;
}

// --- pictures -------------------------------------------------------------------------------------------------------

struct picture_row : support::named_row {
    std::vector<std::string> picture;
    std::vector<con_info> wanted;
};

class do_comm_ccl : public testing::TestWithParam<picture_row> {};

TEST_P(do_comm_ccl, lists_the_components) {
    grey_image image = grey_image::drawn(GetParam().picture);
    const grey_image before = image;
    fd_yuv_frame img = image.frame();
    std::vector<con_info> out;
    EXPECT_EQ(bwlabel_ccl().do_comm_ccl(&img, out), 0);
    EXPECT_EQ(texts_of(out), texts_of(GetParam().wanted));
    EXPECT_TRUE(image == before);
}

INSTANTIATE_TEST_SUITE_P(
    drawn, do_comm_ccl,
    testing::Values(
        picture_row{{"nothing"}, {"...", "..."}, {}},
        picture_row{{"a pixel at the origin"}, {"#..", "..."}, {{1, 0, 0, 0, 0}}},
        picture_row{{"a pixel in the last corner"}, {"...", "..#"}, {{1, 2, 2, 1, 1}}},
        picture_row{{"1 and 254 are foreground too"}, {"1e.", "..."}, {{2, 0, 1, 0, 0}}},
        picture_row{{"a corner does not connect"}, {"#..", ".#."}, {{1, 0, 0, 0, 0}, {1, 1, 1, 1, 1}}},
        picture_row{{"nor does the other corner"}, {".#.", "#.."}, {{1, 1, 1, 0, 0}, {1, 0, 0, 1, 1}}},
        picture_row{{"one shared column connects at the right end"}, {"##..", ".##."}, {{4, 0, 2, 0, 1}}},
        picture_row{{"one shared column connects at the left end"}, {".##.", "##.."}, {{4, 0, 2, 0, 1}}},
        picture_row{{"a row without runs separates"}, {"#..", "...", "#.."}, {{1, 0, 0, 0, 0}, {1, 0, 0, 2, 2}}},
        picture_row{{"the arms of a U are one"}, {"#.#", "#.#", "###"}, {{7, 0, 2, 0, 2}}},
        picture_row{{"three arms are one"}, {"#.#.#", "#####"}, {{8, 0, 4, 0, 1}}},
        picture_row{{"a comb upside down is one"}, {"#####", "#.#.#"}, {{8, 0, 4, 0, 1}}},
        picture_row{{"two combs stay apart"}, {"#.#.#.#", "###.###"}, {{5, 0, 2, 0, 1}, {5, 4, 6, 0, 1}}},
        picture_row{{"a ring around a dot is two"},
                    {"#####", "#...#", "#.#.#", "#...#", "#####"},
                    {{16, 0, 4, 0, 4}, {1, 2, 2, 2, 2}}},
        picture_row{{"order is that of the first pixels and not of sizes"},
                    {"...#", "....", "##..", "##.."},
                    {{1, 3, 3, 0, 0}, {4, 0, 1, 2, 3}}},
        // The third run opens label 3, the row below joins 1 with 3: classes {1, 3} and {2}.
        picture_row{{"a late equivalence keeps the smaller number first"},
                    {"#.#.#", "#.#.#", "#...#", "#####"},
                    {{11, 0, 4, 0, 3}, {2, 2, 2, 0, 1}}},
        picture_row{
            {"a spiral is one"}, {"######", ".....#", "####.#", "#..#.#", "#....#", "######"}, {{23, 0, 5, 0, 5}}},
        picture_row{{"a column of width 1"}, {"#", "#", ".", "#"}, {{2, 0, 0, 0, 1}, {1, 0, 0, 3, 3}}},
        picture_row{{"a run up to the last column"}, {".##", "..."}, {{2, 1, 2, 0, 0}}},
        picture_row{{"everything"}, {"####", "####", "####"}, {{12, 0, 3, 0, 2}}}),
    row_name());

// --- what out held before -------------------------------------------------------------------------------------------

TEST(do_comm_ccl_out, stays_as_it_was_for_an_empty_image) {
    grey_image image(4, 4);
    fd_yuv_frame img = image.frame();
    std::vector<con_info> out = {{5, 1, 2, 3, 4}, {6, 7, 8, 9, 10}};
    EXPECT_EQ(bwlabel_ccl().do_comm_ccl(&img, out), 0);
    EXPECT_EQ(texts_of(out), (std::vector<std::string>{"area 5, columns 1 to 2, rows 3 to 4",
                                                       "area 6, columns 7 to 8, rows 9 to 10"}));
}

TEST(do_comm_ccl_out, keeps_and_widens_the_records_that_it_held) {
    grey_image image = grey_image::drawn({"..#.", "#..."});
    fd_yuv_frame img = image.frame();
    std::vector<con_info> out = {{5, 3, 4, 2, 3}};
    EXPECT_EQ(bwlabel_ccl().do_comm_ccl(&img, out), 0);
    EXPECT_EQ(texts_of(out),
              (std::vector<std::string>{"area 6, columns 2 to 4, rows 0 to 3", "area 1, columns 0 to 0, rows 1 to 1"}));
}

TEST(do_comm_ccl_out, loses_the_records_that_are_too_many) {
    grey_image image = grey_image::drawn({"...#"});
    fd_yuv_frame img = image.frame();
    std::vector<con_info> out = {{5, 1, 2, 0, 4}, {6, 7, 8, 9, 10}, {1, 1, 1, 1, 1}};
    EXPECT_EQ(bwlabel_ccl().do_comm_ccl(&img, out), 0);
    EXPECT_EQ(texts_of(out), (std::vector<std::string>{"area 6, columns 1 to 3, rows 0 to 4"}));
}

// --- start values ---------------------------------------------------------------------------------------------------

struct far_row : support::named_row {
    int width;
    int height;
    int x;
    int y;
    con_info wanted;
};

class do_comm_ccl_far : public testing::TestWithParam<far_row> {};

TEST_P(do_comm_ccl_far, keeps_the_start_values_of_left_and_top) {
    grey_image image(GetParam().width, GetParam().height);
    image.at(GetParam().x, GetParam().y) = 255;
    fd_yuv_frame img = image.frame();
    std::vector<con_info> out;
    EXPECT_EQ(bwlabel_ccl().do_comm_ccl(&img, out), 0);
    EXPECT_EQ(texts_of(out), texts_of(std::vector<con_info>{GetParam().wanted}));
}

INSTANTIATE_TEST_SUITE_P(
    table, do_comm_ccl_far,
    testing::Values(far_row{{"column 351 is itself"}, 400, 2, 351, 1, {1, 351, 351, 1, 1}},
                    far_row{{"column 352 is the start value"}, 400, 2, 352, 1, {1, 352, 352, 1, 1}},
                    far_row{{"column 353 leaves left at 352"}, 400, 2, 353, 1, {1, 352, 353, 1, 1}},
                    far_row{{"column 399 leaves left at 352"}, 400, 2, 399, 0, {1, 352, 399, 0, 0}},
                    far_row{{"row 288 is the start value"}, 4, 300, 2, 288, {1, 2, 2, 288, 288}},
                    far_row{{"row 299 leaves top at 288"}, 4, 300, 2, 299, {1, 2, 2, 288, 299}},
                    // 40000 is -25536 in 16 bits: below left, and not above right.
                    far_row{{"edges are compared as signed 16 bit values"}, 40010, 1, 40000, 0, {1, -25536, 0, 0, 0}},
                    far_row{{"so are rows"}, 1, 40010, 0, 40000, {1, 0, 0, -25536, 0}}),
    row_name());

// --- first step: runs -----------------------------------------------------------------------------------------------

struct runs {
    int count = 0;
    numbers first, last, row;
};

runs runs_of(grey_image& image) {
    runs found;
    EXPECT_EQ(bwlabel_ccl().fillRunVectors(image.data(), image.width(), image.height(), image.stride(), found.count,
                                           found.first, found.last, found.row),
              0);
    return found;
}

TEST(fillRunVectors, lists_runs_in_raster_order) {
    grey_image image = grey_image::drawn({"##.#", "....", ".##.", "...#"}, 7);
    image.fill_rect(4, 0, 3, 4, 255);  // padding is no foreground
    const runs found = runs_of(image);
    EXPECT_EQ(found.count, 4);
    EXPECT_EQ(found.first, (numbers{0, 3, 1, 3}));
    EXPECT_EQ(found.last, (numbers{1, 3, 2, 3}));
    EXPECT_EQ(found.row, (numbers{0, 0, 2, 3}));
}

TEST(fillRunVectors, takes_a_column_of_width_1) {
    grey_image image = grey_image::drawn({"#", ".", "#"}, 3);
    const runs found = runs_of(image);
    EXPECT_EQ(found.count, 2);
    EXPECT_EQ(found.first, (numbers{0, 0}));
    EXPECT_EQ(found.last, (numbers{0, 0}));
    EXPECT_EQ(found.row, (numbers{0, 2}));
}

TEST(fillRunVectors, finds_nothing_without_rows) {
    grey_image image(4, 0);
    const runs found = runs_of(image);
    EXPECT_EQ(found.count, 0);
    EXPECT_TRUE(found.first.empty() && found.last.empty() && found.row.empty());
}

// --- second step: provisional labels --------------------------------------------------------------------------------

struct pass_row : support::named_row {
    numbers first;
    numbers last;
    numbers row;
    std::vector<int> wanted_labels;
    pairs wanted_pairs;
    int wanted_count;
};

class firstPass : public testing::TestWithParam<pass_row> {};

TEST_P(firstPass, gives_labels_and_equivalences) {
    numbers first = GetParam().first, last = GetParam().last, row = GetParam().row;
    std::vector<int> labels = {9, 9, 9};
    pairs equivalences;
    int count = 77;
    EXPECT_EQ(bwlabel_ccl().firstPass(first, last, row, static_cast<int>(first.size()), labels, equivalences, count),
              0);
    EXPECT_EQ(labels, GetParam().wanted_labels);
    EXPECT_EQ(equivalences, GetParam().wanted_pairs);
    EXPECT_EQ(count, GetParam().wanted_count);
}

INSTANTIATE_TEST_SUITE_P(
    table, firstPass,
    testing::Values(
        pass_row{{"no run"}, {}, {}, {}, {}, {}, 0}, pass_row{{"one run"}, {3}, {5}, {0}, {1}, {}, 1},
        pass_row{{"a first run on a later row"}, {3}, {5}, {7}, {1}, {}, 1},
        pass_row{{"runs that share a column"}, {0, 2}, {2, 4}, {0, 1}, {1, 1}, {}, 1},
        pass_row{{"runs that touch at a corner"}, {0, 3}, {2, 4}, {0, 1}, {1, 2}, {}, 2},
        pass_row{{"runs two rows apart"}, {0, 0}, {2, 2}, {0, 2}, {1, 2}, {}, 2},
        pass_row{{"a U"}, {0, 4, 0}, {1, 5, 5}, {0, 0, 1}, {1, 2, 1}, {{1, 2}}, 2},
        pass_row{
            {"a ring closes without an equivalence"}, {0, 0, 4, 0}, {4, 0, 4, 4}, {0, 1, 1, 2}, {1, 1, 1, 1}, {}, 1},
        pass_row{{"three arms are two equivalences"},
                 {0, 2, 4, 0},
                 {0, 2, 4, 4},
                 {0, 0, 0, 1},
                 {1, 2, 3, 1},
                 {{1, 2}, {1, 3}},
                 3},
        pass_row{{"an equivalence found twice is kept twice"},
                 {0, 2, 0, 2, 4, 0},
                 {0, 4, 0, 2, 4, 4},
                 {0, 0, 1, 1, 1, 2},
                 {1, 2, 1, 2, 2, 1},
                 {{1, 2}, {1, 2}},
                 2},
        pass_row{
            {"overlapping runs of one row take the label of the one before"}, {0, 2}, {2, 4}, {0, 0}, {1, 1}, {}, 1},
        pass_row{{"and record an equivalence with the row above"},
                 {0, 6, 0, 2},
                 {1, 7, 2, 7},
                 {0, 0, 1, 1},
                 {1, 2, 1, 1},
                 {{1, 2}},
                 2},
        pass_row{
            {"columns above 32767 are compared as unsigned"}, {40000, 65000}, {65000, 65001}, {0, 1}, {1, 1}, {}, 1}),
    row_name());

// --- third step: groups ---------------------------------------------------------------------------------------------

struct group_row : support::named_row {
    int labels;
    pairs equivalences;
    std::vector<int> wanted;
    int wanted_groups;
};

class replaceSameLabel : public testing::TestWithParam<group_row> {};

TEST_P(replaceSameLabel, numbers_groups_by_their_smallest_label) {
    pairs equivalences = GetParam().equivalences;
    std::vector<int> labels;
    int groups = 77;
    EXPECT_EQ(bwlabel_ccl().replaceSameLabel(GetParam().labels, equivalences, labels, groups), 0);
    EXPECT_EQ(labels, GetParam().wanted);
    EXPECT_EQ(groups, GetParam().wanted_groups);
}

INSTANTIATE_TEST_SUITE_P(
    table, replaceSameLabel,
    testing::Values(group_row{{"no label"}, 0, {}, {}, 0}, group_row{{"no equivalence"}, 3, {}, {1, 2, 3}, 3},
                    group_row{{"one pair"}, 3, {{3, 1}}, {1, 2, 1}, 2},
                    group_row{{"two crossing pairs"}, 4, {{3, 1}, {4, 2}}, {1, 2, 1, 2}, 2},
                    group_row{{"a chain from the end"}, 5, {{5, 4}, {4, 3}, {3, 2}, {2, 1}}, {1, 1, 1, 1, 1}, 1},
                    group_row{{"duplicates change nothing"}, 3, {{2, 3}, {2, 3}, {3, 2}}, {1, 2, 2}, 2},
                    group_row{{"a star around the last"}, 5, {{5, 1}, {5, 3}, {2, 4}}, {1, 2, 1, 2, 1}, 2}),
    row_name());

TEST(replaceSameLabel_given, keeps_labels_that_were_there) {
    pairs equivalences;
    std::vector<int> labels = {0, 7};
    int groups = 0;
    EXPECT_EQ(bwlabel_ccl().replaceSameLabel(3, equivalences, labels, groups), 0);
    EXPECT_EQ(labels, (std::vector<int>{1, 7, 2}));
    EXPECT_EQ(groups, 2);
}

// --- random images --------------------------------------------------------------------------------------------------

TEST(do_comm_ccl_random, equals_a_flood_fill) {
    support::random_source random;
    for (int round = 0; round < 4000; ++round) {
        const bool large = round % 100 == 0;
        const int width = large ? 352 : 1 + random.below(50), height = large ? 288 : 1 + random.below(30);
        grey_image image(width, height, width + random.below(4));
        // From nearly empty over the density where components grow longest, 0.59, to nearly full.
        const int percent = 5 + random.below(91);
        for (std::size_t i = 0; i < image.length(); ++i) {
            image.data()[i] = static_cast<unsigned char>(random.below(100) < percent ? 1 + random.below(255) : 0);
        }
        fd_yuv_frame img = image.frame();
        std::vector<con_info> found;
        ASSERT_EQ(bwlabel_ccl().do_comm_ccl(&img, found), 0);
        std::vector<ref::component> wanted;
        ref::label_components(plane_of(image), wanted);
        ASSERT_EQ(texts_of(found), texts_of(wanted))
            << "round " << round << ", " << width << " x " << height << ", seed " << random.seed();
    }
}

TEST(do_comm_ccl_random, equals_a_flood_fill_over_all_images_of_4_x_4) {
    grey_image image(4, 4);
    fd_yuv_frame img = image.frame();
    for (unsigned bits = 0; bits < 65536; ++bits) {
        for (int i = 0; i < 16; ++i) image.data()[i] = static_cast<unsigned char>((bits >> i & 1) != 0 ? 255 : 0);
        std::vector<con_info> found;
        ASSERT_EQ(bwlabel_ccl().do_comm_ccl(&img, found), 0);
        std::vector<ref::component> wanted;
        ref::label_components(plane_of(image), wanted);
        ASSERT_EQ(texts_of(found), texts_of(wanted)) << "bits " << bits;
    }
}

}  // namespace
