// The stand-in itself: late jobs, two copies of cached memory. What it promises to be awkward about.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tests/fakes/standin_jobs.h"

namespace {

using fakes::chip_picture;
using standin::call;

// --- memory -----------------------------------------------------------------------------------------------------

class standin_memory : public fakes::chip_test {
protected:
    ~standin_memory() override {
        if (phys_addr != 0) HI_MPI_SYS_MmzFree(phys_addr, memory);
    }
    unsigned char* obtain(HI_U32 bytes, bool cached) {
        void* virt_addr = nullptr;
        EXPECT_EQ(cached ? HI_MPI_SYS_MmzAlloc_Cached(&phys_addr, &virt_addr, "User", nullptr, bytes)
                         : HI_MPI_SYS_MmzAlloc(&phys_addr, &virt_addr, "User", nullptr, bytes),
                  0);
        memory = static_cast<unsigned char*>(virt_addr);
        length = bytes;
        return memory;
    }
    unsigned char engine(std::size_t at) { return standin::engine_bytes(phys_addr, length).at(at); }
    void flush(HI_U32 from, HI_U32 bytes) {
        EXPECT_EQ(HI_MPI_SYS_MmzFlushCache(phys_addr + from, memory + from, bytes), 0);
    }

    HI_U32 phys_addr = 0;
    unsigned char* memory = nullptr;
    HI_U32 length = 0;
};

TEST_F(standin_memory, fresh_memory_holds_rubbish_that_differs_for_processor_and_engine) {
    const unsigned char* bytes = obtain(100, true);
    EXPECT_NE(bytes[0], 0);
    EXPECT_NE(engine(0), 0);
    EXPECT_NE(bytes[0], engine(0));
}

TEST_F(standin_memory, uncached_memory_is_one) {
    unsigned char* bytes = obtain(100, false);
    bytes[7] = 42;
    EXPECT_EQ(engine(7), 42);
    EXPECT_TRUE(standin::write_engine_bytes(phys_addr, {1, 2, 3}));
    EXPECT_EQ(bytes[2], 3);
}

TEST_F(standin_memory, the_engine_does_not_see_what_is_not_flushed) {
    unsigned char* bytes = obtain(100, true);
    std::memset(bytes, 1, 100);
    flush(0, 100);
    bytes[7] = 42;
    EXPECT_EQ(engine(7), 1);
    flush(0, 100);
    EXPECT_EQ(engine(7), 42);
}

TEST_F(standin_memory, the_processor_does_not_see_what_the_engine_wrote_until_a_flush) {
    unsigned char* bytes = obtain(100, true);
    std::memset(bytes, 1, 100);
    flush(0, 100);
    EXPECT_TRUE(standin::write_engine_bytes(phys_addr, std::vector<unsigned char>(100, 9)));
    EXPECT_EQ(bytes[50], 1);
    flush(0, 100);
    EXPECT_EQ(bytes[50], 9);
}

// A line goes back as a whole: one changed byte takes the 31 stale ones beside it along.
TEST_F(standin_memory, a_changed_line_of_32_bytes_overwrites_the_engine_s_and_its_neighbours_are_reloaded) {
    standin::set_alignment(64);
    unsigned char* bytes = obtain(128, true);
    std::memset(bytes, 1, 128);
    flush(0, 128);
    EXPECT_TRUE(standin::write_engine_bytes(phys_addr, std::vector<unsigned char>(128, 9)));
    bytes[40] = 2;
    flush(0, 128);
    EXPECT_EQ(engine(31), 9);
    EXPECT_EQ(engine(32), 1);
    EXPECT_EQ(engine(40), 2);
    EXPECT_EQ(engine(63), 1);
    EXPECT_EQ(engine(64), 9);
    EXPECT_EQ(bytes[31], 9);
    EXPECT_EQ(bytes[63], 1);
}

TEST_F(standin_memory, lines_begin_at_multiples_of_32_of_the_physical_address) {
    standin::set_alignment(16);
    unsigned char* bytes = obtain(64, true);
    ASSERT_EQ(phys_addr % 32, 16u);
    std::memset(bytes, 1, 64);
    flush(0, 64);
    EXPECT_TRUE(standin::write_engine_bytes(phys_addr, std::vector<unsigned char>(64, 9)));
    bytes[0] = 2;
    flush(0, 64);
    EXPECT_EQ(engine(15), 1) << "the first line has 16 bytes here";
    EXPECT_EQ(engine(16), 9);
}

TEST_F(standin_memory, a_flush_of_some_bytes_takes_the_lines_they_touch) {
    standin::set_alignment(64);
    unsigned char* bytes = obtain(128, true);
    std::memset(bytes, 1, 128);
    flush(0, 1);
    EXPECT_EQ(engine(31), 1);
    EXPECT_NE(engine(32), 1);
    flush(95, 2);
    EXPECT_NE(engine(63), 1);
    EXPECT_EQ(engine(64), 1);
    EXPECT_EQ(engine(127), 1);
}

TEST_F(standin_memory, addresses_are_made_up_aligned_as_asked_and_never_the_pointer) {
    for (const HI_U32 alignment : {16u, 32u, 64u, 256u, 4096u}) {
        standin::set_alignment(alignment);
        obtain(1000, true);
        EXPECT_EQ(phys_addr % alignment, 0u);
        EXPECT_EQ(phys_addr % (2 * alignment), alignment);
        EXPECT_NE(phys_addr, static_cast<HI_U32>(reinterpret_cast<std::uintptr_t>(memory)));
        EXPECT_EQ(HI_MPI_SYS_MmzFree(phys_addr, memory), 0);
        phys_addr = 0;
    }
}

TEST_F(standin_memory, wrong_addresses_are_refused) {
    obtain(100, true);
    EXPECT_NE(HI_MPI_SYS_MmzFlushCache(phys_addr, memory + 1, 10), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFlushCache(phys_addr, memory, 101), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFlushCache(phys_addr, memory, 0), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFlushCache(0, memory, 10), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFree(phys_addr, memory + 1), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFree(phys_addr + 16, memory), 0);
    EXPECT_EQ(standin::live_buffers(), 1);
    EXPECT_EQ(HI_MPI_SYS_MmzFree(phys_addr, memory), 0);
    EXPECT_NE(HI_MPI_SYS_MmzFree(phys_addr, memory), 0) << "a second time";
    phys_addr = 0;
}

TEST_F(standin_memory, a_name_of_15_letters_is_too_long) {
    HI_U32 address = 0;
    void* bytes = nullptr;
    EXPECT_NE(HI_MPI_SYS_MmzAlloc(&address, &bytes, "fifteen letters", nullptr, 10), 0);
    EXPECT_NE(address, 0u) << "a failing call leaves rubbish";
    EXPECT_NE(bytes, nullptr);
    EXPECT_EQ(HI_MPI_SYS_MmzAlloc(&address, &bytes, "fourteen chars", nullptr, 10), 0);
    EXPECT_EQ(HI_MPI_SYS_MmzFree(address, bytes), 0);
}

// --- jobs -------------------------------------------------------------------------------------------------------

using fakes::standin_jobs;

TEST_F(standin_jobs, an_instant_job_runs_when_it_is_waited_for) {
    EXPECT_EQ(do_dma(), 0u);
    EXPECT_NE(target.pixels(), source.pixels());
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(finished, HI_TRUE);
    EXPECT_EQ(target.pixels(), source.pixels());
}

TEST_F(standin_jobs, jobs_run_in_order_and_only_up_to_the_one_that_is_waited_for) {
    instant = HI_FALSE;
    EXPECT_EQ(do_thresh(), 0u);
    instant = HI_TRUE;
    EXPECT_EQ(do_dma(), 0u);
    const IVE_HANDLE copy = handle;
    first = image(target, 0, 1);
    EXPECT_EQ(do_ccl(), 0u);
    EXPECT_EQ(wait(copy), 0u);
    EXPECT_EQ(target.pixels(), source.pixels()) << "threshold, then copy; labelling is still to come";
    EXPECT_EQ(standin::pending_jobs(), 1);
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(standin::pending_jobs(), 0);
    EXPECT_NE(target.pixels(), source.pixels());
}

TEST_F(standin_jobs, a_chained_job_never_announces_itself) {
    instant = HI_FALSE;
    EXPECT_EQ(do_dma(), 0u);
    EXPECT_EQ(wait(handle), 0xA01D8041u);
    EXPECT_EQ(finished, HI_FALSE);
    EXPECT_NE(target.pixels(), source.pixels());
}

TEST_F(standin_jobs, a_question_without_blocking_runs_nothing) {
    EXPECT_EQ(do_dma(), 0u);
    EXPECT_EQ(HI_MPI_IVE_Query(handle, &finished, HI_FALSE), 0);
    EXPECT_EQ(finished, HI_FALSE);
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(HI_MPI_IVE_Query(handle, &finished, HI_FALSE), 0);
    EXPECT_EQ(finished, HI_TRUE);
}

TEST_F(standin_jobs, unknown_handles_are_refused) {
    EXPECT_EQ(do_dma(), 0u);
    for (const IVE_HANDLE which : {0, -1, handle + 1}) EXPECT_EQ(wait(which), 0xA01D8003u);
    EXPECT_EQ(HI_MPI_IVE_Query(handle, nullptr, HI_TRUE), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_Query(handle, &finished, static_cast<HI_BOOL>(2)), HI_ERR_IVE_ILLEGAL_PARAM);
}

TEST_F(standin_jobs, a_reset_of_the_engine_loses_the_job_and_those_before_it) {
    instant = HI_FALSE;
    EXPECT_EQ(do_thresh(), 0u);
    instant = HI_TRUE;
    EXPECT_EQ(do_dma(), 0u);
    standin::time_out_engine(1);
    EXPECT_EQ(wait(handle), 0xA01D8040u);
    EXPECT_EQ(standin::pending_jobs(), 0);
    EXPECT_NE(target.pixels(), source.pixels());
}

TEST_F(standin_jobs, memory_that_is_gone_cancels_a_job) {
    {
        chip_picture short_lived(96, 66);
        to = data(short_lived);
        EXPECT_EQ(do_dma(), 0u);
    }
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(standin::cancelled_jobs(), 1);
}

TEST_F(standin_jobs, dilation_of_values_between_0_and_255_is_undefined) {
    source.bytes()[100] = 7;
    EXPECT_EQ(do_dilate(), 0u);
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(standin::undefined_results(), 1);
    EXPECT_EQ(target.plane().at(50, 50), 0xA5);
}

TEST_F(standin_jobs, a_mask_with_an_outer_ring_reaches_two_pixels) {
    source.bytes().assign(source.bytes().size(), 0);
    source.plane().at(40, 30) = 255;
    square = IVE_DILATE_CTRL_S();
    square.au8Mask[0] = 255;  // looks up and left by two
    EXPECT_EQ(do_dilate(), 0u);
    EXPECT_EQ(wait(handle), 0u);
    EXPECT_EQ(target.plane().at(42, 32), 255);
    EXPECT_EQ(target.plane().at(40, 30), 0);
}

TEST_F(standin_jobs, valid_regions_are_spread_over_the_slots) {
    source.bytes().assign(source.bytes().size(), 0);
    for (int region = 0; region < 3; ++region) {
        for (int x = 0; x < 11 + region; ++x) source.plane().at(4 + x, 10 + 10 * region) = 255;
    }
    EXPECT_EQ(do_ccl(), 0u);
    EXPECT_EQ(wait(handle), 0u);
    IVE_CCBLOB_S found;
    const std::vector<unsigned char> bytes = standin::engine_bytes(blob.u32PhyAddr, sizeof found);
    std::memcpy(&found, bytes.data(), sizeof found);
    EXPECT_EQ(found.u16CurAreaThr, 10);
    EXPECT_EQ(found.s8LabelStatus, 0);
    EXPECT_EQ(found.u8RegionNum, 3);
    EXPECT_EQ(found.astRegion[83].u32Area, 11u);
    EXPECT_EQ(found.astRegion[168].u32Area, 12u);
    EXPECT_EQ(found.astRegion[253].u32Area, 13u);
    EXPECT_EQ(found.astRegion[0].u32Area, 10u) << "not above the threshold";
    EXPECT_EQ(source.plane().at(4, 10), 84) << "a label is its slot + 1";
    EXPECT_EQ(source.plane().at(4, 30), 254);
}

TEST_F(standin_jobs, null_arguments_have_their_own_code) {
    EXPECT_EQ(HI_MPI_IVE_Sub(nullptr, &first, &second, &result, &sub, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_Sub(&handle, &first, &second, &result, nullptr, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_DMA(&handle, nullptr, &to, &dma, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_Dilate(&handle, &first, nullptr, &square, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_Thresh(&handle, &first, &result, nullptr, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_CSC(&handle, &yuv, nullptr, &csc, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(HI_MPI_IVE_CCL(&handle, &first, nullptr, &ccl, instant), HI_ERR_IVE_NULL_PTR);
    EXPECT_EQ(standin::calls(call::sub), 2);
}

}  // namespace
