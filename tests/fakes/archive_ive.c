/* The engine's archive as a linker sees it: seven functions that want the four of the memory's. In C, as a vendor's. */
#include "backend/hisi_sdk_declarations.h"

static HI_S32 memory_functions(HI_VOID* memory) {
    HI_U32 address = 0;
    return HI_MPI_SYS_MmzAlloc(&address, &memory, "a", 0, 1) +
           HI_MPI_SYS_MmzAlloc_Cached(&address, &memory, "a", 0, 1) + HI_MPI_SYS_MmzFlushCache(address, memory, 1) +
           HI_MPI_SYS_MmzFree(address, memory);
}

HI_S32 HI_MPI_IVE_DMA(IVE_HANDLE* handle, IVE_DATA_S* src, IVE_DST_DATA_S* dst, IVE_DMA_CTRL_S* control,
                      HI_BOOL instant) {
    (void)src, (void)dst, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_CSC(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_CSC_CTRL_S* control,
                      HI_BOOL instant) {
    (void)src, (void)dst, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_Dilate(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_DILATE_CTRL_S* control,
                         HI_BOOL instant) {
    (void)src, (void)dst, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_Thresh(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_THRESH_CTRL_S* control,
                         HI_BOOL instant) {
    (void)src, (void)dst, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_Sub(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* first, IVE_SRC_IMAGE_S* second, IVE_DST_IMAGE_S* dst,
                      IVE_SUB_CTRL_S* control, HI_BOOL instant) {
    (void)first, (void)second, (void)dst, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_CCL(IVE_HANDLE* handle, IVE_IMAGE_S* image, IVE_DST_MEM_INFO_S* blob, IVE_CCL_CTRL_S* control,
                      HI_BOOL instant) {
    (void)image, (void)blob, (void)control, (void)instant;
    return memory_functions(handle);
}

HI_S32 HI_MPI_IVE_Query(IVE_HANDLE handle, HI_BOOL* finished, HI_BOOL block) {
    (void)handle, (void)block;
    return memory_functions(finished);
}
