// What fresh reports cover, when an event is raised and when it ends, on pictures of round numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "apps/orva_fire/confirmation.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

const std::vector<box> k_boxes{{10, 20, 30, 40}};
const std::vector<box> k_others{{11, 21, 31, 41}};

const zone_answer k_fresh{k_boxes, true}, k_held{k_boxes, false}, k_nothing{{}, false};

// Plays a text, one letter a picture: F a fresh report, h a held one, . nothing. Returns one letter a picture: E while
// there is an event, - while there is none.
std::string play(const confirm_settings& settings, double rate, const std::string& text) {
    confirmation zone(settings);
    std::string played;
    for (size_t i = 0; i < text.size(); ++i) {
        const zone_answer& answer = text[i] == 'F' ? k_fresh : text[i] == 'h' ? k_held : k_nothing;
        played += zone.observe(static_cast<double>(i) / rate, answer).empty() ? '-' : 'E';
    }
    return played;
}

struct play_row : support::named_row {
    confirm_settings settings;
    double rate;
    const char* text;
    const char* wanted;
};

class played : public testing::TestWithParam<play_row> {};

TEST_P(played, gives_these_events) {
    EXPECT_EQ(play(GetParam().settings, GetParam().rate, GetParam().text), GetParam().wanted);
}

// At 10 pictures a second each picture stands for 0.1 s. A fresh report at picture 1 covers pictures 1 to 7.
INSTANTIATE_TEST_SUITE_P(
    table, played,
    testing::Values(
        play_row{
            {"without confirmation the first report is an event until it is gone"}, {0, 0}, 10, "..Fhhh..", "--EEEE--"},
        play_row{{"without confirmation the very first picture may be one"}, {0, 0}, 10, "Fh.", "EE-"},
        play_row{{"a report that is only held never starts an event"}, {0, 0}, 10, ".hhh", "----"},
        // 7 covered pictures are 0.7 s, the 8th is the next fresh report
        play_row{{"0.8 s need a second report"}, {0.8, 0}, 10, ".Fhhhhhh.......", "---------------"},
        play_row{{"0.8 s are covered by the second report"}, {0.8, 0}, 10, ".FhhhhhhFh.", "--------EE-"},
        play_row{{"0.7 s wait for the next fresh report too"}, {0.7, 0}, 10, ".FhhhhhhhhFh", "----------EE"},
        play_row{{"pictures that hold longer cover nothing"}, {0.9, 0}, 10, ".FhhhhhhhhFhh", "-------------"},
        play_row{{"and are made up for by the next fresh one"}, {0.9, 0}, 10, ".FhhhhhhhhFhF", "------------E"},
        play_row{{"fresh reports that follow at once count once"}, {0.3, 0}, 10, ".FF.F.", "----E-"},
        // a window of 1.6 s: at picture 20 it begins after picture 4, so three of the seven are left, one picture later
        // two
        play_row{
            {"what is still in the window counts"}, {0.4, 0}, 10, ".Fhhhhhh............F", "--------------------E"},
        play_row{{"what lies before the window is forgotten"},
                 {0.4, 0},
                 10,
                 ".Fhhhhhh.............F",
                 "----------------------"},
        play_row{{"a cooldown keeps the event"}, {0, 0.3}, 10, ".Fh..Fh....", "-EEEEEEEE--"},
        play_row{{"a held report keeps it too"}, {0, 0.2}, 10, ".F.h.h...", "-EEEEEE--"},
        play_row{{"after the cooldown it is confirmed anew"},
                 {0.8, 0.2},
                 10,
                 ".FhhhhhhFh..............................Fh",
                 "--------EEE-------------------------------"}),
    row_name());

