// Everything that a report shows, as plain values: no file, no video and no library is needed to make a page of it.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_DATA_H
#define ORVA_APPS_ORVA_FIRE_REPORT_DATA_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// A stretch of the video, in seconds since its first picture.
struct report_span {
    double from = 0;
    double to = 0;
    std::string text;
};

// One step of a zone's timeline; the largest values in it.
struct report_sample {
    double motion = 0;    // share of pixels that changed, 0 to 1
    double nearness = 0;  // how near a box came to a report, 0 to 1
};

struct report_zone {
    std::string name;
    box place;              // in source pixels, around all of it
    int channels = 1;       // pictures that it is cut into
    picture_size cut;       // size of one of these in source pixels
    picture_size analysis;  // and as the detector sees it
    int grade = 70;
    std::vector<report_sample> samples;
};

struct report_event {
    int id = 0;
    size_t zone = 0;
    double from = 0;
    double to = 0;
    bool input_ended = false;  // it was still reported when the pictures ended
    bool test = false;         // made by a drill
    double largest_at = 0;
    box largest;
    std::string video;                           // file with the annotated pictures, beside the page; empty: none
    double video_start = 0;                      // seconds of the source at which that file begins
    std::string start_picture, largest_picture;  // JPEG bytes, or empty
};

struct report_miss {
    size_t zone = 0;
    double from = 0;
    double to = 0;
    double at = 0;  // the moment that came nearest
    box place;      // then, in source pixels
    double nearness = 0;
    std::string reason;   // "too steady: its area changes by 9 %, needs 17 %"
    std::string remedy;   // "would have been reported at grade 85", or empty
    std::string picture;  // JPEG bytes of what the detector saw, or empty
};

struct report_data {
    std::string source;   // file name or address
    std::string made_at;  // RFC 3339, or empty
    std::string version;  // of the program
    picture_size size;    // of the source's pictures
    double rate = 0;      // pictures a second that the source states
    double seconds = 0;   // length of what was read
    int64_t frames = 0;   // read
    int64_t passed = 0;   // of these, looked at
    int64_t repeated = 0;
    int64_t thinned = 0;
    double step = 0;  // seconds of one timeline sample
    std::vector<report_zone> zones;
    std::vector<report_event> events;   // in the order of their starts
    int events_left_out = 0;            // that were too many to be listed
    std::vector<report_span> troubles;  // of the camera, for every zone
    std::vector<report_miss> misses;    // the nearest first
    std::vector<std::string> notes;     // warnings, and what went wrong
    std::vector<std::pair<std::string, std::string>> settings;
};

}  // namespace orva_fire

#endif
