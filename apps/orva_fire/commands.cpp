#include "apps/orva_fire/commands.h"

#include <string>

#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/eval.h"
#include "apps/orva_fire/options.h"
#include "apps/orva_fire/tune.h"

namespace orva_fire {
namespace {

int detect_command(int argc, const char* const* argv) {
    const command wanted = parse_detect(argc, argv);
    return wanted.detect ? run_detect(*wanted.detect) : wanted.exit_code;
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
