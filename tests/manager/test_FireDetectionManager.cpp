// The manager: handles and channels through their whole life, every trace that it prints, and the states that calls
// alone do not reach.
#include "manager/FireDetectionManager.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "preprocess/CYuv420_Rgb.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/log_text.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::CFireDetectionMngr;
using orva_fd::frame_process;
using orva_fd::test_access;
using support::both_without_mutex;
using support::nv21_picture;
using support::outcome;
using support::outcome_of;
using support::output_of;
using support::release_without_mutex;
using support::repeated;
using support::wait_without_mutex;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

const char k_close_failed[] = "[Fire Detection: Mutex: Close] 59 entered \n";
const char k_stop_close_failed[] = "[Fire Detection: FireDetectionManager: Stop] 115 entered \n";
const char k_create_failed[] = "[Fire Detection: Mutex: Create] 37 entered \n";
const char k_start_mutex_exists[] = "[Fire Detection: FireDetectionManager: Start] 84 entered \n";
const char k_frame_not_busy[] = "[Fire Detection: FireDetectionManager: FireDetectionMain] 124 entered \n";
const char k_grade_not_busy[] = "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 151 entered \n";

class CFireDetectionMngr_test : public testing::Test {
protected:
    static void SetUpTestSuite() {
        orva_fd::fd_table::init();
        orva_fd::pre_process::init();
        orva_fd::CYuv420_Rgb::init();
    }
    void SetUp() override { ASSERT_EQ(m_manager.Init(), 0); }
    // Also releases what a test left unreachable.
    void TearDown() override {
        support::captured_output unread;
        for (int h = 0; h < 128; ++h) {
            int handle = h;
            if (channel(h) != nullptr || lock_exists(h)) m_manager.Stop(handle);
        }
        m_manager.Destroy();
    }

    int start(int from = -1) {
        int handle = from;
        EXPECT_EQ(m_manager.Start(handle, k_whole), 0);
        return handle;
    }
    outcome try_start(int& handle) {
        return outcome_of([&] { return m_manager.Start(handle, k_whole); });
    }
    outcome stop(int handle) {
        return outcome_of([&] { return m_manager.Stop(handle); });
    }
    outcome set_frame(int handle, fd_yuv_frame frame, fd_result& result) {
        return outcome_of([&] { return m_manager.FireDetectionMain(handle, frame, result); });
    }
    outcome set_grade(int handle, int grade) {
        return outcome_of([&] { return m_manager.SetSensitiveGrade(handle, grade); });
    }

    int flag(int h) { return test_access::busy(test_access::handles(m_manager))[h]; }
    frame_process*& channel(int h) { return test_access::detector(m_manager, h); }
    bool lock_exists(int h) { return test_access::created(test_access::detector_mutex(m_manager, h)); }
    bool table_lock_exists() { return test_access::created(test_access::mutex(test_access::handles(m_manager))); }
    bool is_free(int h) { return flag(h) == 0 && channel(h) == nullptr && !lock_exists(h); }
    bool is_running(int h) { return flag(h) == 1 && channel(h) != nullptr && lock_exists(h); }

    CFireDetectionMngr m_manager;
};

// --- Init and Destroy -----------------------------------------------------------------------------------------------

TEST(CFireDetectionMngr_new, holds_nothing) {
    CFireDetectionMngr manager;
    EXPECT_EQ(test_access::handle_num(test_access::handles(manager)), 1000);
    for (int h = 0; h < 128; ++h) {
        EXPECT_EQ(test_access::detector(manager, h), nullptr) << h;
        EXPECT_FALSE(test_access::created(test_access::detector_mutex(manager, h))) << h;
    }
}

TEST_F(CFireDetectionMngr_test, init_makes_128_handles) {
    EXPECT_EQ(test_access::handle_num(test_access::handles(m_manager)), 128);
    EXPECT_TRUE(table_lock_exists());
    for (int h = 0; h < 128; ++h) EXPECT_TRUE(is_free(h)) << h;
}

