// channel/ is one detection channel: where its region lies in a frame, what moves and burns there, which boxes recur,
// and how long a reported result is held.
#ifndef ORVA_FD_CHANNEL_FRAME_PROCESS_H
#define ORVA_FD_CHANNEL_FRAME_PROCESS_H

#include <vector>

#include "backend/hisi_ive_func.h"
#include "channel/foreground_analysis.h"
#include "preprocess/pre_process.h"

namespace orva_fd {

// The manager owns channels and serialises the calls on each.
class frame_process {
public:
    frame_process();

    // Obtains the stages' memory and stores the region, unchecked. Returns 0, or the code of the stage that failed.
    int start(fd_rect roi);

    // Releases the working images and the history, and forgets region and result; scratch lists go with the object.
    // Returns 0. start may follow.
    int stop();

    // Returns 0; 7 for a grade outside 0..100.
    int set_sensitive(int grade);

    // observer: told of every decision from now on; null for none. It stays the caller's.
    void set_observer(analysis_observer* observer) { m_fg_analysis.set_observer(observer); }

    // Processes one frame; result receives the boxes to report, in coordinates of the frame.
    // Returns 0; 7 if the frame is refused (result and all state unchanged); the code of a failed stage.
    int set_frame(fd_yuv_frame& frame, fd_result& result);

    // Aligns the region if src's stride is a multiple of 16, and makes dst, a copy of src, a view of it. Returns 0.
    // The checks against the frame look at width and height alone, not at x + width (deliberate; set_frame refuses
    // frames on which the region does not fit).
    int get_frame_roi(fd_yuv_frame* src, fd_yuv_frame* dst);

    // Brings a rectangle to a picture of width x height pixels, rounding down; a reference of 0 gives 0. Returns 0.
    int trans_region(fd_rect* rect, int width, int height);

    // Holds the last reported boxes or takes those of result, moved from the region into the frame. Returns 0.
    int stable_result(fd_result& result, fd_yuv_frame* frame);

private:
    friend struct test_access;

    void rescale(fd_rect* region, const fd_yuv_frame& frame);
    bool accepts(const fd_yuv_frame& frame);
    void note_roi_size(const fd_yuv_frame& roi_frame);

    pre_process m_pre_process;
    hisi_ive_func m_ive_func;  // deliberate: not called; keeps the record's layout
    uint16_t m_hold_count;     // frames since the stored result was last replaced
    fd_result m_last_result;   // in frame coordinates; a count above 0 means that the channel is reporting
    foreground_analysis m_fg_analysis;
    bool m_roi_size_known;  // false until the first frame after start
    uint16_t m_roi_width;
    uint16_t m_roi_height;
    fd_rect m_roi;                       // the region; rescaled and aligned in place
    std::vector<con_info> m_components;  // of the frame in work
};

}  // namespace orva_fd

#endif
