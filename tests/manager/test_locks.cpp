// Every mutex call of the library, seen from outside: no lock is taken twice, given back unheld, held together with
// another, or left behind.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/rows.h"

namespace {

// What happened to the mutexes since the watch began. One thread only.
struct lock_watch {
    bool on = false;
    std::map<pthread_mutex_t*, bool> held;  // those that exist
    int held_count = 0;
    int most_held = 0;
    int locks = 0;
    std::vector<std::string> faults;

    void fault(const char* what) { faults.push_back(what); }
};

lock_watch watch;

}  // namespace

extern "C" {
int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __real_pthread_mutex_destroy(pthread_mutex_t* mutex);

int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
    if (watch.on) {
        if (attributes != nullptr) watch.fault("attributes are not the default");
        if (!watch.held.emplace(mutex, false).second) watch.fault("created twice");
    }
    return __real_pthread_mutex_init(mutex, attributes);
}

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (watch.on) {
        const auto found = watch.held.find(mutex);
        if (found == watch.held.end()) {
            watch.fault("locked without being there");
        } else {
            if (found->second) watch.fault("locked twice");
            found->second = true;
            watch.most_held = std::max(watch.most_held, ++watch.held_count);
            ++watch.locks;
        }
    }
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    if (watch.on) {
        const auto found = watch.held.find(mutex);
        if (found == watch.held.end() || !found->second) {
            watch.fault("unlocked without being locked");
        } else {
            found->second = false;
            --watch.held_count;
        }
    }
    return __real_pthread_mutex_unlock(mutex);
}

int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex) {
    if (watch.on) {
        const auto found = watch.held.find(mutex);
        if (found == watch.held.end()) {
            watch.fault("destroyed without being there");
        } else {
            if (found->second) watch.fault("destroyed while locked");
            watch.held.erase(found);
        }
    }
    return __real_pthread_mutex_destroy(mutex);
}
}

namespace {

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

void start(int count) {
    for (int i = 0; i < count; ++i) {
        int handle;
        ORVA_FireDetection_Start(&handle, k_whole);
    }
}

void frame(int handle, unsigned width) {
    support::nv21_picture picture(64, 64);
    fd_yuv_frame record = picture.frame();
    record.width = width;
    fd_result result;
    ORVA_FireDetection_SetFrame(handle, record, &result);
}

// locks: how often a mutex is taken between Init and UnInit, both included. UnInit asks each of the 128 handles.
struct scenario_row : support::named_row {
    std::function<void()> work;
    int locks;
};

class locks : public testing::TestWithParam<scenario_row> {};

TEST_P(locks, are_taken_one_at_a_time_and_given_back) {
    watch = lock_watch();
    {
        support::captured_output unread;
        watch.on = true;
        ORVA_FireDetection_Init();
        GetParam().work();
        ORVA_FireDetection_UnInit();
        watch.on = false;
    }
    EXPECT_EQ(watch.faults, std::vector<std::string>());
    EXPECT_EQ(watch.held_count, 0);
    EXPECT_EQ(watch.most_held, 1);
    EXPECT_EQ(watch.held.size(), 0u) << "mutexes left";
    EXPECT_EQ(watch.locks, 128 + GetParam().locks);
}

INSTANTIATE_TEST_SUITE_P(
    table, locks,
    testing::Values(scenario_row{{"nothing"}, [] {}, 0},
                    // table and channel to start; channel and table to stop, in UnInit
                    scenario_row{{"a start"}, [] { start(1); }, 2 + 2},
                    scenario_row{{"three starts"}, [] { start(3); }, 6 + 6},
                    scenario_row{{"a start and a stop"}, [] { start(1), ORVA_FireDetection_Stop(0); }, 2 + 2},
                    scenario_row{{"129 starts"}, [] { start(129); }, 256 + 1 + 256},
                    // a frame and a grade take the table's lock and then the channel's
                    scenario_row{{"a frame"}, [] { start(1), frame(0, 64); }, 4 + 2},
                    scenario_row{{"a frame that is refused"}, [] { start(1), frame(0, 353); }, 4 + 2},
                    scenario_row{{"a frame for a free handle"}, [] { frame(5, 64); }, 1},
                    scenario_row{{"a frame for a bad handle"}, [] { frame(128, 64); }, 0},
                    scenario_row{{"a grade"}, [] { start(1), ORVA_FireDetection_SetSensitiveGrade(0, 50); }, 4 + 2},
                    scenario_row{{"a grade that is refused"},
                                 [] { start(1), ORVA_FireDetection_SetSensitiveGrade(0, 101); },
                                 4 + 2},
                    // no channel lock is there; freeing the handle takes the table's
                    scenario_row{{"a stop of a free handle"}, [] { ORVA_FireDetection_Stop(7); }, 1},
                    scenario_row{{"init twice"}, [] { ORVA_FireDetection_Init(); }, 0}),
    support::row_name());

}  // namespace
