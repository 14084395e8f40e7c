// What every subcommand's command line has in common: help, version, complaints and the file with settings.
#ifndef ORVA_APPS_ORVA_FIRE_COMMAND_LINE_H
#define ORVA_APPS_ORVA_FIRE_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

namespace orva_fire {

// Gives the app its version flag, its way of complaining and a text below the options.
void set_manners(CLI::App& app, const std::string& footer);

// Adds --config: a file with lines `option = value`, names as on the command line, which wins over the file. Names that
// are no option are refused.
void add_config_file(CLI::App& app);

// Reads the command line. check, if given, runs after it and may throw CLI::ValidationError too.
// Returns nothing if the command shall run; otherwise help went to standard output or a complaint to standard error,
// and the exit code to leave with is returned.
std::optional<int> read_command_line(CLI::App& app, int argc, const char* const* argv,
                                     const std::function<void()>& check = nullptr);

}  // namespace orva_fire

#endif
