// The manual page and the help name the same options.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"

namespace {

using namespace apps_test;

// Long options that begin a line of the text, after its indent and a short name.
std::set<std::string> options_in(const std::string& text, const std::string& pattern) {
    std::set<std::string> names;
    const std::regex option(pattern);
    for (auto at = std::sregex_iterator(text.begin(), text.end(), option); at != std::sregex_iterator(); ++at) {
        names.insert((*at)[1]);
    }
    return names;
}

TEST(manual_page, names_every_option_of_the_help_and_no_other) {
    const std::string page = read_file(ORVA_MANUAL);
    std::string help;
    for (const char* command : {"detect", "drill", "batch", "merge", "check", "tune", "eval"}) {
        help += run_program({ORVA_FIRE_PROGRAM, command, "--help"}).output;
    }
    const auto in_page = options_in(page, "(?:^|\n)(?:\\*-.\\*, )?\\*(--[a-z-]+)\\*");
    const auto in_help = options_in(help, "\n  (?:-.,)?(--[a-z-]+)");
    EXPECT_GE(in_help.size(), 10u) << help;
    EXPECT_EQ(in_page, in_help);
}

}  // namespace
