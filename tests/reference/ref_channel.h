// One detection channel: the region and its working images, the analysis, and the holding of what is reported.
#ifndef ORVA_TESTS_REFERENCE_REF_CHANNEL_H
#define ORVA_TESTS_REFERENCE_REF_CHANNEL_H

#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/reference/ref_boxes.h"
#include "tests/reference/ref_label.h"
#include "tests/reference/ref_log.h"
#include "tests/reference/ref_pixels.h"

namespace ref {

// --- geometry of a region -------------------------------------------------------------------------------------------

// Brings a rectangle to a frame of width x height; a value whose reference is 0 becomes 0.
void trans_region(fd_rect& rect, int width, int height);

// Widens the region to whole accelerator words, if the stride is a multiple of 16.
void align_region(fd_rect& roi, const fd_yuv_frame& frame);

// The region as a view into the frame: addresses moved, width and height replaced, the rest as in the frame.
fd_yuv_frame cut_region(const fd_rect& roi, const fd_yuv_frame& frame);

// Whether the region, brought to this frame's size and aligned, has at least one pixel and ends inside the frame's size
// rounded up to even.
bool region_fits(fd_rect roi, const fd_yuv_frame& frame);

// --- working images -------------------------------------------------------------------------------------------------

// A picture in memory of its own, zeroed when obtained, always with the stride of the largest picture.
class working_image {
public:
    explicit working_image(int planes);

    void resize(int width, int height);  // keeps every byte; only the view changes
    plane view();                        // plane 0
    rgb_view rgb();                      // of a three-plane image; the planes lie stride * height apart

    const std::vector<unsigned char>& bytes() const { return m_bytes; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int stride() const { return k_stride; }

    static const int k_stride = 352;
    static const int k_rows = 288;

private:
    std::vector<unsigned char> m_bytes;
    int m_width = k_stride;
    int m_height = k_rows;
};

// From a region to the foreground mask, the RGB image and the mask's components.
class pre_stage {
public:
    explicit pre_stage(log_book& log) : m_log(log) {}

    // Takes one region; appends to `components`. Returns 0.
    int set_frame(const fd_yuv_frame& region, std::vector<component>& components);

    working_image& foreground() { return m_foreground; }
    working_image& rgb() { return m_rgb; }
    working_image& difference() { return m_difference; }  // between frames: the previous luma
    int last_threshold() const { return m_last_threshold; }

private:
    void resize(const plane& luma);

    log_book& m_log;
    working_image m_foreground{1};
    working_image m_rgb{3};
    working_image m_difference{1};
    int m_width = working_image::k_stride;
    int m_height = working_image::k_rows;
    int m_last_threshold = 0;
};

// --- holding --------------------------------------------------------------------------------------------------------

// Keeps reported boxes for a while. Boxes come in pixels of the region and leave in pixels of the frame.
class result_holder {
public:
    explicit result_holder(log_book& log) : m_log(log) {}

    void restart_count() { m_count = 0; }
    bool reporting() const { return m_last.count != 0; }
    void step(fd_result& result, const fd_rect& roi, int frame_width, int frame_height);

    int count() const { return m_count; }
    const fd_result& last() const { return m_last; }

private:
    void refresh(const fd_result& found, const fd_rect& roi, int frame_width, int frame_height);
    void count_branch(const fd_result& result);

    log_book& m_log;
    int m_count = 0;
    fd_result m_last{};
};

// --- the channel ----------------------------------------------------------------------------------------------------

class channel {
public:
    // Starts on a region. log: outlives the channel. A stopped channel is not started again: make a new one.
    channel(log_book& log, const fd_rect& roi) : m_log(log), m_roi(roi) {}

    int set_sensitive(int grade);
    int set_frame(const fd_yuv_frame& frame, fd_result& result);

    pre_stage& stage() { return m_stage; }
    const fd_rect& roi() const { return m_roi; }
    bool size_known() const { return m_size_known; }
    int roi_width() const { return m_roi_width; }
    int roi_height() const { return m_roi_height; }
    const result_holder& holder() const { return m_holder; }
    analysis& boxes() { return m_analysis; }

private:
    bool accepts(const fd_yuv_frame& frame);
    void note_size(const fd_yuv_frame& region);

    log_book& m_log;
    fd_rect m_roi;
    pre_stage m_stage{m_log};
    analysis m_analysis{m_log};
    result_holder m_holder{m_log};
    bool m_size_known = false;
    int m_roi_width = 352;
    int m_roi_height = 288;
};

}  // namespace ref

#endif
