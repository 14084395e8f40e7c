#include "tests/fakes/ive_operations.h"

#include <cstdio>

#include "tests/support/log_text.h"

namespace fakes {

namespace {

const char k_file[] = "hisi_ive_func";

std::string vendor_line(const std::string& function, unsigned int code) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", code);
    return function + " failed, ret = " + text + "\n";
}

}  // namespace

workbench::workbench()
    : first_frame(first.frame()),
      second_frame(second.frame()),
      result_frame(result.frame()),
      nv21_frame(nv21.frame()),
      planes_frame(planes.frame()) {
    // Mostly dark, so that a mask has shapes and not one blot; binary, as dilation asks.
    first.fill_binary_noise(11, 200);
    second.fill_noise(12);
    result.fill_noise(13);
    nv21.fill_noise(14);
    planes.fill_noise(15);
    blob.alloc_mmz(3052, true);
}

std::vector<unsigned char> workbench::written() const {
    workbench& self = const_cast<workbench&>(*this);
    std::vector<unsigned char> all = self.first.bytes();
    for (chip_picture* picture : {&self.result, &self.planes})
        all.insert(all.end(), picture->bytes().begin(), picture->bytes().end());
    return all;
}

std::vector<operation> all_operations() {
    return {
        {{"sub"},
         standin::call::sub,
         "sub",
         "HI_MPI_IVE_Sub",
         137,
         150,
         93,
         84,
         [](workbench& w, bool instant) {
             return w.ive.do_sub(&w.first_frame, &w.second_frame, &w.result_frame, instant);
         },
         [](workbench& w) {
             return std::vector<fd_yuv_frame*>{&w.first_frame, &w.second_frame, &w.result_frame};
         }},
        {{"dma"},
         standin::call::dma,
         "dma",
         "HI_MPI_IVE_DMA",
         211,
         224,
         171,
         162,
         [](workbench& w, bool instant) { return w.ive.do_dma(&w.first_frame, &w.result_frame, instant); },
         [](workbench& w) {
             return std::vector<fd_yuv_frame*>{&w.first_frame, &w.result_frame};
         }},
        {{"dilate"},
         standin::call::dilate,
         "dilate",
         "HI_MPI_IVE_Dilate",
         288,
         301,
         245,
         236,
         [](workbench& w, bool instant) { return w.ive.do_dilate(&w.first_frame, &w.result_frame, instant); },
         [](workbench& w) {
             return std::vector<fd_yuv_frame*>{&w.first_frame, &w.result_frame};
         }},
        {{"thres"},
         standin::call::thresh,
         "thres",
         "HI_MPI_IVE_Thresh",
         366,
         379,
         322,
         313,
         [](workbench& w, bool instant) { return w.ive.do_thres(&w.second_frame, &w.result_frame, 0x10A, instant); },
         [](workbench& w) {
             return std::vector<fd_yuv_frame*>{&w.second_frame, &w.result_frame};
         }},
        {{"color_trans"},
         standin::call::csc,
         "color_trans",
         "HI_MPI_IVE_CSC",
         466,
         0,
         401,
         391,
         [](workbench& w, bool instant) {
             return w.ive.do_color_trans(&w.nv21_frame, &w.planes_frame, orva_fd::color_trans_rgb, instant);
         },
         [](workbench& w) {
             return std::vector<fd_yuv_frame*>{&w.nv21_frame, &w.planes_frame};
         }},
        {{"ccl"},
         standin::call::ccl,
         "ccl",
         "HI_MPI_IVE_CCL",
         525,
         538,
         484,
         0,
         [](workbench& w, bool instant) { return w.ive.do_ccl(&w.first_frame, &w.blob, w.components, instant); },
         [](workbench& w) { return std::vector<fd_yuv_frame*>{&w.first_frame}; }},
    };
}

std::vector<operation> operations_with_sizes() {
    std::vector<operation> some;
    for (const operation& op : all_operations()) {
        if (op.sizes_line != 0) some.push_back(op);
    }
    return some;
}

std::string refused_text(const operation& op, unsigned int code) {
    return support::error_line(k_file, std::string("do_ive_") + op.function, op.refused_line) +
           vendor_line(op.vendor_function, code) +
           support::entered(k_file, std::string("do_") + op.function, op.dispatch_line);
}

std::string unfinished_text(const operation& op, unsigned int code) {
    std::string text = support::error_line(k_file, "query_ive_finish", 71) + vendor_line("HI_MPI_IVE_Query", code);
    if (op.unfinished_line != 0)
        text += support::entered(k_file, std::string("do_ive_") + op.function, op.unfinished_line);
    return text + support::entered(k_file, std::string("do_") + op.function, op.dispatch_line);
}

}  // namespace fakes
