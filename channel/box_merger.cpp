#include "channel/box_merger.h"

#include <algorithm>

#include "imgproc/bits.h"

namespace orva_fd {

namespace {

const std::size_t k_block = 32;
const std::size_t k_none = static_cast<std::size_t>(-1);

// A box that lies s beyond the limit is not close before the probe's edges moved by d pixels with 3 * d + 1 > 2 * s:
// its distance shrinks by d at most, and the limit grows by (d + 1) / 2 at most. Of a probe so large that the limit is
// the farthest, only distance can shrink: d exceeds s then.
int growth_to_reach(int slack, int probe_size) {
    return probe_size == k_largest_size ? slack + 1 : std::max(1, (2 * slack - 1) / 3 + 1);
}

probe_box probe_of(const con_info& box) {
    const int size = std::min(box_width(box) + box_height(box), k_largest_size);
    const probe_box probe = {box.left, box.right, box.top, box.bottom, static_cast<short>(size)};
    return probe;
}

bool holds(const con_info& outer, const con_info& inner) {
    return outer.left <= inner.left && inner.right <= outer.right && outer.top <= inner.top &&
           inner.bottom <= outer.bottom;
}

}  // namespace

void box_merger::columns::reserve(std::size_t count) {
    for (std::vector<short>* column : {&left, &right, &top, &bottom, &size}) column->reserve(count);
}

void box_merger::columns::resize(std::size_t count) {
    for (std::vector<short>* column : {&left, &right, &top, &bottom, &size}) column->resize(count);
}

void box_merger::columns::set(std::size_t i, const probe_box& box) {
    left[i] = box.left;
    right[i] = box.right;
    top[i] = box.top;
    bottom[i] = box.bottom;
    size[i] = box.size;
}

void box_merger::columns::remove(std::size_t i) {
    for (std::vector<short>* column : {&left, &right, &top, &bottom, &size}) {
        column->erase(column->begin() + static_cast<std::ptrdiff_t>(i));
    }
}

box_columns box_merger::columns::from(std::size_t i) const {
    const box_columns here = {left.data() + i, right.data() + i, top.data() + i, bottom.data() + i, size.data() + i};
    return here;
}

void box_merger::reserve(std::size_t boxes, std::size_t merged_boxes) {
    const std::size_t blocks = (boxes + k_block - 1) / k_block;
    m_settled.reserve(merged_boxes);
    m_settled_columns.reserve(merged_boxes);
    m_scratch.reserve(merged_boxes);
    m_open_columns.reserve(blocks * k_block);
    m_open_in.reserve(blocks);
    m_close.reserve(k_block);
    m_frames.reserve(blocks);
    m_wake.reserve(blocks);
}

// Boxes are looked at in list order. Those before the one in work are settled: none is close to any later box, so only
// a box that grew can be close to one of them. The first close pair of the whole list is therefore found by asking,
// after each growth, first the settled boxes before the grown one, then those behind it, then the open ones.
void box_merger::merge(std::vector<con_info>& list) {
    if (list.size() < 2) return;
    load(list);
    for (std::size_t next = 0; next < list.size(); ++next) {
        if (m_open_columns.left[next] == k_far_column) continue;
        take_open(next);
        settle(list[next]);
    }
    list.assign(m_settled.begin(), m_settled.end());
}

void box_merger::load(const std::vector<con_info>& list) {
    const std::size_t blocks = (list.size() + k_block - 1) / k_block;
    const probe_box far_away = {k_far_column, k_far_column, k_far_row, k_far_row, 0};
    m_settled.clear();
    m_settled_columns.resize(0);
    m_open = list.data();
    m_open_columns.resize(blocks * k_block);
    m_open_in.resize(blocks);
    for (std::size_t i = 0; i < list.size(); ++i) m_open_columns.set(i, probe_of(list[i]));
    for (std::size_t i = list.size(); i < blocks * k_block; ++i) m_open_columns.set(i, far_away);
    m_frames.resize(blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::size_t first = block * k_block;
        const std::size_t count = std::min(list.size() - first, k_block);
        m_open_in[block] = static_cast<unsigned char>(count);
        m_frames.set(block, frame_row(m_open_columns.from(first), static_cast<int>(count)));
    }
    m_wake.resize(blocks);
    m_close.resize(k_block);
    m_first = 0;
}

// Settles a box, with everything that it comes to absorb or to be absorbed by.
void box_merger::settle(const con_info& box) {
    m_settled.push_back(box);
    m_settled_columns.resize(m_settled.size());
    std::size_t probe = m_settled.size() - 1;
    m_settled_columns.set(probe, probe_of(box));
    start_search(probe);

    int growth = 0;
    for (;;) {
        const std::size_t before = growth > 0 ? first_settled_close(0, probe, probe) : probe;
        if (before < probe) {
            const con_info absorbed = m_settled[probe];
            drop_settled(probe);
            probe = before;
            growth = absorb(probe, absorbed);
            if (growth == 0) return;  // a settled box as it was: nothing is close to it
            start_search(probe);
            continue;
        }
        const std::size_t behind = first_settled_close(probe + 1, m_settled.size(), probe);
        if (behind < m_settled.size()) {
            growth = absorb(probe, m_settled[behind]);
            drop_settled(behind);
            note_growth(growth);
            continue;
        }
        const std::size_t open = next_open_growing(probe);
        if (open == k_none) return;
        growth = absorb(probe, m_open[open]);
        take_open(open);
        note_growth(growth);
    }
}

// Returns by how many pixels the box's edges moved outward, all four together.
int box_merger::absorb(std::size_t i, const con_info& other) {
    con_info& box = m_settled[i];
    const int before = box_width(box) + box_height(box);
    box.left = std::min(box.left, other.left);
    box.top = std::min(box.top, other.top);
    box.right = std::max(box.right, other.right);
    box.bottom = std::max(box.bottom, other.bottom);
    box.area += other.area;
    m_settled_columns.set(i, probe_of(box));
    return box_width(box) + box_height(box) - before;
}

void box_merger::drop_settled(std::size_t i) {
    m_settled.erase(m_settled.begin() + static_cast<std::ptrdiff_t>(i));
    m_settled_columns.remove(i);
}

std::size_t box_merger::first_settled_close(std::size_t from, std::size_t to, std::size_t probe) {
    if (from == to) return to;
    m_scratch.resize(to - from);
    closeness_row(m_settled_columns.from(from), probe_of(m_settled[probe]), m_scratch.data(),
                  static_cast<int>(to - from));
    return from + static_cast<std::size_t>(std::find(m_scratch.begin(), m_scratch.end(), 1) - m_scratch.begin());
}

void box_merger::start_search(std::size_t probe) {
    m_growth = 0;
    return_to_first_block();
    const int count = static_cast<int>(m_wake.size() - m_from);
    if (count > 0) wake_row(m_frames.from(m_from), probe_of(m_settled[probe]), m_wake.data() + m_from, count);
}

void box_merger::note_growth(int growth) {
    if (growth == 0) return;
    m_growth += growth;
    return_to_first_block();
}

void box_merger::return_to_first_block() {
    while (m_first < m_open_in.size() && m_open_in[m_first] == 0) ++m_first;
    m_from = m_first;
}

// The first open box that is close to the probe and not inside it; close ones inside are absorbed on the way, which
// changes nothing but the area. Blocks that were passed stay passed until the probe has grown enough.
std::size_t box_merger::next_open_growing(std::size_t probe) {
    for (; m_from < m_wake.size(); ++m_from) {
        if (m_wake[m_from] > m_growth) continue;
        measure_block(probe);
        const std::size_t growing = absorb_until_growing(probe);
        if (growing != k_none) return growing;
        m_wake[m_from] = m_growth + growth_to_reach(m_least, m_settled_columns.size[probe]);
    }
    return k_none;
}

std::size_t box_merger::absorb_until_growing(std::size_t probe) {
    con_info& box = m_settled[probe];
    for (; m_close_bits != 0; m_close_bits &= m_close_bits - 1) {
        const std::size_t i = m_from * k_block + static_cast<std::size_t>(__builtin_ctzll(m_close_bits));
        if (!holds(box, m_open[i])) return i;
        box.area += m_open[i].area;
        take_open(i);
    }
    return k_none;
}

void box_merger::measure_block(std::size_t probe) {
    const int count = static_cast<int>(k_block);
    m_least = closeness_row(m_open_columns.from(m_from * k_block), probe_of(m_settled[probe]), m_close.data(), count);
    m_close_bits = bits_of_flags(m_close.data(), count);
}

void box_merger::take_open(std::size_t i) {
    m_open_columns.left[i] = m_open_columns.right[i] = k_far_column;
    m_open_columns.top[i] = m_open_columns.bottom[i] = k_far_row;
    --m_open_in[i / k_block];
}

}  // namespace orva_fd
