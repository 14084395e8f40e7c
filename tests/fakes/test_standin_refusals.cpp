// What the stand-in refuses at submission, as the chip does: one row for each rule of each operation.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>

#include "tests/fakes/standin_jobs.h"
#include "tests/support/rows.h"

namespace {

using fakes::standin_jobs;

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
    std::unique_ptr<fakes::chip_picture> large;
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

// All pictures of a size in one block that is large enough, so that nothing but the size can be wrong.
void enlarge(refusals& t, int width, int height) {
    t.large = std::make_unique<fakes::chip_picture>(1922, 1082);
    const fd_yuv_frame block = t.large->frame();
    const HI_U16 stride = static_cast<HI_U16>(block.stride[0]);
    resize(t, width, height);
    for (IVE_IMAGE_S* img : {&t.first, &t.second, &t.result, &t.yuv, &t.planar}) {
        std::fill(std::begin(img->u32PhyAddr), std::end(img->u32PhyAddr), block.phys_addr[0]);
        std::fill(std::begin(img->u16Stride), std::end(img->u16Stride), stride);
    }
    t.from = t.to = {block.phys_addr[0], nullptr, stride, static_cast<HI_U16>(width), static_cast<HI_U16>(height), 0};
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
     [](r& t) { return enlarge(t, 96, 66), t.first.u16Stride[0] = 104, t.do_sub(); }},
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
    {{"a copy with a stride of 100 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.to.u16Stride = 100, t.do_dma(); }},
    {{"a copy from a stride of 100 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.from.u16Stride = 100, t.do_dma(); }},
    {{"a copy with a stride below the width is refused"},
     k_illegal,
     [](r& t) { return t.to.u16Stride = 80, t.do_dma(); }},
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
    {{"a dilation of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_dilate(); }},
    {{"a dilation of odd width is refused"}, k_illegal, [](r& t) { return resize(t, 65, 64), t.do_dilate(); }},
    {{"a dilation of odd height is refused"}, k_illegal, [](r& t) { return resize(t, 64, 65), t.do_dilate(); }},
    {{"a dilation to another size is refused"}, k_illegal, [](r& t) { return t.result.u16Width = 64, t.do_dilate(); }},
    {{"a dilation of another type is refused"},
     k_illegal,
     [](r& t) { return t.first.enType = IVE_IMAGE_TYPE_U8C3_PLANAR, t.do_dilate(); }},
    {{"a dilation to another type is refused"},
     k_illegal,
     [](r& t) { return t.result.enType = IVE_IMAGE_TYPE_YUV420SP, t.do_dilate(); }},
    {{"a dilation with a stride of 104 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.result.u16Stride[0] = 104, t.do_dilate(); }},
    {{"a dilation with a stride below the width is refused"},
     k_illegal,
     [](r& t) { return t.first.u16Stride[0] = 80, t.do_dilate(); }},
    {{"a mask entry of 1 is refused"}, k_illegal, [](r& t) { return t.square.au8Mask[12] = 1, t.do_dilate(); }},

    {{"a legal threshold is taken"}, 0, [](r& t) { return t.do_thresh(); }},
    {{"a threshold from an unaligned address is taken"},
     0,
     [](r& t) { return t.first.u32PhyAddr[0] += 5, t.do_thresh(); }},
    {{"a threshold of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_thresh(); }},
    {{"a threshold of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_thresh(); }},
    {{"a threshold of odd width is refused"}, k_illegal, [](r& t) { return resize(t, 65, 64), t.do_thresh(); }},
    {{"a threshold of odd height is refused"}, k_illegal, [](r& t) { return resize(t, 64, 65), t.do_thresh(); }},
    {{"a threshold to another size is refused"},
     k_illegal,
     [](r& t) { return t.result.u16Height = 64, t.do_thresh(); }},
    {{"a threshold of another type is refused"},
     k_illegal,
     [](r& t) { return t.first.enType = IVE_IMAGE_TYPE_YUV420SP, t.do_thresh(); }},
    {{"a threshold to another type is refused"},
     k_illegal,
     [](r& t) { return t.result.enType = IVE_IMAGE_TYPE_U8C3_PLANAR, t.do_thresh(); }},
    {{"a threshold with a stride of 104 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.result.u16Stride[0] = 104, t.do_thresh(); }},
    {{"a threshold with a stride below the width is refused"},
     k_illegal,
     [](r& t) { return t.first.u16Stride[0] = 80, t.do_thresh(); }},
    {{"the cutting threshold is not used here"},
     k_unsupported,
     [](r& t) { return t.thresh.enMode = IVE_THRESH_MODE_TRUNC, t.do_thresh(); }},
    {{"threshold mode 8 is refused"},
     k_illegal,
     [](r& t) { return t.thresh.enMode = static_cast<IVE_THRESH_MODE_E>(8), t.do_thresh(); }},

    {{"a legal conversion is taken"}, 0, [](r& t) { return t.do_csc(); }},
    {{"a conversion of 64 x 62 is too small"}, k_illegal, [](r& t) { return resize(t, 64, 62), t.do_csc(); }},
    {{"a conversion of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_csc(); }},
    {{"a conversion of odd width is refused"}, k_illegal, [](r& t) { return resize(t, 65, 64), t.do_csc(); }},
    {{"a conversion of odd height is refused"}, k_illegal, [](r& t) { return resize(t, 64, 65), t.do_csc(); }},
    {{"a conversion to another size is refused"}, k_illegal, [](r& t) { return t.planar.u16Width = 64, t.do_csc(); }},
    {{"a conversion with a luma stride of 104 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.yuv.u16Stride[0] = 104, t.do_csc(); }},
    {{"a conversion with a chroma stride of 104 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.yuv.u16Stride[1] = 104, t.do_csc(); }},
    {{"a conversion with a stride below the width is refused"},
     k_illegal,
     [](r& t) { return t.yuv.u16Stride[0] = 80, t.do_csc(); }},
    {{"a conversion from a luma that is 8 off is refused"},
     k_illegal,
     [](r& t) { return t.yuv.u32PhyAddr[0] += 8, t.do_csc(); }},
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
    {{"labelling of 62 x 64 is too small"}, k_illegal, [](r& t) { return resize(t, 62, 64), t.do_ccl(); }},
    {{"labelling of odd width is refused"}, k_illegal, [](r& t) { return resize(t, 65, 64), t.do_ccl(); }},
    {{"labelling of odd height is refused"}, k_illegal, [](r& t) { return resize(t, 64, 65), t.do_ccl(); }},
    {{"labelling of another type is refused"},
     k_illegal,
     [](r& t) { return t.first.enType = IVE_IMAGE_TYPE_YUV420SP, t.do_ccl(); }},
    {{"labelling with a stride of 104 is refused"},
     k_illegal,
     [](r& t) { return enlarge(t, 96, 66), t.first.u16Stride[0] = 104, t.do_ccl(); }},
    {{"labelling with a stride below the width is refused"},
     k_illegal,
     [](r& t) { return t.first.u16Stride[0] = 80, t.do_ccl(); }},
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

    // The largest of each operation, and two more in each direction: the engine's sizes are even.
    {{"a difference of 1920 x 1080 is taken"}, 0, [](r& t) { return enlarge(t, 1920, 1080), t.do_sub(); }},
    {{"a difference of 1922 x 1080 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1922, 1080), t.do_sub(); }},
    {{"a difference of 1920 x 1082 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1920, 1082), t.do_sub(); }},
    {{"a copy of 1920 x 1080 is taken"}, 0, [](r& t) { return enlarge(t, 1920, 1080), t.do_dma(); }},
    {{"a copy of 1922 x 1080 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1922, 1080), t.do_dma(); }},
    {{"a copy of 1920 x 1082 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1920, 1082), t.do_dma(); }},
    {{"a dilation of 1920 x 1024 is taken"}, 0, [](r& t) { return enlarge(t, 1920, 1024), t.do_dilate(); }},
    {{"a dilation of 1922 x 1024 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1922, 1024), t.do_dilate(); }},
    {{"a dilation of 1920 x 1026 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1920, 1026), t.do_dilate(); }},
    {{"a threshold of 1920 x 1080 is taken"}, 0, [](r& t) { return enlarge(t, 1920, 1080), t.do_thresh(); }},
    {{"a threshold of 1922 x 1080 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1922, 1080), t.do_thresh(); }},
    {{"a threshold of 1920 x 1082 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1920, 1082), t.do_thresh(); }},
    {{"a conversion of 1920 x 1080 is taken"}, 0, [](r& t) { return enlarge(t, 1920, 1080), t.do_csc(); }},
    {{"a conversion of 1922 x 1080 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1922, 1080), t.do_csc(); }},
    {{"a conversion of 1920 x 1082 is refused"}, k_illegal, [](r& t) { return enlarge(t, 1920, 1082), t.do_csc(); }},
    {{"labelling of 720 x 640 is taken"}, 0, [](r& t) { return enlarge(t, 720, 640), t.do_ccl(); }},
    {{"labelling of 722 x 640 is refused"}, k_illegal, [](r& t) { return enlarge(t, 722, 640), t.do_ccl(); }},
    {{"labelling of 720 x 642 is refused"}, k_illegal, [](r& t) { return enlarge(t, 720, 642), t.do_ccl(); }},
};
INSTANTIATE_TEST_SUITE_P(ive, refusals, testing::ValuesIn(k_refusals), support::row_name());

}  // namespace
