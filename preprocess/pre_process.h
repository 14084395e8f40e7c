// preprocess/ turns one picture of a channel's region into an RGB image, a mask of moving fire colour and the mask's
// components. It fixes the order of the stages and owns their images; it knows nothing of channels.
#ifndef ORVA_FD_PREPROCESS_PRE_PROCESS_H
#define ORVA_FD_PREPROCESS_PRE_PROCESS_H

#include <vector>

#include "backend/hisi_ive_func.h"
#include "backend/hisi_mmz_mem.h"
#include "imgproc/common.h"
#include "preprocess/region_scan.h"

namespace orva_fd {

// One thread at a time per object; the tables are written once by init.
class pre_process {
public:
    pre_process();

    // Fills the saturation table. Once, before any frame. Returns 0.
    static int init();
    static int destroy();

    // Obtains the buffers, zeroed, for 352 x 288 pixels. Returns 0; 4 if one could not be had (all are released again).
    int start();

    // Releases the buffers. Returns 0. start may follow.
    int stop();

    // Adopts the size of frame. Luma goes to plane 0 of the RGB image; the previous luma stays as it is, so the next
    // difference is taken against whatever lies there (deliberate). Returns 0.
    int reinit(fd_yuv_frame* frame);

    // Processes one picture of the region and appends its components to comps, which the caller passes empty.
    // frame: NV21 of at most 352 x 288, read only.
    // Returns 0; 7 for a null frame; 4 or another code of a failed operation. After a failure the images hold what was
    // done so far and the previous luma is not replaced; the next frame is processed normally.
    int set_frame(fd_yuv_frame* frame, std::vector<con_info>& comps);

    // The mask of the last frame, 255 where something fire-coloured moved, and its RGB image. Owned by this object.
    fd_yuv_frame* get_fg_img() { return &m_fg_img; }
    fd_yuv_frame* get_rgb_img() { return &m_rgb_img; }

    // 1 if a pixel has the colour of flame, else 0. The rule is stated in pre_process.cpp.
    int check_fire_pt(unsigned char r, unsigned char g, unsigned char b, unsigned char y, unsigned char u,
                      unsigned char v);

    // Clears each 2 x 2 block of mask in which too few of the set pixels have the colour of flame.
    // mask: one plane; rgb: three planes, 0 blue, stepped with plane 0's stride; yuv: NV21. Odd sizes are rounded up:
    // blocks are processed whole. Returns 0.
    int color_filter(fd_yuv_frame* mask, fd_yuv_frame* rgb, fd_yuv_frame* yuv);

    static int m_sat_table[256];  // by red: largest allowed 3 * blue / (red + green + blue), 20 fraction bits

private:
    friend struct test_access;

    int obtain_image(hisi_mmz_mem* memory, fd_yuv_frame* image, int planes, int failure_line);
    void place_rgb_planes();

    fd_yuv_frame m_fg_img;
    hisi_mmz_mem m_fg_mem;
    fd_yuv_frame m_rgb_img;
    hisi_mmz_mem m_rgb_mem;
    fd_yuv_frame m_diff_img;  // previous luma between frames; difference, threshold, dilation, labelling during one
    hisi_mmz_mem m_diff_mem;
    hisi_ive_func m_ive;
    uint16_t m_width;
    uint16_t m_height;
    hisi_mmz_mem m_blob_mem;  // the accelerator's labelling result
    region_scan m_scan;       // the stages in builds without the accelerator
};

}  // namespace orva_fd

#endif
