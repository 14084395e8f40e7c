#include "channel/foreground_analysis.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "imgproc/log.h"
#include "imgproc/rows.h"
#include "imgproc/run_labeller.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "foreground_analysis";
enum log_line { k_line_bad_grade = 36, k_line_null_roi = 49 };

const std::size_t k_history_limit = 50;
const std::size_t k_candidate_limit = 10;
const int k_default_stable_thresh = 35;

// Boxes that stay unmerged have upper left corners at least 40 apart, counted along both axes: diamonds of 800 pixels
// around the corners do not overlap, and (352 + 40) * (288 + 40) / 800 is less than 161.
const std::size_t k_most_merged = 160;

const int k_min_box_width = 3;
const int k_min_box_height = 5;
const int k_min_area = 20;
const int k_min_fire_pixels = 20;
const int k_bright = 128;           // luma above this counts as bright
const double k_margin_share = 0.2;  // surround on each side, as a share of the box
const double k_brighter = 1.05;     // centre over surround
const int k_cover_margin = 3;

// Whether another box, at least as large, holds the centre of box i. Two equal boxes may cover each other; both then go
// (deliberate).
bool covered(const std::vector<con_info>& list, std::size_t i) {
    const int cx = box_centre_x(list[i]);
    const int cy = box_centre_y(list[i]);
    for (std::size_t k = 0; k < list.size(); ++k) {
        const con_info& other = list[k];
        if (k == i || other.area < list[i].area) continue;
        if (cx > other.left - k_cover_margin && cx < other.right + k_cover_margin && cy > other.top - k_cover_margin &&
            cy < other.bottom + k_cover_margin)
            return true;
    }
    return false;
}

bright_counts count_box(const fd_yuv_frame* roi, const fd_yuv_frame* fg, const con_info& box) {
    bright_counts counts = {};
    for (int y = box.top; y <= box.bottom; ++y) {
        add_bright_row(plane_row(roi, 0, y) + box.left, plane_row(fg, 0, y) + box.left, box_width(box), k_bright,
                       &counts);
    }
    return counts;
}

int sum_luma(const fd_yuv_frame* roi, int x, int y, int width, int height) {
    uint32_t sum = 0;
    for (int row = y; row < y + height; ++row) sum += sum_row(plane_row(roi, 0, row) + x, width);
    return static_cast<int>(sum);
}

float ratio(int a, int b) {
    return static_cast<float>(a) / static_cast<float>(b);
}

// A stored box is the candidate's earlier self if centre, size and area are near and they overlap by half.
bool matches(const con_info& candidate, const con_info& stored) {
    const int cw = box_width(candidate);
    const int ch = box_height(candidate);
    const int hw = box_width(stored);
    const int hh = box_height(stored);
    const int centre_limit = std::min((cw + ch + 1) >> 1, 50);
    const int size_limit = std::min(cw + ch, 160);
    const int area_limit = std::max(2 * candidate.area, 100);
    const int moved = std::abs(box_centre_x(candidate) - box_centre_x(stored)) +
                      std::abs(box_centre_y(candidate) - box_centre_y(stored));
    if (moved >= centre_limit) return false;
    if (std::abs(cw - hw) + std::abs(ch - hh) >= size_limit) return false;
    if (std::abs(candidate.area - stored.area) >= area_limit) return false;
    // Deliberate: differences of edges, one less than the columns and rows that overlap.
    const int ow = std::min(candidate.right, stored.right) - std::max(candidate.left, stored.left);
    const int oh = std::min(candidate.bottom, stored.bottom) - std::max(candidate.top, stored.top);
    return ow > 0 && oh > 0 && ow * oh > std::min(hw * hh, cw * ch) / 2;
}

// Sums over the matches of one candidate, the candidate included.
struct match_sums {
    int count;
    int area;
    int left;
    int top;
    int width;
    int height;
};

match_sums sum_matches(const std::vector<con_info>& list) {
    match_sums sums = {};
    for (std::size_t i = 0; i < list.size(); ++i) {
        ++sums.count;
        sums.area += list[i].area;
        sums.left += list[i].left;
        sums.top += list[i].top;
        sums.width += box_width(list[i]);
        sums.height += box_height(list[i]);
    }
    return sums;
}

int rounded_mean(int sum, int count) {
    return (sum + ((count + 1) >> 1)) / count;
}

