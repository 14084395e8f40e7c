// The plain twin against values worked out by hand: the six calls, handles, and the text that they print.
#include <gtest/gtest.h>

#include <string>

#include "tests/reference/ref_library.h"
#include "tests/reference/reference_rows.h"

namespace {

using ref::branch;
using ref_test::k_whole;
using ref_test::row_name;

// --- calls and their text -------------------------------------------------------------------------------------------

std::string api_line(const char* function, int line) {
    return "[Fire Detection: FireDetection_Api: ORVA_FireDetection_" + std::string(function) + "] " +
           std::to_string(line) + " entered \n";
}

TEST(reference_calls, before_initialisation_are_refused_first_of_all) {
    ref::library library;
    EXPECT_EQ(library.un_init(), 1);
    EXPECT_EQ(library.start(nullptr, fd_rect{}), 1);
    EXPECT_EQ(library.stop(-1), 1);
    EXPECT_EQ(library.set_frame(-1, fd_yuv_frame{}, nullptr), 1);
    EXPECT_EQ(library.set_sensitive_grade(-1, -1), 1);
    EXPECT_EQ(library.log(), api_line("UnInit", 24) + api_line("Start", 36) + api_line("Stop", 83) +
                                 api_line("SetFrame", 105) + api_line("SetSensitiveGrade", 127));
}

TEST(reference_calls, twice_initialised_and_twice_torn_down) {
    ref::library library;
    EXPECT_EQ(library.init(), 0);
    EXPECT_EQ(library.init(), 3);
    EXPECT_EQ(library.un_init(), 0);
    EXPECT_EQ(library.un_init(), 1);
    EXPECT_EQ(library.init(), 0);
    EXPECT_EQ(library.log(), api_line("Init", 10) + api_line("UnInit", 24));
}

struct start_row {
    const char* name;
    fd_rect region;
    int line;  // 0: accepted
};

class reference_start : public testing::TestWithParam<start_row> {};

TEST_P(reference_start, checks_the_region) {
    ref::library library;
    library.init();
    int handle = 77;
    const int line = GetParam().line;
    EXPECT_EQ(library.start(&handle, GetParam().region), line == 0 ? 0 : 7);
    EXPECT_EQ(handle, line == 0 ? 0 : 77);
    EXPECT_EQ(library.log(), line == 0 ? "" : api_line("Start", line));
}

INSTANTIATE_TEST_SUITE_P(
    rows, reference_start,
    testing::Values(start_row{"the whole picture", {0, 100, 0, 100, 100, 100, 100, 100}, 0},
                    start_row{"no x reference", {0, 0, 0, 100, 100, 100, 100, 100}, 48},
                    start_row{"no y reference", {0, 100, 0, 0, 100, 100, 100, 100}, 48},
                    start_row{"no width reference", {0, 100, 0, 100, 100, 0, 100, 100}, 48},
                    start_row{"no height reference", {0, 100, 0, 100, 100, 100, 100, 0}, 48},
                    start_row{"too far right", {1, 100, 0, 100, 100, 100, 100, 100}, 59},
                    start_row{"no width", {0, 100, 0, 100, 0, 100, 50, 100}, 59},
                    start_row{"a width of one and a hundredth", {0, 100, 0, 100, 101, 100, 50, 100}, 59},
                    start_row{"x equal to its reference", {100, 100, 0, 100, 50, 100, 50, 100}, 59},
                    start_row{"x of 40000 in 50000", {40000, 50000, 0, 100, 10, 100, 50, 100}, 59},
                    start_row{"x of 32767 in 65535", {32767, 65535, 0, 100, 10, 100, 50, 100}, 0},
                    start_row{"a width of 40000 in 50000", {0, 100, 0, 100, 40000, 50000, 50, 100}, 59},
                    start_row{"the smallest width", {0, 100, 0, 100, 1, 65535, 50, 100}, 0},
                    start_row{"too far down", {0, 100, 1, 100, 100, 100, 100, 100}, 64},
                    start_row{"no height", {0, 100, 0, 100, 50, 100, 0, 100}, 64},
                    start_row{"both wrong", {1, 100, 1, 100, 100, 100, 100, 100}, 59}),
    row_name<start_row>);

TEST(reference_calls, need_a_place_for_the_handle) {
    ref::library library;
    library.init();
    EXPECT_EQ(library.start(nullptr, fd_rect{}), 7);
    EXPECT_EQ(library.log(), api_line("Start", 41));
}

TEST(reference_calls, answer_a_handle_out_of_range_each_in_its_own_way) {
    ref::library library;
    library.init();
    for (const int handle : {-1, 128}) {
        EXPECT_EQ(library.stop(handle), 7);
        EXPECT_EQ(library.set_frame(handle, fd_yuv_frame{}, nullptr), 9);
        EXPECT_EQ(library.set_sensitive_grade(handle, 50), 9);
        EXPECT_EQ(library.take_log(),
                  api_line("Stop", 89) + api_line("SetFrame", 111) + api_line("SetSensitiveGrade", 134));
    }
}

const char k_missing_lock[] =
    "WARN.[Fire Detection: Mutex::Wait : 79] \nmutex not create\n"
    "WARN.[Fire Detection: Mutex::Release : 115] \nmutex not create\n";
const char k_missing_close[] = "[Fire Detection: Mutex: Close] 59 entered \n";

TEST(reference_calls, on_a_handle_never_started) {
    ref::library library;
    library.init();
    fd_result result{};
    EXPECT_EQ(library.stop(127), 0);
    EXPECT_EQ(library.take_log(), std::string(k_missing_lock) + k_missing_close +
                                      "[Fire Detection: FireDetectionManager: Stop] 115 entered \n");
    EXPECT_EQ(library.set_frame(5, fd_yuv_frame{}, &result), 2);
    EXPECT_EQ(library.set_sensitive_grade(5, 50), 2);
    EXPECT_EQ(library.take_log(), "[Fire Detection: FireDetectionManager: FireDetectionMain] 124 entered \n" +
                                      api_line("SetFrame", 117) +
                                      "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 151 entered \n" +
                                      api_line("SetSensitiveGrade", 140));
}

TEST(reference_calls, a_grade_out_of_range_is_traced_through_four_levels) {
    ref::library library;
    library.init();
    int handle = -1;
    library.start(&handle, k_whole);
    EXPECT_EQ(library.set_sensitive_grade(handle, 100), 0);
    EXPECT_EQ(library.set_sensitive_grade(handle, 101), 7);
    EXPECT_EQ(library.channel_of(handle)->boxes().stable_thresh(), 30);
    EXPECT_EQ(library.log(),
              "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n"
              "ERR. [Fire Detection: frame_process::set_sensitive : 67] \n"
              "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 167 entered \n" +
                  api_line("SetSensitiveGrade", 140));
}

TEST(reference_handles, are_given_out_from_the_lowest_and_end_at_128) {
    ref::library library;
    library.init();
    int handle = -1;
    for (int h = 0; h < 128; ++h) {
        ASSERT_EQ(library.start(&handle, k_whole), 0);
        ASSERT_EQ(handle, h);
    }
    handle = 77;
    EXPECT_EQ(library.start(&handle, k_whole), 8);
    EXPECT_EQ(handle, 77);
    EXPECT_EQ(library.take_log(),
              "[Fire Detection: Handledispather: CreateHandle] 86 entered \n"
              "[Fire Detection: FireDetectionManager: Start] 70 entered \n" +
                  api_line("Start", 72));
    EXPECT_EQ(library.stop(5), 0);
    EXPECT_EQ(library.start(&handle, k_whole), 0);
    EXPECT_EQ(handle, 5);
    EXPECT_EQ(library.un_init(), 0);
    EXPECT_EQ(library.log(), "");
}

TEST(reference_handles, a_lock_left_behind_tears_the_table_down) {
    ref::library library;
    library.init();
    int handle = -1;
    library.start(&handle, k_whole);
    library.handles().slot_lock(1).leave_created();
    handle = 77;
    EXPECT_EQ(library.start(&handle, k_whole), 3);
    EXPECT_EQ(handle, 77);
    EXPECT_EQ(library.take_log(),
              "[Fire Detection: Mutex: Create] 37 entered \n"
              "[Fire Detection: FireDetectionManager: Start] 84 entered \n" +
                  api_line("Start", 72));
    fd_result result{};
    EXPECT_EQ(library.set_frame(0, fd_yuv_frame{}, &result), 2) << "the other channel cannot be reached any more";
    EXPECT_EQ(library.take_log(), std::string(k_missing_lock) +
                                      "[Fire Detection: FireDetectionManager: FireDetectionMain] 124 entered \n" +
                                      api_line("SetFrame", 117));
    EXPECT_EQ(library.un_init(), 0);
    std::string expected;
    for (int h = 0; h < 128; ++h) expected += k_missing_lock;
    EXPECT_EQ(library.take_log(), expected + k_missing_close);
}

TEST(reference_handles, a_channel_left_in_its_slot_is_stopped_and_takes_the_flag_with_it) {
    ref::library library;
    library.init();
    int handle = -1;
    library.start(&handle, k_whole);
    library.handles().table().set_flag(0, false);
    EXPECT_EQ(library.start(&handle, k_whole), 0);
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(library.log(), "");
    EXPECT_NE(library.channel_of(0), nullptr);
    fd_result result{};
    EXPECT_EQ(library.set_frame(0, fd_yuv_frame{}, &result), 2) << "the flag was not set back";
}

TEST(reference_handles, a_manager_initialised_twice_says_so) {
    ref::log_book log;
    ref::manager manager(log);
    EXPECT_EQ(manager.table().handle_num(), 1000);
    EXPECT_EQ(manager.init(), 0);
    EXPECT_EQ(manager.init(), 4);
    EXPECT_EQ(manager.table().handle_num(), 128);
    EXPECT_EQ(log.text(),
              "[Fire Detection: Mutex: Create] 37 entered \n"
              "INFO.[Fire Detection: Handledispather::Init: 44] \nCreateMutex failed \n"
              "[Fire Detection: FireDetectionManager: Init] 23 entered \n");
}

TEST(reference_counts, name_every_branch_and_key_every_line) {
    for (int b = 0; b < static_cast<int>(branch::count_of_branches); ++b) {
        EXPECT_STRNE(ref::name_of(static_cast<branch>(b)), "") << b;
    }
    EXPECT_FALSE(ref::reachable_through_interface(branch::verify_too_few_fire));
    EXPECT_FALSE(ref::reachable_through_interface(branch::stable_result_full));
    EXPECT_TRUE(ref::reachable_through_interface(branch::hold_limit_ended));
    ref::library library;
    library.un_init();
    EXPECT_EQ(library.book().lines("entered FireDetection_Api ORVA_FireDetection_UnInit 24"), 1);
    EXPECT_EQ(library.book().lines("entered FireDetection_Api ORVA_FireDetection_Init 10"), 0);
    EXPECT_EQ(ref::reachable_line_keys().size(), 32u);
}

}  // namespace
