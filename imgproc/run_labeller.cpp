#include "imgproc/run_labeller.h"

#include <algorithm>
#include <cstring>

namespace orva_fd {

namespace {

const int k_no_row = -2;  // so that row 0 has no row above

// Eight bytes, the first in the lowest bits on every machine.
inline uint64_t load_bytes(const unsigned char* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    word = __builtin_bswap64(word);
#endif
    return word;
}

// One bit for each of eight bytes, set where the byte is not zero. The addition carries into a byte's top bit if any of
// its lower seven is set; the product gathers the eight bits in the top byte.
inline uint64_t non_zero_bits(uint64_t word) {
    const uint64_t low_bits = 0x7f7f7f7f7f7f7f7fu;
    const uint64_t ones = ((((word & low_bits) + low_bits) | word) >> 7) & 0x0101010101010101u;
    return (ones * 0x0102040810204080u) >> 56;
}

// The bits of up to 64 bytes.
inline uint64_t foreground_bits(const unsigned char* row, int count) {
    uint64_t bits = 0;
    int x = 0;
    for (; x + 8 <= count; x += 8) {
        const uint64_t word = load_bytes(row + x);
        if (word != 0) bits |= non_zero_bits(word) << x;
    }
    for (; x < count; ++x) bits |= static_cast<uint64_t>(row[x] != 0) << x;
    return bits;
}

con_info start_record() {
    con_info record = {};
    record.left = k_max_width;
    record.top = k_max_height;
    return record;
}

}  // namespace

void run_labeller::reserve(int width, int labels) {
    const std::size_t runs = static_cast<std::size_t>(width + 1) / 2;
    m_row.resize(runs);
    m_row_above.resize(runs);
    m_labels.reserve(static_cast<std::size_t>(labels));
}

void run_labeller::begin() {
    m_labels.clear();
    m_count_above = 0;
    m_y = k_no_row;
}

// A run begins or ends where a pixel differs from the one before it. Returns the number of runs.
std::size_t run_labeller::find_runs(const unsigned char* row, int width) {
    const std::size_t most = static_cast<std::size_t>(width + 1) / 2;
    if (m_row.size() < most) m_row.resize(most);
    run* next = m_row.data();
    bool open = false;
    for (int x = 0; x < width; x += 64) {
        const uint64_t bits = foreground_bits(row + x, std::min(64, width - x));
        for (uint64_t changes = bits ^ (bits << 1 | (open ? 1u : 0u)); changes != 0; changes &= changes - 1) {
            const int at = x + __builtin_ctzll(changes);
            if (open) {
                next->last = at - 1;
                ++next;
            } else {
                next->first = at;
            }
            open = !open;
        }
    }
    if (open) {
        next->last = width - 1;
        ++next;
    }
    return static_cast<std::size_t>(next - m_row.data());
}

int run_labeller::root_of(int at) {
    while (m_labels[static_cast<std::size_t>(at)].parent != at) {
        int& parent = m_labels[static_cast<std::size_t>(at)].parent;
        parent = m_labels[static_cast<std::size_t>(parent)].parent;  // halves the path for the next search
        at = parent;
    }
    return at;
}

// The smaller label stays, so a component's root is the label of its first run.
void run_labeller::join(int a, int b) {
    label& keep = m_labels[static_cast<std::size_t>(std::min(a, b))];
    label& gone = m_labels[static_cast<std::size_t>(std::max(a, b))];
    gone.parent = keep.parent;
    keep.area += gone.area;
    keep.left = std::min(keep.left, gone.left);
    keep.right = std::max(keep.right, gone.right);
    keep.top = std::min(keep.top, gone.top);
    keep.bottom = std::max(keep.bottom, gone.bottom);
}

// Gives a run its label and joins what it touches above. `above` ends at the last run that may touch the next one too.
void run_labeller::place(run* current, const run*& above, const run* above_end, int y) {
    const int length = current->last - current->first + 1;
    const int first = static_cast<int16_t>(current->first);
    const int last = static_cast<int16_t>(current->last);
    const int row = static_cast<int16_t>(y);
    while (above != above_end && above->last < current->first) ++above;
    if (above == above_end || above->first > current->last) {
        current->label = static_cast<int>(m_labels.size());
        const label fresh = {current->label, length, first, last, row, row};
        m_labels.push_back(fresh);
        return;
    }
    int root = root_of(above->label);
    for (const run* touching = above + 1; touching != above_end && touching->first <= current->last; ++touching) {
        const int other = root_of(touching->label);
        if (other == root) continue;
        join(root, other);
        root = std::min(root, other);
    }
    current->label = root;
    label& own = m_labels[static_cast<std::size_t>(root)];
    own.area += length;
    own.left = std::min(own.left, first);
    own.right = std::max(own.right, last);
    own.top = std::min(own.top, row);
    own.bottom = std::max(own.bottom, row);
}

void run_labeller::add_row(const unsigned char* row, int width, int y) {
    const std::size_t count = find_runs(row, width);
    const run* above = m_row_above.data();
    const run* above_end = above + (y == m_y + 1 ? m_count_above : 0);
    for (std::size_t i = 0; i < count; ++i) place(&m_row[i], above, above_end, y);
    m_row.swap(m_row_above);
    m_count_above = count;
    m_y = y;
}

void run_labeller::finish(std::vector<con_info>& out) {
    if (m_labels.empty()) return;
    const std::size_t held = out.size();
    std::size_t component = 0;
    for (std::size_t i = 0; i < m_labels.size(); ++i) {
        const label& root = m_labels[i];
        if (root.parent != static_cast<int>(i)) continue;
        const con_info before = component < held ? out[component] : start_record();
        const con_info record = {before.area + root.area, static_cast<int16_t>(std::min<int>(before.left, root.left)),
                                 static_cast<int16_t>(std::max<int>(before.right, root.right)),
                                 static_cast<int16_t>(std::min<int>(before.top, root.top)),
                                 static_cast<int16_t>(std::max<int>(before.bottom, root.bottom))};
        if (component < held) {
            out[component] = record;
        } else {
            out.push_back(record);
        }
        ++component;
    }
    out.resize(component);
}

}  // namespace orva_fd
