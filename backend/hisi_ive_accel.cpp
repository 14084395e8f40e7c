// The accelerator's half of hisi_ive_func: fills the vendor's records, submits a job, waits for it. In the build only
// where there is an accelerator. The engine works on physical addresses; nothing here touches a pixel.
#include <cstdio>

#include "backend/hisi_ive_func.h"
#include "backend/hisi_sdk.h"
#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "hisi_ive_func";
enum log_line {
    k_no_line = 0,
    k_line_query_failed = 71,
    k_line_sub_refused = 137,
    k_line_sub_unfinished = 150,
    k_line_dma_refused = 211,
    k_line_dma_unfinished = 224,
    k_line_dilate_refused = 288,
    k_line_dilate_unfinished = 301,
    k_line_thres_refused = 366,
    k_line_thres_unfinished = 379,
    k_line_color_refused = 466,
    k_line_ccl_refused = 525,
    k_line_ccl_unfinished = 538
};

const HI_U16 k_first_area = 10;  // labelling drops components of this many pixels and fewer
const HI_U16 k_area_step = 2;    // and raises that bound by this until 254 components are left

// Words of one operation's log lines.
struct job_words {
    const char* function;
    const char* vendor_function;
    int refused_line;
    int unfinished_line;  // k_no_line: a failed wait prints nothing of its own
};

int vendor_call_failed(const char* function, int line, const char* vendor_function, HI_S32 code) {
    log_error(k_file, function, line);
    std::printf("%s failed, ret = %x\n", vendor_function, static_cast<unsigned int>(code));
    return FD_PLATFORM_FAILED;
}

// Submits a job and, if it is instant, waits for it; once more whenever the engine had to be reset, without limit.
// submit: HI_S32(IVE_HANDLE*, HI_BOOL), the vendor's call with everything else filled in.
template <typename submission>
int run_job(hisi_ive_func* self, const job_words& words, bool instant, submission submit) {
    for (;;) {
        IVE_HANDLE handle = 0;
        const HI_S32 code = submit(&handle, instant ? HI_TRUE : HI_FALSE);
        if (code != HI_SUCCESS)
            return vendor_call_failed(words.function, words.refused_line, words.vendor_function, code);
        if (!instant) return FD_OK;
        const int waited = self->query_ive_finish(handle);
        if (waited == k_accelerator_timed_out) continue;
        if (waited != FD_OK && words.unfinished_line != k_no_line)
            log_entered(k_file, words.function, words.unfinished_line);
        return waited;
    }
}

HI_U16 low_16(uint32_t value) {
    return static_cast<HI_U16>(value);
}

IVE_IMAGE_S image_of(const fd_yuv_frame* frame, IVE_IMAGE_TYPE_E type, int planes) {
    IVE_IMAGE_S image = IVE_IMAGE_S();
    image.enType = type;
    for (int plane = 0; plane < planes; ++plane) {
        image.u32PhyAddr[plane] = frame->phys_addr[plane];
        image.pu8VirAddr[plane] = frame->virt_addr[plane];
        image.u16Stride[plane] = low_16(frame->stride[plane]);
    }
    image.u16Width = low_16(frame->width);
    image.u16Height = low_16(frame->height);
    return image;
}

IVE_IMAGE_S grey_image_of(const fd_yuv_frame* frame) {
    return image_of(frame, IVE_IMAGE_TYPE_U8C1, 1);
}

IVE_DATA_S data_of(const fd_yuv_frame* frame) {
    IVE_DATA_S data = IVE_DATA_S();
    data.u32PhyAddr = frame->phys_addr[0];
    data.pu8VirAddr = frame->virt_addr[0];
    data.u16Stride = low_16(frame->stride[0]);
    data.u16Width = low_16(frame->width);
    data.u16Height = low_16(frame->height);
    return data;
}

IVE_CSC_MODE_E csc_mode(ive_color_trans mode) {
    switch (mode) {
        case color_trans_lab:
            return IVE_CSC_MODE_PIC_BT709_YUV2LAB;
        case color_trans_rgb:
            return IVE_CSC_MODE_PIC_BT709_YUV2RGB;
        case color_trans_hsv:
            return IVE_CSC_MODE_PIC_BT709_YUV2HSV;
    }
    return IVE_CSC_MODE_E();  // deliberate: an unknown target leaves the field at 0
}

static_assert(sizeof(con_info) == sizeof(IVE_REGION_S), "the engine's regions become component records");
con_info component_of(const IVE_REGION_S& region) {
    con_info component;
    component.area = static_cast<int32_t>(region.u32Area);
    component.left = static_cast<int16_t>(region.u16Left);
    component.right = static_cast<int16_t>(region.u16Right);
    component.top = static_cast<int16_t>(region.u16Top);
    component.bottom = static_cast<int16_t>(region.u16Bottom);
    return component;
}

// Appends the valid regions in slot order. Slots that the engine dropped keep an area at or below the final threshold.
void append_regions(const IVE_CCBLOB_S& blob, std::vector<con_info>& out) {
    int found = 0;
    for (const IVE_REGION_S& region : blob.astRegion) {
        if (region.u32Area <= blob.u16CurAreaThr) continue;
        if (++found > blob.u8RegionNum) break;
        out.push_back(component_of(region));
    }
}

}  // namespace

