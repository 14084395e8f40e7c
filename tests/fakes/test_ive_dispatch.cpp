// What holds for each of the six operations: when the accelerator is asked, how a job is submitted and waited for, what
// its failures become.
#include <gtest/gtest.h>

#include <tuple>

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
        for (std::size_t image = 0; image < 3; ++image) {
            EXPECT_EQ(jobs[i].images[image].u32PhyAddr[0], jobs[0].images[image].u32PhyAddr[0]);
            EXPECT_EQ(jobs[i].images[image].u16Width, jobs[0].images[image].u16Width);
        }
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

// --- sizes
// ------------------------------------------------------------------------------------------------------------

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

}  // namespace
