// Second half of a channel's work on a frame: from components to boxes that burn. Components that lie close are merged,
// covered ones dropped, the rest verified by brightness; a candidate is reported when it recurs over the stored frames
// and flickers.
#ifndef ORVA_FD_CHANNEL_FOREGROUND_ANALYSIS_H
#define ORVA_FD_CHANNEL_FOREGROUND_ANALYSIS_H

#include <vector>

#include "channel/analysis_observer.h"
#include "channel/box_merger.h"
#include "imgproc/common.h"

namespace orva_fd {

// One thread at a time per object. Boxes are in pixels of the region, with left <= right and top <= bottom, of pictures
// of at most 16,383 x 16,383 pixels. Allocation failures throw.
class foreground_analysis {
public:
    foreground_analysis();

    // Obtains the memory of all frames to come; keeps the history. Returns 0. May throw; nothing is lost then.
    int start();

    // Empties the history and releases its memory; keeps the grade and the scratch lists. Returns 0.
    int stop();

    // Sets how many stored frames must hold a candidate: (103 - grade) / 6 + 30. Returns 0; 7 for a grade outside
    // 0..100.
    int set_sensitive(int grade);

    // observer: told of every decision from now on; null for none. It stays the caller's.
    void set_observer(analysis_observer* observer) { m_observer = observer; }

    // Runs one frame: candidates, stability, history.
    // roi: luma of the region in plane 0, with the frame's stride; fg: mask, a pixel is set when its lowest bit is 1;
    // rgb: not read. components: in, those of the mask; out, the merged list. result: zeroed by the caller; up to ten
    // boxes with x, y, width and height set. Returns 0, also for a null roi, which prints an error and leaves
    // everything as it is (deliberate).
    int set_frame(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame* rgb, std::vector<con_info>& components,
                  fd_result& result);

    // Fills result with those of fire_rects that recur and flicker. Returns 0.
    int get_stable_rects(std::vector<con_info>& fire_rects, fd_result& result);

    // Merges components in place, sets found if any are left, appends up to ten verified boxes to fire_rects. Returns
    // 0.
    int get_fire_rects(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame* rgb, std::vector<con_info>& components,
                       std::vector<con_info>& fire_rects, bool& found);

    // Whether a box is bright, fire-coloured enough and brighter than its surround: 0, else 4. The surround reaches
    // beyond the region below and to the right (deliberate: there is picture there).
    int verify_fire(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame* rgb, con_info* box);

    // Clamps a rectangle to an image. Moving x or y up to 0 does not shorten the rectangle (deliberate). Returns 0.
    int limit_rect(int& x, int& y, int& w, int& h, int img_w, int img_h);

private:
    friend struct test_access;

    typedef std::vector<con_info> box_list;
    void remember(const box_list& boxes);
    void forget_oldest();
    bool is_stable(const con_info& candidate, fd_rect* box);
    int judge(const con_info& box, box_verdict verdict, const box_measures& measures);

    std::vector<box_list> m_history;  // merged lists of the last frames that had any, oldest first
    int m_stable_thresh;
    box_merger m_merger;
    std::vector<box_list> m_spare;  // memory of lists that were forgotten
    box_list m_candidates;          // of the frame in work
    box_list m_matches;             // of the candidate in work
    analysis_observer* m_observer;  // null but for programs that explain
};

}  // namespace orva_fd

#endif
