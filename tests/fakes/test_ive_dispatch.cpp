// What holds for each of the six operations: when the accelerator is asked, how a job is submitted and waited for, what
// its failures become.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "imgproc/common.h"
#include "preprocess/CYuv420_Rgb.h"
#include "tests/fakes/ive_operations.h"
#include "tests/support/capture.h"
#include "tests/support/log_text.h"

namespace {

using fakes::operation;
using fakes::workbench;
using standin::call;
using support::outcome;
using support::outcome_of;

// All that a job was handed, as numbers.
std::vector<std::uintptr_t> values_of(const standin::record& job) {
    std::vector<std::uintptr_t> all = {static_cast<std::uintptr_t>(job.function),
                                       static_cast<std::uintptr_t>(job.flag)};
    const auto add = [&](auto... values) { (all.push_back(static_cast<std::uintptr_t>(values)), ...); };
    const auto add_address = [&](const HI_U8* address) { add(reinterpret_cast<std::uintptr_t>(address)); };
    for (const IVE_IMAGE_S& image : job.images) {
        add(image.enType, image.u16Width, image.u16Height, image.u16Reserved);
        for (int plane = 0; plane < 3; ++plane) {
            add(image.u32PhyAddr[plane], image.u16Stride[plane]);
            add_address(image.pu8VirAddr[plane]);
        }
    }
    for (const IVE_DATA_S& data : job.data) {
        add(data.u32PhyAddr, data.u16Stride, data.u16Width, data.u16Height, data.u16Reserved);
        add_address(data.pu8VirAddr);
    }
    add(job.memory.u32PhyAddr, job.memory.u32Size);
    add_address(job.memory.pu8VirAddr);
    add(job.sub.enMode, job.csc.enMode);
    add(job.dma.enMode, job.dma.u64Val, job.dma.u8HorSegSize, job.dma.u8ElemSize, job.dma.u8VerSegRows);
    for (const HI_U8 entry : job.dilate.au8Mask) add(entry);
    add(job.thresh.enMode, job.thresh.u8LowThr, job.thresh.u8HighThr, job.thresh.u8MinVal, job.thresh.u8MidVal,
        job.thresh.u8MaxVal);
    add(job.ccl.enMode, job.ccl.u16InitAreaThr, job.ccl.u16Step);
    return all;
}

class every_operation : public fakes::chip_test, public testing::WithParamInterface<operation> {
protected:
    every_operation() {
        orva_fd::fd_table::init();
        orva_fd::CYuv420_Rgb::init();
    }
    const operation& op() const { return GetParam(); }
    outcome run(bool instant = true) {
        return outcome_of([&] { return op().run(bench, instant); });
    }
    int submissions() const { return standin::calls(op().submission); }
    static int queries() { return standin::calls(call::query); }

    workbench bench;
};

TEST_P(every_operation, eligible_is_done_by_one_job_that_is_waited_for) {
    const std::vector<unsigned char> before = bench.written();
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(submissions(), 1);
    EXPECT_EQ(queries(), 1);
    EXPECT_EQ(standin::pending_jobs(), 0);
    EXPECT_NE(bench.written(), before);

    const standin::record submitted = standin::records(op().submission).at(0);
    const standin::record asked = standin::records(call::query).at(0);
    EXPECT_EQ(submitted.flag, HI_TRUE);
    EXPECT_EQ(asked.handle, submitted.handle);
    EXPECT_EQ(asked.flag, HI_TRUE) << "waiting blocks";
}

TEST_P(every_operation, not_instant_is_submitted_and_not_waited_for) {
    const std::vector<unsigned char> before = bench.written();
    const outcome got = run(false);
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(submissions(), 1);
    EXPECT_EQ(queries(), 0);
    EXPECT_EQ(standin::records(op().submission).at(0).flag, HI_FALSE);
    EXPECT_EQ(standin::pending_jobs(), 1);
    EXPECT_EQ(bench.written(), before) << "a chained job has not run yet";
}

TEST_P(every_operation, an_image_with_another_stride_sends_it_to_software_without_a_line) {
    const std::size_t images = op().images(bench).size();
    for (std::size_t i = 0; i < images; ++i) {
        SCOPED_TRACE(i);
        workbench fresh;
        const std::vector<unsigned char> before = fresh.written();
        // Every second row is wide enough, so that a stride of 8 less per row stays inside the block.
        op().images(fresh)[i]->stride[0] -= 8;
        const outcome got = outcome_of([&] { return op().run(fresh, true); });
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "");
        EXPECT_EQ(submissions(), 0);
        EXPECT_EQ(queries(), 0);
        if (op().submission != call::ccl) {
            EXPECT_NE(fresh.written(), before);
        } else {
            EXPECT_FALSE(fresh.components.empty());
        }
    }
}

