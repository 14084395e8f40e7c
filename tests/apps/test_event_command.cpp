// Commands that are started for events: how they are written, what they are given, and that nobody waits for them.
#include <gtest/gtest.h>

#include <cstdlib>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_command.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

using words = std::vector<std::string>;

struct split_row : support::named_row {
    const char* text;
    words expected;
};

class split : public testing::TestWithParam<split_row> {};

TEST_P(split, into_words) {
    EXPECT_EQ(split_command(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    table, split,
    testing::Values(split_row{{"one word"}, "alarm", {"alarm"}}, split_row{{"blanks"}, "  a   b\tc ", {"a", "b", "c"}},
                    split_row{{"double quotes"}, R"("a b"c d)", {"a bc", "d"}},
                    split_row{{"single quotes"}, R"('a "b" \' c)", {R"(a "b" \)", "c"}},
                    split_row{{"a backslash"}, R"(a\ b \"c)", {"a b", "\"c"}},
                    split_row{{"an empty word"}, R"(a "" b)", {"a", "", "b"}},
                    split_row{{"what a shell would expand"}, "a $HOME *;b", {"a", "$HOME", "*;b"}}),
    row_name());

TEST(split_command, refuses_what_has_no_end_or_no_beginning) {
    for (const char* text : {"a \"b", "a 'b", "", "  "}) EXPECT_THROW(split_command(text), usage_error) << text;
}

TEST(event_command, gets_each_event_and_the_folder_but_no_password) {
    const temporary_folder folder;
    setenv("ORVA_FIRE_PASSWORD", "secret", 1);
    setenv("ORVA_FIRE_MQTT_PASSWORD", "secret", 1);
    event_command command(
        {"sh", "-c", "cat >> \"$1\"; echo \"$FOLDER $ORVA_FIRE_PASSWORD$ORVA_FIRE_MQTT_PASSWORD\" >> \"$1\"", "sh",
         folder.file("got")},
        30, {"FOLDER=there"});
    unsetenv("ORVA_FIRE_PASSWORD");
    unsetenv("ORVA_FIRE_MQTT_PASSWORD");
    command.send("{\"event\":\"start\"}", false);
    command.send("{\"event\":\"end\"}", false);
    command.finish();
    EXPECT_EQ(read_file(folder.file("got")), "{\"event\":\"start\"}\nthere \n{\"event\":\"end\"}\nthere \n");
    EXPECT_EQ(command.delivered(), 2);
    EXPECT_TRUE(command.take_warnings().empty());
}

struct fault_row : support::named_row {
    words command;
    double seconds;
    const char* said;
};

class faulty : public testing::TestWithParam<fault_row> {};

TEST_P(faulty, command_gives_a_warning) {
    event_command command(GetParam().command, GetParam().seconds, {});
    command.send("{}", false);
    command.finish();
    EXPECT_EQ(command.delivered(), 0);
    const auto warnings = command.take_warnings();
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings[0].find(GetParam().said), std::string::npos) << warnings[0];
}

INSTANTIATE_TEST_SUITE_P(
    table, faulty,
    testing::Values(
        fault_row{{"one that is missing"}, {"/no/such/program"}, 30, "'/no/such/program' cannot be started"},
        fault_row{{"one that fails"}, {"sh", "-c", "exit 7"}, 30, "ended with code 7"},
        fault_row{{"one that a signal ends"}, {"sh", "-c", "kill -9 $$"}, 30, "signal 9"},
        fault_row{{"one that hangs, with its children"}, {"sh", "-c", "sleep 1000 | cat"}, 0.3, "took too long"}),
    row_name());

TEST(event_command, keeps_starts_and_ends_when_too_many_events_wait) {
    const temporary_folder folder;
    event_command command({"sh", "-c", "cat >> \"$1\"", "sh", folder.file("got")}, 30, {});
    for (int i = 0; i < 110; ++i) command.send("start", false);
    for (int i = 0; i < 500; ++i) command.send("update", true);
    command.send("end", false);
    command.finish();
    const std::string got = read_file(folder.file("got"));
    size_t starts = 0, updates = 0;
    for (size_t at = 0; (at = got.find("start", at)) != std::string::npos; ++at) ++starts;
    for (size_t at = 0; (at = got.find("update", at)) != std::string::npos; ++at) ++updates;
    EXPECT_EQ(starts, 110u);
    EXPECT_LT(updates, 500u);
    EXPECT_EQ(got.substr(got.size() - 4), "end\n");
}

}  // namespace