int mean_deviation(const std::vector<con_info>& list, int mean) {
    int distance = 0;
    for (std::size_t i = 0; i < list.size(); ++i) distance += std::abs(list[i].area - mean);
    return rounded_mean(distance, static_cast<int>(list.size()));
}

// Fire changes its outline: the mean deviation of the areas lies between a sixth of the mean and the mean.
bool flickers(const std::vector<con_info>& list, const match_sums& sums) {
    const int mean = rounded_mean(sums.area, sums.count);
    const int deviation = mean_deviation(list, mean);
    if (mean / 6 < deviation && deviation < mean) return true;
    std::printf("%.2f  -----------------\n", static_cast<double>(ratio(deviation, mean)));
    return false;
}

}  // namespace

foreground_analysis::foreground_analysis() : m_stable_thresh(k_default_stable_thresh), m_observer(nullptr) {}

int foreground_analysis::start() {
    m_merger.reserve(run_labeller::k_most_components, k_most_merged);
    m_candidates.reserve(k_candidate_limit);
    m_matches.reserve(k_history_limit + 1);
    m_history.reserve(k_history_limit);
    m_spare.reserve(k_history_limit);
    while (m_history.size() + m_spare.size() < k_history_limit) {
        box_list list;
        list.reserve(k_most_merged);
        m_spare.push_back(std::move(list));
    }
    return FD_OK;
}

int foreground_analysis::stop() {
    std::vector<box_list>().swap(m_history);
    std::vector<box_list>().swap(m_spare);
    return FD_OK;
}

int foreground_analysis::set_sensitive(int grade) {
    if (grade < 0 || grade > 100) {
        log_error(k_file, "set_sensitive", k_line_bad_grade);
        return FD_INVALID_ARGUMENT;
    }
    m_stable_thresh = (103 - grade) / 6 + 30;
    return FD_OK;
}

int foreground_analysis::set_frame(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame* rgb,
                                   std::vector<con_info>& components, fd_result& result) {
    if (roi == nullptr) {
        log_error(k_file, "set_frame", k_line_null_roi);
        return FD_OK;  // deliberate: the frame passes as one without fire
    }
    m_candidates.clear();
    bool found = false;
    get_fire_rects(roi, fg, rgb, components, m_candidates, found);
    if (m_history.size() == k_history_limit) {
        get_stable_rects(m_candidates, result);
        if (!found) return FD_OK;
        forget_oldest();
    }
    if (found) remember(components);
    return FD_OK;
}

// Lists move, their memory stays: after start nothing is obtained for a frame.
void foreground_analysis::remember(const box_list& boxes) {
    if (m_spare.empty()) m_spare.push_back(box_list());
    m_spare.back().assign(boxes.begin(), boxes.end());
    m_history.push_back(std::move(m_spare.back()));
    m_spare.pop_back();
}

void foreground_analysis::forget_oldest() {
    m_spare.push_back(std::move(m_history.front()));
    m_history.erase(m_history.begin());
}

// Whether a candidate recurs and flickers; box becomes the mean of its matches, in place of which each stored list
// gives its first.
bool foreground_analysis::is_stable(const con_info& candidate, fd_rect* box) {
    m_matches.clear();
    stability_measures seen = {};
    for (const box_list& list : m_history) {
        std::size_t i = 0;
        while (i < list.size() && !matches(candidate, list[i])) ++i;
        if (i == list.size()) continue;
        m_matches.push_back(list[i]);
        if (m_observer != nullptr) seen.lists |= uint64_t(1) << (&list - m_history.data());
    }
    m_matches.push_back(candidate);
    const match_sums sums = sum_matches(m_matches);
    const bool stable = sums.count > m_stable_thresh && flickers(m_matches, sums);
    if (m_observer != nullptr) {
        seen.count = sums.count;
        seen.more_than = m_stable_thresh;
        seen.mean_area = rounded_mean(sums.area, sums.count);
        seen.deviation = mean_deviation(m_matches, seen.mean_area);
        seen.is_reported = stable;
        m_observer->on_stability(candidate, seen);
    }
    if (!stable) return false;
    box->x = static_cast<uint16_t>(rounded_mean(sums.left, sums.count));
    box->y = static_cast<uint16_t>(rounded_mean(sums.top, sums.count));
    box->width = static_cast<uint16_t>(rounded_mean(sums.width, sums.count));
    box->height = static_cast<uint16_t>(rounded_mean(sums.height, sums.count));
    return true;
}

