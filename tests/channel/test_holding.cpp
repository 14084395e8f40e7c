// How a reported result is held: every case of the count, and whole sequences frame by frame.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "channel/frame_process.h"
#include "tests/channel/components.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::frame_process;
using orva_fd::test_access;
using support::row_name;
using support::text_of;

fd_yuv_frame frame_of_352_x_288() {
    fd_yuv_frame frame = {};
    frame.width = 352;
    frame.height = 288;
    return frame;
}

// A result of the analysis: boxes in pixels of the region, references zero.
fd_result found_at(int x, int count = 1) {
    fd_result result = {};
    result.count = static_cast<uint16_t>(count);
    for (int i = 0; i < count; ++i) {
        result.rects[i].x = static_cast<uint16_t>(x + i);
        result.rects[i].y = static_cast<uint16_t>(2 * x + i);
        result.rects[i].width = static_cast<uint16_t>(20 + i);
        result.rects[i].height = static_cast<uint16_t>(30 + i);
    }
    return result;
}

const fd_result k_nothing = {};

// --- single steps ---------------------------------------------------------------------------------------------------

struct step_row : support::named_row {
    int count_before;
    bool reporting;
    bool boxes_found;
    bool held;
};

class stable_result : public testing::TestWithParam<step_row> {};

TEST_P(stable_result, holds_or_takes) {
    const step_row& row = GetParam();
    frame_process channel;
    test_access::hold_count(channel) = static_cast<uint16_t>(row.count_before);
    fd_result& last = test_access::last_result(channel);
    last = found_at(200);
    if (!row.reporting) last.count = 0;
    const fd_result before = last;
    fd_result result = row.boxes_found ? found_at(5) : k_nothing;
    fd_yuv_frame frame = frame_of_352_x_288();
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    if (row.held) {
        EXPECT_EQ(test_access::hold_count(channel), row.count_before + 1);
        EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
        EXPECT_EQ(std::memcmp(&last, &before, sizeof last), 0);
    } else {
        EXPECT_EQ(test_access::hold_count(channel), 0);
        EXPECT_EQ(text_of(result), row.boxes_found ? "1: (5/352, 10/288, 20/352, 30/288)" : "0:");
        EXPECT_EQ(std::memcmp(&result, &last, sizeof result), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(reporting, stable_result,
                         testing::Values(step_row{{"count 0 holds against boxes"}, 0, true, true, true},
                                         step_row{{"count 1 holds against boxes"}, 1, true, true, true},
                                         step_row{{"count 5 holds against boxes"}, 5, true, true, true},
                                         step_row{{"count 6 takes boxes"}, 6, true, true, false},
                                         step_row{{"count 7 takes boxes"}, 7, true, true, false},
                                         step_row{{"count 14 takes boxes"}, 14, true, true, false},
                                         step_row{{"count 15 takes boxes"}, 15, true, true, false},
                                         step_row{{"count 0 holds without boxes"}, 0, true, false, true},
                                         step_row{{"count 5 holds without boxes"}, 5, true, false, true},
                                         step_row{{"count 6 holds without boxes"}, 6, true, false, true},
                                         step_row{{"count 14 holds without boxes"}, 14, true, false, true},
                                         step_row{{"count 15 ends without boxes"}, 15, true, false, false}),
                         row_name());

INSTANTIATE_TEST_SUITE_P(idle, stable_result,
                         testing::Values(step_row{{"count 0 takes boxes"}, 0, false, true, false},
                                         step_row{{"count 5 takes boxes"}, 5, false, true, false},
                                         step_row{{"count 15 takes boxes"}, 15, false, true, false},
                                         step_row{{"count 0 stays empty"}, 0, false, false, false},
                                         step_row{{"count 5 stays empty"}, 5, false, false, false},
                                         step_row{{"count 15 stays empty"}, 15, false, false, false}),
                         row_name());

// --- what is taken --------------------------------------------------------------------------------------------------

TEST(stable_result_taken, moves_ten_boxes_into_the_frame) {
    frame_process channel;
    test_access::roi(channel) = {100, 1, 40, 1, 1, 1, 1, 1};
    fd_result result = found_at(7, 10);
    fd_yuv_frame frame = {};
    frame.width = 320;
    frame.height = 240;
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    EXPECT_EQ(result.count, 10);
    for (int i = 0; i < 10; ++i) {
        const auto word = [](int value) { return static_cast<uint16_t>(value); };
        EXPECT_EQ(text_of(result.rects[i]),
                  text_of(fd_rect{word(107 + i), 320, word(54 + i), 240, word(20 + i), 320, word(30 + i), 240}));
    }
    EXPECT_EQ(std::memcmp(&result, &test_access::last_result(channel), sizeof result), 0);
}

TEST(stable_result_taken, keeps_old_boxes_behind_the_new_count) {
    frame_process channel;
    test_access::last_result(channel) = found_at(200, 4);
    test_access::hold_count(channel) = 6;
    fd_result result = found_at(5, 2);
    fd_yuv_frame frame = frame_of_352_x_288();
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    EXPECT_EQ(text_of(result), "2: (5/352, 10/288, 20/352, 30/288) (6/352, 11/288, 21/352, 31/288)");
    EXPECT_EQ(text_of(result.rects[2]), "(202/0, 402/0, 22/0, 32/0)");
    EXPECT_EQ(text_of(result.rects[3]), "(203/0, 403/0, 23/0, 33/0)");
}

TEST(stable_result_taken, gives_the_old_boxes_behind_a_count_of_0_when_a_report_ends) {
    frame_process channel;
    test_access::last_result(channel) = found_at(200, 3);
    test_access::hold_count(channel) = 15;
    fd_result result = {};
    fd_yuv_frame frame = frame_of_352_x_288();
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(text_of(result.rects[0]), "(200/0, 400/0, 20/0, 30/0)");
    EXPECT_EQ(text_of(result.rects[2]), "(202/0, 402/0, 22/0, 32/0)");
}

// A held result keeps the coordinates of the frame in which it was found, even if region and frame are others by now.
TEST(stable_result_taken, holds_boxes_in_their_old_coordinates) {
    frame_process channel;
    test_access::roi(channel) = {100, 1, 40, 1, 1, 1, 1, 1};
    fd_yuv_frame frame = frame_of_352_x_288();
    fd_result result = found_at(5);
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    test_access::roi(channel) = {0, 1, 0, 1, 1, 1, 1, 1};
    frame.width = 100;
    result = found_at(9);
    EXPECT_EQ(channel.stable_result(result, &frame), 0);
    EXPECT_EQ(text_of(result), "1: (105/352, 50/288, 20/352, 30/288)");
}

// --- sequences ------------------------------------------------------------------------------------------------------

// found: one letter for each frame's analysis, '.' for none. told: what the host then gets.
struct sequence_row : support::named_row {
    std::string found;
    std::string told;
};

class sequences : public testing::TestWithParam<sequence_row> {};

TEST_P(sequences, are_held) {
    frame_process channel;
    fd_yuv_frame frame = frame_of_352_x_288();
    std::string told;
    for (const char letter : GetParam().found) {
        fd_result result = letter == '.' ? k_nothing : found_at(letter);
        EXPECT_EQ(channel.stable_result(result, &frame), 0);
        told += result.count == 0 ? '.' : static_cast<char>(result.rects[0].x);
    }
    EXPECT_EQ(told, GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    table, sequences,
    testing::Values(
        sequence_row{{"a report is frozen for six frames"}, "..abcdefghijklmno", "..aaaaaaahhhhhhho"},
        sequence_row{{"and held for fifteen without boxes"}, "a................", "aaaaaaaaaaaaaaaa."},
        sequence_row{{"the seventh frame with boxes replaces at once"}, "aaaaaaab", "aaaaaaab"},
        sequence_row{{"the sixth does not"}, "aaaaaab", "aaaaaaa"},
        sequence_row{{"a late box replaces a held one"}, "a.........b", "aaaaaaaaaab"},
        sequence_row{{"one in the fifteenth held frame too"}, "a..............b", "aaaaaaaaaaaaaaab"},
        sequence_row{{"and one in the sixteenth is taken as it comes"}, "a...............b", "aaaaaaaaaaaaaaaab"},
        sequence_row{{"a new report follows an ended one at once"}, "a................b", "aaaaaaaaaaaaaaaa.b"},
        sequence_row{{"a box seen while frozen gives no more time"}, "a.....a..........", "aaaaaaaaaaaaaaaa."},
        sequence_row{
            {"a box seen later starts the time again"}, "a......a................", "aaaaaaaaaaaaaaaaaaaaaaa."},
        sequence_row{{"every seventh box is told"}, "abcdefghijklmnopqrstuvwxyz", "aaaaaaahhhhhhhooooooovvvvv"},
        sequence_row{{"nothing stays nothing"}, "....................", "...................."}),
    row_name());

}  // namespace
