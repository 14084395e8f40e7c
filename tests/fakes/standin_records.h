// Records of vendor calls from their arguments, for the stand-in and for the shim that traces a chip. Pointers are not
// null.
#ifndef ORVA_TESTS_FAKES_STANDIN_RECORDS_H
#define ORVA_TESTS_FAKES_STANDIN_RECORDS_H

#include "tests/fakes/standin.h"

namespace standin {

inline record named(call function, HI_BOOL flag) {
    record what;
    what.function = function;
    what.flag = flag;
    return what;
}

inline record sub_record(const IVE_IMAGE_S* first, const IVE_IMAGE_S* second, const IVE_IMAGE_S* dst,
                         const IVE_SUB_CTRL_S* control, HI_BOOL instant) {
    record job = named(call::sub, instant);
    job.images = {*first, *second, *dst};
    job.sub = *control;
    return job;
}

inline record dma_record(const IVE_DATA_S* src, const IVE_DATA_S* dst, const IVE_DMA_CTRL_S* control, HI_BOOL instant) {
    record job = named(call::dma, instant);
    job.data = {*src, *dst};
    job.dma = *control;
    return job;
}

inline record dilate_record(const IVE_IMAGE_S* src, const IVE_IMAGE_S* dst, const IVE_DILATE_CTRL_S* control,
                            HI_BOOL instant) {
    record job = named(call::dilate, instant);
    job.images = {*src, *dst, IVE_IMAGE_S()};
    job.dilate = *control;
    return job;
}

inline record thresh_record(const IVE_IMAGE_S* src, const IVE_IMAGE_S* dst, const IVE_THRESH_CTRL_S* control,
                            HI_BOOL instant) {
    record job = named(call::thresh, instant);
    job.images = {*src, *dst, IVE_IMAGE_S()};
    job.thresh = *control;
    return job;
}

inline record csc_record(const IVE_IMAGE_S* src, const IVE_IMAGE_S* dst, const IVE_CSC_CTRL_S* control,
                         HI_BOOL instant) {
    record job = named(call::csc, instant);
    job.images = {*src, *dst, IVE_IMAGE_S()};
    job.csc = *control;
    return job;
}

inline record ccl_record(const IVE_IMAGE_S* image, const IVE_MEM_INFO_S* blob, const IVE_CCL_CTRL_S* control,
                         HI_BOOL instant) {
    record job = named(call::ccl, instant);
    job.images = {*image, IVE_IMAGE_S(), IVE_IMAGE_S()};
    job.memory = *blob;
    job.ccl = *control;
    return job;
}

inline record query_record(IVE_HANDLE handle, HI_BOOL block) {
    record what = named(call::query, block);
    what.handle = handle;
    return what;
}

inline record alloc_record(call function, const HI_CHAR* block, const HI_CHAR* zone, HI_U32 length) {
    record what = named(function, HI_FALSE);
    what.block_name = block == nullptr ? "" : block;
    what.default_zone = zone == nullptr;
    what.length = length;
    return what;
}

inline record memory_record(call function, HI_U32 phys_addr, void* virt_addr, HI_U32 length) {
    record what = named(function, HI_FALSE);
    what.phys_addr = phys_addr;
    what.virt_addr = virt_addr;
    what.length = length;
    return what;
}

}  // namespace standin

#endif
