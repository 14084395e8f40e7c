// Several threads at once: channels run side by side, starts give different handles, one channel takes turns.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/support/capture.h"
#include "tests/support/scene.h"

namespace {

using support::nv21_picture;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};
const int k_threads = 8;

class threads : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(ORVA_FireDetection_Init(), 0); }
    void TearDown() override { EXPECT_EQ(ORVA_FireDetection_UnInit(), 0); }

    template <class Work>
    void run(int count, Work work) {
        std::vector<std::thread> all;
        for (int i = 0; i < count; ++i) all.emplace_back(work, i);
        for (std::thread& one : all) one.join();
    }
};

// What one channel saw: the frame of its first report and where the box was.
struct report {
    int frame = 0;
    int x = 0;
    int y = 0;
    int bad_codes = 0;
};

report watch_flame(int handle, int x, int y) {
    report seen;
    nv21_picture picture(176, 144);
    for (int number = 1; number <= 60; ++number) {
        support::paint_flame_frame(picture, number, x, y);
        fd_result result;
        if (ORVA_FireDetection_SetFrame(handle, picture.frame(), &result) != 0) ++seen.bad_codes;
        if (seen.frame == 0 && result.count > 0) seen = {number, result.rects[0].x, result.rects[0].y, seen.bad_codes};
    }
    return seen;
}

void expect_flame(const report& seen, int x, int y) {
    EXPECT_EQ(seen.bad_codes, 0);
    EXPECT_EQ(seen.frame, support::k_first_report);
    EXPECT_EQ(seen.x, x + support::k_report_shift);
    EXPECT_EQ(seen.y, y + support::k_report_shift);
}

TEST_F(threads, one_thread_sees_its_flame) {
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    expect_flame(watch_flame(handle, 40, 40), 40, 40);
}

TEST_F(threads, eight_threads_on_eight_channels_see_their_own_flames) {
    report seen[k_threads];
    int handles[k_threads], bad_stops[k_threads];
    run(k_threads, [&](int i) { ORVA_FireDetection_Start(&handles[i], k_whole); });
    run(k_threads, [&](int i) { seen[i] = watch_flame(handles[i], 20 + 10 * i, 30 + 6 * i); });
    run(k_threads, [&](int i) { bad_stops[i] = i % 2 == 0 && ORVA_FireDetection_Stop(handles[i]) != 0; });
    for (int i = 0; i < k_threads; ++i) {
        expect_flame(seen[i], 20 + 10 * i, 30 + 6 * i);
        EXPECT_EQ(bad_stops[i], 0);
    }
}

TEST_F(threads, starts_at_the_same_time_give_different_handles) {
    std::vector<int> handles[k_threads];
    run(k_threads, [&](int i) {
        for (int n = 0; n < 16; ++n) {
            int handle = -1;
            ORVA_FireDetection_Start(&handle, k_whole);
            handles[i].push_back(handle);
        }
    });
    std::set<int> different;
    for (const std::vector<int>& some : handles) different.insert(some.begin(), some.end());
    EXPECT_EQ(different.size(), 128u);
    EXPECT_EQ(*different.begin(), 0);
    EXPECT_EQ(*different.rbegin(), 127);
}

TEST_F(threads, start_and_stop_run_beside_frames_of_other_channels) {
    int watched = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&watched, k_whole), 0);
    report seen;
    int failures = 0;
    run(2, [&](int i) {
        if (i == 0) {
            seen = watch_flame(watched, 40, 40);
            return;
        }
        for (int n = 0; n < 100; ++n) {
            int handle = -1;
            failures += ORVA_FireDetection_Start(&handle, k_whole) != 0;
            failures += ORVA_FireDetection_SetSensitiveGrade(handle, n) != 0;
            failures += ORVA_FireDetection_Stop(handle) != 0;
        }
    });
    expect_flame(seen, 40, 40);
    EXPECT_EQ(failures, 0);
}

TEST_F(threads, frames_and_grades_on_one_channel_take_turns) {
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    int failures[4] = {0, 0, 0, 0};
    run(4, [&](int i) {
        nv21_picture picture(64, 64);
        for (int n = 1; n <= 100; ++n) {
            support::paint_flame_frame(picture, n, 10, 10);
            fd_result result;
            failures[i] += i == 0 ? ORVA_FireDetection_SetSensitiveGrade(handle, n) != 0
                                  : ORVA_FireDetection_SetFrame(handle, picture.frame(), &result) != 0;
        }
    });
    for (const int count : failures) EXPECT_EQ(count, 0);
}

// A free handle may be asked while others start and stop: it answers 2, or is somebody's by now.
TEST_F(threads, frames_for_handles_that_come_and_go_are_answered) {
    int other_codes = 0;
    auto unread = std::make_unique<support::captured_output>();
    run(2, [&](int i) {
        nv21_picture picture(32, 32);
        for (int n = 0; n < 200; ++n) {
            if (i == 0) {
                fd_result result;
                const int code = ORVA_FireDetection_SetFrame(100, picture.frame(), &result);
                other_codes += code != 2;
            } else {
                int handle = -1;
                ORVA_FireDetection_Start(&handle, k_whole);
                ORVA_FireDetection_Stop(handle);
            }
        }
    });
    unread.reset();
    EXPECT_EQ(other_codes, 0);
}

}  // namespace
