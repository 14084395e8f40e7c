#include "tests/reference/ref_boxes.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace ref {

namespace {

const int k_not_fire = 4;
const int k_bad_argument = 7;
const std::size_t k_candidates_limit = 10;
const std::size_t k_history_limit = 50;

// value / 2, rounded towards minus infinity.
int half(int value) {
    return value % 2 < 0 ? value / 2 - 1 : value / 2;
}

int smallest_of(int a, int b, int c, int d) {
    return std::min(std::min(a, b), std::min(c, d));
}

template <typename... values>
std::string formatted(const char* format, values... arguments) {
    char buffer[200];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

float ratio(int numerator, int denominator) {
    return static_cast<float>(numerator) / static_cast<float>(denominator);
}

component union_of(const component& a, const component& b) {
    component both;
    both.left = std::min(a.left, b.left);
    both.right = std::max(a.right, b.right);
    both.top = std::min(a.top, b.top);
    both.bottom = std::max(a.bottom, b.bottom);
    both.area = a.area + b.area;
    return both;
}

// What the pixels under a box add up to.
struct box_sums {
    int bright_count = 0;
    int bright_sum = 0;
    int fire_count = 0;
};

box_sums sums_under(const plane& luma, const plane& mask, const component& box) {
    box_sums sums;
    for (int y = box.top; y <= box.bottom; ++y) {
        for (int x = box.left; x <= box.right; ++x) {
            const int value = luma.at(x, y);
            if (value > 128) {
                ++sums.bright_count;
                sums.bright_sum += value;
            }
            sums.fire_count += mask.at(x, y) & 1;
        }
    }
    return sums;
}

// Sum of w x h pixels from (x, y) on, wherever they lie.
int sum_of(const plane& luma, int x, int y, int w, int h) {
    int sum = 0;
    for (int row = y; row < y + h; ++row) {
        for (int column = x; column < x + w; ++column) sum += luma.at(column, row);
    }
    return sum;
}

void count_cuts(const component& box, int mx, int my, int img_w, int img_h, log_book& log) {
    if (box.left - mx < 0) log.hit(branch::surround_cut_left);
    if (box.top - my < 0) log.hit(branch::surround_cut_top);
    const int x = std::max(box.left - mx, 0);
    const int y = std::max(box.top - my, 0);
    if (x + width_of(box) + 2 * mx > img_w) log.hit(branch::surround_cut_right);
    if (y + height_of(box) + 2 * my > img_h) log.hit(branch::surround_cut_bottom);
}

// Average luma of the four bands around a box, rounded; 0 if they hold no pixel.
int surround_average(const plane& luma, const component& box, log_book& log) {
    const int w = width_of(box);
    const int h = height_of(box);
    const int mx = static_cast<int>(w * 0.2);
    const int my = static_cast<int>(h * 0.2);
    count_cuts(box, mx, my, luma.width, luma.height, log);
    int x = box.left - mx;
    int y = box.top - my;
    int surround_w = w + 2 * mx;
    int surround_h = h + 2 * my;
    limit_rect(x, y, surround_w, surround_h, luma.width, luma.height);

    // Deliberate: the lower and the right band start right beside the box and are not cut at the region's edges.
    int sum = sum_of(luma, x, y, surround_w, my);
    sum += sum_of(luma, x, box.bottom + 1, surround_w, my);
    sum += sum_of(luma, x, box.top, mx, h);
    sum += sum_of(luma, box.right + 1, box.top, mx, h);

    const int pixels = 2 * (mx * h + surround_w * my);
    if (pixels == 0) return 0;
    return (sum + pixels / 2) / pixels;
}

// The limits within which a stored component matches a candidate.
struct match_limits {
    explicit match_limits(const component& c)
        : centre(std::min(half(width_of(c) + height_of(c) + 1), 50)),
          size(std::min(width_of(c) + height_of(c), 160)),
          area(std::max(2 * c.area, 100)) {}
    int centre, size, area;
};

bool overlap_enough(const component& c, const component& h) {
    const int ow = std::min(c.right, h.right) - std::max(c.left, h.left);
    const int oh = std::min(c.bottom, h.bottom) - std::max(c.top, h.top);
    if (ow <= 0 || oh <= 0) return false;
    return ow * oh > std::min(width_of(h) * height_of(h), width_of(c) * height_of(c)) / 2;
}

bool matches(const component& c, const component& h, const match_limits& limit) {
    if (!(std::abs(centre_x(c) - centre_x(h)) + std::abs(centre_y(c) - centre_y(h)) < limit.centre)) return false;
    if (!(std::abs(width_of(c) - width_of(h)) + std::abs(height_of(c) - height_of(h)) < limit.size)) return false;
    if (!(std::abs(c.area - h.area) < limit.area)) return false;
    return overlap_enough(c, h);
}

// (sum of value(match) + r) / n over all matches, with r = (n + 1) / 2.
template <typename value_of>
int rounded_mean(const std::vector<component>& matches, value_of value) {
    const int n = static_cast<int>(matches.size());
    int sum = 0;
    for (const component& match : matches) sum += value(match);
    return (sum + half(n + 1)) / n;
}

fd_rect average_box(const std::vector<component>& matches) {
    fd_rect box{};
    box.x = static_cast<std::uint16_t>(rounded_mean(matches, [](const component& m) { return int{m.left}; }));
    box.y = static_cast<std::uint16_t>(rounded_mean(matches, [](const component& m) { return int{m.top}; }));
    box.width = static_cast<std::uint16_t>(rounded_mean(matches, width_of));
    box.height = static_cast<std::uint16_t>(rounded_mean(matches, height_of));
    return box;
}

}  // namespace

int width_of(const component& box) {
    return box.right - box.left + 1;
}
int height_of(const component& box) {
    return box.bottom - box.top + 1;
}
int centre_x(const component& box) {
    return half(box.left + box.right + 1);
}
int centre_y(const component& box) {
    return half(box.top + box.bottom + 1);
}

void limit_rect(int& x, int& y, int& w, int& h, int img_w, int img_h) {
    // Deliberate: moving x or y up to 0 leaves the size as it is.
    if (x < 0) x = 0;
    if (x + w > img_w) w = img_w - x;
    if (y < 0) y = 0;
    if (y + h > img_h) h = img_h - y;
}

bool are_close(const component& a, const component& b) {
    const int dx = smallest_of(std::abs(a.left - b.left), std::abs(a.left - b.right), std::abs(a.right - b.left),
                               std::abs(a.right - b.right));
    const int dy = smallest_of(std::abs(a.top - b.top), std::abs(a.top - b.bottom), std::abs(a.bottom - b.top),
                               std::abs(a.bottom - b.bottom));
    const int mean_size = half(width_of(a) + height_of(a) + width_of(b) + height_of(b));
    return dx + dy < limit_range(mean_size, 40, 80);
}

void merge_close(std::vector<component>& components, log_book& log) {
    std::size_t i = 0;
    while (components.size() > 1 && i < components.size()) {
        std::size_t j = i + 1;
        while (j < components.size() && !are_close(components[i], components[j])) ++j;
        if (j == components.size()) {
            ++i;
            continue;
        }
        components[i] = union_of(components[i], components[j]);
        components.erase(components.begin() + static_cast<std::ptrdiff_t>(j));
        log.hit(branch::components_merged);
        i = 0;
    }
}

bool is_covered(const std::vector<component>& components, std::size_t index) {
    const component& inner = components[index];
    const int cx = centre_x(inner);
    const int cy = centre_y(inner);
    for (std::size_t k = 0; k < components.size(); ++k) {
        const component& outer = components[k];
        if (k == index || outer.area < inner.area) continue;
        if (outer.left - 3 < cx && cx < outer.right + 3 && outer.top - 3 < cy && cy < outer.bottom + 3) return true;
    }
    return false;
}

int verify_fire(const plane& luma, const plane& mask, const component& box, log_book& log) {
    const int w = width_of(box);
    const int h = height_of(box);
    if (w < 3 || h < 5 || box.area < 20) {
        log.hit(w < 3 ? branch::verify_too_narrow : h < 5 ? branch::verify_too_low : branch::verify_too_small);
        return k_not_fire;
    }

    const box_sums sums = sums_under(luma, mask, box);
    const int box_area = w * h;
    const bool too_dark = sums.bright_count < box_area / 8;
    const bool too_few_fire = sums.fire_count < 20;
    const bool too_thin_fire = sums.fire_count < box_area / 16;
    if (too_dark || too_few_fire || too_thin_fire) {
        log.hit(too_dark       ? branch::verify_too_dark
                : too_few_fire ? branch::verify_too_few_fire
                               : branch::verify_too_thin_fire);
        log.plain("ratio of bright and fire pixels",
                  formatted("ratio1 = %.2f, fire_area = %d, ratio = %.2f ==========\n",
                            static_cast<double>(ratio(sums.bright_count, box_area)), sums.fire_count,
                            static_cast<double>(ratio(sums.fire_count, box_area))));
        return k_not_fire;
    }

    const int centre = (sums.bright_sum + sums.bright_count / 2) / sums.bright_count;
    const int surround = surround_average(luma, box, log);
    if (static_cast<double>(centre) >= 1.05 * static_cast<double>(surround)) {
        log.hit(branch::verify_fire);
        return 0;
    }
    log.hit(branch::verify_not_brighter);
    log.plain("ratio of centre and surround", formatted(" avg_center = %d, avg_arround = %d, ratio = %.2f\n", centre,
                                                        surround, static_cast<double>(ratio(centre, surround))));
    return k_not_fire;
}

int analysis::set_sensitive(int grade) {
    if (grade < 0 || grade > 100) {
        m_log.error("foreground_analysis", "set_sensitive", 36);
        return k_bad_argument;
    }
    m_stable_thresh = (103 - grade) / 6 + 30;
    return 0;
}

int analysis::get_fire_rects(const plane& luma, const plane& mask, std::vector<component>& components,
                             std::vector<component>& fire_rects, bool& found) {
    merge_close(components, m_log);
    found = !components.empty();
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (is_covered(components, i)) {
            m_log.hit(branch::candidate_covered);
            continue;
        }
        if (verify_fire(luma, mask, components[i], m_log) != 0) continue;
        if (fire_rects.size() == k_candidates_limit) {
            m_log.hit(branch::candidate_eleventh);
            return 0;
        }
        fire_rects.push_back(components[i]);
    }
    return 0;
}

