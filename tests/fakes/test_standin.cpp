// The stand-in itself: late jobs, two copies of cached memory, refusals, scripts. What it promises to be awkward about.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "tests/fakes/chip_test.h"
#include "tests/support/rows.h"

namespace {

using fakes::chip_picture;
using standin::call;

// --- memory
// -----------------------------------------------------------------------------------------------------------

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

// --- jobs
// -------------------------------------------------------------------------------------------------------------

// A legal submission of each function; tests break one thing at a time.
class standin_jobs : public fakes::chip_test {
protected:
    standin_jobs() {
        source.fill_binary_noise(3, 128);
        void* virt_addr = nullptr;
        EXPECT_EQ(HI_MPI_SYS_MmzAlloc_Cached(&blob.u32PhyAddr, &virt_addr, "User", nullptr, 3052), 0);
        blob.pu8VirAddr = static_cast<HI_U8*>(virt_addr);
        blob.u32Size = 3052;
        held = blob;
        first = image(source, 0, 1);
        second = first;
        result = image(target, 0, 1);
        yuv = image(nv21, 2, 2);
        planar = image(rgb, 11, 3);
        from = data(source);
        to = data(target);
        for (int at : {6, 7, 8, 11, 12, 13, 16, 17, 18}) square.au8Mask[at] = 255;
        thresh.u8MaxVal = 255;
        csc.enMode = IVE_CSC_MODE_PIC_BT709_YUV2RGB;
        ccl.enMode = IVE_CCL_MODE_8C;
        ccl.u16InitAreaThr = 10;
        ccl.u16Step = 2;
    }
    ~standin_jobs() override { HI_MPI_SYS_MmzFree(held.u32PhyAddr, held.pu8VirAddr); }

    static IVE_IMAGE_S image(chip_picture& picture, int type, int planes) {
        const fd_yuv_frame frame = picture.frame();
        IVE_IMAGE_S record = IVE_IMAGE_S();
        record.enType = static_cast<IVE_IMAGE_TYPE_E>(type);
        record.u16Width = static_cast<HI_U16>(frame.width);
        record.u16Height = static_cast<HI_U16>(frame.height);
        for (int plane = 0; plane < planes; ++plane) {
            record.u32PhyAddr[plane] = frame.phys_addr[plane];
            record.u16Stride[plane] = static_cast<HI_U16>(frame.stride[plane]);
        }
        return record;
    }
    static IVE_DATA_S data(chip_picture& picture) {
        const fd_yuv_frame frame = picture.frame();
        return {frame.phys_addr[0],
                nullptr,
                static_cast<HI_U16>(frame.stride[0]),
                static_cast<HI_U16>(frame.width),
                static_cast<HI_U16>(frame.height),
                0};
    }

    unsigned int do_sub() { return unsigned(HI_MPI_IVE_Sub(&handle, &first, &second, &result, &sub, instant)); }
    unsigned int do_dma() { return unsigned(HI_MPI_IVE_DMA(&handle, &from, &to, &dma, instant)); }
    unsigned int do_dilate() { return unsigned(HI_MPI_IVE_Dilate(&handle, &first, &result, &square, instant)); }
    unsigned int do_thresh() { return unsigned(HI_MPI_IVE_Thresh(&handle, &first, &result, &thresh, instant)); }
    unsigned int do_csc() { return unsigned(HI_MPI_IVE_CSC(&handle, &yuv, &planar, &csc, instant)); }
    unsigned int do_ccl() { return unsigned(HI_MPI_IVE_CCL(&handle, &first, &blob, &ccl, instant)); }
    unsigned int wait(IVE_HANDLE which) { return unsigned(HI_MPI_IVE_Query(which, &finished, HI_TRUE)); }

