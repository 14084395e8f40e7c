// All 128 channels on 16 threads: frames, grades, starts and stops side by side, as far as the header allows, with a
// watch on every lock.
#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>
#include <vector>

#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "tests/manager/lock_watch.h"
#include "tests/support/images.h"
#include "tests/support/scene.h"

namespace {

using support::nv21_picture;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};
const int k_threads = 16;
const int k_channels_each = 8;
const int k_size = 32;  // of the pictures

// A small flame: squares of 8 and 12 pixels in turn around one centre, which dilation widens to 10 and 14. In 51 frames
// 26 small ones and 25 large ones:
//   left: (26 * (x + 1) + 25 * (x - 1) + 26) / 51 = x + 27 / 51 = x; top likewise
//   width: (26 * 10 + 25 * 14 + 26) / 51 = 636 / 51 = 12; height likewise
const int k_first_report = 51;
const int k_report_size = 12;

void paint_small_flame(nv21_picture& picture, int number, int x, int y) {
    picture.paint_all(support::k_background_luma, 128, 128);
    if (number % 2 == 1) {
        picture.paint(x + 2, y + 2, 8, 8, 200, support::k_flame_u, support::k_flame_v);
    } else {
        picture.paint(x, y, 12, 12, 240, support::k_flame_u, support::k_flame_v);
    }
}

// One channel of one thread: its flame, and what came of it.
struct watched_channel {
    int x = 0;
    int y = 0;
    int handle = -1;
    int frame = 0;
    int first_report = 0;
    fd_rect box = fd_rect();
    int failures = 0;

    void start() {
        failures += ORVA_FireDetection_Start(&handle, k_whole) != FD_OK;
        frame = 0;
        first_report = 0;
    }
    void stop() { failures += ORVA_FireDetection_Stop(handle) != FD_OK; }
    void grade(int value) { failures += ORVA_FireDetection_SetSensitiveGrade(handle, value) != FD_OK; }

    void see_next(nv21_picture& picture) {
        paint_small_flame(picture, ++frame, x, y);
        fd_result result = fd_result();
        failures += ORVA_FireDetection_SetFrame(handle, picture.frame(), &result) != FD_OK;
        if (first_report != 0 || result.count == 0) return;
        first_report = frame;
        box = result.rects[0];
    }
};

// One that other threads set grades on; it is stopped when they are done.
struct shared_channel {
    watched_channel channel;
    int grade_failures[k_threads] = {};
};

template <class Work>
void run_threads(Work work) {
    std::vector<std::thread> all;
    for (int i = 0; i < k_threads; ++i) {
        all.emplace_back([&work, i] {
            work(i);
            lock_watch::end_of_thread();
        });
    }
    for (std::thread& one : all) one.join();
}

class many_threads : public testing::Test {
protected:
    void SetUp() override {
        lock_watch::begin(orva_fd::CGlobalObject::Instance(), sizeof(orva_fd::CGlobalObject));
        ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
    }
    void TearDown() override {
        EXPECT_EQ(ORVA_FireDetection_UnInit(), FD_OK);
        lock_watch::end_of_thread();
        const lock_watch::report seen = lock_watch::end();
        EXPECT_GT(seen.locks, 0);
        EXPECT_EQ(seen.locked_twice, 0);
        EXPECT_EQ(seen.unlocked_unheld, 0);
        EXPECT_EQ(seen.held_with_another, 0);
        EXPECT_EQ(seen.threads_left_holding, 0);
    }
};

void expect_flame(const watched_channel& channel) {
    EXPECT_EQ(channel.failures, 0);
    EXPECT_EQ(channel.first_report, k_first_report);
    EXPECT_EQ(channel.box.x, channel.x);
    EXPECT_EQ(channel.box.y, channel.y);
    EXPECT_EQ(channel.box.width, k_report_size);
    EXPECT_EQ(channel.box.height, k_report_size);
}