int analysis::set_frame(const plane* luma, const plane& mask, std::vector<component>& components, fd_result& result) {
    if (luma == nullptr) {
        m_log.error("foreground_analysis", "set_frame", 49);
        return 0;  // deliberate: the success code
    }
    m_log.hit(components.empty() ? branch::no_components : branch::components_found);
    std::vector<component> fire_rects;
    bool found = false;
    get_fire_rects(*luma, mask, components, fire_rects, found);

    const bool full = m_history.size() == k_history_limit;
    if (full) get_stable_rects(fire_rects, result);
    if (!found) {
        m_log.hit(full ? branch::history_full_kept : branch::history_idle);
        return 0;
    }
    m_log.hit(full ? branch::history_full_aged : branch::history_gathering);
    if (full) m_history.erase(m_history.begin());
    m_history.push_back(components);
    return 0;
}

std::vector<component> analysis::matches_of(const component& candidate) const {
    const match_limits limit(candidate);
    std::vector<component> found;
    for (const std::vector<component>& list : m_history) {
        const auto first =
            std::find_if(list.begin(), list.end(), [&](const component& h) { return matches(candidate, h, limit); });
        if (first != list.end()) found.push_back(*first);
    }
    return found;
}

bool flickers(const std::vector<component>& matches, log_book& log) {
    const int mean = rounded_mean(matches, [](const component& m) { return int{m.area}; });
    const int deviation = rounded_mean(matches, [mean](const component& m) { return std::abs(m.area - mean); });
    if (mean / 6 < deviation && deviation < mean) return true;
    log.hit(deviation < mean ? branch::stable_too_steady : branch::stable_too_wild);
    log.plain("ratio of deviation and mean area",
              formatted("%.2f  -----------------\n", static_cast<double>(ratio(deviation, mean))));
    return false;
}

int analysis::get_stable_rects(const std::vector<component>& fire_rects, fd_result& result) {
    result.count = 0;
    if (fire_rects.empty()) m_log.hit(branch::stable_no_candidates);
    for (const component& candidate : fire_rects) {
        std::vector<component> matched = matches_of(candidate);
        matched.push_back(candidate);
        if (static_cast<int>(matched.size()) <= m_stable_thresh) {
            m_log.hit(branch::stable_too_few_frames);
            continue;
        }
        if (!flickers(matched, m_log)) continue;
        if (result.count > 9) {
            m_log.hit(branch::stable_result_full);
            return 0;
        }
        m_log.hit(branch::stable_reported);
        // Written field by field: the references stay as the caller passed them.
        const fd_rect box = average_box(matched);
        fd_rect& entry = result.rects[result.count];
        entry.x = box.x;
        entry.y = box.y;
        entry.width = box.width;
        entry.height = box.height;
        ++result.count;
    }
    return 0;
}

}  // namespace ref
