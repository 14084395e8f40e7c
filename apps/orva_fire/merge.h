// orva-fire merge FOLDER...: joins the results of many tasks into one report and one file of events.
#ifndef ORVA_APPS_ORVA_FIRE_MERGE_H
#define ORVA_APPS_ORVA_FIRE_MERGE_H

#include <string>
#include <vector>

#include "apps/orva_fire/recordings.h"

namespace orva_fire {

struct merge_options {
    std::vector<std::string> folders;  // with results
    std::string output;                // folder for the joined ones; empty: the folder, if there is only one
    recording_search expected;         // recordings that should be there; no sources and no list: not known
};

// Writes report.html and events.jsonl and says on standard error what there is. Returns 3 if a recording failed or is
// missing, otherwise 10 if there was fire in any, otherwise 0. Throws usage_error and io_error.
int run_merge(const merge_options& options);

// The subcommand: argv[0] is its name. Returns the exit code.
int merge_command(int argc, const char* const* argv);

}  // namespace orva_fire

#endif
