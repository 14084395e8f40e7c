// Covers a part of the picture with overlapping tiles, and joins what neighbouring tiles report of one fire.
#ifndef ORVA_APPS_ORVA_FIRE_TILING_H
#define ORVA_APPS_ORVA_FIRE_TILING_H

#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// How a part of the picture is divided. The plain object means one tile: the part as it is.
struct tile_grid {
    int columns = 1;
    int rows = 1;
    bool automatic = false;  // as many as make tiles of about 640 x 360, 6 x 6 at most; columns and rows are not read
};

inline bool operator==(const tile_grid& a, const tile_grid& b) {
    return a.automatic == b.automatic && (a.automatic || (a.columns == b.columns && a.rows == b.rows));
}

// Reads "auto" or "3x2" (columns x rows, each 1 to 16). Throws usage_error that says what was expected.
tile_grid parse_tiles(const std::string& text);

// The tiles from left to right, row by row. Together they cover the area and nothing outside it; neighbours share an
// eighth of a tile, so that whatever is smaller lies whole in one of them. Edges inside the area are even.
// Throws usage_error if a tile would be smaller than 16 x 16 pixels.
std::vector<box> tile(const box& area, tile_grid grid);

// Joins boxes of different lists that share a pixel into the smallest box around them, again and again until none is
// left to join. Boxes of one list are left apart as they are, unless a box of another list touches both.
// lists: one for each tile, in source pixels. The order is that of the first box of each.
std::vector<box> merge_boxes(const std::vector<std::vector<box>>& lists);

}  // namespace orva_fire

#endif
