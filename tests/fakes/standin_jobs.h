// A legal submission of each of the six operations, straight to the stand-in; tests break one thing at a time.
#ifndef ORVA_TESTS_FAKES_STANDIN_JOBS_H
#define ORVA_TESTS_FAKES_STANDIN_JOBS_H

#include "tests/fakes/chip_test.h"

namespace fakes {

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

}  // namespace fakes

#endif
