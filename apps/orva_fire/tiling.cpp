#include "apps/orva_fire/tiling.h"

#include <algorithm>
#include <cmath>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int k_most_tiles = 16;
const int k_smallest_tile = 16;

// A tile of this size is scaled down a little less than twice for the detector, at the aspect of most cameras.
const int k_good_width = 640;
const int k_good_height = 360;

// Even the largest pictures get no more than 36 tiles by themselves, so that two channels for each can be had.
const int k_most_automatic = 6;

// Share of a tile that its neighbour sees too: 1 / 8.
const int k_overlap = 8;

// One number of "3x2"; 0 if the text is none.
int parse_count(const std::string& text) {
    if (text.empty() || text.size() > 2 || text.find_first_not_of("0123456789") != std::string::npos) return 0;
    const int count = std::stoi(text);
    return count <= k_most_tiles ? count : 0;
}

int good_count(int length, int good) {
    const int count = static_cast<int>(std::lround(static_cast<double>(length) / good));
    return std::clamp(count, 1, k_most_automatic);
}

// One axis of a tile: first pixel and length.
struct span {
    int start, length;
};

// n tiles of length t that overlap by t / 8 cover n * t - (n - 1) * t / 8 pixels.
std::vector<span> divide(int start, int length, int count, const char* axis) {
    const double tile_length = static_cast<double>(length) * k_overlap / (count * k_overlap - (count - 1));
    if (count > 1 && tile_length < k_smallest_tile) {
        throw usage_error("--tiles: " + std::to_string(count) + " tiles over a " + axis + " of " +
                          std::to_string(length) + " pixels are too small; each needs at least " +
                          std::to_string(k_smallest_tile));
    }
    const double step = tile_length * (k_overlap - 1) / k_overlap;
    std::vector<span> spans;
    for (int i = 0; i < count; ++i) {
        // The area's own edge is even or that of the picture; even distances from it keep chroma samples whole.
        const int from = static_cast<int>(i * step) / 2 * 2;
        const int to = i + 1 == count ? length : static_cast<int>(std::ceil((i * step + tile_length) / 2)) * 2;
        spans.push_back({start + from, std::min(to, length) - from});
    }
    return spans;
}

box around(const box& a, const box& b) {
    const int left = std::min(a.x, b.x);
    const int top = std::min(a.y, b.y);
    return {left, top, std::max(a.x + a.width, b.x + b.width) - left, std::max(a.y + a.height, b.y + b.height) - top};
}

// A box and the list that it comes from; several lists once it has been joined.
const int k_several = -1;
struct sourced_box {
    box where;
    int list;
};

bool belong_together(const sourced_box& a, const sourced_box& b) {
    return (a.list != b.list || a.list == k_several) && share_a_pixel(a.where, b.where);
}

// Joins the first two that belong together. False if there are none.
bool join_one_pair(std::vector<sourced_box>& boxes) {
    for (auto a = boxes.begin(); a != boxes.end(); ++a) {
        const auto b = std::find_if(a + 1, boxes.end(), [&](const sourced_box& c) { return belong_together(*a, c); });
        if (b == boxes.end()) continue;
        *a = {around(a->where, b->where), k_several};
        boxes.erase(b);
        return true;
    }
    return false;
}

}  // namespace

tile_grid parse_tiles(const std::string& text) {
    tile_grid grid;
    if (text == "auto") {
        grid.automatic = true;
        return grid;
    }
    const size_t cross = text.find('x');
    if (cross != std::string::npos) {
        grid.columns = parse_count(text.substr(0, cross));
        grid.rows = parse_count(text.substr(cross + 1));
        if (grid.columns > 0 && grid.rows > 0) return grid;
    }
    throw usage_error("tiles '" + text + "': expected 'auto' or COLUMNSxROWS, each from 1 to " +
                      std::to_string(k_most_tiles) + ", like 3x2");
}

std::vector<box> tile(const box& area, tile_grid grid) {
    if (grid.automatic) {
        grid.columns = good_count(area.width, k_good_width);
        grid.rows = good_count(area.height, k_good_height);
    }
    std::vector<box> tiles;
    const std::vector<span> across = divide(area.x, area.width, grid.columns, "width");
    for (const span& down : divide(area.y, area.height, grid.rows, "height")) {
        for (const span& column : across) tiles.push_back({column.start, down.start, column.length, down.length});
    }
    return tiles;
}

std::vector<box> merge_boxes(const std::vector<std::vector<box>>& lists) {
    std::vector<sourced_box> boxes;
    for (size_t i = 0; i < lists.size(); ++i) {
        for (const box& b : lists[i]) boxes.push_back({b, static_cast<int>(i)});
    }
    while (join_one_pair(boxes)) {
    }
    std::vector<box> merged;
    for (const sourced_box& b : boxes) merged.push_back(b.where);
    return merged;
}

}  // namespace orva_fire
