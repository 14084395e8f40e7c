// backend/ runs each image operation on the IVE accelerator when all its images qualify and in software otherwise, and
// owns the contiguous buffers that the accelerator needs. Nothing outside this folder knows the vendor's interface.
#ifndef ORVA_FD_BACKEND_HISI_IVE_FUNC_H
#define ORVA_FD_BACKEND_HISI_IVE_FUNC_H

#include <vector>

#include "backend/hisi_mmz_mem.h"
#include "imgproc/common.h"

namespace orva_fd {

// The operation whose limits apply. The numbers index the table of limits.
enum hisi_ive_type : int {
    ive_type_dma = 0,
    ive_type_dilate = 1,
    ive_type_spare = 2,  // deliberate: no operation has it; it keeps the numbers of the others
    ive_type_sub = 3,
    ive_type_thresh = 4,
    ive_type_csc = 5,
    ive_type_ccl = 6
};

enum ive_color_trans : int { color_trans_lab = 0, color_trans_rgb = 1, color_trans_hsv = 2 };

// Every do_x checks sizes, asks for each image whether it qualifies, and takes one of two paths; do_ive_x is the
// accelerator's alone and exists in builds that have one. Images are described by their plane 0 unless said otherwise.
// instant: true waits until the job is done; false submits it and returns, and its output must not be read until a
// later instant job has been waited for. Without meaning in software. Return codes of all: 0; 4 if the accelerator
// refused or failed (software is not tried then); 7 if sizes differ. No state, no locks: a call touches only what it is
// given.
class hisi_ive_func {
public:
    // Whether an image may go to the accelerator: stride a multiple of 16, and except for DMA an even size and an
    // address that is a multiple of 16 (each breach prints a line), and a size within the operation's limits,
    // inclusive. Smaller than what the engine takes is not tested (deliberate: the job is then refused).
    bool check_ive_support(unsigned int phys_addr, int stride, int width, int height, hisi_ive_type type);

    // Waits for a job. Returns 0 when it is done; 12 after a system time-out, when it must be submitted again; 4
    // otherwise.
    int query_ive_finish(int handle);

    // dst = |src1 - src2|. dst may be one of them.
    int do_sub(fd_yuv_frame* src1, fd_yuv_frame* src2, fd_yuv_frame* dst, bool instant);
    int do_ive_sub(fd_yuv_frame* src1, fd_yuv_frame* src2, fd_yuv_frame* dst, bool instant);

    // Copies plane 0, row by row; row padding stays.
    int do_dma(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant);
    int do_ive_dma(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant);

    // 3 x 3 dilation of a binary image; not in place, and in software both of one stride: see morphology::dilate for
    // the borders.
    int do_dilate(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant);
    int do_ive_dilate(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant);

    // 0 at or below thresh, 255 above. dst may be src.
    int do_thres(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh, bool instant);
    int do_ive_thres(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh, bool instant);

    // NV21 (planes 0 and 1) to three planes. In software only color_trans_rgb; the others print a line and return 5.
    int do_color_trans(fd_yuv_frame* src, fd_yuv_frame* dst, ive_color_trans mode, bool instant);
    int do_ive_color_trans(fd_yuv_frame* src, fd_yuv_frame* dst, ive_color_trans mode, bool instant);

    // Adds one record per component of a binary image to out, which callers pass empty; may overwrite img. blob: the
    // accelerator's result buffer, at least 3052 bytes; unused in software. The accelerator joins corners and drops
    // components of 10 pixels and less, software does neither (deliberate).
    int do_ccl(fd_yuv_frame* img, hisi_mmz_mem* blob, std::vector<con_info>& out, bool instant);
    int do_ive_ccl(fd_yuv_frame* img, hisi_mmz_mem* blob, std::vector<con_info>& out, bool instant);
};

}  // namespace orva_fd

#endif
