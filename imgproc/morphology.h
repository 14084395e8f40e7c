// Dilation and erosion of binary images with 3 x 3 structuring elements.
#ifndef ORVA_FD_IMGPROC_MORPHOLOGY_H
#define ORVA_FD_IMGPROC_MORPHOLOGY_H

#include "ORVA_FireDetection.h"

namespace orva_fd {

// A pixel counts as set when its lowest bit is 1. Any thread; the object has no state.
class morphology {
public:
    // Writes the element's row masks, top to bottom. Bit 0 of a mask stands for the column left of the pixel, bit 8 for
    // its own, bit 16 for the one to the right. type: 0 horizontal line, 1 vertical line, 2 cross, 3 square, 4 cross
    // with the lower left corner (deliberate). Returns 0 always; an unknown type prints an error and leaves mask
    // unwritten (deliberate).
    int get_mask(int type, unsigned int* mask);

    // Writes 255 where any pixel of the 3 x 3 square is set, src's value elsewhere.
    // src, dst: grey images of one size and stride; not the same memory: stride * height bytes are copied first, row
    // padding included. The outer rows and columns and column width - 2 keep src's values (deliberate: the loop stops
    // one column early). Images of height 2 or width 3 and less are only copied.
    void dilate(fd_yuv_frame* src, fd_yuv_frame* dst);

    // The same with 0 where any pixel of the square is not set.
    void erode(fd_yuv_frame* src, fd_yuv_frame* dst);
};

}  // namespace orva_fd

#endif
