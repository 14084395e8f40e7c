// A whole life of a host on the stand-in, through the exported functions, with each vendor call failing in turn: the
// right code, the right lines, no buffer left, no lock held, and the next frame or the next start works.
#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "preprocess/pre_process.h"
#include "tests/fakes/channel_pair.h"
#include "tests/fakes/chip_camera.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/capture.h"
#include "tests/support/log_text.h"

namespace {

using fakes::chip_camera;
using standin::call;
using support::entered;
using support::error_line;

const int k_frames = 60;

// What one failing call of a frame must lead to.
struct step {
    call function;
    int code;
    std::string lines;  // without those of the levels above
};

std::string vendor_line(const char* function, const char* code) {
    return std::string(function) + " failed, ret = " + code + "\n";
}

// Lines from the failing stage up to the host.
std::string way_up(int stage_line) {
    return entered("pre_process", "set_frame", stage_line) + "ret code : 0x4\n" +
           entered("frame_process", "set_frame", 104) + entered("FireDetectionManager", "FireDetectionMain", 140) +
           entered("FireDetection_Api", "ORVA_FireDetection_SetFrame", 117);
}

std::string refused(const char* operation, const char* vendor, int line, int dispatch_line) {
    return error_line("hisi_ive_func", std::string("do_ive_") + operation, line) + vendor_line(vendor, "a01d8010") +
           entered("hisi_ive_func", std::string("do_") + operation, dispatch_line);
}

std::string unfinished(const char* operation, int line, int dispatch_line) {
    std::string text =
        error_line("hisi_ive_func", "query_ive_finish", 71) + vendor_line("HI_MPI_IVE_Query", "a01d8010");
    if (line != 0) text += entered("hisi_ive_func", std::string("do_ive_") + operation, line);
    return text + entered("hisi_ive_func", std::string("do_") + operation, dispatch_line);
}

std::string unflushed() {
    return error_line("hisi_mmz_mem", "flush_mmz", 66) + vendor_line("HI_MPI_SYS_MmzFlushCache", "ffffffff");
}

// The twenty calls of one frame, in order.
std::vector<step> steps_of_a_frame() {
    return {
        {call::sub, 4, refused("sub", "HI_MPI_IVE_Sub", 137, 93) + way_up(124)},
        {call::query, 4, unfinished("sub", 150, 93) + way_up(124)},
        {call::flush, 0, unflushed()},
        {call::thresh, 0, refused("thres", "HI_MPI_IVE_Thresh", 366, 322)},
        {call::dilate, 4, refused("dilate", "HI_MPI_IVE_Dilate", 288, 245) + way_up(141)},
        {call::query, 4, unfinished("dilate", 301, 245) + way_up(141)},
        {call::flush, 0, unflushed()},
        {call::csc, 4, refused("color_trans", "HI_MPI_IVE_CSC", 466, 401) + way_up(150)},
        {call::query, 4, unfinished("color_trans", 0, 401) + way_up(150)},
        {call::flush, 0, unflushed()},
        {call::flush, 0, unflushed()},
        {call::dilate, 4, refused("dilate", "HI_MPI_IVE_Dilate", 288, 245) + way_up(168)},
        {call::dma, 0, refused("dma", "HI_MPI_IVE_DMA", 211, 171)},
        {call::query, 0, unfinished("dma", 224, 171)},
        {call::flush, 0, unflushed()},
        {call::ccl, 4, refused("ccl", "HI_MPI_IVE_CCL", 525, 484) + way_up(189)},
        {call::query, 4, unfinished("ccl", 538, 484) + way_up(189)},
        {call::flush, 0, unflushed()},
        {call::dma, 4, refused("dma", "HI_MPI_IVE_DMA", 211, 171) + way_up(197)},
        {call::query, 4, unfinished("dma", 224, 171) + way_up(197)},
    };
}

// The seven calls of a start: each image's memory and its flush, then the result buffer.
struct start_step {
    call function;
    int code;
    std::string lines;
};

std::vector<start_step> steps_of_a_start() {
    const std::string no_memory =
        error_line("hisi_mmz_mem", "alloc_mmz", 41) + vendor_line("HI_MPI_SYS_MmzAlloc", "ffffffff");
    const std::string up = entered("frame_process", "start", 25) + entered("FireDetectionManager", "Start", 61) +
                           entered("FireDetection_Api", "ORVA_FireDetection_Start", 72);
    const auto no_image = [&](int line) {
        return no_memory + entered("hisi_mmz_mem", "init", 53) + entered("pre_process", "start", line) + up;
    };
    return {
        {call::alloc_cached, 4, no_image(42)},
        {call::flush, 0, unflushed()},
        {call::alloc_cached, 4, no_image(50)},
        {call::flush, 0, unflushed()},
        {call::alloc_cached, 4, no_image(59)},
        {call::flush, 0, unflushed()},
        {call::alloc_cached, 4, no_memory + entered("pre_process", "start", 80) + up},
    };
}

class vendor_faults : public fakes::chip_test {
protected:
    vendor_faults() { EXPECT_EQ(ORVA_FireDetection_Init(), 0); }
    ~vendor_faults() override { EXPECT_EQ(ORVA_FireDetection_UnInit(), 0); }

