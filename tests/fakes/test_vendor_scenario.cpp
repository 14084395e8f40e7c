// A host's whole life on the stand-in with vendor calls failing in turn: three channels, frames until reports come,
// grades, another picture size, Stop and UnInit. The other channels' results stay the same byte for byte, no buffer and
// no lock is left, and a fresh start works. Every 11th call, or each with ORVA_FAULTS=all.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/fakes/channel_pair.h"
#include "tests/fakes/chip_camera.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/capture.h"
#include "tests/support/fault_steps.h"
#include "tests/support/held_locks.h"
#include "tests/support/rows.h"

namespace {

using fakes::chip_camera;

const int k_channels = 3;
const int k_frames = 58;
const unsigned char k_unwritten = 0x5A;

struct seen_frame {
    int code;
    std::string result;  // its bytes
};

bool operator==(const seen_frame& a, const seen_frame& b) {
    return a.code == b.code && a.result == b.result;
}

struct channel_life {
    int start = FD_OK;
    std::vector<seen_frame> frames;
};

bool operator==(const channel_life& a, const channel_life& b) {
    return a.start == b.start && a.frames == b.frames;
}

// Three cameras; the second one's pictures are larger from the 54th frame on, the third one's are none for the engine.
std::unique_ptr<chip_camera> camera_of(int channel, bool late) {
    if (channel == 1 && late) return std::make_unique<chip_camera>(96, 80, 0, 0, 12);
    const int stride = channel == 2 ? 72 : 0;
    return std::make_unique<chip_camera>(64, 64, stride, 0, static_cast<std::uint32_t>(2 + channel));
}

seen_frame see_frame(int handle, chip_camera& camera) {
    fd_result result;
    std::memset(&result, k_unwritten, sizeof result);
    const int code = ORVA_FireDetection_SetFrame(handle, camera.next(), &result);
    return {code, std::string(reinterpret_cast<const char*>(&result), sizeof result)};
}

std::vector<channel_life> host_life(int& locks) {
    const support::captured_output unread;
    std::vector<channel_life> lives(k_channels);
    std::vector<std::unique_ptr<chip_camera>> cameras;
    int handles[k_channels] = {-1, -1, -1};
    ORVA_FireDetection_Init();
    for (int i = 0; i < k_channels; ++i) {
        lives[static_cast<std::size_t>(i)].start = ORVA_FireDetection_Start(&handles[i], fakes::whole_picture());
        cameras.push_back(camera_of(i, false));
    }
    locks += support::held_locks();
    for (int number = 1; number <= k_frames; ++number) {
        if (number == 54) cameras[1] = camera_of(1, true);
        for (int i = 0; i < k_channels; ++i) {
            channel_life& life = lives[static_cast<std::size_t>(i)];
            if (life.start != FD_OK) continue;
            if (number == 20 * i + 2) ORVA_FireDetection_SetSensitiveGrade(handles[i], 100 - 20 * i);
            life.frames.push_back(see_frame(handles[i], *cameras[static_cast<std::size_t>(i)]));
        }
        locks += support::held_locks();
    }
    if (lives[0].start == FD_OK) ORVA_FireDetection_Stop(handles[0]);
    ORVA_FireDetection_UnInit();
    locks += support::held_locks();
    return lives;
}

bool has_report(const channel_life& life) {
    return std::any_of(life.frames.begin(), life.frames.end(), [](const seen_frame& frame) {
        return reinterpret_cast<const fd_result*>(frame.result.data())->count > 0;
    });
}

struct fault_row : support::named_row {
    bool all_after;
};

class vendor_scenario_full : public fakes::chip_test, public testing::WithParamInterface<fault_row> {
protected:
    void live_with_faults(long nth, const std::vector<channel_life>& untroubled) {
        int locks = 0, troubled = 0;
        standin::reset();
        standin::keep_records(false);
        standin::fail_any(nth, GetParam().all_after);
        const std::vector<channel_life> lives = host_life(locks);
        for (std::size_t i = 0; i < lives.size(); ++i) {
            troubled += !(lives[i] == untroubled[i]);
            EXPECT_TRUE(lives[i].start == FD_OK || lives[i].start == FD_PLATFORM_FAILED);
            for (const seen_frame& frame : lives[i].frames) {
                if (frame.code == FD_OK) continue;
                EXPECT_EQ(frame.code, FD_PLATFORM_FAILED);
                EXPECT_EQ(frame.result, std::string(sizeof(fd_result), static_cast<char>(k_unwritten)));
            }
        }
        if (!GetParam().all_after) {
            EXPECT_LE(troubled, 1) << "other channels notice";
        }
        EXPECT_EQ(locks, 0);
        EXPECT_EQ(standin::live_buffers(), 0);
    }

    static void start_afresh() {
        standin::reset();
        int handle = -1;
        chip_camera camera(64, 64, 0, 0, 1);
        ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
        EXPECT_EQ(ORVA_FireDetection_Start(&handle, fakes::whole_picture()), FD_OK);
        EXPECT_EQ(handle, 0);
        EXPECT_EQ(see_frame(handle, camera).code, FD_OK);
        EXPECT_EQ(ORVA_FireDetection_UnInit(), FD_OK);
    }
};

TEST_P(vendor_scenario_full, troubles_one_channel_at_most_and_leaves_nothing) {
    int locks = 0;
    standin::keep_records(false);
    const std::vector<channel_life> untroubled = host_life(locks);
    const long calls = standin::all_calls();
    for (const channel_life& life : untroubled) ASSERT_TRUE(has_report(life));
    ASSERT_EQ(locks, 0);
    for (long nth = 1; nth <= calls && !HasFailure(); nth += support::fault_step()) {
        SCOPED_TRACE(testing::Message() << "call " << nth);
        live_with_faults(nth, untroubled);
        start_afresh();
    }
    std::cout << calls << " vendor calls, every " << support::fault_step() << "th failed in turn\n";
}

INSTANTIATE_TEST_SUITE_P(table, vendor_scenario_full,
                         testing::Values(fault_row{{"one call fails"}, false},
                                         fault_row{{"all calls from one on fail"}, true}),
                         support::row_name());

}  // namespace
