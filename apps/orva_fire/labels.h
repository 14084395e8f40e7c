// Manifests: lists of recordings in which people have noted when, and where, fire is seen.
#ifndef ORVA_APPS_ORVA_FIRE_LABELS_H
#define ORVA_APPS_ORVA_FIRE_LABELS_H

#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// A fire in a recording. Seconds since the first picture.
struct labelled_fire {
    double from = 0;
    std::optional<double> to;  // none: to the end of the recording
    // Around all places where flames are seen: left, top, right and lower edge as parts of width and height.
    struct edges {
        double left = 0, top = 0, right = 1, bottom = 1;
    };
    std::optional<edges> where;  // none: anywhere
};

struct labelled_clip {
    std::string file;     // as the manifest has it
    std::string path;     // where it lies: relative names are taken from the manifest's folder
    bool tuning = false;  // from the set on which settings were chosen, not from that on which they are judged
    std::string group;    // for tables; may be empty
    std::vector<labelled_fire> fires;  // in the order of the file; empty for a recording without fire
};

// THE FORMAT
//
// Comma-separated values in UTF-8, the first line with the names of the columns, in any order:
//
//     file,from,to,box,set,group,note
//     kitchen/pan.mp4,12.5,40,0.40 0.30 0.62 0.71,test,kitchen,oil in a pan
//     kitchen/pan.mp4,55,,,test,kitchen,again until the end
//     kitchen/cooking.mp4,,,,tune,kitchen,steam and a red towel: no fire
//
// file, from and to must be there, the others may be left out. One line for each fire, and one line without times for a
// recording without fire. Times are seconds; no `to` means the end. box: left, top, right and lower edge from 0 to 1.
// set: `tune` or `test`; without it test. Values with commas or quotes stand in double quotes, quotes in them doubled.
// Empty lines and those that start with # are passed over.
//
// Throws io_error if the file cannot be read, usage_error that names file, line and column for anything else: unknown
// or missing columns, numbers that are none, fires that end before they begin, one recording in two sets.
std::vector<labelled_clip> read_labels(const std::string& path);

// The same from text; `path` appears in messages, and its folder before relative names.
std::vector<labelled_clip> parse_labels(const std::string& text, const std::string& path);

// The label's box on a picture, in whole pixels, rounded outwards; the whole picture if there is none.
box place_label(const labelled_fire& fire, picture_size picture);

}  // namespace orva_fire

#endif