TEST_F(CFireDetectionMngr_test, init_twice_fails_with_4_and_keeps_the_channels) {
    EXPECT_EQ(start(), 0);
    const outcome got = outcome_of([&] { return m_manager.Init(); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, std::string(k_create_failed) +
                            "INFO.[Fire Detection: Handledispather::Init: 44] \nCreateMutex failed \n"
                            "[Fire Detection: FireDetectionManager: Init] 23 entered \n");
    EXPECT_EQ(test_access::handle_num(test_access::handles(m_manager)), 128);
    EXPECT_TRUE(is_running(0));
}

TEST_F(CFireDetectionMngr_test, destroy_stops_exactly_the_running_channels) {
    for (int wanted = 0; wanted < 4; ++wanted) EXPECT_EQ(start(), wanted);
    EXPECT_EQ(stop(1).status, 0);
    const outcome got = outcome_of([&] { return m_manager.Destroy(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    for (int h = 0; h < 128; ++h) EXPECT_TRUE(is_free(h)) << h;
    EXPECT_FALSE(table_lock_exists());
    ASSERT_EQ(m_manager.Init(), 0);
}

TEST_F(CFireDetectionMngr_test, destroy_twice_warns_for_every_handle) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(m_manager.Destroy(), 0);
    const outcome got = outcome_of([&] { return m_manager.Destroy(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, repeated(both_without_mutex(), 128) + k_close_failed);
    ASSERT_EQ(m_manager.Init(), 0);
}

TEST_F(CFireDetectionMngr_test, init_after_destroy_works) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(m_manager.Destroy(), 0);
    const outcome got = outcome_of([&] { return m_manager.Init(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(start(), 0);
}

// What lies in a slot when the table opens is forgotten, not stopped.
TEST_F(CFireDetectionMngr_test, init_empties_every_slot) {
    EXPECT_EQ(m_manager.Destroy(), 0);
    frame_process first, last;
    channel(0) = &first;
    channel(127) = &last;
    const outcome got = outcome_of([&] { return m_manager.Init(); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    for (int h = 0; h < 128; ++h) EXPECT_TRUE(is_free(h)) << h;
}

// --- Start ----------------------------------------------------------------------------------------------------------

TEST_F(CFireDetectionMngr_test, start_installs_a_channel) {
    int handle = -5;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(handle, 0);
    EXPECT_TRUE(is_running(0));
    EXPECT_TRUE(is_free(1));
    const fd_rect& roi = test_access::roi(*channel(0));
    EXPECT_EQ(std::memcmp(&roi, &k_whole, sizeof roi), 0) << "the region is stored unchanged";
}

TEST_F(CFireDetectionMngr_test, gives_128_handles_in_order_and_refuses_the_129th) {
    for (int wanted = 0; wanted < 128; ++wanted) ASSERT_EQ(start(), wanted);
    int handle = 77;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 8);
    EXPECT_EQ(got.text,
              "[Fire Detection: Handledispather: CreateHandle] 86 entered \n"
              "[Fire Detection: FireDetectionManager: Start] 70 entered \n");
    EXPECT_EQ(handle, 77);
    for (int h = 0; h < 128; ++h) EXPECT_TRUE(is_running(h)) << h;
}

TEST_F(CFireDetectionMngr_test, gives_the_lowest_free_handle_again) {
    for (int wanted = 0; wanted < 8; ++wanted) ASSERT_EQ(start(), wanted);
    EXPECT_EQ(stop(5).status, 0);
    EXPECT_EQ(stop(2).status, 0);
    EXPECT_EQ(start(), 2);
    EXPECT_EQ(start(), 5);
    EXPECT_EQ(start(), 8);
}

// --- Stop -----------------------------------------------------------------------------------------------------------

TEST_F(CFireDetectionMngr_test, stop_frees_the_handle) {
    EXPECT_EQ(start(), 0);
    const outcome got = stop(0);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_TRUE(is_free(0));
}

TEST_F(CFireDetectionMngr_test, stop_of_a_handle_that_was_never_started_warns_and_returns_0) {
    for (const int h : {0, 5, 127}) {
        const outcome got = stop(h);
        EXPECT_EQ(got.status, 0) << h;
        EXPECT_EQ(got.text, both_without_mutex() + k_close_failed + k_stop_close_failed) << h;
    }
}

TEST_F(CFireDetectionMngr_test, stop_twice_is_stop_of_a_free_handle) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(stop(0).text, "");
    EXPECT_EQ(stop(0).text, both_without_mutex() + k_close_failed + k_stop_close_failed);
}

// --- frames and grades ----------------------------------------------------------------------------------------------

fd_result marked_result() {
    fd_result result;
    std::memset(&result, 0x5a, sizeof result);
    return result;
}

bool is_marked(const fd_result& result) {
    const fd_result marked = marked_result();
    return std::memcmp(&result, &marked, sizeof result) == 0;
}

TEST_F(CFireDetectionMngr_test, a_frame_reaches_its_channel) {
    EXPECT_EQ(start(), 0);
    nv21_picture picture(64, 64);
    fd_result result = marked_result();
    const outcome got = set_frame(0, picture.frame(), result);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(result.count, 0);
    EXPECT_TRUE(test_access::roi_size_known(*channel(0)));
}

TEST_F(CFireDetectionMngr_test, a_frame_for_a_free_handle_is_refused_with_2) {
    EXPECT_EQ(start(), 0);
    nv21_picture picture(64, 64);
    for (const int h : {1, 127}) {
        fd_result result = marked_result();
        const outcome got = set_frame(h, picture.frame(), result);
        EXPECT_EQ(got.status, 2) << h;
        EXPECT_EQ(got.text, k_frame_not_busy) << h;
        EXPECT_TRUE(is_marked(result)) << h;
    }
}

TEST_F(CFireDetectionMngr_test, a_frame_for_a_handle_out_of_range_is_refused_with_2) {
    nv21_picture picture(64, 64);
    for (const int h : {-1, 128, 1000}) {
        fd_result result = marked_result();
        const outcome got = set_frame(h, picture.frame(), result);
        EXPECT_EQ(got.status, 2) << h;
        EXPECT_EQ(got.text,
                  std::string("[Fire Detection: Handledispather: IsHandleBusy] 109 entered \n") + k_frame_not_busy)
            << h;
        EXPECT_TRUE(is_marked(result)) << h;
    }
}

TEST_F(CFireDetectionMngr_test, a_frame_that_the_channel_refuses_passes_its_code_up) {
    EXPECT_EQ(start(), 0);
    nv21_picture picture(64, 64);
    fd_yuv_frame frame = picture.frame();
    frame.width = 353;
    fd_result result = marked_result();
    const outcome got = set_frame(0, frame, result);
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text,
              "ERR. [Fire Detection: frame_process::set_frame : 78] \n"
              "[Fire Detection: FireDetectionManager: FireDetectionMain] 140 entered \n");
    EXPECT_TRUE(is_marked(result));
    // The lock was given back.
    EXPECT_EQ(set_frame(0, picture.frame(), result).status, 0);
}

TEST_F(CFireDetectionMngr_test, a_grade_reaches_its_channel) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(start(), 1);
    const outcome got = set_grade(1, 100);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(test_access::stable_thresh(test_access::analysis(*channel(1))), 30);
    EXPECT_EQ(test_access::stable_thresh(test_access::analysis(*channel(0))), 35);
}

TEST_F(CFireDetectionMngr_test, a_grade_for_a_free_handle_is_refused_with_2_even_if_it_is_bad) {
    for (const int grade : {50, 101}) {
        const outcome got = set_grade(3, grade);
        EXPECT_EQ(got.status, 2) << grade;
        EXPECT_EQ(got.text, k_grade_not_busy) << grade;
    }
}

TEST_F(CFireDetectionMngr_test, a_grade_that_the_channel_refuses_passes_its_code_up) {
    EXPECT_EQ(start(), 0);
    for (const int grade : {-1, 101}) {
        const outcome got = set_grade(0, grade);
        EXPECT_EQ(got.status, 7) << grade;
        EXPECT_EQ(got.text,
                  "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n"
                  "ERR. [Fire Detection: frame_process::set_sensitive : 67] \n"
                  "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 167 entered \n")
            << grade;
    }
    EXPECT_EQ(set_grade(0, 50).status, 0);
}

// --- reserved or stopping: the flag is set and no channel is there ---------------------------------------------------

TEST_F(CFireDetectionMngr_test, a_busy_handle_without_channel_refuses_frames_and_grades_with_2) {
    EXPECT_EQ(start(), 0);
    frame_process* const own = channel(0);
    channel(0) = nullptr;
    nv21_picture picture(64, 64);
    fd_result result = marked_result();
    const outcome frame = set_frame(0, picture.frame(), result);
    EXPECT_EQ(frame.status, 2);
    EXPECT_EQ(frame.text, "[Fire Detection: FireDetectionManager: FireDetectionMain] 131 entered \n");
    EXPECT_TRUE(is_marked(result));
    const outcome grade = set_grade(0, 101);
    EXPECT_EQ(grade.status, 2);
    EXPECT_EQ(grade.text, "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 159 entered \n");
    channel(0) = own;
    EXPECT_EQ(set_grade(0, 50).status, 0) << "the lock was given back";
}

TEST_F(CFireDetectionMngr_test, a_busy_handle_without_lock_warns_around_the_work) {
    EXPECT_EQ(start(), 0);
    ASSERT_TRUE(test_access::detector_mutex(m_manager, 0).Close());
    nv21_picture picture(64, 64);
    fd_yuv_frame bad = picture.frame();
    bad.height = 289;
    fd_result result = marked_result();
    EXPECT_EQ(set_frame(0, bad, result).text,
              wait_without_mutex() + "ERR. [Fire Detection: frame_process::set_frame : 78] \n" +
                  "[Fire Detection: FireDetectionManager: FireDetectionMain] 140 entered \n" + release_without_mutex());
    EXPECT_EQ(set_grade(0, 50).text, both_without_mutex());
    channel(0)->stop();
    EXPECT_EQ(stop(0).text, both_without_mutex() + k_close_failed + k_stop_close_failed);
    EXPECT_TRUE(is_free(0));
}

// --- a channel left in a slot whose flag is free --------------------------------------------------------------------

TEST_F(CFireDetectionMngr_test, start_on_an_occupied_slot_stops_the_old_channel_and_leaves_the_flag_clear) {
    EXPECT_EQ(start(), 0);
    frame_process* const old = channel(0);
    test_access::busy(test_access::handles(m_manager))[0] = 0;
    int handle = -1;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "") << "the old lock existed and was closed without a word";
    EXPECT_EQ(handle, 0);
    EXPECT_NE(channel(0), nullptr);
    EXPECT_NE(channel(0), old);
    EXPECT_TRUE(lock_exists(0));
    EXPECT_EQ(flag(0), 0) << "the full stop cleared it and nobody set it again";

    nv21_picture picture(64, 64);
    fd_result result = marked_result();
    const outcome frame = set_frame(0, picture.frame(), result);
    EXPECT_EQ(frame.status, 2);
    EXPECT_EQ(frame.text, k_frame_not_busy);
    // Nor does Destroy see it.
    EXPECT_EQ(m_manager.Destroy(), 0);
    EXPECT_NE(channel(0), nullptr);
    ASSERT_EQ(test_access::mutex(test_access::handles(m_manager)).Create(), true);
}

TEST_F(CFireDetectionMngr_test, start_on_an_occupied_slot_without_lock_prints_the_whole_stop) {
    EXPECT_EQ(start(), 0);
    test_access::busy(test_access::handles(m_manager))[0] = 0;
    ASSERT_TRUE(test_access::detector_mutex(m_manager, 0).Close());
    int handle = -1;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, both_without_mutex() + k_close_failed + k_stop_close_failed);
    EXPECT_EQ(handle, 0);
    EXPECT_NE(channel(0), nullptr);
    EXPECT_TRUE(lock_exists(0));
    EXPECT_EQ(flag(0), 0);
}

// --- a lock left created --------------------------------------------------------------------------------------------

TEST_F(CFireDetectionMngr_test, start_on_a_lock_left_created_tears_the_table_down) {
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(start(), 1);
    ASSERT_TRUE(test_access::detector_mutex(m_manager, 2).Create());
    int handle = 44;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 3);
    EXPECT_EQ(got.text, std::string(k_create_failed) + k_start_mutex_exists);
    EXPECT_EQ(handle, 44);
    EXPECT_FALSE(table_lock_exists());
    EXPECT_EQ(channel(2), nullptr);
    for (int h = 0; h < 128; ++h) EXPECT_EQ(flag(h), 0) << h;
    // The other channels are still there and out of reach.
    EXPECT_NE(channel(0), nullptr);
    EXPECT_NE(channel(1), nullptr);
    nv21_picture picture(64, 64);
    fd_result result = marked_result();
    EXPECT_EQ(set_frame(0, picture.frame(), result).text, both_without_mutex() + k_frame_not_busy);
    EXPECT_EQ(set_grade(1, 50).text, both_without_mutex() + k_grade_not_busy);
    // A stop still reaches them, since it asks for no flag.
    EXPECT_EQ(stop(0).text, both_without_mutex());
    EXPECT_EQ(channel(0), nullptr);
    EXPECT_FALSE(lock_exists(0));
}

TEST_F(CFireDetectionMngr_test, the_teardown_without_a_table_lock_says_so) {
    ASSERT_EQ(m_manager.Destroy(), 0);
    ASSERT_TRUE(test_access::detector_mutex(m_manager, 0).Create());
    int handle = 44;
    const outcome got = try_start(handle);
    EXPECT_EQ(got.status, 3);
    EXPECT_EQ(got.text, both_without_mutex() + k_create_failed + k_start_mutex_exists + k_close_failed);
    EXPECT_EQ(handle, 44);
    ASSERT_EQ(m_manager.Init(), 0);
}

TEST_F(CFireDetectionMngr_test, after_the_teardown_the_next_init_makes_the_table_usable) {
    ASSERT_TRUE(test_access::detector_mutex(m_manager, 0).Create());
    int handle = -1;
    EXPECT_EQ(try_start(handle).status, 3);
    EXPECT_EQ(stop(0).text, both_without_mutex()) << "closes the lock that was left";
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(start(), 0);
    EXPECT_TRUE(is_running(0));
}

TEST_F(CFireDetectionMngr_test, the_slot_is_looked_at_before_the_lock) {
    EXPECT_EQ(start(), 0);
    test_access::busy(test_access::handles(m_manager))[0] = 0;
    // Both a channel and its lock are left: the stop closes the lock, and no teardown follows.
    int handle = -1;
    EXPECT_EQ(try_start(handle).status, 0);
    EXPECT_TRUE(table_lock_exists());
}

// --- channel objects ------------------------------------------------------------------------------------------------

TEST_F(CFireDetectionMngr_test, makes_and_deletes_channel_objects) {
    frame_process* const made = m_manager.newDetector();
    ASSERT_NE(made, nullptr);
    const outcome got = outcome_of([&] { return m_manager.delDetector(made); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
}

TEST_F(CFireDetectionMngr_test, refuses_to_delete_nothing_with_7) {
    const outcome got = outcome_of([&] { return m_manager.delDetector(nullptr); });
    EXPECT_EQ(got.status, 7);
    EXPECT_EQ(got.text, "[Fire Detection: FireDetectionManager: delDetector] 182 entered \n");
}

}  // namespace
