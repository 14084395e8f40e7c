// What an observer is told: every verdict with its numbers, in order, and that its presence changes nothing.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "channel/foreground_analysis.h"
#include "channel/frame_process.h"
#include "tests/channel/components.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::box_measures;
using orva_fd::box_verdict;
using orva_fd::con_info;
using orva_fd::foreground_analysis;
using orva_fd::stability_measures;
using orva_fd::test_access;
using support::box;
using support::grey_image;
using support::outcome;
using support::outcome_of;
using support::row_name;

using list = std::vector<con_info>;

const char* const k_verdicts[] = {"covered", "too small", "too dim", "not brighter", "candidate"};

// Writes down what it is told, a line each.
class scribe : public orva_fd::analysis_observer {
public:
    void on_components(const fd_yuv_frame& mask, const list& components) override {
        add("components of " + std::to_string(mask.width) + " x " + std::to_string(mask.height) + ": " +
            std::to_string(components.size()));
    }
    void on_merged(const list& boxes) override { add("merged: " + std::to_string(boxes.size())); }
    void on_verdict(const con_info& b, box_verdict verdict, const box_measures& m) override {
        std::string line = std::to_string(b.left) + " " + k_verdicts[verdict];
        for (int value : {m.pixels, m.bright, m.fire, m.centre, m.around}) line += " " + std::to_string(value);
        add(line);
    }
    void on_stability(const con_info& b, const stability_measures& m) override {
        std::string line = std::to_string(b.left) + " lists " + std::to_string(m.lists);
        for (int value : {m.count, m.more_than, m.mean_area, m.deviation}) line += " " + std::to_string(value);
        add(line + (m.is_reported ? " reported" : ""));
    }

    std::vector<std::string> lines;

private:
    void add(const std::string& line) { lines.push_back(line); }
};

using lines = std::vector<std::string>;

// --- one box --------------------------------------------------------------------------------------------------------

// A box of 10 x 10 at (20, 20) on a black picture: the margins are 2 pixels, the surround 2 x (2 x 10 + 14 x 2) = 96.
struct verdict_row : support::named_row {
    con_info candidate;
    int bright_rows;  // of the box, with luma 210
    int set_rows;     // of the box in the mask
    int around;       // luma everywhere else
    std::string told;
};

class one_box : public testing::TestWithParam<verdict_row> {};

TEST_P(one_box, is_judged_with_its_numbers) {
    const verdict_row& row = GetParam();
    grey_image luma(60, 60, 60, 0, static_cast<unsigned char>(row.around)), mask(60, 60);
    luma.fill_rect(20, 20, 10, 10, 0);
    luma.fill_rect(20, 20, 10, row.bright_rows, 210);
    mask.fill_rect(20, 20, 10, row.set_rows, 255);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    scribe told;
    foreground_analysis watched, alone;
    watched.set_observer(&told);
    con_info candidate = row.candidate;
    const outcome with = outcome_of([&] { return watched.verify_fire(&roi, &fg, nullptr, &candidate); });
    const outcome without = outcome_of([&] { return alone.verify_fire(&roi, &fg, nullptr, &candidate); });
    EXPECT_EQ(told.lines, lines{row.told});
    EXPECT_EQ(with.status, without.status);
    EXPECT_EQ(with.text, without.text);
}

INSTANTIATE_TEST_SUITE_P(
    table, one_box,
    testing::Values(
        verdict_row{{"two columns"}, box(20, 20, 2, 10, 100), 10, 10, 0, "20 too small 0 0 0 0 0"},
        verdict_row{{"19 pixels"}, box(20, 20, 10, 10, 19), 10, 10, 0, "20 too small 0 0 0 0 0"},
        verdict_row{{"one bright row"}, box(20, 20, 10, 10, 90), 1, 10, 0, "20 too dim 100 10 100 0 0"},
        verdict_row{{"one row of fire colour"}, box(20, 20, 10, 10, 90), 10, 1, 0, "20 too dim 100 100 10 0 0"},
        verdict_row{
            {"as bright as its surround"}, box(20, 20, 10, 10, 90), 5, 4, 205, "20 not brighter 100 50 40 210 205"},
        verdict_row{{"bright by five per cent"}, box(20, 20, 10, 10, 90), 5, 4, 200, "20 candidate 100 50 40 210 200"}),
    row_name());

// --- one candidate --------------------------------------------------------------------------------------------------

// Stored frames of which some hold the candidate's box, with areas by turns of 100 and 200, and the others another box.
struct stability_row : support::named_row {
    std::vector<bool> holds;
    int area;  // of every second match; the others have 100
    int more_than;
    std::string told;
};

class one_candidate : public testing::TestWithParam<stability_row> {};

