// Zones: the named parts of the picture that are looked at, from a file or from the command line.
#ifndef ORVA_APPS_ORVA_FIRE_ZONES_H
#define ORVA_APPS_ORVA_FIRE_ZONES_H

#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/tiling.h"

namespace orva_fire {

struct zone_spec {
    std::string name;           // unique; printable UTF-8, 1 to 100 bytes
    std::vector<region> parts;  // one or several rectangles
    std::optional<int> grade;   // 0 to 100; none: that of the whole run
    std::string file;           // where it was read, for messages; empty if it comes from the command line
};

// Reads a file of zones:
//
//     {"zones": [{"name": "stove", "grade": 85,
//                 "rectangles": [{"x": "10%", "y": 0, "width": "50%", "height": "100%"}]}]}
//
// Numbers are pixels of the source picture, texts with a percent sign are shares of it. "grade" may be left out.
// Throws io_error if the file cannot be read, usage_error for anything in it that is not as above: unknown, missing and
// doubled keys, wrong types, values out of range, an empty list, a name that occurs twice. The text names file, zone
// and key.
std::vector<zone_spec> read_zones(const std::string& path);

// The same from text; `path` only appears in messages.
std::vector<zone_spec> parse_zones(const std::string& text, const std::string& path);

// Throws usage_error if two zones have one name.
void check_names(const std::vector<zone_spec>& zones);

// Places a zone's rectangles on the picture. Throws usage_error that names file, zone and rectangle if one of them
// does not lie in the picture or is smaller than 16 x 16 pixels.
std::vector<box> place_zone(const zone_spec& zone, picture_size picture);

// How many channels of the library the zones need: one for each tile of each rectangle, twice that if evidence ages.
// To be asked before anything is opened. Throws what place_zone and tile throw, and usage_error if they are more than
// the library has; the text says how many are needed and what to change.
int count_channels(const std::vector<zone_spec>& zones, picture_size picture, tile_grid tiles, bool ageing);

}  // namespace orva_fire

#endif