int hisi_ive_func::query_ive_finish(int handle) {
    HI_BOOL finished = HI_FALSE;
    for (;;) {
        const HI_S32 code = HI_MPI_IVE_Query(handle, &finished, HI_TRUE);
        if (code == HI_SUCCESS || finished != HI_FALSE) return FD_OK;
        if (code == HI_ERR_IVE_SYS_TIMEOUT) return k_accelerator_timed_out;
        if (code != HI_ERR_IVE_QUERY_TIMEOUT)
            return vendor_call_failed("query_ive_finish", k_line_query_failed, "HI_MPI_IVE_Query", code);
    }
}

int hisi_ive_func::do_ive_sub(fd_yuv_frame* src1, fd_yuv_frame* src2, fd_yuv_frame* dst, bool instant) {
    static const job_words words = {"do_ive_sub", "HI_MPI_IVE_Sub", k_line_sub_refused, k_line_sub_unfinished};
    IVE_SRC_IMAGE_S first = grey_image_of(src1);
    IVE_SRC_IMAGE_S second = grey_image_of(src2);
    IVE_DST_IMAGE_S result = grey_image_of(dst);
    IVE_SUB_CTRL_S control = IVE_SUB_CTRL_S();
    control.enMode = IVE_SUB_MODE_ABS;
    return run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_Sub(handle, &first, &second, &result, &control, flag);
    });
}

int hisi_ive_func::do_ive_dma(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant) {
    static const job_words words = {"do_ive_dma", "HI_MPI_IVE_DMA", k_line_dma_refused, k_line_dma_unfinished};
    IVE_SRC_DATA_S source = data_of(src);
    IVE_DST_DATA_S result = data_of(dst);
    IVE_DMA_CTRL_S control = IVE_DMA_CTRL_S();
    control.enMode = IVE_DMA_MODE_DIRECT_COPY;
    return run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_DMA(handle, &source, &result, &control, flag);
    });
}

int hisi_ive_func::do_ive_dilate(fd_yuv_frame* src, fd_yuv_frame* dst, bool instant) {
    static const job_words words = {"do_ive_dilate", "HI_MPI_IVE_Dilate", k_line_dilate_refused,
                                    k_line_dilate_unfinished};
    static const IVE_DILATE_CTRL_S square = {{0, 0,   0,   0,   0,  //
                                              0, 255, 255, 255, 0,  //
                                              0, 255, 255, 255, 0,  //
                                              0, 255, 255, 255, 0,  //
                                              0, 0,   0,   0,   0}};
    IVE_SRC_IMAGE_S source = grey_image_of(src);
    IVE_DST_IMAGE_S result = grey_image_of(dst);
    IVE_DILATE_CTRL_S control = square;
    return run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_Dilate(handle, &source, &result, &control, flag);
    });
}

int hisi_ive_func::do_ive_thres(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh, bool instant) {
    static const job_words words = {"do_ive_thres", "HI_MPI_IVE_Thresh", k_line_thres_refused, k_line_thres_unfinished};
    IVE_SRC_IMAGE_S source = grey_image_of(src);
    IVE_DST_IMAGE_S result = grey_image_of(dst);
    IVE_THRESH_CTRL_S control = IVE_THRESH_CTRL_S();
    control.enMode = IVE_THRESH_MODE_BINARY;
    control.u8LowThr = static_cast<HI_U8>(thresh);
    control.u8MaxVal = 255;
    return run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_Thresh(handle, &source, &result, &control, flag);
    });
}

int hisi_ive_func::do_ive_color_trans(fd_yuv_frame* src, fd_yuv_frame* dst, ive_color_trans mode, bool instant) {
    static const job_words words = {"do_ive_color_trans", "HI_MPI_IVE_CSC", k_line_color_refused, k_no_line};
    IVE_SRC_IMAGE_S source = image_of(src, IVE_IMAGE_TYPE_YUV420SP, 2);
    IVE_DST_IMAGE_S result = image_of(dst, IVE_IMAGE_TYPE_U8C3_PLANAR, 3);
    IVE_CSC_CTRL_S control = IVE_CSC_CTRL_S();
    control.enMode = csc_mode(mode);
    return run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_CSC(handle, &source, &result, &control, flag);
    });
}

int hisi_ive_func::do_ive_ccl(fd_yuv_frame* img, hisi_mmz_mem* blob, std::vector<con_info>& out, bool instant) {
    static const job_words words = {"do_ive_ccl", "HI_MPI_IVE_CCL", k_line_ccl_refused, k_line_ccl_unfinished};
    IVE_IMAGE_S image = grey_image_of(img);
    IVE_DST_MEM_INFO_S result = IVE_DST_MEM_INFO_S();
    result.u32PhyAddr = blob->phys_addr();
    result.pu8VirAddr = static_cast<HI_U8*>(blob->virt_addr());
    result.u32Size = blob->size();
    IVE_CCL_CTRL_S control = IVE_CCL_CTRL_S();
    control.enMode = IVE_CCL_MODE_8C;
    control.u16InitAreaThr = k_first_area;
    control.u16Step = k_area_step;
    const int code = run_job(this, words, instant, [&](IVE_HANDLE* handle, HI_BOOL flag) {
        return HI_MPI_IVE_CCL(handle, &image, &result, &control, flag);
    });
    if (code != FD_OK) return code;
    (void)blob->flush_mmz(0);  // deliberate: what there is is read all the same
    append_regions(*static_cast<const IVE_CCBLOB_S*>(blob->virt_addr()), out);
    return FD_OK;
}

}  // namespace orva_fd
