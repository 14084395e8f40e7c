// The subcommands of orva-fire. A new one is a function of this form and a row in the table of commands.cpp.
#ifndef ORVA_APPS_ORVA_FIRE_COMMANDS_H
#define ORVA_APPS_ORVA_FIRE_COMMANDS_H

#include <string>

namespace orva_fire {

// argv[0] is the subcommand's name, what follows belongs to it. Returns the exit code; throws usage_error and io_error.
using command_function = int (*)(int argc, const char* const* argv);

// Runs the subcommand that the first argument names; without such a name, detect, whose short form is `orva-fire
// VIDEO`.
int run_command(int argc, const char* const* argv);

// One line for each subcommand, for the help.
std::string list_of_commands();

}  // namespace orva_fire

#endif
