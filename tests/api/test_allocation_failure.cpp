// Memory that cannot be had, request by request: the code or the exception that leaves the call, what is released, and
// that the library goes on.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstring>
#include <new>
#include <string>

#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "tests/api/failing_new.h"
#include "tests/support/capture.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"
#include "tests/support/scene.h"
#include "tests/support/test_access.h"

namespace {

using failing_new::kind;
using failing_new::live_blocks;
using failing_new::plan;
using orva_fd::CFireDetectionMngr;
using orva_fd::CGlobalObject;
using orva_fd::CMutex;
using orva_fd::test_access;
using support::nv21_picture;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

bool is_held(CMutex& mutex) {
    if (!test_access::created(mutex)) return false;
    if (pthread_mutex_trylock(&test_access::native(mutex)) != 0) return true;
    pthread_mutex_unlock(&test_access::native(mutex));
    return false;
}

int held_locks() {
    CFireDetectionMngr& manager = *CGlobalObject::Instance()->FireDetectionMan();
    int held = is_held(test_access::mutex(test_access::handles(manager)));
    for (int h = 0; h < 128; ++h) held += is_held(test_access::detector_mutex(manager, h));
    return held;
}

class allocation_failure : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(ORVA_FireDetection_Init(), 0);
        m_live_before = live_blocks();
    }
    void TearDown() override { ORVA_FireDetection_UnInit(); }

    // Starts a channel, one request of a kind failing. -1 means that an exception came out.
    int start(int& handle, kind which, long request) {
        support::captured_output unread;
        plan failing(which, request, 1);
        try {
            return ORVA_FireDetection_Start(&handle, k_whole);
        } catch (const std::bad_alloc&) {
            return -1;
        }
    }

    long m_live_before = 0;
};

// --- Start ----------------------------------------------------------------------------------------------------------

TEST_F(allocation_failure, each_of_the_four_buffers_gives_4_and_leaves_nothing_behind) {
    for (long request = 1; request <= 4; ++request) {
        int handle = 77;
        EXPECT_EQ(start(handle, kind::nothrow, request), 4) << request;
        EXPECT_EQ(handle, 77) << request;
        EXPECT_EQ(live_blocks(), m_live_before) << request;
        EXPECT_EQ(held_locks(), 0) << request;
    }
    int handle = 77;
    EXPECT_EQ(start(handle, kind::nothrow, 5), 0) << "there are four";
    EXPECT_EQ(handle, 0) << "the failures took no handle";
}

// The channel object, and whatever else the start obtains in a way that may throw.
TEST_F(allocation_failure, a_channel_object_that_cannot_be_had_throws_and_leaves_nothing_behind) {
    int thrown = 0;
    for (long request = 1; request <= 100; ++request) {
        int handle = 77;
        const int code = start(handle, kind::throwing, request);
        if (code == 0) {
            EXPECT_EQ(handle, 0) << "the failures took no handle";
            break;
        }
        ++thrown;
        ASSERT_EQ(code, -1) << request;
        ASSERT_EQ(handle, 77) << request;
        ASSERT_EQ(live_blocks(), m_live_before) << request;
        ASSERT_EQ(held_locks(), 0) << request;
    }
    EXPECT_GE(thrown, 1);
    EXPECT_LT(thrown, 100);
}

TEST_F(allocation_failure, a_start_that_found_no_handle_gives_its_channel_back) {
    int handle = -1;
    for (int i = 0; i < 128; ++i) ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    const long live = live_blocks();
    EXPECT_EQ(start(handle, kind::any, 1000), 8);
    EXPECT_EQ(live_blocks(), live);
}

TEST_F(allocation_failure, stop_and_un_init_give_everything_back) {
    int handle = -1;
    for (int i = 0; i < 3; ++i) ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    EXPECT_EQ(ORVA_FireDetection_Stop(1), 0);
    EXPECT_EQ(ORVA_FireDetection_UnInit(), 0);
    EXPECT_EQ(live_blocks(), m_live_before);
    ASSERT_EQ(ORVA_FireDetection_Init(), 0);
}

// --- SetFrame -------------------------------------------------------------------------------------------------------

