// NV21 to three planes of blue, green and red. Includes nothing else of this folder: backend/ uses it.
#ifndef ORVA_FD_PREPROCESS_CYUV420_RGB_H
#define ORVA_FD_PREPROCESS_CYUV420_RGB_H

#include "ORVA_FireDetection.h"

namespace orva_fd {

// One value for each chroma byte.
struct chroma_table {
    int entry[256];
    int operator[](int chroma) const { return entry[chroma]; }
};

// Full-range BT.601 (JFIF, ITU-T T.871) with coefficients of 8 fraction bits, each product rounded down on its own.
class CYuv420_Rgb {
public:
    // Fills the clipping table; once, before any conversion. Returns 0.
    static int init();
    static int destroy();

    // src: luma in plane 0, interleaved V,U pairs in plane 1, each with its own stride. dst: three planes of the same
    // size, 0 blue, 1 green, 2 red, all stepped with dst's stride[0]. Works in whole 2 x 2 blocks: an odd width or
    // height reads and writes one more column or row, in raster order of the blocks, so planes that lie back to back
    // overwrite each other's first row (deliberate). Returns 0. Any thread.
    int yuv420sp_to_rgb24(fd_yuv_frame* src, fd_yuv_frame* dst);

    static const chroma_table m_table_fv1;   // red from V: 1.402
    static const chroma_table m_table_fv2;   // green from V: 0.714
    static const chroma_table m_table_fu1;   // green from U: 0.344
    static const chroma_table m_table_fu2;   // blue from U: 1.772
    static unsigned char m_table_clp[1024];  // m_table_clp[384 + value] clips -384..639 to 0..255
};

}  // namespace orva_fd

#endif
