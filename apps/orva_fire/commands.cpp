#include "apps/orva_fire/commands.h"

#include <string>

#include "apps/orva_fire/batch.h"
#include "apps/orva_fire/check.h"
#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/eval.h"
#include "apps/orva_fire/merge.h"
#include "apps/orva_fire/options.h"
#include "apps/orva_fire/tune.h"

namespace orva_fire {
namespace {

int detect_command(int argc, const char* const* argv) {
    const command wanted = parse_detect(argc, argv);
    return wanted.detect ? run_detect(*wanted.detect) : wanted.exit_code;
}

int drill_command(int argc, const char* const* argv) {
    const command wanted = parse_drill(argc, argv);
    return wanted.detect ? run_detect(*wanted.detect) : wanted.exit_code;
}

int batch_command_line(int argc, const char* const* argv) {
    const batch_command wanted = parse_batch(argc, argv);
    return wanted.batch ? run_batch(*wanted.batch) : wanted.exit_code;
}

int check_command(int argc, const char* const* argv) {
    CLI::App app("Tries the detector on a built-in scene and tells how many cameras this machine sustains.",
                 "orva-fire check");
    set_manners(app, "Takes about ten seconds. Exit codes: 0 all is well, 3 the built-in fire was not found.");
    const auto exit_code = read_command_line(app, argc, argv);
    return exit_code ? *exit_code : run_check();
}

int short_form(int argc, const char* const* argv) {
    const command wanted = parse_command_line(argc, argv);
    return wanted.detect ? run_detect(*wanted.detect) : wanted.exit_code;
}

struct subcommand {
    const char* name;
    command_function run;
    const char* summary;
};

const subcommand k_commands[] = {
    {"detect", detect_command, "look for fire in a source; the command may be left out"},
    {"drill", drill_command, "lay a synthetic flame over a source and follow the event through every output"},
    {"batch", batch_command_line, "look for fire in recordings in bulk, on as many machines as there are"},
    {"merge", merge_command, "join the results of batch into one report"},
    {"check", check_command, "try the detector on a built-in scene; how many cameras does this machine sustain?"},
    {"tune", tune_command, "show what each sensitivity would report in recordings"},
    {"eval", eval_command, "measure how well fire is found in labelled recordings"},
};

}  // namespace

int run_command(int argc, const char* const* argv) {
    for (const subcommand& each : k_commands) {
        if (argc > 1 && std::string(argv[1]) == each.name) return each.run(argc - 1, argv + 1);
    }
    return short_form(argc, argv);
}

std::string list_of_commands() {
    std::string text;
    for (const subcommand& each : k_commands) {
        const std::string name = each.name;
        text += "  " + name + std::string(name.size() < 12 ? 12 - name.size() : 1, ' ') + each.summary + "\n";
    }
    return text;
}

}  // namespace orva_fire
