/* The memory's archive as a linker sees it. In C, as a vendor's. */
#include "backend/hisi_sdk_declarations.h"

/* The driver takes a control's bytes: C must lay it out as C++ does, which hisi_sdk.h asserts. */
typedef char regions_as_in_cpp[sizeof(IVE_CCBLOB_S) == 3052 ? 1 : -1];
typedef char copies_as_in_cpp[sizeof(IVE_DMA_CTRL_S) == 24 && sizeof(HI_BOOL) == 4 ? 1 : -1];

HI_S32 HI_MPI_SYS_MmzAlloc(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                           HI_U32 length) {
    (void)phys_addr, (void)virt_addr, (void)block, (void)zone, (void)length;
    return HI_FAILURE;
}

HI_S32 HI_MPI_SYS_MmzAlloc_Cached(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                                  HI_U32 length) {
    (void)phys_addr, (void)virt_addr, (void)block, (void)zone, (void)length;
    return HI_FAILURE;
}

HI_S32 HI_MPI_SYS_MmzFlushCache(HI_U32 phys_addr, HI_VOID* virt_addr, HI_U32 length) {
    (void)phys_addr, (void)virt_addr, (void)length;
    return HI_SUCCESS;
}

HI_S32 HI_MPI_SYS_MmzFree(HI_U32 phys_addr, HI_VOID* virt_addr) {
    (void)phys_addr, (void)virt_addr;
    return HI_SUCCESS;
}
