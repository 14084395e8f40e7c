#include "apps/orva_fire/command_line.h"

#include <iostream>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

// The parser speaks of its own kind of file when it means the user's.
std::string reason(const CLI::Error& error) {
    const std::string text = error.what();
    const std::string unknown = "INI was not able to parse ";
    if (text.rfind(unknown, 0) != 0) return text;
    return "--config: the file sets '" + text.substr(unknown.size()) +
           "', which is no option; names are those of the command line, without dashes in front";
}

std::string complaint(const CLI::App* app, const CLI::Error& error) {
    return "orva-fire: " + reason(error) + "\nRun " + app->get_name() + " --help for more information.\n";
}

}  // namespace

void set_manners(CLI::App& app, const std::string& footer) {
    app.footer(footer);
    app.failure_message(complaint);
    app.set_version_flag("--version", "orva-fire " ORVA_FIRE_VERSION);
}

void add_config_file(CLI::App& app) {
    app.set_config("--config", "", "read options from this file, lines like grade = 85; the command line wins")
        ->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::error);
}

std::optional<int> read_command_line(CLI::App& app, int argc, const char* const* argv,
                                     const std::function<void()>& check) {
    try {
        app.parse(argc, const_cast<char**>(argv));
        if (check) check();
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return app.exit(error, std::cout, std::cerr) == 0 ? 0 : k_exit_usage;
    }
}

}  // namespace orva_fire
