// Events as lines of JSON.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "tests/apps/clip_maker.h"

namespace {

using namespace orva_fire;

fire_event event_of(event_kind kind) {
    fire_event event;
    event.kind = kind;
    event.id = 3;
    event.at = {157, 6.2801};
    event.boxes = {{18, 36, 55, 74}};
    event.started = {145, 5.8};
    event.largest = {10, 20, 64, 90};
    event.largest_at = {150, 6.0};
    return event;
}

event_context context_of(const char* zone, const char* snapshot = "") {
    event_context context;
    context.camera = "gate";
    context.zone = zone;
    context.grade = 70;
    context.picture = {640, 360};
    context.snapshot = snapshot;
    return context;
}

TEST(event_line, at_the_start_is_this) {
    EXPECT_EQ(
        event_line(event_of(event_kind::start), context_of("picture", "event-0003-start.jpg")),
        R"({"schema":1,"event":"start","id":3,"camera":"gate","zone":"picture","grade":70,"frame":157,"seconds":6.28,)"
        R"("boxes":[{"x":18,"y":36,"width":55,"height":74,)"
        R"("per_mille":{"x":28,"y":100,"width":86,"height":206}}],"snapshot":"event-0003-start.jpg"})");
}

TEST(event_line, of_an_update_has_no_snapshot) {
    const auto line = nlohmann::json::parse(event_line(event_of(event_kind::update), context_of("picture")));
    EXPECT_EQ(line["event"], "update");
    EXPECT_FALSE(line.contains("snapshot"));
    EXPECT_FALSE(line.contains("started"));
}

TEST(event_line, at_the_end_tells_the_whole_story) {
    const auto line = nlohmann::json::parse(event_line(event_of(event_kind::end), context_of("region 2", "x.jpg")));
    EXPECT_EQ(line["zone"], "region 2");
    EXPECT_EQ(line["reason"], "gone");
    EXPECT_EQ(line["started"], (nlohmann::json{{"frame", 145}, {"seconds", 5.8}}));
    EXPECT_EQ(line["duration"], 0.48);
    EXPECT_EQ(line["largest"]["frame"], 150);
    EXPECT_EQ(line["largest"]["box"]["height"], 90);
    EXPECT_EQ(line["largest"]["box"]["per_mille"]["height"], 250);
}

TEST(event_line, at_the_end_of_the_input_says_so) {
    fire_event event = event_of(event_kind::end);
    event.ended = event_end::input_ended;
    EXPECT_EQ(nlohmann::json::parse(event_line(event, context_of("picture")))["reason"], "input ended");
}

TEST(event_log, writes_each_line_through_at_once) {
    const apps_test::temporary_folder folder;
    event_log log(folder.file("events.jsonl"));
    log.write("one");
    EXPECT_EQ(apps_test::read_file(folder.file("events.jsonl")), "one\n");
    log.write("two");
    EXPECT_EQ(apps_test::read_file(folder.file("events.jsonl")), "one\ntwo\n");
}

TEST(event_log, empties_an_old_file) {
    const apps_test::temporary_folder folder;
    apps_test::write_file(folder.file("events.jsonl"), "old\n");
    event_log log(folder.file("events.jsonl"));
    EXPECT_EQ(apps_test::read_file(folder.file("events.jsonl")), "");
}

TEST(event_log, names_a_file_that_cannot_be_made) {
    const apps_test::temporary_folder folder;
    try {
        event_log log(folder.file("no/such/folder"));
        FAIL() << "made it";
    } catch (const io_error& error) {
        EXPECT_NE(std::string(error.what()).find("no/such/folder"), std::string::npos);
    }
}

TEST(event_log, reports_a_full_disk) {
    event_log log("/dev/full");
    EXPECT_THROW(log.write("one"), io_error);
}

TEST(event_log, leaves_a_borrowed_descriptor_open) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    { event_log(ends[1], "pipe").write("one"); }
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    char text[8] = {};
    EXPECT_EQ(read(ends[0], text, sizeof text), 5);
    EXPECT_STREQ(text, "one\nx");
    close(ends[0]);
    close(ends[1]);
}

// A file that may grow to 50 bytes: the second line of 30 does not fit, of which the system writes a part.
TEST(event_log, takes_back_a_line_that_found_no_room) {
    const apps_test::temporary_folder folder;
    const std::string path = folder.file("events");
    event_log log(path);
    log.write(std::string(29, 'a'));
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {50, before.rlim_max};
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(log.write(std::string(29, 'b')), io_error);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    signal(SIGXFSZ, handler);
    EXPECT_EQ(apps_test::read_file(path), std::string(29, 'a') + "\n");
    log.write("c");
    EXPECT_EQ(apps_test::read_file(path), std::string(29, 'a') + "\nc\n");
}

struct torn_row {
    const char* before;
    const char* after;
};

TEST(event_log, that_goes_on_in_a_file_begins_a_line) {
    for (const torn_row& row :
         {torn_row{"", "new\n"}, torn_row{"old\n", "old\nnew\n"}, torn_row{"old", "old\nnew\n"}}) {
        const apps_test::temporary_folder folder;
        const std::string path = folder.file("events");
        apps_test::write_file(path, row.before);
        event_log(path, true).write("new");
        EXPECT_EQ(apps_test::read_file(path), row.after);
    }
}

}  // namespace
