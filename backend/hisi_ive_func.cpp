#include "backend/hisi_ive_func.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "backend/accelerator.h"
#include "imgproc/bwlabel_ccl.h"
#include "imgproc/log.h"
#include "imgproc/morphology.h"
#include "imgproc/status.h"
#include "preprocess/CYuv420_Rgb.h"

namespace orva_fd {

namespace {

const char k_file[] = "hisi_ive_func";
enum log_line {
    k_line_odd_size = 33,
    k_line_unaligned_address = 39,
    k_line_sub_sizes_differ = 84,
    k_line_sub_failed = 93,
    k_line_dma_sizes_differ = 162,
    k_line_dma_failed = 171,
    k_line_dilate_sizes_differ = 236,
    k_line_dilate_failed = 245,
    k_line_thres_sizes_differ = 313,
    k_line_thres_failed = 322,
    k_line_color_sizes_differ = 391,
    k_line_color_failed = 401,
    k_line_color_no_software = 414,
    k_line_ccl_failed = 484
};

struct size_limit {
    int width;
    int height;
};
const size_limit k_limits[] = {{1920, 1080}, {1920, 1024}, {1920, 1024}, {1920, 1080},
                               {1920, 1080}, {1920, 1080}, {1280, 720}};
const int k_type_count = sizeof(k_limits) / sizeof(k_limits[0]);

bool same_size(const fd_yuv_frame* a, const fd_yuv_frame* b) {
    return a->width == b->width && a->height == b->height;
}

// Whether all images of an operation qualify. Every one is asked, so that each that does not leaves its line.
bool all_qualify(hisi_ive_func* self, std::initializer_list<const fd_yuv_frame*> images, hisi_ive_type type) {
    bool all = true;
    for (const fd_yuv_frame* img : images) {
        all &= self->check_ive_support(img->phys_addr[0], static_cast<int>(img->stride[0]),
                                       static_cast<int>(img->width), static_cast<int>(img->height), type);
    }
    return all;
}

int refuse_sizes(const char* function, int line) {
    log_error(k_file, function, line);
    return FD_INVALID_ARGUMENT;
}

// Hands an accelerator path's code upward.
int passed_up(int code, const char* function, int line) {
    if (code != FD_OK) log_entered(k_file, function, line);
    return code;
}

}  // namespace

bool hisi_ive_func::check_ive_support(unsigned int phys_addr, int stride, int width, int height, hisi_ive_type type) {
    if (stride % 16 != 0) return false;
    if (type != ive_type_dma) {
        if (width % 2 != 0 || height % 2 != 0) {
            log_entered(k_file, "check_ive_support", k_line_odd_size);
            return false;
        }
        if (phys_addr % 16 != 0) {
            log_entered(k_file, "check_ive_support", k_line_unaligned_address);
            return false;
        }
    }
    const int index = static_cast<int>(type);
    if (index < 0 || index >= k_type_count) return false;
    return width <= k_limits[index].width && height <= k_limits[index].height;
}

int hisi_ive_func::do_sub(fd_yuv_frame* src1, fd_yuv_frame* src2, fd_yuv_frame* dst, bool instant) {
    if (!same_size(src1, src2) || !same_size(src1, dst)) return refuse_sizes("do_sub", k_line_sub_sizes_differ);
    if (k_has_accelerator && all_qualify(this, {src1, src2, dst}, ive_type_sub))
        return passed_up(do_ive_sub(src1, src2, dst, instant), "do_sub", k_line_sub_failed);
    return sub(src1, src2, dst);
}

int hisi_ive_func::do_dma(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant) {
    if (!same_size(src, dst)) return refuse_sizes("do_dma", k_line_dma_sizes_differ);
    if (k_has_accelerator && all_qualify(this, {src, dst}, ive_type_dma))
        return passed_up(do_ive_dma(src, dst, instant), "do_dma", k_line_dma_failed);
    const int height = static_cast<int>(src->height);
    for (int y = 0; y < height; ++y) std::memcpy(plane_row(dst, 0, y), plane_row(src, 0, y), src->width);
    return FD_OK;
}

int hisi_ive_func::do_dilate(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant) {
    if (!same_size(src, dst)) return refuse_sizes("do_dilate", k_line_dilate_sizes_differ);
    if (k_has_accelerator && all_qualify(this, {src, dst}, ive_type_dilate))
        return passed_up(do_ive_dilate(src, dst, instant), "do_dilate", k_line_dilate_failed);
    morphology().dilate(src, dst);
    return FD_OK;
}

int hisi_ive_func::do_thres(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh, bool instant) {
    if (!same_size(src, dst)) return refuse_sizes("do_thres", k_line_thres_sizes_differ);
    if (k_has_accelerator && all_qualify(this, {src, dst}, ive_type_thresh))
        return passed_up(do_ive_thres(src, dst, thresh, instant), "do_thres", k_line_thres_failed);
    return threshold_binary(src, dst, thresh);
}

int hisi_ive_func::do_color_trans(fd_yuv_frame* src, fd_yuv_frame* dst, ive_color_trans mode, bool instant) {
    if (!same_size(src, dst)) {
        log_error(k_file, "do_color_trans", k_line_color_sizes_differ);
        std::printf("img_h = %d, dst_h = %d, img_w = %d, dst_w = %d\n", static_cast<int>(src->height),
                    static_cast<int>(dst->height), static_cast<int>(src->width), static_cast<int>(dst->width));
        return FD_INVALID_ARGUMENT;
    }
    if (k_has_accelerator && all_qualify(this, {src, dst}, ive_type_csc))
        return passed_up(do_ive_color_trans(src, dst, mode, instant), "do_color_trans", k_line_color_failed);
    if (mode != color_trans_rgb) {
        log_entered(k_file, "do_color_trans", k_line_color_no_software);
        return k_no_software_path;
    }
    return CYuv420_Rgb().yuv420sp_to_rgb24(src, dst);
}

int hisi_ive_func::do_ccl(fd_yuv_frame* img, hisi_mmz_mem* blob, std::vector<con_info>& out, bool instant) {
    if (k_has_accelerator && all_qualify(this, {img}, ive_type_ccl))
        return passed_up(do_ive_ccl(img, blob, out, instant), "do_ccl", k_line_ccl_failed);
    return bwlabel_ccl().do_comm_ccl(img, out);
}

}  // namespace orva_fd
