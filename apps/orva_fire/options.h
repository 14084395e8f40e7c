// The command line of orva-fire.
#ifndef ORVA_APPS_ORVA_FIRE_OPTIONS_H
#define ORVA_APPS_ORVA_FIRE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/aged_channel.h"
#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/frame_choice.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/mqtt_options.h"
#include "apps/orva_fire/open_source.h"
#include "apps/orva_fire/recordings.h"
#include "apps/orva_fire/shards.h"
#include "apps/orva_fire/tiling.h"

namespace orva_fire {

struct detect_options {
    source_options source;
    std::vector<region> regions;                                         // empty: the whole picture
    std::string zones;                                                   // file of zones; empty: none
    std::optional<int> grade;                                            // 0 to 100; none: the library's own
    tile_grid tiles = {1, 1, true};                                      // of every rectangle that is looked at
    confirm_settings confirm = {k_default_confirm, k_default_cooldown};  // when reports become an event
    double max_age = k_default_max_age;  // seconds for which evidence is kept; 0: without limit
    bool watch_trouble = true;           // say when the detector cannot see
    double rate = 0;                     // pictures a second for the detector at most; 0: all

    // Results; "-" for a file is standard output.
    std::string folder = "orva-fire-out";
    std::string shown_folder;  // where the results are said to be; empty: the folder
    std::string video;         // empty: annotated.mp4 in the folder
    std::string events;        // empty: events.jsonl in the folder
    std::string frames;        // a line for each picture; empty: none
    std::string library_log;   // empty: the library's lines are discarded
    int64_t library_log_limit = k_library_log_limit;
    bool write_video = true, write_events = true, write_snapshots = true, write_report = true;
    std::optional<frame_choice> explain;  // pictures to explain; none: none
    std::optional<double> segment;        // seconds; none: the source's kind decides, 0: one file
    std::optional<double> keep_hours;     // none: the source's kind decides, 0: for ever
    std::string on_event;                 // a command; empty: none
    double on_event_timeout = 10;         // seconds
    mqtt_options mqtt;

    // A drill: a synthetic flame is laid over the pictures, and this many seconds are given for it to be reported.
    std::optional<double> drill;
};

// Recordings in bulk.
struct batch_options {
    detect_options detect;    // its folder is that of all results; it names no source
    recording_search search;  // what to look at
    shard_choice shard;       // of that
    int plan = 0;             // only say how so many shards would divide it; 0: look at it
    std::string settings;     // a digest of all options that decide about the results
};

// What the command line asks for: a run, or (after help or a complaint was printed) the exit code to leave with.
struct command {
    std::optional<detect_options> detect;
    int exit_code = 0;
};

// `orva-fire VIDEO ...` and `orva-fire detect SOURCE ...`; in the second form argv[0] is "detect". The options are the
// same. Help and version go to standard output, complaints to standard error.
command parse_command_line(int argc, const char* const* argv);
command parse_detect(int argc, const char* const* argv);

// `orva-fire drill SOURCE ...`: the same options and one more.
command parse_drill(int argc, const char* const* argv);

// `orva-fire batch SOURCE...`: many sources, and the options that do not name one file for all of them.
struct batch_command {
    std::optional<batch_options> batch;
    int exit_code = 0;
};
batch_command parse_batch(int argc, const char* const* argv);

}  // namespace orva_fire

#endif
