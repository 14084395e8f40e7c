/*
 * What this library needs of the chip vendor's interface, declared by ourselves so that the accelerated build compiles
 * on machines without the vendor's SDK. The generation with 32-bit physical addresses, 16-bit strides and a mode in
 * the labelling control; other generations differ in every record. hisi_sdk.h asserts the layouts. C and C++.
 */
#ifndef ORVA_FD_BACKEND_HISI_SDK_DECLARATIONS_H
#define ORVA_FD_BACKEND_HISI_SDK_DECLARATIONS_H

/* Every enumeration is an int to the driver, which checks what arrives; so is ours, and may hold any value. */
#ifdef __cplusplus
#define ORVA_AS_INT : int
#else
#define ORVA_AS_INT
#endif

typedef unsigned char HI_U8;
typedef signed char HI_S8;
typedef char HI_CHAR;
typedef unsigned short HI_U16;
typedef short HI_S16;
typedef unsigned int HI_U32;
typedef int HI_S32;
typedef unsigned long long HI_U64;
typedef enum hiHI_BOOL ORVA_AS_INT { HI_FALSE = 0, HI_TRUE = 1 } HI_BOOL;
#define HI_VOID void
typedef HI_S32 IVE_HANDLE;

#define HI_SUCCESS 0
#define HI_FAILURE (-1)

/* Codes: 0xA0, module 0x1D, level 4, number. Negative, as the type is signed. */
#define HI_ERR_IVE_ILLEGAL_PARAM ((HI_S32)0xA01D8003U)
#define HI_ERR_IVE_NULL_PTR ((HI_S32)0xA01D8006U)
#define HI_ERR_IVE_NOT_SURPPORT ((HI_S32)0xA01D8008U)
#define HI_ERR_IVE_NOMEM ((HI_S32)0xA01D800CU)
#define HI_ERR_IVE_BUF_FULL ((HI_S32)0xA01D800FU)
#define HI_ERR_IVE_NOTREADY ((HI_S32)0xA01D8010U)
#define HI_ERR_IVE_SYS_TIMEOUT ((HI_S32)0xA01D8040U)
#define HI_ERR_IVE_QUERY_TIMEOUT ((HI_S32)0xA01D8041U)

/* Images and memory. Physical addresses are the engine's, virtual ones the processor's, of the same planes. */

typedef enum hiIVE_IMAGE_TYPE_E ORVA_AS_INT {
    IVE_IMAGE_TYPE_U8C1 = 0,     /* grey */
    IVE_IMAGE_TYPE_YUV420SP = 2, /* luma, then interleaved V,U */
    IVE_IMAGE_TYPE_U8C3_PACKAGE = 10,
    IVE_IMAGE_TYPE_U8C3_PLANAR = 11 /* three byte planes */
} IVE_IMAGE_TYPE_E;

typedef struct hiIVE_IMAGE_S {
    IVE_IMAGE_TYPE_E enType;
    HI_U32 u32PhyAddr[3];
    HI_U8* pu8VirAddr[3];
    HI_U16 u16Stride[3]; /* in pixels of the plane */
    HI_U16 u16Width;
    HI_U16 u16Height;
    HI_U16 u16Reserved;
} IVE_IMAGE_S;
typedef IVE_IMAGE_S IVE_SRC_IMAGE_S;
typedef IVE_IMAGE_S IVE_DST_IMAGE_S;

typedef struct hiIVE_DATA_S {
    HI_U32 u32PhyAddr;
    HI_U8* pu8VirAddr;
    HI_U16 u16Stride; /* bytes, as is the width */
    HI_U16 u16Width;
    HI_U16 u16Height;
    HI_U16 u16Reserved;
} IVE_DATA_S;
typedef IVE_DATA_S IVE_SRC_DATA_S;
typedef IVE_DATA_S IVE_DST_DATA_S;

typedef struct hiIVE_MEM_INFO_S {
    HI_U32 u32PhyAddr;
    HI_U8* pu8VirAddr;
    HI_U32 u32Size;
} IVE_MEM_INFO_S;
typedef IVE_MEM_INFO_S IVE_SRC_MEM_INFO_S;
typedef IVE_MEM_INFO_S IVE_DST_MEM_INFO_S;

/* Control records, one per operation. */

typedef enum hiIVE_SUB_MODE_E ORVA_AS_INT { IVE_SUB_MODE_ABS = 0, IVE_SUB_MODE_SHIFT = 1 } IVE_SUB_MODE_E;
typedef struct hiIVE_SUB_CTRL_S {
    IVE_SUB_MODE_E enMode;
} IVE_SUB_CTRL_S;

typedef enum hiIVE_DMA_MODE_E ORVA_AS_INT {
    IVE_DMA_MODE_DIRECT_COPY = 0,
    IVE_DMA_MODE_INTERVAL_COPY = 1,
    IVE_DMA_MODE_SET_3BYTE = 2,
    IVE_DMA_MODE_SET_8BYTE = 3
} IVE_DMA_MODE_E;
typedef struct hiIVE_DMA_CTRL_S {
    IVE_DMA_MODE_E enMode;
    HI_U64 u64Val; /* fill modes only */
    HI_U8 u8HorSegSize;
    HI_U8 u8ElemSize;
    HI_U8 u8VerSegRows;
} IVE_DMA_CTRL_S;

