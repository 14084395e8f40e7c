// imgproc/ holds the loops over pixel planes: differences, thresholds, morphology, labelling. They know images, not
// channels, and keep no state but tables that are written once. This header adds the records and helpers that every
// folder shares.
#ifndef ORVA_FD_IMGPROC_COMMON_H
#define ORVA_FD_IMGPROC_COMMON_H

#include <cstddef>
#include <cstdint>

#include "ORVA_FireDetection.h"
#include "imgproc/vectors.h"

namespace orva_fd {

// Size that the working images are allocated for.
const int k_max_width = FD_MAX_FRAME_WIDTH;
const int k_max_height = FD_MAX_FRAME_HEIGHT;

// One connected component of a binary image, laid out like the accelerator's region record. Edges are inclusive.
struct con_info {
    int32_t area;  // pixels of the component, not of its box
    int16_t left;
    int16_t right;
    int16_t top;
    int16_t bottom;
};
static_assert(sizeof(con_info) == 12 && offsetof(con_info, bottom) == 10, "same layout as the accelerator's regions");

inline int box_width(const con_info& box) {
    return box.right - box.left + 1;
}
inline int box_height(const con_info& box) {
    return box.bottom - box.top + 1;
}
inline int box_centre_x(const con_info& box) {
    return (box.left + box.right + 1) >> 1;
}
inline int box_centre_y(const con_info& box) {
    return (box.top + box.bottom + 1) >> 1;
}

// Fills a frame record from nothing: clears it, then sets format, size, plane 0 and reserved = -1.
// stride: bytes. virt_addr stays the caller's. Returns 0.
int init_yuv_frame(fd_yuv_frame* frame, int width, int height, int stride, unsigned int phys_addr, void* virt_addr,
                   fd_pixel_format format);

// Points plane 0 of an existing record at a buffer; format, reserved and planes 1 and 2 stay as they are.
// With width 1 and height 1 the record describes a raw block: its length `size` goes to stride[0], and the record's own
// width and height stay (deliberate). Otherwise width, height and stride are set and size is not used. Returns 0.
int init_yuv_frame(fd_yuv_frame* frame, int width, int height, int stride, int size, unsigned int phys_addr,
                   void* virt_addr);

// width rounded up to a multiple of align, with truncating division.
int get_stride(int width, int align);

// value held between min and max. The lower bound is tested first, so with min > max the result is min below min and
// max elsewhere (deliberate).
int limit_range(int value, int min, int max);

// Wall clock in milliseconds, modulo 2^32. For measuring intervals.
unsigned int get_cur_time();

// Row y of a plane. Strides count in bytes.
inline unsigned char* plane_row(const fd_yuv_frame* img, int plane, int y) {
    return img->virt_addr[plane] + static_cast<std::size_t>(img->stride[plane]) * static_cast<std::size_t>(y);
}

// Absolute differences by table, for code that looks them up; sub computes them (deliberate: it is faster).
class fd_table {
public:
    // Fills the table on the first call; further calls change nothing. Returns 0.
    static int init();
    static int destroy();

    static unsigned char m_abs_table[512];
    static unsigned char* m_abs_lut;  // m_abs_lut[d] = |d| for d in -255..255; null until init
};

// Writes |a - b| for every pixel of plane 0.
// a, b, dst: grey images; a and b of equal size, strides free. dst may be a or b.
// Writes `width` bytes per row and leaves row padding alone.
// Returns 0; 7 if a and b differ in width or height (nothing is written). The size of dst is not looked at.
// Any thread: touches only the three images.
int sub(fd_yuv_frame* a, fd_yuv_frame* b, fd_yuv_frame* dst);

// Writes 255 where src is above thresh, 0 elsewhere, over src's size.
// thresh: 0 to 255. dst may be src.
// Returns 0; 7 if plane 0 of either has no virtual address.
int threshold_binary(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh);

// What Otsu's search needs to know of a histogram: for each t, how many pixels are at or below it and the sum of their
// values (modulo 2^32), and the same for all pixels.
struct histogram_sums {
    uint32_t count[256];
    uint32_t moment[256];
    uint32_t all_count;
    uint32_t all_moment;
};

#if ORVA_HAS_VECTORS
// Sums over a stack of bytes (see imgproc/rows.h): of the bytes, each held to at most i + 1, and of the bytes as they
// are. With vector instructions a pass for each cap is quicker than one that counts the bytes by value.
const int k_caps = 16;
struct capped_sums {
    uint32_t held[k_caps];
    uint32_t all;
};
void add_capped_sums(const unsigned char* stack, capped_sums* sums);
#endif

// Otsu's threshold (N. Otsu, "A threshold selection method from gray-level histograms", 1979) in t_min..t_max; t_min if
// no split has pixels on both sides. Only entries t_min to t_max of sums are read. Class means have 8 fraction bits and
// products wrap in 32 bits, as the fixed-point original does (deliberate: on bright pictures the wrapped values
// decide). Ties keep the lowest threshold.
int search_otsu(const histogram_sums& sums, int t_min, int t_max);

// The same for plane 0 of an image without margin_x columns and margin_y rows on each side; t_min if t_min >= t_max.
int getThreshVal_Otsu(fd_yuv_frame* img, int margin_x, int margin_y, int t_min, int t_max);

}  // namespace orva_fd

#endif