    static support::outcome start(int* handle) {
        return support::outcome_of([&] { return ORVA_FireDetection_Start(handle, fakes::whole_picture()); });
    }
    static support::outcome frame(int handle, const fd_yuv_frame& picture, fd_result* result) {
        return support::outcome_of([&] { return ORVA_FireDetection_SetFrame(handle, picture, result); });
    }
};

TEST_F(vendor_faults, a_frame_makes_these_twenty_calls) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    chip_camera view(96, 80, 0, 0, 1);
    fd_result result = fd_result();
    frame(handle, view.next(), &result);  // adopts the size, with one copy more
    standin::reset();
    EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    const std::vector<step> wanted = steps_of_a_frame();
    const std::vector<standin::record> seen = standin::records();
    ASSERT_EQ(seen.size(), wanted.size());
    for (std::size_t i = 0; i < seen.size(); ++i) EXPECT_EQ(seen[i].function, wanted[i].function) << "call " << i + 1;
    EXPECT_EQ(seen[3].flag, HI_FALSE) << "the threshold is chained";
    EXPECT_EQ(seen[11].flag, HI_FALSE) << "the second dilation is chained";
    EXPECT_EQ(seen[12].flag, HI_TRUE);
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
    EXPECT_EQ(standin::calls(call::free), 4);
}

// Not only at its end: in the order against that of obtaining.
TEST_F(vendor_faults, a_stage_whose_start_fails_gives_its_images_back) {
    for (const int failing : {2, 3, 4}) {
        orva_fd::pre_process stage;
        standin::reset();
        standin::answer(call::alloc_cached, failing, HI_FAILURE);
        EXPECT_EQ(support::outcome_of([&] { return stage.start(); }).status, 4);
        EXPECT_EQ(standin::live_buffers(), 0) << "request " << failing;
        std::vector<HI_U32> obtained, freed;
        for (const standin::record& one : standin::records()) {
            if (one.function == call::flush) obtained.push_back(one.phys_addr);
            if (one.function == call::free) freed.insert(freed.begin(), one.phys_addr);
        }
        EXPECT_EQ(freed, obtained);
    }
}

TEST_F(vendor_faults, a_start_makes_these_seven_calls) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    const std::vector<start_step> wanted = steps_of_a_start();
    const std::vector<standin::record> seen = standin::records();
    ASSERT_EQ(seen.size(), wanted.size());
    const HI_U32 lengths[] = {101376, 101376, 101376, 101376, 304128, 304128, 3052};
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].function, wanted[i].function) << "call " << i + 1;
        EXPECT_EQ(seen[i].length, lengths[i]) << "call " << i + 1;
    }
    for (const std::size_t image : {0u, 2u, 4u}) {
        const std::vector<unsigned char> bytes = standin::engine_bytes(seen[image].phys_addr, seen[image].length);
        EXPECT_EQ(bytes, std::vector<unsigned char>(seen[image].length, 0)) << "the engine finds zeros";
    }
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

TEST_F(vendor_faults, each_call_of_a_start_may_fail) {
    const std::vector<start_step> steps = steps_of_a_start();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "call " << i + 1 << ", " << standin::name_of(steps[i].function));
        standin::reset();
        standin::fail_any(static_cast<long>(i) + 1, false);
        int handle = -1;
        const support::outcome got = start(&handle);
        EXPECT_EQ(got.status, steps[i].code);
        EXPECT_EQ(got.text, steps[i].lines);
        if (got.status == 0) {
            EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
        } else {
            EXPECT_EQ(handle, -1);
        }
        EXPECT_EQ(standin::live_buffers(), 0);
        EXPECT_EQ(start(&handle).status, 0) << "the next start";
        EXPECT_EQ(handle, 0);
        EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
    }
}

