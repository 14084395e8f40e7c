// How a process ends in each state of the library: cleanly, and without a word more than its calls printed.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "tests/support/rows.h"

namespace {

struct ending {
    int status;
    std::string text;
};

ending run_host(const std::string& state) {
    const std::string command = std::string(HOST_THAT_EXITS) + " " + state;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {-1, "the host could not be run"};
    std::string text;
    char piece[256];
    while (const std::size_t got = std::fread(piece, 1, sizeof piece, pipe)) text.append(piece, got);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
}

struct state_row : support::named_row {
    const char* state;
    const char* text;
};

class process_exit : public testing::TestWithParam<state_row> {};

TEST_P(process_exit, is_clean) {
    const ending got = run_host(GetParam().state);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    table, process_exit,
    testing::Values(state_row{{"without any call"}, "untouched", ""},
                    state_row{{"after a refused call"},
                              "refused",
                              "[Fire Detection: FireDetection_Api: ORVA_FireDetection_UnInit] 24 entered \n"},
                    state_row{{"initialised"}, "initialised", ""},
                    state_row{{"with open channels"}, "channels-open", ""},
                    state_row{{"with open channels from exit"}, "channels-open-exit", ""},
                    state_row{{"after UnInit with open channels"}, "uninitialised", ""},
                    state_row{{"initialised again with open channels"}, "initialised-again", ""}),
    support::row_name());

}  // namespace