    chip_picture source{96, 66}, target{96, 66}, nv21{96, 66, 2}, rgb{96, 66, 3};
    IVE_IMAGE_S first, second, result, yuv, planar;
    IVE_DATA_S from, to;
    IVE_MEM_INFO_S blob = IVE_MEM_INFO_S();
    IVE_MEM_INFO_S held = IVE_MEM_INFO_S();  // what there is to release, whatever a test makes of blob
    IVE_SUB_CTRL_S sub = IVE_SUB_CTRL_S();
    IVE_DMA_CTRL_S dma = IVE_DMA_CTRL_S();
    IVE_DILATE_CTRL_S square = IVE_DILATE_CTRL_S();
    IVE_THRESH_CTRL_S thresh = IVE_THRESH_CTRL_S();
    IVE_CSC_CTRL_S csc = IVE_CSC_CTRL_S();
    IVE_CCL_CTRL_S ccl = IVE_CCL_CTRL_S();
    HI_BOOL instant = HI_TRUE;
    HI_BOOL finished = HI_FALSE;
    IVE_HANDLE handle = 0;
};

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

// --- refusals
// ---------------------------------------------------------------------------------------------------------

struct refusal_row : support::named_row {
    unsigned int code;
    unsigned int (*submit)(class refusals&);
};

class refusals : public standin_jobs, public testing::WithParamInterface<refusal_row> {
public:
    // Rows reach everything through the test.
    using standin_jobs::blob, standin_jobs::ccl, standin_jobs::csc, standin_jobs::dma, standin_jobs::first,
        standin_jobs::from, standin_jobs::instant, standin_jobs::planar, standin_jobs::result, standin_jobs::second,
        standin_jobs::square, standin_jobs::sub, standin_jobs::thresh, standin_jobs::to, standin_jobs::yuv,
        standin_jobs::do_ccl, standin_jobs::do_csc, standin_jobs::do_dilate, standin_jobs::do_dma, standin_jobs::do_sub,
        standin_jobs::do_thresh;
};

TEST_P(refusals, come_at_submission_and_queue_nothing) {
    EXPECT_EQ(GetParam().submit(*this), GetParam().code);
    EXPECT_EQ(standin::pending_jobs(), GetParam().code == 0 ? 1 : 0);
}

void resize(refusals& t, int width, int height) {
    for (IVE_IMAGE_S* img : {&t.first, &t.second, &t.result, &t.yuv, &t.planar}) {
        img->u16Width = static_cast<HI_U16>(width);
        img->u16Height = static_cast<HI_U16>(height);
    }
}

const unsigned int k_illegal = 0xA01D8003u;
const unsigned int k_unsupported = 0xA01D8008u;
typedef refusals r;

const refusal_row k_refusals[] = {
    {{"a legal difference is taken"}, 0, [](r& t) { return t.do_sub(); }},
    {{"a difference of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_sub(); }},
    {{"a difference of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_sub(); }},
    {{"a difference of 64 x 64 is taken"}, 0, [](r& t) { return resize(t, 64, 64), t.do_sub(); }},
    {{"a difference of odd width is refused"}, k_illegal, [](r& t) { return resize(t, 65, 64), t.do_sub(); }},
    {{"a difference of odd height is refused"}, k_illegal, [](r& t) { return resize(t, 64, 65), t.do_sub(); }},
    {{"a difference of unequal sizes is refused"}, k_illegal, [](r& t) { return t.second.u16Width = 64, t.do_sub(); }},
    {{"a difference to another size is refused"}, k_illegal, [](r& t) { return t.result.u16Height = 64, t.do_sub(); }},
    {{"a difference of another type is refused"},
     k_illegal,
     [](r& t) { return t.first.enType = IVE_IMAGE_TYPE_YUV420SP, t.do_sub(); }},
    {{"a difference with a stride of 104 is refused"},
     k_illegal,
     [](r& t) { return t.first.u16Stride[0] = 104, t.do_sub(); }},
    {{"a stride below the width is refused"}, k_illegal, [](r& t) { return t.first.u16Stride[0] = 80, t.do_sub(); }},
    {{"an unknown address is refused"}, k_illegal, [](r& t) { return t.first.u32PhyAddr[0] = 0x4000, t.do_sub(); }},
    {{"address 0 is refused"}, k_illegal, [](r& t) { return t.first.u32PhyAddr[0] = 0, t.do_sub(); }},
    {{"an image that runs out of its buffer is refused"},
     k_illegal,
     [](r& t) { return t.first.u32PhyAddr[0] += 16 * 96, t.do_sub(); }},
    {{"a difference from an unaligned address is taken"},
     0,
     [](r& t) { return t.first.u32PhyAddr[0] += 1, t.do_sub(); }},
    {{"the halved difference is not used here"},
     k_unsupported,
     [](r& t) { return t.sub.enMode = IVE_SUB_MODE_SHIFT, t.do_sub(); }},
    {{"difference mode 2 is refused"},
     k_illegal,
     [](r& t) { return t.sub.enMode = static_cast<IVE_SUB_MODE_E>(2), t.do_sub(); }},
    {{"a flag of 2 is refused"}, k_illegal, [](r& t) { return t.instant = static_cast<HI_BOOL>(2), t.do_sub(); }},

    {{"a legal copy is taken"}, 0, [](r& t) { return t.do_dma(); }},
    {{"a copy of 32 x 1 is taken"},
     0,
     [](r& t) { return t.from.u16Width = t.to.u16Width = 32, t.from.u16Height = t.to.u16Height = 1, t.do_dma(); }},
    {{"a copy of 31 columns is refused"},
     k_illegal,
     [](r& t) { return t.from.u16Width = t.to.u16Width = 31, t.do_dma(); }},
    {{"a copy of no rows is refused"},
     k_illegal,
     [](r& t) { return t.from.u16Height = t.to.u16Height = 0, t.do_dma(); }},
    {{"a copy of odd size from an odd address is taken"},
     0,
     [](r& t) { return t.from.u16Width = t.to.u16Width = 33, t.from.u32PhyAddr += 3, t.do_dma(); }},
    {{"a copy with a stride of 100 is refused"}, k_illegal, [](r& t) { return t.to.u16Stride = 100, t.do_dma(); }},
    {{"a copy of unequal widths is refused"}, k_illegal, [](r& t) { return t.to.u16Width = 64, t.do_dma(); }},
    {{"a copy of unequal heights is refused"}, k_illegal, [](r& t) { return t.to.u16Height = 64, t.do_dma(); }},
    {{"the interval copy is not used here"},
     k_unsupported,
     [](r& t) { return t.dma.enMode = IVE_DMA_MODE_INTERVAL_COPY, t.do_dma(); }},
    {{"copy mode 4 is refused"},
     k_illegal,
     [](r& t) { return t.dma.enMode = static_cast<IVE_DMA_MODE_E>(4), t.do_dma(); }},

    {{"a legal dilation is taken"}, 0, [](r& t) { return t.do_dilate(); }},
    {{"a dilation from an address that is 8 off is refused"},
     k_illegal,
     [](r& t) { return t.first.u32PhyAddr[0] += 8, t.do_dilate(); }},
    {{"a dilation to an address that is 8 off is refused"},
     k_illegal,
     [](r& t) { return t.result.u32PhyAddr[0] += 8, t.do_dilate(); }},
    {{"a dilation of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_dilate(); }},
    {{"a mask entry of 1 is refused"}, k_illegal, [](r& t) { return t.square.au8Mask[12] = 1, t.do_dilate(); }},

    {{"a legal threshold is taken"}, 0, [](r& t) { return t.do_thresh(); }},
    {{"a threshold from an unaligned address is taken"},
     0,
     [](r& t) { return t.first.u32PhyAddr[0] += 5, t.do_thresh(); }},
    {{"a threshold of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_thresh(); }},
    {{"the cutting threshold is not used here"},
     k_unsupported,
     [](r& t) { return t.thresh.enMode = IVE_THRESH_MODE_TRUNC, t.do_thresh(); }},
    {{"threshold mode 8 is refused"},
     k_illegal,
     [](r& t) { return t.thresh.enMode = static_cast<IVE_THRESH_MODE_E>(8), t.do_thresh(); }},

    {{"a legal conversion is taken"}, 0, [](r& t) { return t.do_csc(); }},
    {{"a conversion of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_csc(); }},
    {{"a conversion with its chroma 8 off is refused"},
     k_illegal,
     [](r& t) { return t.yuv.u32PhyAddr[1] += 8, t.do_csc(); }},
    {{"a conversion without chroma is refused"}, k_illegal, [](r& t) { return t.yuv.u32PhyAddr[1] = 0, t.do_csc(); }},
    {{"a conversion without a third plane is refused"},
     k_illegal,
     [](r& t) { return t.planar.u32PhyAddr[2] = 0, t.do_csc(); }},
    {{"a conversion to unequal strides is refused"},
     k_illegal,
     [](r& t) { return t.planar.u16Stride[2] = 112, t.do_csc(); }},
    {{"a conversion from grey is refused"},
     k_illegal,
     [](r& t) { return t.yuv.enType = IVE_IMAGE_TYPE_U8C1, t.do_csc(); }},
    {{"a conversion to packed colours is refused"},
     k_illegal,
     [](r& t) { return t.planar.enType = IVE_IMAGE_TYPE_U8C3_PACKAGE, t.do_csc(); }},
    {{"conversions to YUV are not used here"},
     k_unsupported,
     [](r& t) { return t.csc.enMode = static_cast<IVE_CSC_MODE_E>(8), t.do_csc(); }},
    {{"conversion mode 12 is refused"},
     k_illegal,
     [](r& t) { return t.csc.enMode = static_cast<IVE_CSC_MODE_E>(12), t.do_csc(); }},

    {{"a legal labelling is taken"}, 0, [](r& t) { return t.do_ccl(); }},
    {{"labelling of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_ccl(); }},
    {{"labelling from an address that is 8 off is refused"},
     k_illegal,
     [](r& t) { return t.first.u32PhyAddr[0] += 8, t.do_ccl(); }},
    {{"labelling with 4 neighbours is not on this chip"},
     k_unsupported,
     [](r& t) { return t.ccl.enMode = IVE_CCL_MODE_4C, t.do_ccl(); }},
    {{"labelling mode 2 is refused"},
     k_illegal,
     [](r& t) { return t.ccl.enMode = static_cast<IVE_CCL_MODE_E>(2), t.do_ccl(); }},
    {{"a step of 0 is refused"}, k_illegal, [](r& t) { return t.ccl.u16Step = 0, t.do_ccl(); }},
    {{"a result buffer of 3051 bytes is refused"}, k_illegal, [](r& t) { return t.blob.u32Size = 3051, t.do_ccl(); }},
    {{"a result buffer that is 8 off is refused"}, k_illegal, [](r& t) { return t.blob.u32PhyAddr += 8, t.do_ccl(); }},
    {{"an unknown result buffer is refused"}, k_illegal, [](r& t) { return t.blob.u32PhyAddr = 0x4000, t.do_ccl(); }},
};
INSTANTIATE_TEST_SUITE_P(ive, refusals, testing::ValuesIn(k_refusals), support::row_name());

}  // namespace
