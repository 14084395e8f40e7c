// Tiles over a part of the picture, and boxes of one fire in several tiles, with values worked out by hand.
#include <gtest/gtest.h>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/tiling.h"
#include "tests/support/rows.h"

namespace orva_fire {

static void PrintTo(const box& b, std::ostream* out) {
    *out << b.x << "," << b.y << " " << b.width << "x" << b.height;
}

}  // namespace orva_fire

namespace {

using namespace orva_fire;
using support::row_name;

tile_grid grid_of(int columns, int rows) {
    tile_grid grid;
    grid.columns = columns;
    grid.rows = rows;
    return grid;
}

tile_grid automatic() {
    tile_grid grid;
    grid.automatic = true;
    return grid;
}

// --- the text of --tiles ---------------------------------------------------------------------------------------------

TEST(tiles_text, is_auto_or_columns_x_rows) {
    EXPECT_EQ(parse_tiles("auto"), automatic());
    EXPECT_EQ(parse_tiles("3x2"), grid_of(3, 2));
    EXPECT_EQ(parse_tiles("1x1"), tile_grid());
    EXPECT_EQ(parse_tiles("16x16"), grid_of(16, 16));
}

struct bad_text_row : support::named_row {
    const char* text;
};

class bad_tiles_text : public testing::TestWithParam<bad_text_row> {};

TEST_P(bad_tiles_text, is_refused_and_named) {
    try {
        parse_tiles(GetParam().text);
        FAIL() << "not refused";
    } catch (const usage_error& error) {
        EXPECT_NE(std::string(error.what()).find("'" + std::string(GetParam().text) + "'"), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(table, bad_tiles_text,
                         testing::Values(bad_text_row{{"nothing"}, ""}, bad_text_row{{"one number"}, "3"},
                                         bad_text_row{{"no rows"}, "3x"}, bad_text_row{{"no columns"}, "x2"},
                                         bad_text_row{{"none"}, "0x2"}, bad_text_row{{"seventeen columns"}, "17x1"},
                                         bad_text_row{{"seventeen rows"}, "1x17"},
                                         bad_text_row{{"three numbers"}, "1x2x3"},
                                         bad_text_row{{"a negative number"}, "-1x2"}, bad_text_row{{"a sign"}, "+1x2"},
                                         bad_text_row{{"blanks"}, "3 x 2"}, bad_text_row{{"a capital"}, "AUTO"},
                                         bad_text_row{{"too large for any number"}, "99999999999x1"}),
                         row_name());

// --- tiles -----------------------------------------------------------------------------------------------------------

struct tile_row : support::named_row {
    box area;
    tile_grid grid;
    std::vector<box> wanted;
};

class tiles_of : public testing::TestWithParam<tile_row> {};

TEST_P(tiles_of, are_these) {
    EXPECT_EQ(tile(GetParam().area, GetParam().grid), GetParam().wanted);
}

// Two tiles of length t overlap by t / 8 and cover 15 t / 8: of 750 pixels each has 400 and the second starts at 350.
// Three cover 22 t / 8: of 1100 pixels each has 400, at 0, 350 and 700.
INSTANTIATE_TEST_SUITE_P(
    table, tiles_of,
    testing::Values(
        tile_row{{"one tile is the area"}, {10, 20, 301, 203}, tile_grid(), {{10, 20, 301, 203}}},
        tile_row{
            {"two columns share 50 of 400"}, {0, 0, 750, 100}, grid_of(2, 1), {{0, 0, 400, 100}, {350, 0, 400, 100}}},
        tile_row{
            {"three rows"}, {0, 0, 64, 1100}, grid_of(1, 3), {{0, 0, 64, 400}, {0, 350, 64, 400}, {0, 700, 64, 400}}},
        tile_row{{"row by row from the left"},
                 {100, 50, 750, 750},
                 grid_of(2, 2),
                 {{100, 50, 400, 400}, {450, 50, 400, 400}, {100, 400, 400, 400}, {450, 400, 400, 400}}},
        // t = 640 * 8 / 15 = 341.3: the first ends at 342, the second starts at 298.7, that is 298
        tile_row{
            {"inner edges are widened to even"}, {0, 0, 640, 64}, grid_of(2, 1), {{0, 0, 342, 64}, {298, 0, 342, 64}}},
        tile_row{{"the last tile ends with an odd area"},
                 {0, 0, 751, 65},
                 grid_of(2, 1),
                 {{0, 0, 402, 65}, {350, 0, 401, 65}}},
        tile_row{{"a small picture is one tile of itself"}, {0, 0, 352, 288}, automatic(), {{0, 0, 352, 288}}},
        tile_row{{"640 x 360 is one tile"}, {0, 0, 640, 360}, automatic(), {{0, 0, 640, 360}}},
        tile_row{{"959 columns are nearer to one tile"}, {0, 0, 959, 360}, automatic(), {{0, 0, 959, 360}}},
        tile_row{{"960 columns are two tiles"}, {0, 0, 960, 360}, automatic(), {{0, 0, 512, 360}, {448, 0, 512, 360}}},
        tile_row{
            {"16 columns of the smallest tile"}, {0, 0, 30, 30}, grid_of(2, 1), {{0, 0, 16, 30}, {14, 0, 16, 30}}}),
    row_name());

TEST(automatic_tiles, are_nine_in_full_hd_and_36_in_4k) {
    EXPECT_EQ(tile({0, 0, 1280, 720}, automatic()).size(), 4u);
    EXPECT_EQ(tile({0, 0, 1920, 1080}, automatic()).size(), 9u);
    EXPECT_EQ(tile({0, 0, 2560, 1440}, automatic()).size(), 16u);
    EXPECT_EQ(tile({0, 0, 3840, 2160}, automatic()).size(), 36u);
    EXPECT_EQ(tile({0, 0, 7680, 4320}, automatic()).size(), 36u) << "no more than 6 x 6";
}

TEST(tiles, of_less_than_16_pixels_are_refused) {
    EXPECT_NO_THROW(tile({0, 0, 30, 30}, grid_of(2, 2)));
    EXPECT_THROW(tile({0, 0, 29, 30}, grid_of(2, 2)), usage_error);
    EXPECT_THROW(tile({0, 0, 30, 29}, grid_of(2, 2)), usage_error);
}

// Every grid over areas of many sizes: all pixels are covered, none outside, inner edges are even, neighbours overlap.
TEST(tiles, cover_every_area) {
    for (int length = 16; length < 2200; length += length < 300 ? 1 : 37) {
        for (int count = 1; count <= 16; ++count) {
            if (count > 1 && length * 8.0 / (count * 8 - (count - 1)) < 16) continue;
            const std::vector<box> tiles = tile({6, 2, length, 16}, grid_of(count, 1));
            ASSERT_EQ(tiles.size(), static_cast<size_t>(count));
            ASSERT_EQ(tiles.front().x, 6);
            ASSERT_EQ(tiles.back().x + tiles.back().width, 6 + length);
            for (size_t i = 1; i < tiles.size(); ++i) {
                const int shared = tiles[i - 1].x + tiles[i - 1].width - tiles[i].x;
                ASSERT_GE(shared, tiles[i].width / 8 - 1) << length << " pixels, tile " << i << " of " << count;
                ASSERT_EQ(tiles[i].x % 2, 0);
                ASSERT_EQ(tiles[i - 1].width % 2, 0);
            }
        }
    }
}

// --- merging ---------------------------------------------------------------------------------------------------------

struct merge_row : support::named_row {
    std::vector<std::vector<box>> lists;
    std::vector<box> wanted;
};

class merged : public testing::TestWithParam<merge_row> {};

TEST_P(merged, are_these) {
    EXPECT_EQ(merge_boxes(GetParam().lists), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, merged,
    testing::Values(
        merge_row{{"nothing"}, {}, {}}, merge_row{{"empty lists"}, {{}, {}}, {}},
        merge_row{{"boxes of one tile stay apart even where they overlap"},
                  {{{0, 0, 10, 10}, {5, 5, 10, 10}}},
                  {{0, 0, 10, 10}, {5, 5, 10, 10}}},
        merge_row{
            {"one shared pixel joins boxes of two tiles"}, {{{0, 0, 10, 10}}, {{9, 9, 10, 10}}}, {{0, 0, 19, 19}}},
        merge_row{{"touching edges share no pixel"},
                  {{{0, 0, 10, 10}}, {{10, 0, 10, 10}}},
                  {{0, 0, 10, 10}, {10, 0, 10, 10}}},
        merge_row{{"the same box in two tiles is one"}, {{{3, 4, 5, 6}}, {{3, 4, 5, 6}}}, {{3, 4, 5, 6}}},
        merge_row{{"a box inside another disappears"}, {{{4, 4, 2, 2}}, {{0, 0, 10, 10}}}, {{0, 0, 10, 10}}},
        merge_row{{"a chain over three tiles is one"},
                  {{{0, 0, 10, 10}}, {{18, 0, 10, 10}}, {{8, 0, 12, 10}}},
                  {{0, 0, 28, 10}}},
        merge_row{{"two of one tile are joined by a third"},
                  {{{0, 0, 10, 10}, {18, 0, 10, 10}}, {{8, 0, 12, 10}}},
                  {{0, 0, 28, 10}}},
        // 0,0 to 20,20 together touch the third at 15,0, which neither did alone.
        merge_row{{"what the joined box covers is joined too"},
                  {{{0, 10, 10, 10}}, {{5, 0, 5, 11}, {8, 18, 12, 2}}, {{15, 0, 2, 2}}},
                  {{0, 0, 20, 20}}},
        merge_row{{"boxes apart keep their order"},
                  {{{50, 0, 5, 5}}, {{0, 0, 5, 5}, {52, 2, 5, 5}}},
                  {{50, 0, 7, 7}, {0, 0, 5, 5}}}),
    row_name());

}  // namespace
