// The page of a report: what stands in it for which data, and that no text from outside becomes anything else.
#include <gtest/gtest.h>

#include <regex>

#include "apps/orva_fire/report.h"
#include "apps/orva_fire/report_svg.h"
#include "tests/apps/report_example.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

std::string page_of(const report_data& run) {
    return report_page({run});
}

size_t count_of(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

struct content_row : support::named_row {
    std::string html;
};

class an_example_page : public testing::TestWithParam<content_row> {};

TEST_P(an_example_page, says) {
    const std::string page = page_of(example_report("yard.mp4"));
    EXPECT_NE(page.find(GetParam().html), std::string::npos) << GetParam().html;
}

INSTANTIATE_TEST_SUITE_P(
    table, an_example_page,
    testing::Values(
        content_row{{"what it is about"}, "<h1>Fire report: yard.mp4</h1>"},
        // Two real events are listed and four are not; the drill does not count.
        content_row{{"the verdict"}, "Fire was reported 6 times, first at 0:05.6."},
        content_row{{"trouble in the summary"}, "For 8.0 s the camera could not see well enough"},
        content_row{{"a link to the start in the video"}, "<a href=\"annotated.mp4#t=5.64\">0:05.6</a>"},
        content_row{{"a link to the end in the video"}, "<a href=\"annotated.mp4#t=14.96\">0:15.0</a>"},
        content_row{{"an event that is still going on"}, "1:00.0</a> <small>(the pictures ended)</small>"},
        content_row{{"a drill as a test"}, "3 (test)"},
        content_row{{"events that are not listed"}, "4 further events are not listed here"},
        content_row{{"a snapshot in the page itself"}, "<img src=\"data:image/jpeg;base64,"},
        content_row{{"a miss with what would have helped"},
                    "found again in 33 of 50 frames over 2.0 s, needs 35; <b>would have been reported at grade 80</b>"},
        content_row{{"a miss without"}, "too steady: its area changes by 9 %, needs 17 %</td>"},
        content_row{{"trouble with its reason"}, "dark: yard.mp4"},
        // 640 / 352 is 1.818: 3 columns are 5.45 and 5 rows 9.09.
        content_row{{"the smallest fire in source pixels"}, "6 x 10 pixels"},
        content_row{{"the scale"}, "352 x 198, 1.8 times smaller"},
        content_row{{"a setting"}, "<th scope=\"row\">grade</th><td>70</td>"},
        content_row{{"pictures that were left out"}, "60 repeated, 40 beyond the rate"},
        content_row{{"a note"}, "5 pictures a second: yard.mp4"},
        content_row{{"the version and the time"}, "Made by orva-fire 1.0.0 on 2024-05-01T12:00:00Z."}),
    row_name());

TEST(a_page, without_events_says_so) {
    report_data run = example_report("calm.mp4");
    run.events.clear();
    run.events_left_out = 0;
    run.misses.clear();
    const std::string page = page_of(run);
    EXPECT_NE(page.find("No fire was reported."), std::string::npos);
    EXPECT_NE(page.find("Nothing else came near a report."), std::string::npos);
}

TEST(a_page, of_a_drill_reports_no_fire) {
    report_data run = example_report("gate");
    run.events_left_out = 0;
    for (report_event& event : run.events) event.test = true;
    EXPECT_NE(page_of(run).find("This was a drill: its flame was reported, and no other fire."), std::string::npos);
}

TEST(a_page, of_nothing_at_all_can_be_made) {
    const std::string page = page_of(report_data());
    EXPECT_NE(page.find("No picture could be read."), std::string::npos);
}

TEST(a_page, without_a_video_has_no_links) {
    report_data run = example_report("yard.mp4");
    for (report_event& event : run.events) event.video.clear();
    EXPECT_EQ(page_of(run).find("<a "), std::string::npos);
}

TEST(a_page, links_into_the_part_of_the_video_that_holds_the_moment) {
    report_data run = example_report("yard.mp4");
    run.events[0].video = "annotated 1&2.mp4";
    run.events[0].video_start = 4;
    EXPECT_NE(page_of(run).find("href=\"annotated%201%262.mp4#t=1.64\""), std::string::npos);
}

TEST(a_page, of_several_runs_begins_with_a_table_of_them) {
    const std::string page = report_page({example_report("a.mp4"), example_report("b.mp4")});
    EXPECT_NE(page.find("Fire report: 2 sources"), std::string::npos);
    EXPECT_NE(page.find("<a href=\"#run2\">b.mp4</a>"), std::string::npos);
    EXPECT_NE(page.find("<section id=\"run2\">"), std::string::npos);
    EXPECT_EQ(count_of(page, "<html"), 1u);
}

// With hostile texts the page has the very tags and attributes that it has with harmless ones.
TEST(a_page, has_the_same_tags_whatever_the_texts_are) {
    const auto tags = [](const std::string& page) {
        const std::regex tag("<[^<>]*>");
        std::string all;
        for (std::sregex_iterator i(page.begin(), page.end(), tag), end; i != end; ++i) {
            std::string text = std::regex_replace(i->str(), std::regex("(aria-label|alt|class)=\"[^\"]*\""), "");
            all += text + "\n";
        }
        return all;
    };
    const std::string harmless = page_of(example_report("yard.mp4")), hostile = page_of(example_report(hostile_name()));
    EXPECT_EQ(tags(hostile), tags(harmless));
    EXPECT_EQ(hostile.find('\0'), std::string::npos);
    EXPECT_EQ(hostile.find('\x1b'), std::string::npos);
}

TEST(a_page, names_nothing_outside_itself_and_its_video) {
    const std::string page = page_of(example_report("yard.mp4"));
    const std::regex address("(href|src)=\"([^\"]*)\"");
    for (std::sregex_iterator i(page.begin(), page.end(), address), end; i != end; ++i) {
        const std::string target = (*i)[2];
        EXPECT_TRUE(target.rfind("data:", 0) == 0 || target.rfind("annotated.mp4#t=", 0) == 0) << target.substr(0, 80);
    }
    EXPECT_EQ(page.find("url("), std::string::npos);
    EXPECT_EQ(page.find("@import"), std::string::npos);
}

TEST(bar_lane, places_bars_and_keeps_short_ones_visible) {
    // Built one by one: GCC 12 takes the strings of nested braces for uninitialised.
    std::vector<lane_bar> bars(2);
    bars[0].span = {0, 5, "a"};
    bars[1].span = {9.999, 10, "b"};
    bars[1].address = "v.mp4#t=1";
    const std::string svg = bar_lane(bars, 10, "f-fire", "reports");
    EXPECT_NE(svg.find("x=\"0.0\" y=\"0\" width=\"500.0\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("<a href=\"v.mp4#t=1\"><rect class=\"f-fire\" x=\"997.5\" y=\"0\" width=\"2.5\""),
              std::string::npos)
        << svg;
}

TEST(level_lane, steps_where_the_height_changes) {
    const std::string svg = level_lane({0, 0.5, 0.5, 2}, 1, 4, "f-near", "candidates", 0.5);
    EXPECT_NE(svg.find("d=\"M0 100H0.0V100.0H250.0V50.0H750.0V0.0H1000.0V100Z\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("y1=\"50.0\""), std::string::npos) << svg;
}

TEST(lanes, of_no_length_are_empty_but_whole) {
    EXPECT_EQ(bar_lane({}, 0, "f-fire", "reports").substr(0, 4), "<svg");
    EXPECT_NE(level_lane({}, 0, 0, "f-near", "n", 0).find("d=\"M0 100H0.0V100Z\""), std::string::npos);
}

}  // namespace