int foreground_analysis::get_stable_rects(std::vector<con_info>& fire_rects, fd_result& result) {
    result.count = 0;
    for (const con_info& candidate : fire_rects) {
        fd_rect box = {};
        if (!is_stable(candidate, &box)) continue;
        if (result.count >= FD_RESULT_MAX_RECTS) return FD_OK;
        fd_rect& stored = result.rects[result.count++];
        stored.x = box.x;
        stored.y = box.y;
        stored.width = box.width;
        stored.height = box.height;
    }
    return FD_OK;
}

int foreground_analysis::get_fire_rects(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame* rgb,
                                        std::vector<con_info>& components, std::vector<con_info>& fire_rects,
                                        bool& found) {
    if (m_observer != nullptr) m_observer->on_components(*fg, components);
    m_merger.merge(components);
    if (m_observer != nullptr) m_observer->on_merged(components);
    found = !components.empty();
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (covered(components, i)) {
            judge(components[i], box_covered, box_measures());
            continue;
        }
        if (verify_fire(roi, fg, rgb, &components[i]) != FD_OK) continue;
        if (fire_rects.size() == k_candidate_limit) return FD_OK;
        fire_rects.push_back(components[i]);
    }
    return FD_OK;
}

int foreground_analysis::verify_fire(fd_yuv_frame* roi, fd_yuv_frame* fg, fd_yuv_frame*, con_info* box) {
    const int w = box_width(*box);
    const int h = box_height(*box);
    box_measures measures = {};
    if (w < k_min_box_width || h < k_min_box_height || box->area < k_min_area) {
        return judge(*box, box_too_small, measures);
    }

    const int pixels = w * h;
    const bright_counts counts = count_box(roi, fg, *box);
    const int bright = static_cast<int>(counts.bright);
    const int fire = static_cast<int>(counts.fire);
    measures.pixels = pixels;
    measures.bright = bright;
    measures.fire = fire;
    if (bright < pixels >> 3 || fire < k_min_fire_pixels || fire < pixels >> 4) {
        std::printf("ratio1 = %.2f, fire_area = %d, ratio = %.2f ==========\n",
                    static_cast<double>(ratio(bright, pixels)), fire, static_cast<double>(ratio(fire, pixels)));
        return judge(*box, box_too_dim, measures);
    }
    const int centre = (static_cast<int>(counts.bright_sum) + bright / 2) / bright;

    const int mx = static_cast<int>(w * k_margin_share);
    const int my = static_cast<int>(h * k_margin_share);
    int x = box->left - mx;
    int y = box->top - my;
    int width = w + 2 * mx;
    int height = h + 2 * my;
    limit_rect(x, y, width, height, static_cast<int>(roi->width), static_cast<int>(roi->height));
    // Deliberate: the bands below and right of the box are not clamped, and a surround that was moved in from the top
    // or the left overlaps the box.
    const int sum = sum_luma(roi, x, y, width, my) + sum_luma(roi, x, box->bottom + 1, width, my) +
                    sum_luma(roi, x, box->top, mx, h) + sum_luma(roi, box->right + 1, box->top, mx, h);
    const int around_pixels = 2 * (mx * h + width * my);
    const int around = around_pixels != 0 ? (sum + around_pixels / 2) / around_pixels : 0;
    measures.centre = centre;
    measures.around = around;
    if (static_cast<double>(centre) >= k_brighter * around) return judge(*box, box_is_candidate, measures);
    std::printf(" avg_center = %d, avg_arround = %d, ratio = %.2f\n", centre, around,
                static_cast<double>(ratio(centre, around)));
    return judge(*box, box_not_brighter, measures);
}

// The code that goes with a verdict, of which the observer is told.
int foreground_analysis::judge(const con_info& box, box_verdict verdict, const box_measures& measures) {
    if (m_observer != nullptr) m_observer->on_verdict(box, verdict, measures);
    if (verdict != box_is_candidate) return k_not_fire;
    return FD_OK;
}

int foreground_analysis::limit_rect(int& x, int& y, int& w, int& h, int img_w, int img_h) {
    if (x < 0) x = 0;
    if (x + w > img_w) w = img_w - x;
    if (y < 0) y = 0;
    if (y + h > img_h) h = img_h - y;
    return FD_OK;
}

}  // namespace orva_fd
