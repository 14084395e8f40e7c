// The command line of orva-fire.
#ifndef ORVA_APPS_ORVA_FIRE_OPTIONS_H
#define ORVA_APPS_ORVA_FIRE_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/library_output.h"

namespace orva_fire {

struct detect_options {
    std::string source;
    std::string folder = "orva-fire-out";
    std::string events;           // file for the events, "-" for standard output; empty: events.jsonl in the folder
    std::vector<region> regions;  // empty: the whole picture
    std::optional<int> grade;     // 0 to 100; none: the library's own
    double rate = 0;              // pictures a second for the detector at most; 0: all
    std::string library_log;      // empty: the library's lines are discarded
    int64_t library_log_limit = k_library_log_limit;
    bool write_video = true;
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

}  // namespace orva_fire

#endif