TEST(confirmation, counts_a_picture_as_the_time_since_the_one_before) {
    confirmation zone({100, 0});
    zone.observe(5.0, k_fresh);
    EXPECT_DOUBLE_EQ(zone.covered(), 0) << "nothing is known about the first picture's length";
    zone.observe(5.25, k_held);
    EXPECT_DOUBLE_EQ(zone.covered(), 0.25);
    zone.observe(5.75, k_held);
    EXPECT_DOUBLE_EQ(zone.covered(), 0.75);
    zone.observe(9.75, k_held);
    EXPECT_DOUBLE_EQ(zone.covered(), 1.75) << "a gap counts as one second";
}

TEST(confirmation, covers_the_fresh_picture_and_six_more) {
    confirmation zone({100, 0});
    zone.observe(0, k_nothing);
    zone.observe(1, k_fresh);
    for (int i = 2; i <= 20; ++i) zone.observe(i, i <= 16 ? k_held : k_nothing);
    EXPECT_DOUBLE_EQ(zone.covered(), 7);
}

TEST(confirmation, forgets_what_is_older_than_four_times_the_seconds) {
    confirmation zone({2, 0});
    zone.observe(0, k_nothing);
    for (int i = 1; i <= 3; ++i) zone.observe(i / 2.0, i == 1 ? k_fresh : k_held);
    for (int i = 4; i <= 7; ++i) zone.observe(i / 2.0, k_held);
    EXPECT_DOUBLE_EQ(zone.covered(), 3.5);
    // The picture at 0.5 s leaves the window of 8 s at 8.5 s, the one at 1 s at 9 s.
    for (int i = 8; i <= 16; ++i) zone.observe(i / 2.0, k_nothing);
    EXPECT_DOUBLE_EQ(zone.covered(), 3.5);
    zone.observe(8.5, k_nothing);
    EXPECT_DOUBLE_EQ(zone.covered(), 3);
    zone.observe(9, k_nothing);
    EXPECT_DOUBLE_EQ(zone.covered(), 2.5);
}

TEST(confirmation, hands_on_the_boxes_of_the_picture_and_in_the_cooldown_the_last) {
    confirmation zone({0, 1});
    EXPECT_EQ(zone.observe(0, k_fresh), k_boxes);
    EXPECT_EQ(zone.observe(0.5, {k_others, true}), k_others);
    EXPECT_EQ(zone.observe(1.0, k_nothing), k_others);
    EXPECT_EQ(zone.observe(1.5, k_nothing), std::vector<box>());
}

TEST(confirmation, after_a_restart_needs_all_its_evidence_again) {
    confirmation zone({1, 0});
    zone.observe(0, k_nothing);
    zone.observe(1, k_fresh);
    zone.observe(2, k_nothing);
    zone.restart();
    EXPECT_DOUBLE_EQ(zone.covered(), 0);
    EXPECT_TRUE(zone.observe(100, k_fresh).empty());
    EXPECT_FALSE(zone.observe(101, k_fresh).empty());
}

TEST(confirmation, keeps_an_open_event_over_a_restart_for_its_cooldown) {
    confirmation zone({0, 5});
    zone.observe(0, k_fresh);
    zone.restart();
    EXPECT_FALSE(zone.observe(4.5, k_nothing).empty());
    EXPECT_TRUE(zone.observe(5, k_nothing).empty());
}

TEST(confirmation, takes_rates_whose_intervals_are_no_round_numbers) {
    for (const double rate : {7.0, 24000 / 1001.0, 30000 / 1001.0, 60.0}) {
        confirmation zone({1, 0});
        // A fire that is found whenever it can be: fresh at every 7th picture. One second is covered after `rate`
        // pictures.
        int raised = -1;
        for (int i = 0; i < 200 && raised < 0; ++i) {
            const bool event = !zone.observe(i / rate, i % 7 == 0 ? k_fresh : k_held).empty();
            if (event) raised = i;
        }
        const int needed = static_cast<int>(std::ceil(rate - 1e-4));
        EXPECT_EQ(raised, (needed + 6) / 7 * 7) << rate << " pictures a second";
    }
}

}  // namespace
