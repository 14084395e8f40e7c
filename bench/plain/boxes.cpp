#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "bench/plain/plain.h"

namespace ORVA_PLAIN_NAMESPACE {

namespace {

const std::size_t k_candidate_limit = 10;

int width_of(const component& c) {
    return c.right - c.left + 1;
}

int height_of(const component& c) {
    return c.bottom - c.top + 1;
}

int centre_x(const component& c) {
    return (c.left + c.right + 1) >> 1;
}

int centre_y(const component& c) {
    return (c.top + c.bottom + 1) >> 1;
}

int nearest_edges(int a_low, int a_high, int b_low, int b_high) {
    return std::min(std::min(std::abs(a_low - b_low), std::abs(a_low - b_high)),
                    std::min(std::abs(a_high - b_low), std::abs(a_high - b_high)));
}

bool close_together(const component& a, const component& b) {
    const int dx = nearest_edges(a.left, a.right, b.left, b.right);
    const int dy = nearest_edges(a.top, a.bottom, b.top, b.bottom);
    const int mean = (width_of(a) + height_of(a) + width_of(b) + height_of(b)) >> 1;
    return dx + dy < std::max(40, std::min(80, mean));
}

void merge(std::vector<component>& list) {
    std::size_t i = 0;
    while (i < list.size()) {
        std::size_t j = i + 1;
        while (j < list.size() && !close_together(list[i], list[j])) ++j;
        if (j == list.size()) {
            ++i;
            continue;
        }
        list[i].left = std::min(list[i].left, list[j].left);
        list[i].top = std::min(list[i].top, list[j].top);
        list[i].right = std::max(list[i].right, list[j].right);
        list[i].bottom = std::max(list[i].bottom, list[j].bottom);
        list[i].area += list[j].area;
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(j));
        i = 0;
    }
}

bool covered(const std::vector<component>& list, std::size_t i) {
    const int cx = centre_x(list[i]);
    const int cy = centre_y(list[i]);
    for (std::size_t k = 0; k < list.size(); ++k) {
        const component& other = list[k];
        if (k == i || other.area < list[i].area) continue;
        if (other.left - 3 < cx && cx < other.right + 3 && other.top - 3 < cy && cy < other.bottom + 3) return true;
    }
    return false;
}

int sum_luma(const fd_yuv_frame* roi, int x, int y, int width, int height) {
    int sum = 0;
    for (int row = y; row < y + height; ++row) {
        const unsigned char* luma = row_of(roi, 0, row);
        for (int column = x; column < x + width; ++column) sum += luma[column];
    }
    return sum;
}

double ratio(int a, int b) {
    return static_cast<double>(static_cast<float>(a) / static_cast<float>(b));
}

int mean_around(const fd_yuv_frame* roi, const component& c) {
    const int w = width_of(c);
    const int h = height_of(c);
    const int mx = static_cast<int>(w * 0.2);
    const int my = static_cast<int>(h * 0.2);
    const int x = std::max(0, c.left - mx);
    const int y = std::max(0, c.top - my);
    const int width = std::min(w + 2 * mx, static_cast<int>(roi->width) - x);
    const int sum = sum_luma(roi, x, y, width, my) + sum_luma(roi, x, c.bottom + 1, width, my) +
                    sum_luma(roi, x, c.top, mx, h) + sum_luma(roi, c.right + 1, c.top, mx, h);
    const int pixels = 2 * (mx * h + width * my);
    return pixels != 0 ? (sum + pixels / 2) / pixels : 0;
}

bool is_fire(const fd_yuv_frame* roi, const fd_yuv_frame* mask, const component& c) {
    const int w = width_of(c);
    const int h = height_of(c);
    if (w < 3 || h < 5 || c.area < 20) return false;
    int bright = 0;
    int bright_sum = 0;
    int fire = 0;
    for (int y = c.top; y <= c.bottom; ++y) {
        const unsigned char* luma = row_of(roi, 0, y);
        const unsigned char* set = row_of(mask, 0, y);
        for (int x = c.left; x <= c.right; ++x) {
            if (luma[x] > 128) {
                ++bright;
                bright_sum += luma[x];
            }
            fire += set[x] & 1;
        }
    }
    const int pixels = w * h;
    if (bright < pixels >> 3 || fire < 20 || fire < pixels >> 4) {
        std::printf("ratio1 = %.2f, fire_area = %d, ratio = %.2f ==========\n", ratio(bright, pixels), fire,
                    ratio(fire, pixels));
        return false;
    }
    const int centre = (bright_sum + bright / 2) / bright;
    const int around = mean_around(roi, c);
    if (static_cast<double>(centre) >= 1.05 * around) return true;
    std::printf(" avg_center = %d, avg_arround = %d, ratio = %.2f\n", centre, around, ratio(centre, around));
    return false;
}

bool matches(const component& c, const component& h) {
    const int cw = width_of(c);
    const int ch = height_of(c);
    const int hw = width_of(h);
    const int hh = height_of(h);
    if (std::abs(centre_x(c) - centre_x(h)) + std::abs(centre_y(c) - centre_y(h)) >= std::min((cw + ch + 1) >> 1, 50))
        return false;
    if (std::abs(cw - hw) + std::abs(ch - hh) >= std::min(cw + ch, 160)) return false;
    if (std::abs(c.area - h.area) >= std::max(2 * c.area, 100)) return false;
    const int ow = std::min(c.right, h.right) - std::max(c.left, h.left);
    const int oh = std::min(c.bottom, h.bottom) - std::max(c.top, h.top);
    return ow > 0 && oh > 0 && ow * oh > std::min(hw * hh, cw * ch) / 2;
}

bool flickers(const std::vector<component>& found) {
    const int n = static_cast<int>(found.size());
    const int half = (n + 1) >> 1;
    int area = 0;
    for (std::size_t i = 0; i < found.size(); ++i) area += found[i].area;
    const int mean = (area + half) / n;
    int distance = 0;
    for (std::size_t i = 0; i < found.size(); ++i) distance += std::abs(found[i].area - mean);
    const int deviation = (distance + half) / n;
    if (mean / 6 < deviation && deviation < mean) return true;
    std::printf("%.2f  -----------------\n", ratio(deviation, mean));
    return false;
}

fd_rect mean_box(const std::vector<component>& found) {
    int sums[4] = {};
    for (std::size_t i = 0; i < found.size(); ++i) {
        sums[0] += found[i].left;
        sums[1] += found[i].top;
        sums[2] += width_of(found[i]);
        sums[3] += height_of(found[i]);
    }
    const int n = static_cast<int>(found.size());
    const int half = (n + 1) >> 1;
    fd_rect box = {};
    box.x = static_cast<std::uint16_t>((sums[0] + half) / n);
    box.y = static_cast<std::uint16_t>((sums[1] + half) / n);
    box.width = static_cast<std::uint16_t>((sums[2] + half) / n);
    box.height = static_cast<std::uint16_t>((sums[3] + half) / n);
    return box;
}

}  // namespace

void find_candidates(const fd_yuv_frame* roi, const fd_yuv_frame* mask, std::vector<component>& list,
                     std::vector<component>& candidates) {
    merge(list);
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (covered(list, i) || !is_fire(roi, mask, list[i])) continue;
        if (candidates.size() == k_candidate_limit) return;
        candidates.push_back(list[i]);
    }
}

void find_stable(const std::vector<std::vector<component>>& history, const std::vector<component>& candidates,
                 int least_matches, fd_result& result) {
    result.count = 0;
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        std::vector<component> found;
        for (std::size_t h = 0; h < history.size(); ++h) {
            for (std::size_t i = 0; i < history[h].size(); ++i) {
                if (!matches(candidates[c], history[h][i])) continue;
                found.push_back(history[h][i]);
                break;
            }
        }
        found.push_back(candidates[c]);
        if (static_cast<int>(found.size()) <= least_matches || !flickers(found)) continue;
        if (result.count >= FD_RESULT_MAX_RECTS) return;
        result.rects[result.count] = mean_box(found);
        ++result.count;
    }
}

}  // namespace ORVA_PLAIN_NAMESPACE