// Every thread plays its eight channels in turn; each of them but the first is stopped and started anew at a time of
// its own, while the others' frames go on. The first one's grade is set by the next thread.
TEST_F(many_threads, each_of_128_channels_sees_its_own_flame_whatever_the_others_do) {
    std::vector<watched_channel> channels(k_threads * k_channels_each);
    std::vector<shared_channel> shared(k_threads);
    const auto one_of = [&](int thread, int i) -> watched_channel& {
        return i == 0 ? shared[static_cast<std::size_t>(thread)].channel
                      : channels[static_cast<std::size_t>(thread * k_channels_each + i)];
    };
    run_threads([&](int thread) {
        for (int i = 0; i < k_channels_each; ++i) {
            watched_channel& channel = one_of(thread, i);
            channel.x = 4 + 2 * (thread % 7);
            channel.y = 4 + 2 * i;
            channel.start();
        }
    });
    run_threads([&](int thread) {
        nv21_picture picture(k_size, k_size);
        shared_channel& neighbour = shared[static_cast<std::size_t>((thread + 1) % k_threads)];
        const int handle = neighbour.channel.handle;
        for (int step = 0; step < 80; ++step) {
            for (int i = 0; i < k_channels_each; ++i) {
                watched_channel& channel = one_of(thread, i);
                if (i > 0 && step == 3 * i) {
                    channel.stop();
                    channel.start();
                }
                if (i > 0 && step % 9 == i) channel.grade(step);
                if (channel.first_report == 0) channel.see_next(picture);
            }
            neighbour.grade_failures[thread] += ORVA_FireDetection_SetSensitiveGrade(handle, step) != FD_OK;
        }
    });
    for (int thread = 0; thread < k_threads; ++thread) {
        SCOPED_TRACE(testing::Message() << "thread " << thread);
        for (int i = 0; i < k_channels_each; ++i) expect_flame(one_of(thread, i));
        for (const int failures : shared[static_cast<std::size_t>(thread)].grade_failures) EXPECT_EQ(failures, 0);
    }
    run_threads([&](int thread) {
        for (int i = 0; i < k_channels_each; ++i) one_of(thread, i).stop();
    });
    int handle = -1;
    EXPECT_EQ(ORVA_FireDetection_Start(&handle, k_whole), FD_OK);
    EXPECT_EQ(handle, 0) << "all handles are free again";
}

// A start may be given the handle that another thread is just stopping, and must find nothing left of it.
TEST_F(many_threads, starts_and_stops_of_different_handles_do_not_meet) {
    int failures[k_threads] = {};
    run_threads([&](int thread) {
        for (int n = 0; n < 60; ++n) {
            int handle = -1;
            failures[thread] += ORVA_FireDetection_Start(&handle, k_whole) != FD_OK;
            failures[thread] += ORVA_FireDetection_SetSensitiveGrade(handle, n % 101) != FD_OK;
            failures[thread] += ORVA_FireDetection_Stop(handle) != FD_OK;
        }
    });
    for (const int count : failures) EXPECT_EQ(count, 0);
}

// The watch itself, on mutexes of the test's own.
class lock_watching : public testing::Test {
protected:
    lock_watching() {
        for (pthread_mutex_t& mutex : m_mutexes) pthread_mutex_init(&mutex, nullptr);
        lock_watch::begin(m_mutexes, sizeof m_mutexes);
    }
    ~lock_watching() override {
        lock_watch::end();
        for (pthread_mutex_t& mutex : m_mutexes) pthread_mutex_destroy(&mutex);
    }

    pthread_mutex_t m_mutexes[2];
};

TEST_F(lock_watching, two_locks_held_together_are_reported) {
    pthread_mutex_lock(&m_mutexes[0]);
    pthread_mutex_lock(&m_mutexes[1]);
    lock_watch::end_of_thread();
    pthread_mutex_unlock(&m_mutexes[0]);
    pthread_mutex_unlock(&m_mutexes[1]);
    const lock_watch::report seen = lock_watch::end();
    EXPECT_EQ(seen.locks, 2);
    EXPECT_EQ(seen.held_with_another, 1);
    EXPECT_EQ(seen.threads_left_holding, 1);
    EXPECT_EQ(seen.locked_twice + seen.unlocked_unheld, 0);
}

TEST_F(lock_watching, a_lock_taken_twice_and_one_given_back_unheld_are_reported) {
    pthread_mutex_t twice;
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&twice, &recursive);
    pthread_mutex_lock(&twice);  // not seen yet
    lock_watch::begin(&twice, sizeof twice);
    pthread_mutex_unlock(&twice);
    pthread_mutex_lock(&twice);
    pthread_mutex_lock(&twice);
    pthread_mutex_unlock(&twice);
    pthread_mutex_unlock(&twice);
    const lock_watch::report seen = lock_watch::end();
    pthread_mutex_destroy(&twice);
    pthread_mutexattr_destroy(&recursive);
    EXPECT_EQ(seen.locked_twice, 1);
    EXPECT_EQ(seen.unlocked_unheld, 1);
}

}  // namespace
