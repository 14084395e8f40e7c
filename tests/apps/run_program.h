// Runs a program and gathers what it says.
#ifndef ORVA_TESTS_APPS_RUN_PROGRAM_H
#define ORVA_TESTS_APPS_RUN_PROGRAM_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace apps_test {

struct program_result {
    int exit_code = -1;  // -1 if a signal ended it
    std::string output;  // standard output
    std::string errors;  // standard error
};

// Something that happens to the program once a text was said, on either output.
struct incident {
    std::string after;
    std::function<void()> happens;
};

struct program_setting {
    std::string folder;               // to run in; empty: the caller's
    bool error_terminal = false;      // standard error is a terminal
    bool closed_output = false;       // the program starts without descriptor 1
    bool reader_goes_away = false;    // nobody reads standard output
    size_t reader_leaves_after = 0;   // whoever reads standard output leaves after so many bytes; 0: stays
    std::string input;                // file for standard input; empty: /dev/null
    std::vector<incident> incidents;  // one after the other
    std::string
        until;        // after them: once this was said, on either output, the program is sent the signal; empty: never
    int signal = 15;  // SIGTERM
    std::vector<std::string> environment;  // NAME=value, added to the caller's
};

program_result run_program(const std::vector<std::string>& command, const program_setting& setting = {});

// Whether these words stand in what it said on standard error.
bool says(const program_result& result, const std::string& words);

// Each line of a text as JSON; throws if one is none.
std::vector<nlohmann::json> json_lines(const std::string& text);

}  // namespace apps_test

#endif