TEST_F(vendor_faults, a_zone_without_memory_fails_every_start_until_there_is_some) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        standin::fail_any(1, true);
        int handle = -1;
        EXPECT_EQ(start(&handle).status, 4);
        EXPECT_EQ(standin::live_buffers(), 0);
        standin::reset();
    }
    int handle = -1;
    EXPECT_EQ(start(&handle).status, 0);
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

// Whether `lines` stand together in `text`; a frame that goes on prints measured ratios too.
bool holds(const std::string& text, const std::string& lines) {
    return text.find(lines) != std::string::npos;
}

// Plays 60 frames with the nth vendor call after the first frame failing, and stops.
void play_with_fault(long nth) {
    SCOPED_TRACE(testing::Message() << "call " << nth);
    const std::vector<step> steps = steps_of_a_frame();
    const step& failing = steps[static_cast<std::size_t>(nth - 1) % steps.size()];
    const int failing_frame = static_cast<int>((nth - 1) / static_cast<long>(steps.size())) + 1;

    standin::reset();
    standin::keep_records(false);
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, fakes::whole_picture()), 0);
    chip_camera view(64, 64, 0, 0, 2);
    fd_result result = fd_result();
    support::output_of([&] { ORVA_FireDetection_SetFrame(handle, view.next(), &result); });
    standin::fail_any(nth, false);
    for (int number = 1; number < k_frames; ++number) {
        fd_result before;
        std::memset(&before, 0x5A, sizeof before);
        result = before;
        const fd_yuv_frame picture = view.next();
        const support::outcome got =
            support::outcome_of([&] { return ORVA_FireDetection_SetFrame(handle, picture, &result); });
        const bool fails = number == failing_frame;
        EXPECT_EQ(got.status, fails ? failing.code : 0) << "frame " << number;
        if (fails && failing.code == 4) {
            EXPECT_EQ(got.text, failing.lines);
            EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0) << "the result is untouched";
        } else {
            EXPECT_TRUE(fails ? holds(got.text, failing.lines) : !holds(got.text, "failed, ret")) << got.text;
        }
    }
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
    EXPECT_EQ(standin::live_buffers(), 0);
}

TEST_F(vendor_faults, each_call_of_one_frame_may_fail) {
    const long per_frame = static_cast<long>(steps_of_a_frame().size());
    // In the frame after the first, and in a late one, when boxes are reported.
    for (long nth = 1; nth <= per_frame; ++nth) play_with_fault(nth);
    for (long nth = 1; nth <= per_frame; ++nth) play_with_fault(55 * per_frame + nth);
}

class vendor_faults_full : public vendor_faults {};

TEST_F(vendor_faults_full, every_call_of_60_frames_may_fail) {
    const long calls = static_cast<long>(steps_of_a_frame().size()) * (k_frames - 1);
    for (long nth = 1; nth <= calls && !HasFailure(); ++nth) play_with_fault(nth);
    std::cout << calls << " vendor calls failed in turn\n";
}

TEST_F(vendor_faults, everything_failing_from_some_call_on_fails_every_frame_and_leaves_nothing) {
    for (const long nth : {1L, 2L, 5L, 9L, 16L, 19L, 20L, 21L, 27L}) {
        SCOPED_TRACE(nth);
        standin::reset();
        int handle = -1;
        ASSERT_EQ(start(&handle).status, 0);
        chip_camera view(64, 64, 0, 0, 3);
        fd_result result = fd_result();
        EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
        standin::fail_any(nth, true);
        int failures = 0;
        for (int number = 0; number < 4; ++number) failures += frame(handle, view.next(), &result).status == 4;
        EXPECT_GE(failures, 2);
        EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
        EXPECT_EQ(standin::live_buffers(), 0);
        standin::reset();
        ASSERT_EQ(start(&handle).status, 0);
        EXPECT_EQ(frame(handle, view.next(), &result).status, 0) << "the chip is back";
        EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
    }
}