TEST_P(every_operation, an_unaligned_image_sends_it_to_software_except_for_dma) {
    const std::string line = support::entered("hisi_ive_func", "check_ive_support", 39);
    const std::size_t images = op().images(bench).size();
    for (std::size_t i = 0; i < images; ++i) {
        SCOPED_TRACE(i);
        standin::reset();
        workbench fresh;
        op().images(fresh)[i]->phys_addr[0] += 8;
        const outcome got = outcome_of([&] { return op().run(fresh, true); });
        EXPECT_EQ(got.status, 0);
        const bool is_dma = op().submission == call::dma;
        EXPECT_EQ(got.text, is_dma ? "" : line);
        EXPECT_EQ(submissions(), is_dma ? 1 : 0);
    }
}

TEST_P(every_operation, every_image_is_asked_so_each_ineligible_one_leaves_its_line) {
    if (op().submission == call::dma) return;
    const std::vector<fd_yuv_frame*> images = op().images(bench);
    for (fd_yuv_frame* image : images) image->phys_addr[0] += 4;
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, support::repeated(support::entered("hisi_ive_func", "check_ive_support", 39),
                                          static_cast<int>(images.size())));
    EXPECT_EQ(standin::all_calls() - 1, 0) << "the blob's allocation alone";
}

TEST_P(every_operation, odd_sizes_go_to_software_except_for_dma) {
    const std::vector<fd_yuv_frame*> images = op().images(bench);
    for (fd_yuv_frame* image : images) image->width = 95;
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    const bool is_dma = op().submission == call::dma;
    const int lines = is_dma ? 0 : static_cast<int>(images.size());
    EXPECT_EQ(got.text, support::repeated(support::entered("hisi_ive_func", "check_ive_support", 33), lines));
    EXPECT_EQ(submissions(), is_dma ? 1 : 0);
}

TEST_P(every_operation, a_refused_job_passes_4_up_and_software_is_not_tried) {
    for (const unsigned int code : {0xA01D8003u, 0xA01D8006u, 0xA01D800Fu, 0xA01D8010u, 0xA01D8040u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(code);
        standin::reset();
        const std::vector<unsigned char> before = bench.written();
        standin::answer(op().submission, 1, static_cast<HI_S32>(code));
        for (const bool instant : {true, false}) {
            if (!instant) standin::answer(op().submission, 1, static_cast<HI_S32>(code));
            const outcome got = run(instant);
            EXPECT_EQ(got.status, 4);
            EXPECT_EQ(got.text, fakes::refused_text(op(), code));
        }
        EXPECT_EQ(submissions(), 2);
        EXPECT_EQ(queries(), 0);
        EXPECT_EQ(bench.written(), before);
        EXPECT_TRUE(bench.components.empty());
    }
}

TEST_P(every_operation, what_the_chip_itself_refuses_is_refused_too) {
    // Even and aligned, so it qualifies; below 64 x 64 (for copies: narrower than 32) the engine does not take it.
    for (fd_yuv_frame* image : op().images(bench)) image->width = op().submission == call::dma ? 16 : 62;
    const outcome got = run();
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(op(), 0xA01D8003u));
}

TEST_P(every_operation, a_query_time_out_is_asked_again) {
    standin::time_out_queries(5);
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(submissions(), 1);
    EXPECT_EQ(queries(), 6);
    const standin::record submitted = standin::records(op().submission).at(0);
    for (const standin::record& asked : standin::records(call::query)) EXPECT_EQ(asked.handle, submitted.handle);
}

TEST_P(every_operation, an_engine_time_out_submits_the_same_job_again) {
    standin::time_out_engine(3);
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(submissions(), 4);
    EXPECT_EQ(queries(), 4);
    const std::vector<standin::record> jobs = standin::records(op().submission);
    const std::vector<standin::record> waits = standin::records(call::query);
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        EXPECT_EQ(jobs[i].flag, HI_TRUE);
        EXPECT_EQ(waits[i].handle, jobs[i].handle) << "each wait is for the job before it";
        EXPECT_EQ(values_of(jobs[i]), values_of(jobs[0])) << "submission " << i + 1;
    }
}

TEST_P(every_operation, both_time_outs_may_mix) {
    standin::answer(call::query, 1, HI_ERR_IVE_QUERY_TIMEOUT);
    standin::answer(call::query, 2, HI_ERR_IVE_SYS_TIMEOUT);
    standin::answer(call::query, 3, HI_ERR_IVE_QUERY_TIMEOUT);
    const outcome got = run();
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(submissions(), 2);
    EXPECT_EQ(queries(), 4);
}

TEST_P(every_operation, another_code_of_a_wait_is_a_failure) {
    for (const unsigned int code : {0xA01D8003u, 0xA01D8010u, 0xA01D8042u, 0xFFFFFFFFu, 1u}) {
        SCOPED_TRACE(code);
        standin::reset();
        standin::answer(call::query, 1, static_cast<HI_S32>(code));
        const outcome got = run();
        EXPECT_EQ(got.status, 4);
        EXPECT_EQ(got.text, fakes::unfinished_text(op(), code));
        EXPECT_EQ(submissions(), 1);
        EXPECT_EQ(queries(), 1);
        EXPECT_TRUE(bench.components.empty());
    }
}

TEST_P(every_operation, a_finished_flag_makes_any_code_a_success) {
    for (const unsigned int code : {0xA01D8003u, 0xA01D8040u, 0xA01D8041u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(code);
        standin::reset();
        standin::answer(call::query, 1, static_cast<HI_S32>(code), true);
        const outcome got = run();
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.text, "");
        EXPECT_EQ(submissions(), 1);
        EXPECT_EQ(queries(), 1);
        EXPECT_EQ(standin::pending_jobs(), 0);
    }
}

