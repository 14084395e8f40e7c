// The stages of pre_process for builds without the accelerator, row by row in one pass: the same images and components
// as the single operations give, but each row is read and written while it is in the first-level cache, and rows in
// which nothing moves are passed over.
#ifndef ORVA_FD_PREPROCESS_REGION_SCAN_H
#define ORVA_FD_PREPROCESS_REGION_SCAN_H

#include <vector>

#include "imgproc/common.h"
#include "imgproc/run_labeller.h"
#include "preprocess/color_rows.h"

namespace orva_fd {

struct capped_sums;  // of builds with vectors

// One thread at a time.
class region_scan {
public:
    // Motion thresholds are searched where the differences of flames lie: below is sensor noise, above flicker would be
    // missed.
    static const int k_otsu_min = 20;
    static const int k_otsu_max = 35;

    // Obtains all memory that run needs. May throw; nothing is lost then.
    void reserve();

    // Processes one picture of the region.
    // frame: NV21, at most 352 x 288. mask, rgb, diff: working images of that size with stride 352; diff holds the luma
    // before. Writes the mask, the RGB image and, to diff, the luma; adds the mask's components to components.
    void run(const fd_yuv_frame* frame, fd_yuv_frame* mask, fd_yuv_frame* rgb, fd_yuv_frame* diff,
             std::vector<con_info>& components);

private:
    static const int k_ring = 4;  // rows that a 3 x 3 stage and the pair after it need at once

    // Columns first to last - 1 hold all that is set, if anything is. The bytes of an empty row are stale.
    struct working_row {
        alignas(uint32_t) unsigned char bytes[k_widest_row];
        int first;
        int last;
        bool any() const { return first < last; }
    };

    int find_threshold();
    int search_threshold(uint32_t sum, const capped_sums& excess) const;  // there too
    void convert_pair(int y);
    void detect_motion(int y);
    void dilate_motion(int y);
    void load_row_below_image();
    bool filter_columns(int y, int first, int last);
    void filter_pair(int y);
    void finish_row(int y);
    void dilate_into(working_row* rows, int y, unsigned char* dst, int* first, int* last) const;
    const unsigned char* bytes_of(const working_row& row) const { return row.any() ? row.bytes : m_empty; }
    working_row& motion(int y) { return m_motion[y % k_ring]; }
    working_row& filtered(int y) { return m_filtered[y % k_ring]; }

    const fd_yuv_frame* m_frame;
    fd_yuv_frame* m_mask;
    fd_yuv_frame* m_rgb;
    fd_yuv_frame* m_diff;
    int m_width;
    int m_height;
    int m_even_width;  // blocks of 2 x 2 are processed whole
    int m_threshold;
    unsigned char m_largest[k_max_height];  // largest difference of each row
    working_row m_motion[k_ring];           // differences above the threshold
    working_row m_filtered[k_ring];         // dilated; fire-coloured blocks only, once filtered
    alignas(uint32_t) unsigned char m_empty[k_widest_row];
    run_labeller m_labeller;
};

}  // namespace orva_fd

#endif
