// Memory that cannot be had, request by request: the code or the exception that leaves the call, what is released, and
// that the library goes on.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "tests/api/failing_new.h"
#include "tests/support/capture.h"
#include "tests/support/fault_steps.h"
#include "tests/support/held_locks.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"
#include "tests/support/scene.h"

namespace {

using failing_new::kind;
using failing_new::live_blocks;
using failing_new::plan;
using orva_fd::CGlobalObject;
using support::held_locks;
using support::nv21_picture;

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

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

const int k_channels = 3;
const int k_frames = 60;

// What one channel's calls came to; -1 stands for an exception.
struct channel_life {
    int start = 0;
    std::vector<std::pair<int, std::string>> frames;  // code, and the bytes of the result
};

// Three cameras of 64 x 48 pixels with a flame each.
int flame_place(int channel) {
    return 4 + 4 * channel;
}

int start_channel(int& handle) {
    const failing_new::pause no_more(false);
    try {
        return ORVA_FireDetection_Start(&handle, k_whole);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

// One frame; the second channel's picture is smaller from the 55th on.
std::pair<int, std::string> see_frame(int channel, int handle, int number) {
    nv21_picture picture(64, channel == 1 && number > 54 ? 46 : 48);
    support::paint_flame_frame(picture, number, flame_place(channel), 4);
    fd_result result;
    std::memset(&result, 0x5A, sizeof result);
    int code = 0;
    {
        const failing_new::pause no_more(false);
        code = set_frame(handle, picture, result);
    }
    return {code, std::string(reinterpret_cast<const char*>(&result), sizeof result)};
}

// All that a host does in its life: Init, three channels, frames until reports come and beyond, grades, another picture
// size, Stop, UnInit. A start that fails ends that channel only. locks: those held after any call.
std::vector<channel_life> host_life(int& locks) {
    const failing_new::pause own_requests;
    std::vector<channel_life> lives(k_channels);
    int handles[k_channels] = {-1, -1, -1};
    ORVA_FireDetection_Init();
    for (std::size_t i = 0; i < lives.size(); ++i) {
        lives[i].start = start_channel(handles[i]);
        locks += held_locks();
    }
    for (int number = 1; number <= k_frames; ++number) {
        for (int i = 0; i < k_channels; ++i) {
            channel_life& life = lives[static_cast<std::size_t>(i)];
            if (life.start != FD_OK) continue;
            if (number == 20 * i + 2) ORVA_FireDetection_SetSensitiveGrade(handles[i], 50 * i);
            life.frames.push_back(see_frame(i, handles[i], number));
        }
        if (number % 20 == 0) locks += held_locks();
    }
    if (lives[0].start == FD_OK) ORVA_FireDetection_Stop(handles[0]);
    locks += held_locks();
    ORVA_FireDetection_UnInit();
    return lives;
}

struct loop_row : support::named_row {
    long count;
};

class fault_loop : public testing::TestWithParam<loop_row> {
protected:
    void SetUp() override {
        support::captured_output unread;
        m_untroubled = host_life(m_locks);
        m_live = live_blocks();
    }

    // A host's life with requests failing from the given one on. Returns how many did.
    long live_with_failures(long request) {
        std::vector<channel_life> lives;
        long failures = 0;
        {
            support::captured_output unread;
            plan failing(kind::any, request, GetParam().count);
            lives = host_life(m_locks);
            failures = failing.failures();
        }
        int failed_starts = 0;
        for (std::size_t i = 0; i < lives.size(); ++i) {
            if (lives[i].start == FD_OK) {
                EXPECT_EQ(lives[i].frames, m_untroubled[i].frames) << "channel " << i;
                continue;
            }
            ++failed_starts;
            EXPECT_TRUE(lives[i].start == FD_PLATFORM_FAILED || lives[i].start == -1) << lives[i].start;
        }
        EXPECT_EQ(failed_starts > 0, failures > 0);
        if (GetParam().count == 1) {
            EXPECT_LE(failed_starts, 1);
        }
        return failures;
    }

    static void start_afresh() {
        int handle = -1;
        ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
        EXPECT_EQ(start_channel(handle), FD_OK);
        EXPECT_EQ(handle, 0);
        EXPECT_EQ(see_frame(0, handle, 1).first, FD_OK);
        EXPECT_EQ(ORVA_FireDetection_UnInit(), FD_OK);
    }

    std::vector<channel_life> m_untroubled;
    int m_locks = 0;
    long m_live = 0;
};

TEST_P(fault_loop, leaves_no_lock_no_block_the_other_channels_as_they_were_and_a_usable_library) {
    for (std::size_t i = 0; i < m_untroubled.size(); ++i) {
        const fd_result* report = reinterpret_cast<const fd_result*>(m_untroubled[i].frames[50].second.data());
        ASSERT_EQ(m_untroubled[i].frames[50].first, FD_OK);
        ASSERT_EQ(report->count, 1) << "the first report of channel " << i;
        ASSERT_EQ(report->rects[0].x, flame_place(static_cast<int>(i)) + support::k_report_shift);
        ASSERT_EQ(report->rects[0].width, support::k_report_size);
    }
    long request = 1;
    while (live_with_failures(request) > 0) {
        ASSERT_FALSE(HasFailure()) << "request " << request;
        ASSERT_EQ(m_locks, 0) << "request " << request;
        ASSERT_EQ(live_blocks(), m_live) << "request " << request;
        start_afresh();
        request += support::fault_step();
    }
    EXPECT_GT(request, 1) << "nothing could fail";
    EXPECT_EQ(live_blocks(), m_live);
    std::printf("%ld requests, every %ldth failed in turn\n", request - 1, support::fault_step());
}

INSTANTIATE_TEST_SUITE_P(table, fault_loop,
                         testing::Values(loop_row{{"one request fails"}, 1},
                                         loop_row{{"all requests from one on fail"}, failing_new::k_all_after}),
                         support::row_name());

}  // namespace