TEST_P(every_operation, a_resubmission_that_is_refused_fails) {
    standin::time_out_engine(1);
    standin::answer(op().submission, 2, HI_ERR_IVE_BUF_FULL);
    const outcome got = run();
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(op(), 0xA01D800Fu));
    EXPECT_EQ(submissions(), 2);
}

INSTANTIATE_TEST_SUITE_P(ive, every_operation, testing::ValuesIn(fakes::all_operations()), support::row_name());

// --- sizes ------------------------------------------------------------------------------------------------------

class sized_operation : public every_operation {};

TEST_P(sized_operation, each_image_of_another_size_is_refused_before_anything_is_called) {
    const std::size_t images = op().images(bench).size();
    for (std::size_t i = 0; i < images; ++i) {
        for (const bool in_width : {true, false}) {
            SCOPED_TRACE(testing::Message() << "image " << i << (in_width ? " width" : " height"));
            workbench fresh;
            const long calls_before = standin::all_calls();
            fd_yuv_frame* image = op().images(fresh)[i];
            (in_width ? image->width : image->height) -= 2;
            const outcome got = outcome_of([&] { return op().run(fresh, true); });
            EXPECT_EQ(got.status, 7);
            std::string text =
                support::error_line("hisi_ive_func", std::string("do_") + op().function, op().sizes_line);
            if (op().submission == call::csc) {
                const fd_yuv_frame* src = op().images(fresh)[0];
                const fd_yuv_frame* dst = op().images(fresh)[1];
                text += "img_h = " + std::to_string(src->height) + ", dst_h = " + std::to_string(dst->height) +
                        ", img_w = " + std::to_string(src->width) + ", dst_w = " + std::to_string(dst->width) + "\n";
            }
            EXPECT_EQ(got.text, text);
            EXPECT_EQ(standin::all_calls(), calls_before);
        }
    }
}

TEST_P(sized_operation, unequal_sizes_come_before_an_image_that_does_not_qualify) {
    op().images(bench)[0]->width -= 1;
    op().images(bench)[1]->phys_addr[0] += 1;
    EXPECT_EQ(run().status, 7);
}

INSTANTIATE_TEST_SUITE_P(ive, sized_operation, testing::ValuesIn(fakes::operations_with_sizes()), support::row_name());

// --- sizes that the engine does not take ------------------------------------------------------------------------

class large_pictures : public fakes::chip_test {
protected:
    large_pictures() { orva_fd::fd_table::init(); }

    orva_fd::hisi_ive_func ive;
};

TEST_F(large_pictures, a_dilation_of_1026_rows_goes_to_software_without_a_line) {
    fakes::chip_picture from(1920, 1026), to(1920, 1026);
    from.plane().at(960, 1020) = 255;
    fd_yuv_frame src = from.frame(), dst = to.frame();
    const outcome got = outcome_of([&] { return ive.do_dilate(&src, &dst, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(standin::all_calls(), 0);
    EXPECT_EQ(to.plane().at(961, 1021), 255);
    EXPECT_EQ(to.plane().at(962, 1021), 0);
}

TEST_F(large_pictures, a_dilation_of_1024_rows_goes_to_the_engine) {
    fakes::chip_picture from(1920, 1024), to(1920, 1024);
    fd_yuv_frame src = from.frame(), dst = to.frame();
    EXPECT_EQ(ive.do_dilate(&src, &dst, true), 0);
    EXPECT_EQ(standin::calls(call::dilate), 1);
}

TEST_F(large_pictures, labelling_of_1282_columns_goes_to_software_without_a_line) {
    fakes::chip_picture picture(1282, 720);
    picture.plane().at(1280, 700) = picture.plane().at(1281, 700) = 255;
    fd_yuv_frame img = picture.frame();
    std::vector<orva_fd::con_info> components;
    orva_fd::hisi_mmz_mem no_blob;
    const outcome got = outcome_of([&] { return ive.do_ccl(&img, &no_blob, components, true); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(standin::all_calls(), 0);
    ASSERT_EQ(components.size(), 1u) << "software keeps the smallest";
    EXPECT_EQ(components[0].area, 2);
    EXPECT_EQ(components[0].right, 1281);
    EXPECT_EQ(components[0].bottom, 700);
}

// The rule lets 1280 x 720 through, the chip's header 720 x 640.
TEST_F(large_pictures, labelling_of_1280_columns_goes_to_the_engine_and_is_refused) {
    fakes::chip_picture picture(1280, 720);
    fd_yuv_frame img = picture.frame();
    std::vector<orva_fd::con_info> components;
    orva_fd::hisi_mmz_mem blob;
    ASSERT_EQ(blob.alloc_mmz(3052, true), 0);
    const outcome got = outcome_of([&] { return ive.do_ccl(&img, &blob, components, true); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, fakes::refused_text(fakes::all_operations()[5], 0xA01D8003u));
}

}  // namespace
