// Results of many tasks as one: what is found, what is missing, and a page in which every name stays a text.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "apps/orva_fire/joined_report.h"
#include "apps/orva_fire/joined_results.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;
namespace fs = std::filesystem;

const char k_update[] =
    R"({"schema":1,"event":"update","id":1,"camera":"c","zone":"stove","grade":70,"frame":60,"seconds":2.4,"boxes":[)"
    R"({"x":1,"y":1,"width":2,"height":2,"per_mille":{"x":1,"y":1,"width":2,"height":2}}]})";
const char k_end[] =
    R"({"schema":1,"event":"end","id":1,"camera":"c","zone":"stove","grade":70,"frame":80,"seconds":3.2,"boxes":[)"
    R"({"x":1,"y":1,"width":2,"height":2,"per_mille":{"x":1,"y":1,"width":2,"height":2}}],"reason":"gone","started":)"
    R"({"frame":50,"seconds":2},"duration":1.2,"largest":{"frame":60,"seconds":2.4,"box":)"
    R"({"x":1,"y":1,"width":2,"height":2,"per_mille":{"x":1,"y":1,"width":2,"height":2}}},)"
    R"("snapshot":"event-0001-largest.jpg"})";

std::string trouble_line(bool started, double since, double seconds) {
    nlohmann::json line = {{"schema", 1},          {"event", started ? "trouble" : "trouble over"},
                           {"camera", "c"},        {"frame", 1},
                           {"seconds", seconds},   {"reason", "dark"},
                           {"explanation", "..."}, {"since", since}};
    if (!started) line["duration"] = seconds - since;
    return line.dump();
}

class joining : public testing::Test {
protected:
    // Results of a task; the recording itself, of as many bytes as its name has.
    void put(const std::string& name, const std::string& error = "", int events = 0, const std::string& top = "out",
             const std::string& finished = "2026-11-21T13:00:00.000Z") {
        done_record record;
        record.name = name;
        const std::string path = m_folder.file("recordings/" + name);
        fs::create_directories(fs::path(path).parent_path());
        if (!fs::exists(path)) write_file(path, name);
        record.source = state_of(path);
        record.settings = m_settings;
        record.error = error;
        record.events = events;
        record.seconds = 60;
        record.finished = finished;
        fs::create_directories(folder_of(name, top));
        write_done(folder_of(name, top), record);
    }

    std::string folder_of(const std::string& name, const std::string& top = "out") const {
        return m_folder.file(top + "/" + name);
    }

    recording there(const std::string& name) const { return {m_folder.file("recordings/" + name), name}; }

    joined_results gather(const std::vector<recording>& expected = {}, std::vector<std::string> tops = {"out"}) {
        for (std::string& top : tops) top = m_folder.file(top);
        return gather_results(tops, expected);
    }

    static std::string missing_of(const joined_results& joined) {
        std::string text;
        for (const missing_result& each : joined.missing) text += each.name + ": " + each.reason + "\n";
        return text;
    }

    std::string m_settings = "settings";
    temporary_folder m_folder;
};

TEST_F(joining, finds_results_in_all_folders_below_by_name) {
    put("gate/2.mp4");
    put("a.mp4", "", 2);
    put("gate/1.mp4", "cut short");
    put("b.mp4", "", 0, "out/.trash");
    const joined_results joined = gather();
    ASSERT_EQ(joined.results.size(), 3u);
    EXPECT_EQ(joined.results[0].name, "a.mp4");
    EXPECT_EQ(joined.results[1].name, "gate/1.mp4");
    EXPECT_EQ(joined.results[1].problem, "cut short");
    EXPECT_EQ(joined.results[2].name, "gate/2.mp4");
    EXPECT_TRUE(joined.missing.empty());
    EXPECT_TRUE(joined.notes.empty());
    EXPECT_EQ(joined_summary(joined), "3 recordings, 1 with fire reported, 1 failed, 0 missing");
}

