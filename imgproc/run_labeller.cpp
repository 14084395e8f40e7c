#include "imgproc/run_labeller.h"

#include <algorithm>
#include <climits>

#include "imgproc/rows.h"

namespace orva_fd {

namespace {

const int k_no_row = -2;  // so that row 0 has no row above
const int k_beyond = INT_MAX;
const int k_no_runs[2] = {k_beyond, k_beyond};

con_info start_record() {
    con_info record = {};
    record.left = k_max_width;
    record.top = k_max_height;
    return record;
}

void include_span(int16_t* low, int16_t* high, int16_t first, int16_t last) {
    *low = std::min(*low, first);
    *high = std::max(*high, last);
}

// Labels are joined over records held by one array; these take it by address, which stays in a register.
template <typename label>
int root_of(label* labels, int at) {
    while (labels[at].parent != at) {
        labels[at].parent = labels[labels[at].parent].parent;  // halves the path for the next search
        at = labels[at].parent;
    }
    return at;
}

// The smaller label stays, so a component's root is the label of its first run. It begins no lower than the other, and
// both reach down to where they are joined: its rows hold the other's.
template <typename label>
int join(label* labels, int a, int b) {
    label& keep = labels[std::min(a, b)];
    label& gone = labels[std::max(a, b)];
    gone.parent = keep.parent;
    keep.area += gone.area;
    include_span(&keep.left, &keep.right, gone.left, gone.right);
    return keep.parent;
}

}  // namespace

void run_labeller::reserve(int width, int labels) {
    const std::size_t runs = static_cast<std::size_t>(width + 1) / 2;
    make_room(runs);
    m_labels.resize(static_cast<std::size_t>(labels) + runs);
}

// For rows of so many runs, each of which may need a label.
void run_labeller::make_room(std::size_t runs) {
    for (run_row* row : {&m_row, &m_row_above}) {
        if (row->labels.size() < runs) row->labels.resize(runs);
        if (row->edges.size() < 2 * runs + 2) row->edges.resize(2 * runs + 2, k_beyond);
    }
    if (m_labels.size() < m_label_count + runs) m_labels.resize(2 * (m_label_count + runs));
}

void run_labeller::begin() {
    m_label_count = 0;
    m_roots = 0;
    m_y = k_no_row;
}

// A run begins or ends where a pixel differs from the one before it. Returns the number of runs.
std::size_t run_labeller::find_runs(const unsigned char* row, int first, int last) {
    int* const edges = m_row.edges.data();
    int* next = edges;
    uint64_t open = 0;
    for (int part = first; part < last; part += k_widest_bits) {
        uint64_t words[k_bit_words];
        bits_row(row + part, std::min(k_widest_bits, last - part), words);
        for (int i = 0; i < k_bit_words; ++i) {
            const uint64_t bits = words[i];
            for (uint64_t changes = bits ^ (bits << 1 | open); changes != 0; changes &= changes - 1)
                *next++ = part + 64 * i + __builtin_ctzll(changes);
            open = bits >> 63;
        }
    }
    if ((next - edges) % 2 != 0) *next++ = last;
    next[0] = next[1] = k_beyond;
    return static_cast<std::size_t>(next - edges) / 2;
}

// Joins the labels of all runs above that begin before `end`, the first of which touches. Returns their root.
int run_labeller::join_touching(const int* above, const int* above_label, int end) {
    label* labels = m_labels.data();
    int root = root_of(labels, *above_label);
    for (above += 2, ++above_label; *above < end; above += 2, ++above_label) {
        const int other = root_of(labels, *above_label);
        if (other == root) continue;
        root = join(labels, root, other);
        --m_roots;
    }
    return root;
}

// Gives each run its label: that of the runs that it touches above, or a new one. The runs above that end before a run
// touch none of the next ones either.
void run_labeller::add_row(const unsigned char* row, int first_column, int last_column, int y) {
    make_room(static_cast<std::size_t>(last_column - first_column + 1) / 2);
    const std::size_t count = find_runs(row, first_column, last_column);
    const int* above = y == m_y + 1 ? m_row_above.edges.data() : k_no_runs;
    const int* above_label = m_row_above.labels.data();
    const int16_t row_edge = static_cast<int16_t>(y);
    label* const labels = m_labels.data();
    for (std::size_t i = 0; i < count; ++i) {
        const int first = m_row.edges[2 * i];
        const int end = m_row.edges[2 * i + 1];
        const int16_t left = static_cast<int16_t>(first);
        const int16_t right = static_cast<int16_t>(end - 1);
        for (; above[1] <= first; above += 2) ++above_label;
        if (above[0] >= end) {
            const label fresh = {static_cast<int>(m_label_count), end - first, left, right, row_edge, row_edge};
            labels[m_label_count] = fresh;
            m_row.labels[i] = fresh.parent;
            ++m_label_count;
            ++m_roots;
            continue;
        }
        const int root = join_touching(above, above_label, end);
        m_row.labels[i] = root;
        label& own = labels[root];
        own.area += end - first;
        include_span(&own.left, &own.right, left, right);
        include_span(&own.top, &own.bottom, row_edge, row_edge);
    }
    std::swap(m_row, m_row_above);
    m_y = y;
}

// Records that out did not hold start empty.
void run_labeller::finish(std::vector<con_info>& out) {
    if (m_label_count == 0) return;
    const std::size_t held = out.size();
    out.resize(m_roots);
    for (std::size_t i = held; i < m_roots; ++i) out[i] = start_record();
    con_info* record = out.data();
    for (std::size_t i = 0; i < m_label_count; ++i) {
        const label& root = m_labels[i];
        if (root.parent != static_cast<int>(i)) continue;
        record->area += root.area;
        include_span(&record->left, &record->right, root.left, root.right);
        include_span(&record->top, &record->bottom, root.top, root.bottom);
        ++record;
    }
}

}  // namespace orva_fd