int set_frame(int handle, nv21_picture& picture, fd_result& result) {
    try {
        return ORVA_FireDetection_SetFrame(handle, picture.frame(), &result);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

// Each request of each frame fails once; a frame that asks for nothing runs untouched.
TEST_F(allocation_failure, a_frame_throws_if_and_only_if_a_request_fails_and_the_channel_goes_on) {
    int handle = -1;
    nv21_picture picture(64, 64);
    const long live = live_blocks();
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    int number = 0;
    for (int round = 0; round < 60; ++round) {
        bool untouched = false;
        for (long request = 1; !untouched; ++request) {
            support::paint_flame_frame(picture, ++number, 10, 10);
            fd_result result;
            int code = 0;
            {
                plan failing(kind::any, request, 1);
                code = set_frame(handle, picture, result);
                untouched = failing.failures() == 0;
            }
            ASSERT_EQ(code, untouched ? 0 : -1) << "round " << round << ", request " << request;
            ASSERT_EQ(held_locks(), 0) << "round " << round << ", request " << request;
        }
    }
    ASSERT_EQ(ORVA_FireDetection_Stop(handle), 0);
    ASSERT_EQ(live_blocks(), live);
}

// Start obtains everything: noise with as many components as there can be, and flames up to a report and beyond it.
TEST_F(allocation_failure, no_frame_asks_for_memory) {
    int handle = -1;
    nv21_picture picture(352, 288);
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0);
    support::random_source random;
    long requests = 0;
    int reported = 0;
    for (int number = 1; number <= 140; ++number) {
        support::paint_flame_frame(picture, number, 100, 60);
        // Single blocks that move, ever more of them.
        for (int spot = 0; spot < number * number; ++spot) {
            const int x = 2 * random.below(176), y = 2 * random.below(144);
            if (number > 70) picture.paint(x, y, 2, 2, 200 + random.below(56), support::k_flame_u, support::k_flame_v);
        }
        fd_result result;
        support::captured_output unread;
        plan counting(kind::any, failing_new::k_all_after, 0);
        ORVA_FireDetection_SetFrame(handle, picture.frame(), &result);
        requests += counting.requests();
        reported += result.count;
    }
    EXPECT_EQ(requests, 0);
    EXPECT_GT(reported, 0);
}

// --- the fault loop -------------------------------------------------------------------------------------------------

// Channels, frames up to a report, a second region, a grade: what a host does in its life, on small pictures. Codes and
// exceptions do not stop it.
void scenario(nv21_picture& picture, nv21_picture& other) {
    ORVA_FireDetection_Init();
    int handles[2] = {-1, -1};
    for (int& handle : handles) {
        try {
            ORVA_FireDetection_Start(&handle, k_whole);
        } catch (const std::bad_alloc&) {
        }
    }
    ORVA_FireDetection_SetSensitiveGrade(handles[0], 100);
    fd_result result;
    for (int number = 1; number <= 53; ++number) {
        support::paint_flame_frame(picture, number, 10, 10);
        set_frame(handles[0], picture, result);
        if (number % 10 == 0) set_frame(handles[1], other, result);
    }
    ORVA_FireDetection_Stop(handles[0]);
}

struct loop_row : support::named_row {
    long count;
};

class fault_loop : public testing::TestWithParam<loop_row> {};

TEST_P(fault_loop, leaves_no_lock_no_block_and_a_usable_library) {
    nv21_picture picture(64, 64), other(32, 32);
    CGlobalObject::Instance();
    ORVA_FireDetection_Init();
    ORVA_FireDetection_UnInit();
    const long live = live_blocks();
    for (long request = 1;; request += 1 + request / 8) {
        bool untouched = false;
        int locks_held = 0;
        {
            support::captured_output unread;
            plan failing(kind::any, request, GetParam().count);
            scenario(picture, other);
            untouched = failing.failures() == 0;
            locks_held = held_locks();
            ORVA_FireDetection_UnInit();
        }
        ASSERT_EQ(locks_held, 0) << "request " << request;
        ASSERT_EQ(live_blocks(), live) << "request " << request;
        int handle = -1;
        fd_result result;
        ASSERT_EQ(ORVA_FireDetection_Init(), 0);
        ASSERT_EQ(ORVA_FireDetection_Start(&handle, k_whole), 0) << "request " << request;
        ASSERT_EQ(handle, 0) << "request " << request;
        ASSERT_EQ(set_frame(handle, other, result), 0) << "request " << request;
        ASSERT_EQ(ORVA_FireDetection_UnInit(), 0);
        if (untouched) break;
    }
}

INSTANTIATE_TEST_SUITE_P(table, fault_loop,
                         testing::Values(loop_row{{"one request fails"}, 1},
                                         loop_row{{"all requests from one on fail"}, failing_new::k_all_after}),
                         support::row_name());

}  // namespace
