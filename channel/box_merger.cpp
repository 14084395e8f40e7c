#include "channel/box_merger.h"

#include <algorithm>

#include "channel/box_rows.h"

namespace orva_fd {

namespace {

const std::size_t k_block = 32;
const std::size_t k_none = static_cast<std::size_t>(-1);
const int k_far_away = 1 << 28;  // no sum of two distances to it overflows

// A box with slack s is not close before the probe's edges moved by d pixels with 3 * d + 1 > 2 * s: its distance
// shrinks by d at most, and the limit grows by (d + 1) / 2 at most.
int growth_to_reach(int slack) {
    return std::max(1, (2 * slack - 1) / 3 + 1);
}

probe_box probe_of(const con_info& box) {
    const probe_box probe = {box.left, box.right, box.top, box.bottom, box_width(box) + box_height(box)};
    return probe;
}

}  // namespace

void box_merger::columns::reserve(std::size_t count) {
    for (std::vector<int>* column : {&left, &right, &top, &bottom, &size}) column->reserve(count);
}

void box_merger::columns::resize(std::size_t count) {
    for (std::vector<int>* column : {&left, &right, &top, &bottom}) column->resize(count, k_far_away);
    size.resize(count, 0);
}

void box_merger::columns::set(std::size_t i, const con_info& box) {
    left[i] = box.left;
    right[i] = box.right;
    top[i] = box.top;
    bottom[i] = box.bottom;
    size[i] = box_width(box) + box_height(box);
}

void box_merger::columns::remove(std::size_t i) {
    for (std::vector<int>* column : {&left, &right, &top, &bottom, &size}) {
        column->erase(column->begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void box_merger::reserve(std::size_t boxes, std::size_t merged_boxes) {
    const std::size_t blocks = (boxes + k_block - 1) / k_block;
    m_settled.reserve(merged_boxes);
    m_settled_columns.reserve(merged_boxes);
    m_scratch.reserve(merged_boxes);
    m_open.reserve(boxes);
    m_open_columns.reserve(blocks * k_block);
    m_taken.reserve(boxes);
    m_frames.reserve(blocks);
    m_wake.reserve(blocks);
    m_slack.reserve(k_block);
}

// Boxes are looked at in list order. Those before the one in work are settled: none is close to any later box, so only
// a box that grew can be close to one of them. The first close pair of the whole list is therefore found by asking,
// after each growth, first the settled boxes before the grown one, then those behind it, then the open ones.
void box_merger::merge(std::vector<con_info>& list) {
    if (list.size() < 2) return;
    load(list);
    for (m_next = 0; m_next < m_open.size(); ++m_next) {
        if (!m_taken[m_next]) settle(m_open[m_next]);
    }
    list.assign(m_settled.begin(), m_settled.end());
}

void box_merger::load(const std::vector<con_info>& list) {
    const std::size_t blocks = (list.size() + k_block - 1) / k_block;
    m_settled.clear();
    m_settled_columns.resize(0);
    m_open.assign(list.begin(), list.end());
    m_open_columns.resize(0);
    m_open_columns.resize(blocks * k_block);
    for (std::size_t i = 0; i < list.size(); ++i) m_open_columns.set(i, list[i]);
    m_taken.assign(list.size(), 0);
    m_frames.resize(blocks);
    for (std::size_t b = 0; b < blocks; ++b) frame_block(b);
    m_wake.resize(blocks);
    m_slack.resize(k_block);
    m_slack_block = k_none;
}

void box_merger::frame_block(std::size_t block) {
    const std::size_t end = std::min(m_open.size(), (block + 1) * k_block);
    con_info frame = m_open[block * k_block];
    for (std::size_t i = block * k_block + 1; i < end; ++i) {
        frame.left = std::min(frame.left, m_open[i].left);
        frame.right = std::max(frame.right, m_open[i].right);
        frame.top = std::min(frame.top, m_open[i].top);
        frame.bottom = std::max(frame.bottom, m_open[i].bottom);
    }
    m_frames.set(block, frame);
}

// Settles the next open box, with everything that it comes to absorb or to be absorbed by.
void box_merger::settle(const con_info& box) {
    take_open(m_next);
    m_settled.push_back(box);
    m_settled_columns.resize(m_settled.size());
    std::size_t probe = m_settled.size() - 1;
    m_settled_columns.set(probe, box);
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
        const std::size_t open = next_open_close(probe);
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
    m_settled_columns.set(i, box);
    return box_width(box) + box_height(box) - before;
}

void box_merger::drop_settled(std::size_t i) {
    m_settled.erase(m_settled.begin() + static_cast<std::ptrdiff_t>(i));
    m_settled_columns.remove(i);
}

std::size_t box_merger::first_settled_close(std::size_t from, std::size_t to, std::size_t probe) {
    if (from == to) return to;
    const columns& c = m_settled_columns;
    m_scratch.resize(m_settled.size());
    const int least =
        slack_row(c.left.data() + from, c.right.data() + from, c.top.data() + from, c.bottom.data() + from,
                  c.size.data() + from, probe_of(m_settled[probe]), m_scratch.data(), static_cast<int>(to - from));
    if (least >= 0) return to;
    std::size_t i = 0;
    while (m_scratch[i] >= 0) ++i;
    return from + i;
}

void box_merger::start_search(std::size_t probe) {
    m_growth = 0;
    m_from = m_next / k_block;
    m_slack_block = k_none;
    const columns& c = m_frames;
    const std::size_t count = m_wake.size() - m_from;
    if (count == 0) return;
    wake_row(c.left.data() + m_from, c.right.data() + m_from, c.top.data() + m_from, c.bottom.data() + m_from,
             probe_of(m_settled[probe]), m_wake.data() + m_from, static_cast<int>(count));
}

void box_merger::note_growth(int growth) {
    if (growth == 0) return;
    m_growth += growth;
    m_from = m_next / k_block;
    m_slack_block = k_none;
}

// The first open box that is close to the probe. Blocks that were passed stay passed until the probe has grown enough,
// and boxes of the block in work until it grows at all.
std::size_t box_merger::next_open_close(std::size_t probe) {
    for (; m_from < m_wake.size(); ++m_from) {
        if (m_wake[m_from] > m_growth) continue;
        if (m_slack_block != m_from) measure_block(probe);
        const std::size_t first = m_from * k_block;
        for (; m_slack_at < k_block; ++m_slack_at) {
            if (m_slack[m_slack_at] < 0) return first + m_slack_at;
        }
        m_wake[m_from] = m_growth + growth_to_reach(m_slack_least);
    }
    return k_none;
}

void box_merger::measure_block(std::size_t probe) {
    const columns& c = m_open_columns;
    const std::size_t first = m_from * k_block;
    const int least =
        slack_row(c.left.data() + first, c.right.data() + first, c.top.data() + first, c.bottom.data() + first,
                  c.size.data() + first, probe_of(m_settled[probe]), m_slack.data(), static_cast<int>(k_block));
    m_slack_block = m_from;
    m_slack_at = least < 0 ? 0 : k_block;
    m_slack_least =
        std::max(least, 0);  // if boxes are taken from the block, it is looked at again after the next growth
}

void box_merger::take_open(std::size_t i) {
    m_taken[i] = 1;
    m_open_columns.left[i] = m_open_columns.right[i] = k_far_away;
    m_open_columns.top[i] = m_open_columns.bottom[i] = k_far_away;
    if (i / k_block == m_slack_block) m_slack[i % k_block] = k_far_away;
}

}  // namespace orva_fd
