// From components to reported boxes: merging, covering, verification by brightness, stability over the history.
#ifndef ORVA_TESTS_REFERENCE_REF_BOXES_H
#define ORVA_TESTS_REFERENCE_REF_BOXES_H

#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/reference/ref_label.h"
#include "tests/reference/ref_log.h"
#include "tests/reference/ref_pixels.h"

namespace ref {

int width_of(const component& box);
int height_of(const component& box);
int centre_x(const component& box);
int centre_y(const component& box);

// Raises x and y to 0 without shortening the rectangle, then cuts it at the right and lower edge of the image.
void limit_rect(int& x, int& y, int& w, int& h, int img_w, int img_h);

bool are_close(const component& a, const component& b);

// Merges close components in place, starting again from the first after each merge.
void merge_close(std::vector<component>& components, log_book& log);

// Whether another component, of at least the same area, has this one's centre in its box widened by less than 3.
bool is_covered(const std::vector<component>& components, std::size_t index);

// 0 if the box looks like fire against its surround, else 4. luma: the region, read beyond its size in the lower and
// the right band; mask: the foreground, bit 0 of each byte.
int verify_fire(const plane& luma, const plane& mask, const component& box, log_book& log);

// Whether the matched areas fluctuate by more than a sixth of their mean and less than all of it; logged if not.
bool flickers(const std::vector<component>& matches, log_book& log);

// The frames' component lists, and the rule that reports what recurs and flickers.
class analysis {
public:
    explicit analysis(log_book& log) : m_log(log) {}

    void stop() { m_history.clear(); }

    // 0; or 7, a log line and no change if grade is outside 0..100.
    int set_sensitive(int grade);

    // One frame. components: merged in place. result: zeroed by the caller; gets the boxes in pixels of the region.
    // luma may be null: one log line, and 0 with everything as it was.
    int set_frame(const plane* luma, const plane& mask, std::vector<component>& components, fd_result& result);

    // Appends the verified candidates, ten at most; found tells whether the merged list holds anything.
    int get_fire_rects(const plane& luma, const plane& mask, std::vector<component>& components,
                       std::vector<component>& fire_rects, bool& found);

    // Fills result with the candidates that match in enough lists of the history and flicker.
    int get_stable_rects(const std::vector<component>& fire_rects, fd_result& result);

    int stable_thresh() const { return m_stable_thresh; }
    const std::vector<std::vector<component>>& history() const { return m_history; }
    std::vector<std::vector<component>>& history() { return m_history; }

private:
    std::vector<component> matches_of(const component& candidate) const;
    log_book& m_log;
    std::vector<std::vector<component>> m_history;
    int m_stable_thresh = 35;
};

}  // namespace ref

#endif
