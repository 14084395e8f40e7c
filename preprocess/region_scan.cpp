#include "preprocess/region_scan.h"

#include <algorithm>
#include <cstring>

namespace orva_fd {

namespace {

const int k_block = 32;  // columns of a register: whole ones leave the row functions no rest

#if ORVA_HAS_VECTORS
// The part of a row, in whole words, outside which all bytes are 0. Most rows hold little.
void find_span(const unsigned char* bytes, int width, int* first, int* last) {
    const int word = static_cast<int>(sizeof(uint64_t));
    *first = 0;
    *last = width;
    uint64_t value = 0;
    for (; *first + word <= width; *first += word) {
        std::memcpy(&value, bytes + *first, sizeof(value));
        if (value != 0) break;
    }
    for (; *last - word >= *first; *last -= word) {
        std::memcpy(&value, bytes + *last - word, sizeof(value));
        if (value != 0) break;
    }
}

bool any_set(const unsigned char* bytes, int count) {
    if (count != k_block) return std::memchr(bytes, 1, static_cast<std::size_t>(count)) != nullptr;
    uint64_t words[k_block / 8];
    std::memcpy(words, bytes, sizeof(words));
    return ((words[0] | words[1]) | (words[2] | words[3])) != 0;
}

// Runs the saturation test where it can decide: on stretches of columns in which some pixel met the other tests.
void test_saturation(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                     unsigned char* pass, int width) {
    int start = 0;
    for (int x = 0; x < width; x += k_block) {
        const bool any = any_set(pass + x, std::min(k_block, width - x));
        if (any && x + k_block < width) continue;
        const int end = any ? width : x;
        if (start < end) flame_saturation_row(red + start, green + start, blue + start, pass + start, end - start);
        start = x + k_block;
    }
}
#endif

}  // namespace

void region_scan::reserve() {
    m_labeller.reserve(k_max_width, run_labeller::k_most_components);
    std::memset(m_empty, 0, sizeof(m_empty));
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

#if ORVA_HAS_VECTORS
// Otsu's threshold of the differences. Those up to the lowest threshold add to the sum of all alone; what the others
// exceed it by is gathered from the rows that have any, and summed a stack at a time.
int region_scan::find_threshold() {
    static_assert(k_otsu_max - k_otsu_min + 1 == k_caps, "a cap for each threshold");
    unsigned char stack[k_stack_rows * k_widest_row];
    int filled = 0;
    capped_sums excess = {};
    uint32_t sum = 0;
    for (int y = 0; y < m_height; ++y) {
        const unsigned char* luma = plane_row(m_frame, 0, y);
        const unsigned char* before = plane_row(m_diff, 0, y);
        const row_motion row = measure_motion_row(luma, before, m_width);
        m_largest[y] = row.largest;
        sum += row.sum;
        if (row.largest <= k_otsu_min) continue;
        if (filled + m_width > static_cast<int>(sizeof(stack))) {
            std::memset(stack + filled, 0, sizeof(stack) - static_cast<std::size_t>(filled));
            add_capped_sums(stack, &excess);
            filled = 0;
        }
        unsigned char* exceeding = stack + filled;
        excess_row(luma, before, exceeding, m_width, k_otsu_min);
        int first = 0;
        int last = 0;
        find_span(exceeding, m_width, &first, &last);
        std::memmove(exceeding, exceeding + first, static_cast<std::size_t>(last - first));
        filled += last - first;
    }
    std::memset(stack + filled, 0, sizeof(stack) - static_cast<std::size_t>(filled));
    if (filled > 0) add_capped_sums(stack, &excess);
    return search_threshold(sum, excess);
}

// The entries of the histogram's sums that the search reads, from the sums of all differences held to each threshold t:
// those above t add one more to the sum held to t + 1, and t each to the sum held to t.
int region_scan::search_threshold(uint32_t sum, const capped_sums& excess) const {
    histogram_sums sums;
    sums.all_count = static_cast<uint32_t>(m_width * m_height);
    sums.all_moment = sum;
    uint32_t held = sum - excess.all;  // to k_otsu_min
    for (int t = k_otsu_min; t <= k_otsu_max; ++t) {
        const uint32_t held_to_next = sum - excess.all + excess.held[t - k_otsu_min];
        const uint32_t above = held_to_next - held;
        sums.count[t] = sums.all_count - above;
        sums.moment[t] = held - static_cast<uint32_t>(t) * above;
        held = held_to_next;
    }
    return search_otsu(sums, k_otsu_min, k_otsu_max);
}

// Binarises a row's differences, after which the luma takes the place of the one before.
void region_scan::detect_motion(int y) {
    if (y >= m_height) return;
    working_row& row = motion(y);
    const unsigned char* luma = plane_row(m_frame, 0, y);
    unsigned char* before = plane_row(m_diff, 0, y);
    row.first = row.last = 0;
    if (m_largest[y] > m_threshold) {
        motion_row(luma, before, row.bytes, m_width, m_threshold);
        find_span(row.bytes, m_width, &row.first, &row.last);
    }
    std::memcpy(before, luma, static_cast<std::size_t>(m_width));
}

bool region_scan::filter_columns(int y, int first, int last) {
    const int width = last - first;
    uint16_t floors[k_widest_row / 2];
    luma_floor_row(plane_row(m_frame, 1, y / 2) + first, width, floors);
    unsigned char pass[2][k_widest_row];
    for (int i = 0; i < 2; ++i) {
        const std::size_t at = m_rgb->stride[0] * static_cast<std::size_t>(y + i) + static_cast<std::size_t>(first);
        const unsigned char* blue = m_rgb->virt_addr[0] + at;
        const unsigned char* green = m_rgb->virt_addr[1] + at;
        const unsigned char* red = m_rgb->virt_addr[2] + at;
        const unsigned char* luma = plane_row(m_frame, 0, y + i) + first;
        if (flame_tint_row(red, green, blue, luma, as_bytes(floors), pass[i], width)) {
            test_saturation(red, green, blue, pass[i], width);
        }
    }
    return filter_block_row(filtered(y).bytes + first, filtered(y + 1).bytes + first, pass[0], pass[1], width);
}
#endif  // the other form is in region_scan_scalar.cpp

void region_scan::convert_pair(int y) {
    color_offsets offsets;
    color_offsets_row(plane_row(m_frame, 1, y / 2), m_even_width, &offsets);
    for (int row = y; row < y + 2; ++row) {
        const std::size_t at = m_rgb->stride[0] * static_cast<std::size_t>(row);
        convert_row(plane_row(m_frame, 0, row), offsets, m_rgb->virt_addr[0] + at, m_rgb->virt_addr[1] + at,
                    m_rgb->virt_addr[2] + at, m_even_width);
    }
}

// Writes row y of a ring, dilated, to all of dst's columns, and where it may be set. Dilation keeps the outer rows of
// an image, and whole images of few rows or columns.
void region_scan::dilate_into(working_row* rows, int y, unsigned char* dst, int* first, int* last) const {
    const working_row& row = rows[y % k_ring];
    const unsigned char* bytes = bytes_of(row);
    *first = row.any() ? row.first : m_width;
    *last = row.any() ? row.last : 0;
    if (m_height <= 2 || m_width <= 3 || y == 0 || y == m_height - 1) {
        std::memcpy(dst, bytes, static_cast<std::size_t>(m_width));
        return;
    }

    const working_row& above = rows[(y - 1) % k_ring];
    const working_row& below = rows[(y + 1) % k_ring];
    for (const working_row* neighbour : {&above, &below}) {
        if (!neighbour->any()) continue;
        *first = std::min(*first, neighbour->first);
        *last = std::max(*last, neighbour->last);
    }
    if (*first >= *last) {
        std::memset(dst, 0, static_cast<std::size_t>(m_width));
        return;
    }
    *first = std::max(*first - 1, 0);
    *last = std::min(*last + 1, m_width);
    const int start = std::max(*first - 1, 0);
    const int end = std::min(*last + 2, m_width);  // the row function leaves one column at the start and two at the end
    std::memset(dst, 0, static_cast<std::size_t>(start));
    dst[start] = bytes[start];
    dilate_row(bytes_of(above) + start, bytes + start, bytes_of(below) + start, dst + start, end - start);
    std::memcpy(dst + end - 2, bytes + end - 2, 2);
    std::memset(dst + end, 0, static_cast<std::size_t>(m_width - end));
}

// The motion mask of a row, as the filter reads it: with the row padding's first byte where the width is odd.
void region_scan::dilate_motion(int y) {
    if (y >= m_height) return load_row_below_image();
    working_row& row = filtered(y);
    dilate_into(m_motion, y, row.bytes, &row.first, &row.last);
    if (m_even_width == m_width) return;
    row.bytes[m_width] = plane_row(m_diff, 0, y)[m_width];
    if (row.bytes[m_width] == 0) return;
    row.last = m_even_width;
}

// The last pair of an odd height reaches into the row below the mask, which may hold the rest of a larger one.
void region_scan::load_row_below_image() {
    working_row& row = filtered(m_height);
    std::memcpy(row.bytes, plane_row(m_mask, 0, m_height), static_cast<std::size_t>(m_even_width));
    row.first = 0;
    row.last = m_even_width;
}

// Clears blocks without flame's colour in the columns that either row may have set.
void region_scan::filter_pair(int y) {
    working_row& top = filtered(y);
    working_row& bottom = filtered(y + 1);
    if (!top.any() && !bottom.any()) return;
    const int first_set = std::min(top.any() ? top.first : m_width, bottom.any() ? bottom.first : m_width);
    const int last_set = std::max(top.any() ? top.last : 0, bottom.any() ? bottom.last : 0);
    const int first = first_set / k_block * k_block;
    const int last = std::min((last_set + k_block - 1) / k_block * k_block, m_even_width);
    const bool left = filter_columns(y, first, last);
    if (y + 1 == m_height) {
        std::memcpy(plane_row(m_mask, 0, m_height), bottom.bytes, static_cast<std::size_t>(m_even_width));
    }
    top.first = bottom.first = first;
    top.last = bottom.last = left ? std::min(last, m_width) : first;
}

// The second dilation of a row goes to the mask and on to labelling. Row padding travels from the difference image to
// the mask and back with the two dilations, which copy whole strides.
void region_scan::finish_row(int y) {
    if (y < 0) return;
    unsigned char* mask = plane_row(m_mask, 0, y);
    int first = 0;
    int last = 0;
    dilate_into(m_filtered, y, mask, &first, &last);
    if (first < last) m_labeller.add_row(mask, first, last, y);
    if (m_width == static_cast<int>(m_mask->stride[0])) return;

    unsigned char* diff = plane_row(m_diff, 0, y);
    if (m_even_width > m_width) diff[m_width] = filtered(y).bytes[m_width];
    std::memcpy(mask + m_width, diff + m_width, m_mask->stride[0] - static_cast<std::size_t>(m_width));
}

}  // namespace orva_fd
