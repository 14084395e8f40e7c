// The vendor's interface for this folder: the SDK's own headers where the build names an SDK, our declarations
// otherwise. The layouts that the accelerator's driver expects are asserted for both, because every record goes to it
// by address: a header of another chip generation compiles, links and then fails on every frame.
#ifndef ORVA_FD_BACKEND_HISI_SDK_H
#define ORVA_FD_BACKEND_HISI_SDK_H

#include <cstddef>

#include "backend/accelerator.h"

#if ORVA_IVE_VENDOR_HEADERS
#include <mpi_ive.h>
#include <mpi_sys.h>
#else
#include "backend/hisi_sdk_declarations.h"
#endif

namespace orva_fd {

// Size or offset with pointers of 32 and of 64 bits.
constexpr std::size_t by_pointer(std::size_t narrow, std::size_t wide) {
    return sizeof(void*) == 4 ? narrow : wide;
}

static_assert(sizeof(HI_BOOL) == 4 && sizeof(IVE_HANDLE) == 4 && sizeof(HI_U64) == 8, "basic types");
static_assert(HI_FALSE == 0 && HI_TRUE == 1, "values of flags");
static_assert(HI_SUCCESS == 0 && HI_FAILURE + 1 == 0, "values of success and failure");
static_assert(sizeof(IVE_IMAGE_TYPE_E) == 4 && sizeof(IVE_SUB_MODE_E) == 4 && sizeof(IVE_DMA_MODE_E) == 4 &&
                  sizeof(IVE_THRESH_MODE_E) == 4 && sizeof(IVE_CSC_MODE_E) == 4 && sizeof(IVE_CCL_MODE_E) == 4,
              "enumerations are ints: -fshort-enums breaks every record");

static_assert(sizeof(IVE_IMAGE_S) == by_pointer(40, 56) && alignof(IVE_IMAGE_S) == by_pointer(4, 8),
              "size of an image");
static_assert(offsetof(IVE_IMAGE_S, enType) == 0 && offsetof(IVE_IMAGE_S, u32PhyAddr) == 4 &&
                  offsetof(IVE_IMAGE_S, pu8VirAddr) == 16,
              "addresses of an image");
static_assert(offsetof(IVE_IMAGE_S, u16Stride) == by_pointer(28, 40) &&
                  offsetof(IVE_IMAGE_S, u16Width) == by_pointer(34, 46) &&
                  offsetof(IVE_IMAGE_S, u16Height) == by_pointer(36, 48) &&
                  offsetof(IVE_IMAGE_S, u16Reserved) == by_pointer(38, 50),
              "strides and size of an image");

static_assert(sizeof(IVE_DATA_S) == by_pointer(16, 24) && alignof(IVE_DATA_S) == by_pointer(4, 8),
              "size of a data block");
static_assert(offsetof(IVE_DATA_S, u32PhyAddr) == 0 && offsetof(IVE_DATA_S, pu8VirAddr) == by_pointer(4, 8) &&
                  offsetof(IVE_DATA_S, u16Stride) == by_pointer(8, 16) &&
                  offsetof(IVE_DATA_S, u16Width) == by_pointer(10, 18) &&
                  offsetof(IVE_DATA_S, u16Height) == by_pointer(12, 20) &&
                  offsetof(IVE_DATA_S, u16Reserved) == by_pointer(14, 22),
              "fields of a data block");

static_assert(sizeof(IVE_MEM_INFO_S) == by_pointer(12, 24) && alignof(IVE_MEM_INFO_S) == by_pointer(4, 8),
              "size of a memory record");
static_assert(offsetof(IVE_MEM_INFO_S, u32PhyAddr) == 0 && offsetof(IVE_MEM_INFO_S, pu8VirAddr) == by_pointer(4, 8) &&
                  offsetof(IVE_MEM_INFO_S, u32Size) == by_pointer(8, 16),
              "fields of a memory record");

static_assert(sizeof(IVE_SUB_CTRL_S) == 4, "size of the difference control");
static_assert(sizeof(IVE_CSC_CTRL_S) == 4, "size of the colour control");
static_assert(alignof(IVE_SUB_CTRL_S) == 4, "alignment of the difference control");
static_assert(alignof(IVE_CSC_CTRL_S) == 4, "alignment of the colour control");
static_assert(sizeof(IVE_DMA_CTRL_S) == 24 && alignof(IVE_DMA_CTRL_S) == 8, "size of the copy control");
static_assert(offsetof(IVE_DMA_CTRL_S, enMode) == 0 && offsetof(IVE_DMA_CTRL_S, u64Val) == 8 &&
                  offsetof(IVE_DMA_CTRL_S, u8HorSegSize) == 16 && offsetof(IVE_DMA_CTRL_S, u8ElemSize) == 17 &&
                  offsetof(IVE_DMA_CTRL_S, u8VerSegRows) == 18,
              "fields of the copy control");
static_assert(sizeof(IVE_DILATE_CTRL_S) == 25 && alignof(IVE_DILATE_CTRL_S) == 1, "dilation control");
static_assert(sizeof(IVE_THRESH_CTRL_S) == 12 && alignof(IVE_THRESH_CTRL_S) == 4 &&
                  offsetof(IVE_THRESH_CTRL_S, enMode) == 0 && offsetof(IVE_THRESH_CTRL_S, u8LowThr) == 4 &&
                  offsetof(IVE_THRESH_CTRL_S, u8HighThr) == 5 && offsetof(IVE_THRESH_CTRL_S, u8MinVal) == 6 &&
                  offsetof(IVE_THRESH_CTRL_S, u8MidVal) == 7 && offsetof(IVE_THRESH_CTRL_S, u8MaxVal) == 8,
              "threshold control");
static_assert(sizeof(IVE_CCL_CTRL_S) == 8 && alignof(IVE_CCL_CTRL_S) == 4 && offsetof(IVE_CCL_CTRL_S, enMode) == 0 &&
                  offsetof(IVE_CCL_CTRL_S, u16InitAreaThr) == 4 && offsetof(IVE_CCL_CTRL_S, u16Step) == 6,
              "labelling control: without the mode it is an older chip's");

static_assert(sizeof(IVE_REGION_S) == 12 && alignof(IVE_REGION_S) == 4 && offsetof(IVE_REGION_S, u32Area) == 0 &&
                  offsetof(IVE_REGION_S, u16Left) == 4 && offsetof(IVE_REGION_S, u16Right) == 6 &&
                  offsetof(IVE_REGION_S, u16Top) == 8 && offsetof(IVE_REGION_S, u16Bottom) == 10,
              "a region of the labelling result");
static_assert(IVE_MAX_REGION_NUM == 254 && sizeof(IVE_CCBLOB_S) == 3052 && alignof(IVE_CCBLOB_S) == 4 &&
                  offsetof(IVE_CCBLOB_S, u16CurAreaThr) == 0 && offsetof(IVE_CCBLOB_S, s8LabelStatus) == 2 &&
                  offsetof(IVE_CCBLOB_S, u8RegionNum) == 3 && offsetof(IVE_CCBLOB_S, astRegion) == 4,
              "the labelling result");

static_assert(IVE_IMAGE_TYPE_U8C1 == 0 && IVE_IMAGE_TYPE_YUV420SP == 2 && IVE_IMAGE_TYPE_U8C3_PLANAR == 11,
              "image types");
static_assert(IVE_SUB_MODE_ABS == 0 && IVE_DMA_MODE_DIRECT_COPY == 0 && IVE_THRESH_MODE_BINARY == 0 &&
                  IVE_CCL_MODE_8C == 1,
              "modes");
static_assert(IVE_CSC_MODE_PIC_BT709_YUV2RGB == 3 && IVE_CSC_MODE_PIC_BT709_YUV2HSV == 5 &&
                  IVE_CSC_MODE_PIC_BT709_YUV2LAB == 7,
              "colour modes");
static_assert(static_cast<HI_U32>(HI_ERR_IVE_SYS_TIMEOUT) == 0xA01D8040u &&
                  static_cast<HI_U32>(HI_ERR_IVE_QUERY_TIMEOUT) == 0xA01D8041u,
              "time-out codes");

}  // namespace orva_fd

#endif