typedef struct hiIVE_DILATE_CTRL_S {
    HI_U8 au8Mask[25]; /* 5 x 5, each 0 or 255 */
} IVE_DILATE_CTRL_S;

typedef enum hiIVE_THRESH_MODE_E ORVA_AS_INT {
    IVE_THRESH_MODE_BINARY = 0, /* at or below the low threshold the least value, above it the greatest */
    IVE_THRESH_MODE_TRUNC = 1,
    IVE_THRESH_MODE_TO_MINVAL = 2
} IVE_THRESH_MODE_E;
typedef struct hiIVE_THRESH_CTRL_S {
    IVE_THRESH_MODE_E enMode;
    HI_U8 u8LowThr;
    HI_U8 u8HighThr;
    HI_U8 u8MinVal;
    HI_U8 u8MidVal;
    HI_U8 u8MaxVal;
} IVE_THRESH_CTRL_S;

typedef enum hiIVE_CSC_MODE_E ORVA_AS_INT {
    IVE_CSC_MODE_VIDEO_BT601_YUV2RGB = 0,
    IVE_CSC_MODE_VIDEO_BT709_YUV2RGB = 1,
    IVE_CSC_MODE_PIC_BT601_YUV2RGB = 2,
    IVE_CSC_MODE_PIC_BT709_YUV2RGB = 3,
    IVE_CSC_MODE_PIC_BT601_YUV2HSV = 4,
    IVE_CSC_MODE_PIC_BT709_YUV2HSV = 5,
    IVE_CSC_MODE_PIC_BT601_YUV2LAB = 6,
    IVE_CSC_MODE_PIC_BT709_YUV2LAB = 7
} IVE_CSC_MODE_E;
typedef struct hiIVE_CSC_CTRL_S {
    IVE_CSC_MODE_E enMode;
} IVE_CSC_CTRL_S;

typedef enum hiIVE_CCL_MODE_E ORVA_AS_INT { IVE_CCL_MODE_4C = 0, IVE_CCL_MODE_8C = 1 } IVE_CCL_MODE_E;
typedef struct hiIVE_CCL_CTRL_S {
    IVE_CCL_MODE_E enMode;
    HI_U16 u16InitAreaThr;
    HI_U16 u16Step; /* never 0 */
} IVE_CCL_CTRL_S;

/* Results of labelling. Slots are sparse: one is valid if its area is above the threshold in force at the end. */

#define IVE_MAX_REGION_NUM 254
typedef struct hiIVE_REGION_S {
    HI_U32 u32Area;
    HI_U16 u16Left;
    HI_U16 u16Right;
    HI_U16 u16Top;
    HI_U16 u16Bottom;
} IVE_REGION_S;
typedef struct hiIVE_CCBLOB_S {
    HI_U16 u16CurAreaThr;
    HI_S8 s8LabelStatus; /* 0 labelled, -1 labels not unique */
    HI_U8 u8RegionNum;
    IVE_REGION_S astRegion[IVE_MAX_REGION_NUM];
} IVE_CCBLOB_S;

#ifdef __cplusplus
extern "C" {
#endif

HI_S32 HI_MPI_IVE_DMA(IVE_HANDLE* handle, IVE_DATA_S* src, IVE_DST_DATA_S* dst, IVE_DMA_CTRL_S* control,
                      HI_BOOL instant);
HI_S32 HI_MPI_IVE_CSC(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_CSC_CTRL_S* control,
                      HI_BOOL instant);
HI_S32 HI_MPI_IVE_Dilate(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_DILATE_CTRL_S* control,
                         HI_BOOL instant);
HI_S32 HI_MPI_IVE_Thresh(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* src, IVE_DST_IMAGE_S* dst, IVE_THRESH_CTRL_S* control,
                         HI_BOOL instant);
HI_S32 HI_MPI_IVE_Sub(IVE_HANDLE* handle, IVE_SRC_IMAGE_S* first, IVE_SRC_IMAGE_S* second, IVE_DST_IMAGE_S* dst,
                      IVE_SUB_CTRL_S* control, HI_BOOL instant);
HI_S32 HI_MPI_IVE_CCL(IVE_HANDLE* handle, IVE_IMAGE_S* image, IVE_DST_MEM_INFO_S* blob, IVE_CCL_CTRL_S* control,
                      HI_BOOL instant);
HI_S32 HI_MPI_IVE_Query(IVE_HANDLE handle, HI_BOOL* finished, HI_BOOL block);

HI_S32 HI_MPI_SYS_MmzAlloc(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                           HI_U32 length);
HI_S32 HI_MPI_SYS_MmzAlloc_Cached(HI_U32* phys_addr, HI_VOID** virt_addr, const HI_CHAR* block, const HI_CHAR* zone,
                                  HI_U32 length);
HI_S32 HI_MPI_SYS_MmzFlushCache(HI_U32 phys_addr, HI_VOID* virt_addr, HI_U32 length);
HI_S32 HI_MPI_SYS_MmzFree(HI_U32 phys_addr, HI_VOID* virt_addr);

#ifdef __cplusplus
}
#endif

#undef ORVA_AS_INT

#endif