TEST_F(vendor_faults, a_failing_release_is_ignored) {
    for (int nth = 1; nth <= 4; ++nth) {
        standin::reset();
        int handle = -1;
        ASSERT_EQ(start(&handle).status, 0);
        standin::answer(call::free, nth, HI_FAILURE);
        const support::outcome got = support::outcome_of([&] { return ORVA_FireDetection_Stop(handle); });
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "");
    }
}

// The copy of a size change is ignored when it fails, refused or, in the next test, not waited out.
TEST_F(vendor_faults, the_copy_of_a_size_change_may_fail) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    chip_camera view(96, 80, 0, 0, 4);
    fd_result result = fd_result();
    standin::answer(call::dma, 1, HI_ERR_IVE_NOTREADY);
    const support::outcome got = frame(handle, view.next(), &result);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, refused("dma", "HI_MPI_IVE_DMA", 211, 171));
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

TEST_F(vendor_faults, the_copy_of_a_size_change_may_not_be_waited_out) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    chip_camera view(96, 80, 0, 0, 4);
    fd_result result = fd_result();
    standin::answer(call::query, 1, HI_ERR_IVE_NOTREADY);
    const support::outcome got = frame(handle, view.next(), &result);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, unfinished("dma", 224, 171));
    EXPECT_EQ(standin::pending_jobs(), 0) << "the wait for the difference covers it";
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

// A job whose wait failed may still be under way when the host stops the channel; its memory is then gone.
TEST_F(vendor_faults, a_stop_after_a_failed_wait_takes_the_memory_from_a_job) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    chip_camera view(96, 80, 0, 0, 5);
    fd_result result = fd_result();
    EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    standin::answer(call::query, 1, HI_ERR_IVE_NOTREADY);
    EXPECT_EQ(frame(handle, view.next(), &result).status, 4);
    EXPECT_EQ(standin::pending_jobs(), 1);
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
    ASSERT_EQ(start(&handle).status, 0);
    EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    EXPECT_EQ(standin::cancelled_jobs(), 1);
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

// The threshold before the first dilation is chained. When the engine is reset under the dilation, the threshold is
// lost with it and only the dilation is submitted again: it meets values that are neither 0 nor 255.
TEST_F(vendor_faults, a_reset_under_the_first_dilation_loses_the_threshold_before_it) {
    int handle = -1;
    ASSERT_EQ(start(&handle).status, 0);
    chip_camera view(96, 80, 0, 0, 6);
    fd_result result = fd_result();
    for (int number = 0; number < 3; ++number) EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    EXPECT_EQ(standin::undefined_results(), 0);
    standin::answer(call::query, 2, HI_ERR_IVE_SYS_TIMEOUT);
    EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    EXPECT_GE(standin::undefined_results(), 1);
    const int undefined = standin::undefined_results();
    EXPECT_EQ(frame(handle, view.next(), &result).status, 0);
    EXPECT_EQ(standin::undefined_results(), undefined) << "the next frame is itself again";
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

// A small region, as a host meets it.
TEST_F(vendor_faults, a_region_below_64_x_64_fails_with_4_on_every_frame) {
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, {16, 96, 16, 80, 48, 96, 64, 80}), 0);
    chip_camera view(96, 80, 0, 0, 7);
    fd_result result;
    std::memset(&result, 0x5A, sizeof result);
    const fd_result before = result;
    for (int number = 0; number < 3; ++number) {
        const support::outcome got = frame(handle, view.next(), &result);
        EXPECT_EQ(got.status, 4);
        EXPECT_EQ(got.text, error_line("hisi_ive_func", "do_ive_sub", 137) + vendor_line("HI_MPI_IVE_Sub", "a01d8003") +
                                entered("hisi_ive_func", "do_sub", 93) + way_up(124));
    }
    EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
    EXPECT_EQ(ORVA_FireDetection_Stop(handle), 0);
}

TEST_F(vendor_faults, uninit_with_open_channels_leaves_no_buffer) {
    int handles[3];
    for (int& handle : handles) ASSERT_EQ(start(&handle).status, 0);
    EXPECT_EQ(standin::live_buffers(), 12);
    EXPECT_EQ(ORVA_FireDetection_UnInit(), 0);
    EXPECT_EQ(standin::live_buffers(), 0);
    EXPECT_EQ(ORVA_FireDetection_Init(), 0);
}

}  // namespace