TEST_P(one_candidate, is_compared_with_its_numbers) {
    const stability_row& row = GetParam();
    scribe told;
    foreground_analysis analysis;
    analysis.set_observer(&told);
    test_access::stable_thresh(analysis) = row.more_than;
    int matches = 0;
    for (bool holds : row.holds) {
        const int area = matches % 2 == 0 ? 100 : row.area;
        test_access::history(analysis).push_back({holds ? box(50, 50, 40, 40, area) : box(200, 200, 9, 9, 50)});
        matches += holds;
    }
    list candidates = {box(50, 50, 40, 40, matches % 2 == 0 ? 100 : row.area)};
    fd_result result = {};
    outcome_of([&] { return analysis.get_stable_rects(candidates, result); });
    EXPECT_EQ(told.lines, lines{row.told});
    EXPECT_EQ(result.count, row.told.find("reported") == std::string::npos ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(
    table, one_candidate,
    testing::Values(
        // Areas 100, 300, 100, 300: mean (800 + 2) / 4 = 200, deviation (400 + 2) / 4 = 100.
        stability_row{{"found in three lists"}, {true, false, true, true}, 300, 3, "50 lists 13 4 3 200 100 reported"},
        stability_row{{"found once too rarely"}, {true, false, true, true}, 300, 4, "50 lists 13 4 4 200 100"},
        // Areas 100, 120, 100, 120: mean (440 + 2) / 4 = 110, deviation (40 + 2) / 4 = 10.
        stability_row{{"too steady"}, {true, true, true}, 120, 1, "50 lists 7 4 1 110 10"},
        // The candidate alone: means are rounded by half of n rounded up, here by 1: 101, and its distance of 1
        // gives 2.
        stability_row{{"found nowhere"}, {false, false}, 300, 1, "50 lists 0 1 1 101 2"},
        // 50 lists: the last bit is bit 49, 562949953421312. Areas 100, 300: mean 200 (401 / 2), deviation 100.
        stability_row{
            {"found in the newest of 50"},
            std::vector<bool>{false, false, false, false, false, false, false, false, false, false, false, false, false,
                              false, false, false, false, false, false, false, false, false, false, false, false, false,
                              false, false, false, false, false, false, false, false, false, false, false, false, false,
                              false, false, false, false, false, false, false, false, false, false, true},
            300,
            1,
            "50 lists 562949953421312 2 1 200 100 reported"}),
    row_name());

// --- whole frames ---------------------------------------------------------------------------------------------------

TEST(a_frame, is_told_in_the_order_of_its_stages) {
    grey_image luma(200, 100), mask(200, 100);
    luma.fill_rect(20, 20, 10, 10, 210);
    mask.fill_rect(20, 20, 10, 10, 255);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    scribe told;
    foreground_analysis analysis;
    analysis.set_observer(&told);
    // The first two merge; the others are 41 rows apart, one more than is close.
    list components = {box(20, 20, 4, 10, 40), box(25, 20, 5, 10, 50), box(150, 20, 2, 10, 20), box(150, 70, 9, 9, 60)};
    fd_result result = {};
    outcome_of([&] { return analysis.set_frame(&roi, &fg, nullptr, components, result); });
    EXPECT_EQ(told.lines, (lines{"components of 200 x 100: 4", "merged: 3", "20 candidate 100 100 100 210 0",
                                 "150 too small 0 0 0 0 0", "150 too dim 81 0 0 0 0"}));
}

TEST(a_frame, tells_of_covered_boxes) {
    grey_image luma(300, 280), mask(300, 280);
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    scribe told;
    foreground_analysis analysis;
    analysis.set_observer(&told);
    // 4 x 4 in the middle of 200 x 200: the nearest edges are 98 apart each way, so the two stay apart.
    list components = {box(10, 10, 200, 200, 900), box(108, 108, 4, 4, 16)}, fire_rects;
    bool found = false;
    outcome_of([&] { return analysis.get_fire_rects(&roi, &fg, nullptr, components, fire_rects, found); });
    ASSERT_EQ(told.lines.size(), 4u);
    EXPECT_EQ(told.lines[3], "108 covered 0 0 0 0 0");
}

// A flame of changing height before a dark wall; two channels see it, one of them watched.
TEST(a_watched_channel, answers_as_one_that_is_not) {
    scribe told;
    orva_fd::pre_process::init();
    orva_fd::frame_process watched, alone;
    watched.set_observer(&told);
    const fd_rect whole = {0, 1, 0, 1, 1, 1, 1, 1};
    ASSERT_EQ(watched.start(whole), 0);
    ASSERT_EQ(alone.start(whole), 0);
    int reports = 0;
    for (int i = 0; i < 80; ++i) {
        support::nv21_picture picture(176, 144);
        picture.paint_all(60, 128, 128);
        const int top = 44 + i * 17 % 40 / 2 * 2;
        picture.paint(80, top, 24, 100 - top, 200, 90, 150);
        fd_yuv_frame frame = picture.frame();
        fd_result with = {}, without = {};
        const outcome a = outcome_of([&] { return watched.set_frame(frame, with); });
        const outcome b = outcome_of([&] { return alone.set_frame(frame, without); });
        EXPECT_EQ(a.text, b.text) << "frame " << i;
        EXPECT_EQ(std::memcmp(&with, &without, sizeof with), 0) << "frame " << i;
        reports += with.count;
    }
    EXPECT_GT(reports, 0);
    EXPECT_FALSE(told.lines.empty());
    watched.stop();
    alone.stop();
}

}  // namespace