TEST_F(joining, names_what_is_missing_and_why) {
    for (const char* name : {"changed.mp4", "good.mp4", "kept.mp4"}) put(name);
    for (const char* name : {"begun.mp4", "never.mp4"})
        write_file(m_folder.file(std::string("recordings/") + name), "x");
    write_file(m_folder.file("recordings/changed.mp4"), "another length");
    fs::create_directories(m_folder.file("out/.begun.mp4.part.abcdef"));
    write_file(m_folder.file("out/.begun.mp4.part.abcdef/done.json"), "{}");
    fs::create_directories(m_folder.file("out/.kept.mp4.part.abcdef"));  // at work again on what is done
    fs::create_directories(folder_of("broken.mp4"));
    write_file(folder_of("broken.mp4") + "/done.json", "{");
    const joined_results joined =
        gather({there("begun.mp4"), there("changed.mp4"), there("good.mp4"), there("never.mp4")});
    EXPECT_EQ(missing_of(joined),
              "begun.mp4: a task for it was begun and has not finished\n"
              "broken.mp4: the record of its task cannot be read\n"
              "changed.mp4: it has changed since it was looked at\n"
              "never.mp4: no task has finished for it\n");
    EXPECT_EQ(joined.results.size(), 3u);
}

struct choice_row : support::named_row {
    const char* first_error;
    const char* first_finished;
    const char* second_error;
    const char* second_finished;
    const char* chosen;
};

const char k_early[] = "2026-11-21T13:00:00.000Z", k_late[] = "2026-11-21T13:00:00.001Z";

class two_results : public joining, public testing::WithParamInterface<choice_row> {};

TEST_P(two_results, are_one) {
    const choice_row& row = GetParam();
    put("a.mp4", row.first_error, 0, "one", row.first_finished);
    put("a.mp4", row.second_error, 0, "two", row.second_finished);
    const joined_results joined = gather({}, {"one", "two"});
    ASSERT_EQ(joined.results.size(), 1u);
    EXPECT_EQ(joined.results[0].folder, folder_of("a.mp4", row.chosen));
    EXPECT_EQ(joined.notes,
              std::vector<std::string>{"There are several results for 'a.mp4'; the last good one is shown."});
}

INSTANTIATE_TEST_SUITE_P(
    table, two_results,
    testing::Values(choice_row{{"the later of two good ones"}, "", k_early, "", k_late, "two"},
                    choice_row{{"the later though it was named first"}, "", k_late, "", k_early, "one"},
                    choice_row{{"the good one though it is older"}, "", k_early, "failed", k_late, "one"},
                    choice_row{{"the good one though it was named later"}, "failed", k_late, "", k_early, "two"}),
    row_name());

TEST_F(joining, notes_that_settings_differ) {
    put("a.mp4");
    m_settings = "others";
    put("b.mp4");
    EXPECT_EQ(gather().notes, std::vector<std::string>{
                                  "These results were made with 2 different settings or versions of the program."});
}

TEST_F(joining, refuses_the_folder_of_one_recording_and_what_is_no_folder) {
    put("a.mp4");
    EXPECT_ANY_THROW((void)gather({}, {"out/a.mp4"}));
    EXPECT_ANY_THROW((void)gather({}, {"none"}));
}

// --- events ----------------------------------------------------------------------------------------------------------

TEST_F(joining, hands_on_events_with_their_recording_and_the_way_to_their_picture) {
    put("gate/1.mp4", "", 1);
    write_file(folder_of("gate/1.mp4") + "/events.jsonl", std::string(k_update) + "\n" + k_end + "\n");
    joined_results joined = gather();
    std::string lines;
    join_events(joined.results[0], "way", [&](const std::string& line) { lines += line + "\n"; });
    const auto events = json_lines(lines);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0]["source"], "gate/1.mp4");
    EXPECT_EQ(events[1]["source"], "gate/1.mp4");
    EXPECT_EQ(events[1]["snapshot"], "way/event-0001-largest.jpg");
    EXPECT_EQ(events[1]["duration"], 1.2);
    const std::vector<joined_event>& found = joined.results[0].events;
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].zone, "stove");
    EXPECT_EQ(found[0].from, 2);
    EXPECT_EQ(found[0].to, 3.2);
    EXPECT_EQ(found[0].snapshot, "event-0001-largest.jpg");
}

