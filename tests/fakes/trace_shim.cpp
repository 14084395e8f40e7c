// Traces the vendor calls of a program on a chip, in the lines of the stand-in's trace. Preloaded before the vendor's
// shared libraries:
//
//   HI_SHIM_TRACE=FILE LD_PRELOAD=./liborva_trace_shim.so program
//
// Each call goes on to the next library that defines it. Only for a program that links the vendor's libraries as shared
// ones; with static ones, link this file in front of them with the linker's option --wrap for each function.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "tests/fakes/standin_records.h"
#include "tests/fakes/standin_trace.h"

namespace {

using standin::call;
using standin::record;

// The vendor's function of that name.
template <typename function>
function* vendor(call which) {
    static void* found[standin::k_calls] = {};
    void*& slot = found[static_cast<int>(which)];
    if (slot == nullptr) slot = dlsym(RTLD_NEXT, standin::name_of(which));
    if (slot == nullptr) {
        std::fprintf(stderr, "trace shim: no library defines %s\n", standin::name_of(which));
        std::abort();
    }
    return reinterpret_cast<function*>(slot);
}

HI_S32 note(const record& what) {
    static std::mutex lock;
    static standin::trace_text text;
    static std::FILE* file = [] {
        const char* path = std::getenv("HI_SHIM_TRACE");
        return path != nullptr ? std::fopen(path, "w") : nullptr;
    }();
    const std::lock_guard<std::mutex> held(lock);
    if (file != nullptr) {
        std::fprintf(file, "%s\n", text.line_of(what).c_str());
        std::fflush(file);
    }
    return what.returned;
}

HI_S32 note_submission(record job, const IVE_HANDLE* handle, HI_S32 code) {
    job.returned = code;
    job.handle = *handle;
    return note(job);
}

HI_S32 note_memory(record what, HI_S32 code) {
    what.returned = code;
    return note(what);
}

}  // namespace

extern "C" {

HI_S32 HI_MPI_IVE_Sub(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* first, IVE_SRC_IMAGE_S* second, IVE_DST_IMAGE_S* dst,
                      IVE_SUB_CTRL_S* control, HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_Sub)>(call::sub)(handle, first, second, dst, control, instant);
    return note_submission(standin::sub_record(first, second, dst, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_DMA(IVE_HANDLE* handle, IVE_DATA_S* src, IVE_DST_DATA_S* dst, IVE_DMA_CTRL_S* control,
                      HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_DMA)>(call::dma)(handle, src, dst, control, instant);
    return note_submission(standin::dma_record(src, dst, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_Dilate(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_DILATE_CTRL_S* control,
                         HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_Dilate)>(call::dilate)(handle, src, dst, control, instant);
    return note_submission(standin::dilate_record(src, dst, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_Thresh(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_THRESH_CTRL_S* control,
                         HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_Thresh)>(call::thresh)(handle, src, dst, control, instant);
    return note_submission(standin::thresh_record(src, dst, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_CSC(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_CSC_CTRL_S* control,
                      HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_CSC)>(call::csc)(handle, src, dst, control, instant);
    return note_submission(standin::csc_record(src, dst, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_CCL(IVE_HANDLE* handle, IVE_IMAGE_S* image, IVE_DST_MEM_INFO_S* blob, IVE_CCL_CTRL_S* control,
                      HI_BOOL instant) {
    const HI_S32 code = vendor<decltype(HI_MPI_IVE_CCL)>(call::ccl)(handle, image, blob, control, instant);
    return note_submission(standin::ccl_record(image, blob, control, instant), handle, code);
}

HI_S32 HI_MPI_IVE_Query(IVE_HANDLE handle, HI_BOOL* finished, HI_BOOL block) {
    record what = standin::query_record(handle, block);
    what.returned = vendor<decltype(HI_MPI_IVE_Query)>(call::query)(handle, finished, block);
    what.finished = *finished;
    return note(what);
}

HI_S32 HI_MPI_SYS_MmzAlloc(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                           HI_U32 length) {
    record what = standin::alloc_record(call::alloc, block, zone, length);
    what.returned = vendor<decltype(HI_MPI_SYS_MmzAlloc)>(call::alloc)(phys_addr, virt_addr, block, zone, length);
    what.phys_addr = *phys_addr;
    return note(what);
}

HI_S32 HI_MPI_SYS_MmzAlloc_Cached(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                                  HI_U32 length) {
    record what = standin::alloc_record(call::alloc_cached, block, zone, length);
    what.returned =
        vendor<decltype(HI_MPI_SYS_MmzAlloc_Cached)>(call::alloc_cached)(phys_addr, virt_addr, block, zone, length);
    what.phys_addr = *phys_addr;
    return note(what);
}

HI_S32 HI_MPI_SYS_MmzFlushCache(HI_U32 phys_addr, HI_VOID* virt_addr, HI_U32 length) {
    return note_memory(standin::memory_record(call::flush, phys_addr, virt_addr, length),
                       vendor<decltype(HI_MPI_SYS_MmzFlushCache)>(call::flush)(phys_addr, virt_addr, length));
}

HI_S32 HI_MPI_SYS_MmzFree(HI_U32 phys_addr, HI_VOID* virt_addr) {
    return note_memory(standin::memory_record(call::free, phys_addr, virt_addr, 0),
                       vendor<decltype(HI_MPI_SYS_MmzFree)>(call::free)(phys_addr, virt_addr));
}

}  // extern "C"
