// The steps of region_scan that processors without vector instructions take in another way: the threshold from a
// histogram, rows by words, the filter block by block.
#include "preprocess/region_scan.h"

#if !ORVA_HAS_VECTORS

#include "imgproc/words.h"

namespace orva_fd {

namespace {

// The entries of the histogram's sums that the search reads. Differences up to the lowest threshold are not counted,
// but their sum is what remains of all.
void sum_differences(const difference_counts& counts, uint32_t pixels, int lowest, int highest, histogram_sums* sums) {
    uint32_t above = 0;
    uint32_t moment_above = 0;
    sums->all_count = pixels;
    sums->all_moment = counts.sum;
    for (int value = 255; value >= lowest; --value) {
        if (value <= highest) {
            sums->count[value] = pixels - above;
            sums->moment[value] = counts.sum - moment_above;
        }
        above += counts.of[value];
        moment_above += static_cast<uint32_t>(value) * counts.of[value];
    }
}

}  // namespace

// The rows of a picture are compared once: the luma takes the place of the one before, and the mask's rows, which
// nothing reads until they are written in the end, keep the differences.
int region_scan::find_threshold() {
    difference_counts counts = {};
    for (int y = 0; y < m_height; ++y) {
        const bool any = replace_row(plane_row(m_frame, 0, y), plane_row(m_diff, 0, y), plane_row(m_mask, 0, y),
                                     m_width, k_otsu_min, &counts);
        m_largest[y] = any ? 255 : 0;
    }
    histogram_sums sums;
    sum_differences(counts, static_cast<uint32_t>(m_width * m_height), k_otsu_min, k_otsu_max, &sums);
    return search_otsu(sums, k_otsu_min, k_otsu_max);
}

void region_scan::detect_motion(int y) {
    if (y >= m_height) return;
    working_row& row = motion(y);
    row.first = row.last = 0;
    if (m_largest[y] <= m_threshold) return;
    threshold_row(plane_row(m_mask, 0, y), row.bytes, m_width, m_threshold);
    const int in_words = m_width / k_word * k_word;
    row.last = m_width;
    while (row.first < in_words && word_at(row.bytes + row.first) == 0) row.first += k_word;
    if (m_width > in_words) return;
    while (row.last > row.first && word_at(row.bytes + row.last - k_word) == 0) row.last -= k_word;
}

bool region_scan::filter_columns(int y, int first, int last) {
    pair_rows rows;
    rows.chroma = plane_row(m_frame, 1, y / 2);
    for (int i = 0; i < 2; ++i) {
        const std::size_t at = m_rgb->stride[0] * static_cast<std::size_t>(y + i);
        rows.mask[i] = filtered(y + i).bytes;
        rows.luma[i] = plane_row(m_frame, 0, y + i);
        rows.blue[i] = m_rgb->virt_addr[0] + at;
        rows.green[i] = m_rgb->virt_addr[1] + at;
        rows.red[i] = m_rgb->virt_addr[2] + at;
    }
    return filter_pair_rows(rows, first, last);
}

}  // namespace orva_fd

#endif