TEST_F(joining, makes_a_failure_of_lines_that_are_no_events) {
    put("a.mp4", "", 1);
    write_file(folder_of("a.mp4") + "/events.jsonl", std::string(k_update) + "\n{\"event\":1}\n" + k_end + "\n{\"ev");
    joined_results joined = gather();
    int lines = 0;
    join_events(joined.results[0], "way", [&](const std::string&) { ++lines; });
    EXPECT_EQ(lines, 2);
    EXPECT_EQ(joined.results[0].problem, "line 2 of its events.jsonl is no event");
}

TEST_F(joining, adds_up_the_time_in_which_the_camera_could_not_see) {
    put("a.mp4");
    // From 3 to 5, and from 50 to the end at 60.
    write_file(folder_of("a.mp4") + "/events.jsonl",
               trouble_line(true, 3, 4) + "\n" + trouble_line(false, 3, 5) + "\n" + trouble_line(true, 50, 52) + "\n");
    joined_results joined = gather();
    join_events(joined.results[0], "way", [](const std::string&) {});
    EXPECT_DOUBLE_EQ(joined.results[0].trouble, 12);
}

// --- the page --------------------------------------------------------------------------------------------------------

// Every address of the page without its moment in the video, decoded.
std::vector<std::string> addresses_in(const std::string& page) {
    std::vector<std::string> found;
    const std::regex address("<(?:a|img)[^>]* (?:href|src)=\"([^\"#]*)");
    for (std::sregex_iterator at(page.begin(), page.end(), address), end; at != end; ++at) {
        const std::string coded = (*at)[1];
        std::string plain;
        for (size_t i = 0; i < coded.size(); ++i) {
            if (coded[i] == '%') {
                plain += static_cast<char>(std::stoi(coded.substr(i + 1, 2), nullptr, 16));
                i += 2;
            } else {
                plain += coded[i];
            }
        }
        found.push_back(plain);
    }
    return found;
}

TEST_F(joining, makes_a_page_whose_ways_lead_to_files_whatever_their_names) {
    const std::string hostile = "<img src=x onerror=alert(1)>\"'&%41#?.mp4";
    put("a.mp4");
    put("gate/" + hostile, "", 1);
    put(hostile + "2", "'" + hostile + "' is cut short");
    write_file(folder_of("gate/" + hostile) + "/events.jsonl", std::string(k_end) + "\n");
    for (const char* name : {"/report.html", "/annotated.mp4", "/event-0001-largest.jpg"}) {
        write_file(folder_of("gate/" + hostile) + name, "");
    }
    joined_results joined = gather({there("gate/" + hostile + "3")});
    for (joined_result& result : joined.results) join_events(result, "way", [](const std::string&) {});
    fs::create_directories(m_folder.file("joined/deep"));
    const std::string page = joined_page(joined, {m_folder.file("joined/deep"), "1.0.0", ""});
    EXPECT_EQ(page.find("<img src=x"), std::string::npos);
    EXPECT_NE(page.find("&lt;img src=x onerror=alert(1)&gt;&quot;&#39;&amp;%41#?.mp43"), std::string::npos);
    const std::vector<std::string> addresses = addresses_in(page);
    // The event's row leads to the report, twice into the video and to the picture; of the three rows of recordings one
    // leads into the video too; the failed one is listed once more.
    EXPECT_EQ(addresses.size(), 9u);
    for (const std::string& address : addresses) {
        EXPECT_TRUE(fs::exists(fs::path(m_folder.file("joined/deep")) / address)) << address;
    }
}

TEST_F(joining, makes_a_page_that_says_how_it_ended) {
    put("fire.mp4", "", 2);
    put("calm.mp4");
    put("cut.mp4", "cut short");
    const std::string page = joined_page(gather({there("gone.mp4")}), {m_folder.file("out"), "1.0.0", ""});
    EXPECT_NE(page.find("<p>Fire was reported in 1 recording.</p>"), std::string::npos);
    EXPECT_NE(page.find("<p>1 recording could not be read to the end, 1 is missing.</p>"), std::string::npos);
    EXPECT_NE(page.find("<small>length</small><b>3 min 0 s</b>"), std::string::npos);
    EXPECT_NE(page.find("<small>events</small><b>2</b>"), std::string::npos);
    EXPECT_NE(page.find("<td data-l=\"recording\">gone.mp4</td><td data-l=\"state\">missing</td>"), std::string::npos);
}

}  // namespace
