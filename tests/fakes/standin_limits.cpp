#include "tests/fakes/standin_limits.h"

#include <algorithm>
#include <cstddef>

namespace standin {

namespace {

struct operation_limits {
    int least_width, least_height;
    int most_width, most_height;
    HI_U32 address_step;
};
const operation_limits k_dma = {32, 1, 1920, 1080, 1};
const operation_limits k_sub = {64, 64, 1920, 1080, 1};
const operation_limits k_thresh = {64, 64, 1920, 1080, 1};
const operation_limits k_csc = {64, 64, 1920, 1080, 16};
const operation_limits k_dilate = {64, 64, 1920, 1024, 16};
// The headers of the fitting chips allow less here than the reference of a later one (1280 x 720).
const operation_limits k_ccl = {64, 64, 720, 640, 16};

bool within(const operation_limits& limits, int width, int height) {
    return width >= limits.least_width && height >= limits.least_height && width <= limits.most_width &&
           height <= limits.most_height;
}

bool plane_is_known(memory_map& memory, HI_U32 phys_addr, int stride, int width, int rows) {
    const std::size_t bytes =
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows - 1) + static_cast<std::size_t>(width);
    return phys_addr != 0 && memory.engine_at(phys_addr, bytes) != nullptr;
}

// Rows of a plane: chroma of a 4:2:0 picture has half of them.
int rows_of(const IVE_IMAGE_S& image, int plane) {
    return image.enType == IVE_IMAGE_TYPE_YUV420SP && plane == 1 ? image.u16Height / 2 : image.u16Height;
}

bool image_is_legal(const IVE_IMAGE_S& image, IVE_IMAGE_TYPE_E type, int planes, const operation_limits& limits,
                    memory_map& memory) {
    if (image.enType != type || !within(limits, image.u16Width, image.u16Height)) return false;
    if (image.u16Width % 2 != 0 || image.u16Height % 2 != 0) return false;
    for (int plane = 0; plane < planes; ++plane) {
        const int stride = image.u16Stride[plane];
        if (stride % 16 != 0 || stride < image.u16Width) return false;
        if (image.u32PhyAddr[plane] % limits.address_step != 0) return false;
        if (!plane_is_known(memory, image.u32PhyAddr[plane], stride, image.u16Width, rows_of(image, plane)))
            return false;
    }
    return true;
}

bool grey_is_legal(const IVE_IMAGE_S& image, const operation_limits& limits, memory_map& memory) {
    return image_is_legal(image, IVE_IMAGE_TYPE_U8C1, 1, limits, memory);
}

bool same_size(const IVE_IMAGE_S& a, const IVE_IMAGE_S& b) {
    return a.u16Width == b.u16Width && a.u16Height == b.u16Height;
}

bool data_is_legal(const IVE_DATA_S& data, memory_map& memory) {
    return within(k_dma, data.u16Width, data.u16Height) && data.u16Stride % 16 == 0 &&
           data.u16Stride >= data.u16Width &&
           plane_is_known(memory, data.u32PhyAddr, data.u16Stride, data.u16Width, data.u16Height);
}

HI_S32 legal_if(bool legal) {
    return legal ? HI_SUCCESS : HI_ERR_IVE_ILLEGAL_PARAM;
}

// A mode of the enumeration that nothing here uses is "not on this chip"; a number outside it is a wrong parameter.
HI_S32 mode_refusal(int mode, int used, int last) {
    if (mode == used) return HI_SUCCESS;
    return mode < 0 || mode > last ? HI_ERR_IVE_ILLEGAL_PARAM : HI_ERR_IVE_NOT_SURPPORT;
}

HI_S32 refusal_of_sub(const record& job, memory_map& memory) {
    const auto& image = job.images;
    const bool legal = std::all_of(image.begin(), image.end(),
                                   [&](const IVE_IMAGE_S& one) { return grey_is_legal(one, k_sub, memory); }) &&
                       same_size(image[0], image[1]) && same_size(image[0], image[2]);
    return legal ? mode_refusal(job.sub.enMode, IVE_SUB_MODE_ABS, IVE_SUB_MODE_SHIFT) : legal_if(false);
}

HI_S32 refusal_of_dma(const record& job, memory_map& memory) {
    const auto& data = job.data;
    const bool legal = data_is_legal(data[0], memory) && data_is_legal(data[1], memory) &&
                       data[0].u16Width == data[1].u16Width && data[0].u16Height == data[1].u16Height;
    return legal ? mode_refusal(job.dma.enMode, IVE_DMA_MODE_DIRECT_COPY, IVE_DMA_MODE_SET_8BYTE) : legal_if(false);
}

HI_S32 refusal_of_dilate(const record& job, memory_map& memory) {
    const auto& mask = job.dilate.au8Mask;
    const bool mask_is_legal =
        std::all_of(std::begin(mask), std::end(mask), [](HI_U8 entry) { return entry == 0 || entry == 255; });
    return legal_if(mask_is_legal && grey_is_legal(job.images[0], k_dilate, memory) &&
                    grey_is_legal(job.images[1], k_dilate, memory) && same_size(job.images[0], job.images[1]));
}

HI_S32 refusal_of_thresh(const record& job, memory_map& memory) {
    const bool legal = grey_is_legal(job.images[0], k_thresh, memory) &&
                       grey_is_legal(job.images[1], k_thresh, memory) && same_size(job.images[0], job.images[1]);
    return legal ? mode_refusal(job.thresh.enMode, IVE_THRESH_MODE_BINARY, 7) : legal_if(false);
}

HI_S32 refusal_of_csc(const record& job, memory_map& memory) {
    const IVE_IMAGE_S& result = job.images[1];
    const bool legal = image_is_legal(job.images[0], IVE_IMAGE_TYPE_YUV420SP, 2, k_csc, memory) &&
                       image_is_legal(result, IVE_IMAGE_TYPE_U8C3_PLANAR, 3, k_csc, memory) &&
                       same_size(job.images[0], result) && result.u16Stride[0] == result.u16Stride[1] &&
                       result.u16Stride[0] == result.u16Stride[2];
    const int mode = job.csc.enMode;
    if (!legal || mode < 0 || mode > 11) return HI_ERR_IVE_ILLEGAL_PARAM;
    return mode <= IVE_CSC_MODE_PIC_BT709_YUV2LAB ? HI_SUCCESS : HI_ERR_IVE_NOT_SURPPORT;
}

HI_S32 refusal_of_ccl(const record& job, memory_map& memory) {
    const IVE_MEM_INFO_S& blob = job.memory;
    const bool legal = grey_is_legal(job.images[0], k_ccl, memory) && blob.u32PhyAddr % 16 == 0 &&
                       blob.u32Size >= sizeof(IVE_CCBLOB_S) && blob.u32PhyAddr != 0 &&
                       memory.engine_at(blob.u32PhyAddr, sizeof(IVE_CCBLOB_S)) != nullptr && job.ccl.u16Step != 0;
    return legal ? mode_refusal(job.ccl.enMode, IVE_CCL_MODE_8C, IVE_CCL_MODE_8C) : legal_if(false);
}

}  // namespace

HI_S32 refusal_of(const record& job, memory_map& memory) {
    if (job.flag != HI_FALSE && job.flag != HI_TRUE) return HI_ERR_IVE_ILLEGAL_PARAM;
    switch (job.function) {
        case call::sub:
            return refusal_of_sub(job, memory);
        case call::dma:
            return refusal_of_dma(job, memory);
        case call::dilate:
            return refusal_of_dilate(job, memory);
        case call::thresh:
            return refusal_of_thresh(job, memory);
        case call::csc:
            return refusal_of_csc(job, memory);
        case call::ccl:
            return refusal_of_ccl(job, memory);
        default:
            return HI_ERR_IVE_ILLEGAL_PARAM;
    }
}

}  // namespace standin
