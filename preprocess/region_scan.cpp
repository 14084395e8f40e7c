#include "preprocess/region_scan.h"

#include <algorithm>
#include <cstring>

namespace orva_fd {

namespace {

// Labels of one mask. A run that touches nothing above gets one. Away from the border the mask is dilated: such a run
// lies over a set pixel of the row below, whose 3 x 3 square keeps other new runs four rows and four columns away, so
// there are at most 88 * 72 = 6336. The rows and columns that dilation passes over (two rows, three columns) add at
// most 2 * 176 and 3 * 144.
const int k_most_labels = 88 * 72 + 2 * 176 + 3 * 144;

// Motion thresholds are searched where the differences of flames lie: below is sensor noise, above flicker would be
// missed.
const int k_otsu_min = k_tail_first;
const int k_otsu_max = k_tail_first + k_tail_length - 1;

}  // namespace

void region_scan::reserve() {
    m_labeller.reserve(k_max_width, k_most_labels);
}

void region_scan::run(const fd_yuv_frame* frame, fd_yuv_frame* mask, fd_yuv_frame* rgb, fd_yuv_frame* diff,
                      std::vector<con_info>& components) {
    m_frame = frame;
    m_mask = mask;
    m_rgb = rgb;
    m_diff = diff;
    m_width = static_cast<int>(frame->width);
    m_height = static_cast<int>(frame->height);
    m_even_width = m_width + m_width % 2;
    m_threshold = find_threshold();
    m_labeller.begin();

    // With an odd height the last pair's second row overwrites the first rows of the next planes, which the filter then
    // reads.
    const bool converted_before = m_height % 2 != 0;
    for (int y = 0; converted_before && y < m_height; y += 2) convert_pair(y);

    detect_motion(0);
    for (int y = 0; y < m_height; y += 2) {
        detect_motion(y + 1);
        detect_motion(y + 2);
        if (!converted_before) convert_pair(y);
        dilate_motion(y);
        dilate_motion(y + 1);
        filter_pair(y);
        finish_row(y - 1);
        if (y + 1 < m_height) finish_row(y);
    }
    finish_row(m_height - 1);
    m_labeller.finish(components);
}

// Otsu's threshold of the differences. Of their histogram the search needs the entries in its range and the sums of
// all; rows without a difference above the lowest threshold add to the sums alone.
int region_scan::find_threshold() {
    motion_tail tail = {};
    uint32_t sum = 0;
    for (int y = 0; y < m_height; ++y) {
        const unsigned char* luma = plane_row(m_frame, 0, y);
        const unsigned char* before = plane_row(m_diff, 0, y);
        const row_motion row = measure_motion_row(luma, before, m_width);
        m_largest[y] = row.largest;
        sum += row.sum;
        if (row.largest > k_tail_first) {
            add_motion_tail_row(luma, before, m_width, &tail);
        } else {
            tail.sum_at_or_below_first += row.sum;
        }
    }
    histogram_sums sums;
    sums.all_count = static_cast<uint32_t>(m_width * m_height);
    sums.all_moment = sum;
    uint32_t moment = tail.sum_at_or_below_first;
    for (int k = 0; k < k_tail_length; ++k) {
        const int t = k_tail_first + k;
        if (k > 0) moment += static_cast<uint32_t>(t) * (tail.above[k - 1] - tail.above[k]);
        sums.count[t] = sums.all_count - tail.above[k];
        sums.moment[t] = moment;
    }
    return search_otsu(sums, k_otsu_min, k_otsu_max);
}

void region_scan::convert_pair(int y) {
    color_offsets_row(plane_row(m_frame, 1, y / 2), m_even_width, &m_offsets);
    const std::size_t stride = m_rgb->stride[0];
    for (int row = y; row < y + 2; ++row) {
        const unsigned char* luma = plane_row(m_frame, 0, row);
        const std::size_t at = stride * static_cast<std::size_t>(row);
        convert_row(luma, m_offsets.blue_plus, m_offsets.blue_minus, m_rgb->virt_addr[0] + at, m_even_width);
        convert_row(luma, m_offsets.green_plus, m_offsets.green_minus, m_rgb->virt_addr[1] + at, m_even_width);
        convert_row(luma, m_offsets.red_plus, m_offsets.red_minus, m_rgb->virt_addr[2] + at, m_even_width);
    }
}

// Binarises a row's differences, after which the luma takes the place of the one before.
void region_scan::detect_motion(int y) {
    if (y >= m_height) return;
    working_row& row = motion(y);
    const unsigned char* luma = plane_row(m_frame, 0, y);
    unsigned char* before = plane_row(m_diff, 0, y);
    row.any = m_largest[y] > m_threshold;
    if (row.any) motion_row(luma, before, row.bytes, m_width, m_threshold);
    if (!row.any) std::memset(row.bytes, 0, static_cast<std::size_t>(m_width));
    std::memcpy(before, luma, static_cast<std::size_t>(m_width));
}

// Dilation keeps the outer rows of an image, and whole images of few rows or columns.
bool region_scan::is_dilated(int y) const {
    return m_height > 2 && m_width > 3 && y > 0 && y < m_height - 1;
}

void region_scan::dilate_into(const working_row* above, const working_row& row, const working_row* below,
                              unsigned char* dst) const {
    std::memcpy(dst, row.bytes, static_cast<std::size_t>(m_width));
    const bool spreads = above != nullptr && below != nullptr && (above->any || row.any || below->any);
    if (spreads) dilate_row(above->bytes, row.bytes, below->bytes, dst, m_width);
}

// The motion mask of a row, as the filter reads it: with the row padding's first byte where the width is odd.
void region_scan::dilate_motion(int y) {
    if (y >= m_height) return load_row_below_image();
    working_row& row = filtered(y);
    const working_row* above = is_dilated(y) ? &motion(y - 1) : nullptr;
    const working_row* below = is_dilated(y) ? &motion(y + 1) : nullptr;
    dilate_into(above, motion(y), below, row.bytes);
    row.any = motion(y).any || (above != nullptr && (above->any || below->any));
    if (m_even_width > m_width) {
        row.bytes[m_width] = plane_row(m_diff, 0, y)[m_width];
        row.any |= row.bytes[m_width] != 0;
    }
}

// The last pair of an odd height reaches into the row below the mask, which may hold the rest of a larger one.
void region_scan::load_row_below_image() {
    working_row& row = filtered(m_height);
    std::memcpy(row.bytes, plane_row(m_mask, 0, m_height), static_cast<std::size_t>(m_even_width));
    row.any = true;
}

void region_scan::filter_pair(int y) {
    working_row& top = filtered(y);
    working_row& bottom = filtered(y + 1);
    if (!top.any && !bottom.any) return;
    unsigned char pass[2][k_widest_row];
    if (m_height % 2 != 0) color_offsets_row(plane_row(m_frame, 1, y / 2), m_even_width, &m_offsets);
    for (int i = 0; i < 2; ++i) {
        const std::size_t at = m_rgb->stride[0] * static_cast<std::size_t>(y + i);
        fire_color_row(m_rgb->virt_addr[2] + at, m_rgb->virt_addr[1] + at, m_rgb->virt_addr[0] + at,
                       plane_row(m_frame, 0, y + i), m_offsets.luma_floor, pass[i], m_even_width);
    }
    const bool any = filter_block_row(top.bytes, bottom.bytes, pass[0], pass[1], m_even_width);
    top.any = any;
    bottom.any = any;
    if (y + 1 == m_height) {
        std::memcpy(plane_row(m_mask, 0, m_height), bottom.bytes, static_cast<std::size_t>(m_even_width));
    }
}

// The second dilation of a row goes to the mask and on to labelling. Row padding travels from the difference image to
// the mask and back with the two dilations, which copy whole strides.
void region_scan::finish_row(int y) {
    if (y < 0) return;
    const working_row& row = filtered(y);
    unsigned char* mask = plane_row(m_mask, 0, y);
    const working_row* above = is_dilated(y) ? &filtered(y - 1) : nullptr;
    const working_row* below = is_dilated(y) ? &filtered(y + 1) : nullptr;
    dilate_into(above, row, below, mask);
    const bool any = row.any || (above != nullptr && (above->any || below->any));
    if (any) m_labeller.add_row(mask, m_width, y);

    unsigned char* diff = plane_row(m_diff, 0, y);
    if (m_even_width > m_width) diff[m_width] = row.bytes[m_width];
    std::memcpy(mask + m_width, diff + m_width, m_mask->stride[0] - static_cast<std::size_t>(m_width));
}

}  // namespace orva_fd
