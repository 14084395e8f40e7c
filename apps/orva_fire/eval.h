// orva-fire eval MANIFEST: recall, delay and false alarms per hour on labelled recordings.
#ifndef ORVA_APPS_ORVA_FIRE_EVAL_H
#define ORVA_APPS_ORVA_FIRE_EVAL_H

#include <string>

#include "apps/orva_fire/evaluation.h"

namespace orva_fire {

struct eval_options {
    std::string manifest;
    std::string json;  // file for the results; empty: none, "-": standard output, which then holds no table
    evaluation_settings settings;
};

// Prints a table on standard output, or writes JSON, or both. Returns 0; k_exit_io if a recording could not be read
// whole. Throws usage_error and io_error.
int run_eval(const eval_options& options);

// The subcommand: argv[0] is its name. Returns the exit code.
int eval_command(int argc, const char* const* argv);

}  // namespace orva_fire

#endif
