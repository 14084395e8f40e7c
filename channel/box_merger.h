// Merges boxes that lie close together. The rule is simple and slow: find the first close pair in list order, let its
// first box absorb the second, start again from the head. This class gives the same list, in the same order, in little
// more than linear time.
#ifndef ORVA_FD_CHANNEL_BOX_MERGER_H
#define ORVA_FD_CHANNEL_BOX_MERGER_H

#include <vector>

#include "channel/box_rows.h"
#include "imgproc/common.h"

namespace orva_fd {

// One thread at a time. Memory grows as needed and is kept; reserve obtains it beforehand.
class box_merger {
public:
    // Obtains memory for lists of so many boxes, of which so many stay. May throw; nothing is lost then.
    void reserve(std::size_t boxes, std::size_t merged_boxes);

    // Two boxes are close when the nearest vertical edges and the nearest horizontal edges of the two are together less
    // than half their widths and heights apart, held to 40..80. A close pair becomes the box around both, with the sum
    // of the areas.
    // Boxes have left <= right and top <= bottom, and edges of 0 to 16,383.
    void merge(std::vector<con_info>& list);

private:
    // Boxes by columns, which the search reads many at a time. An entry that was absorbed lies far from everything.
    struct columns {
        std::vector<short> left;
        std::vector<short> right;
        std::vector<short> top;
        std::vector<short> bottom;
        std::vector<short> size;

        void reserve(std::size_t count);
        void resize(std::size_t count);
        void set(std::size_t i, const probe_box& box);
        void remove(std::size_t i);
        box_columns from(std::size_t i) const;
    };

    void load(const std::vector<con_info>& list);
    void settle(const con_info& box);
    int absorb(std::size_t i, const con_info& other);
    void drop_settled(std::size_t i);
    std::size_t first_settled_close(std::size_t from, std::size_t to, std::size_t probe);
    void start_search(std::size_t probe);
    void note_growth(int growth);
    void return_to_first_block();
    std::size_t next_open_growing(std::size_t probe);
    std::size_t absorb_until_growing(std::size_t probe);
    void measure_block(std::size_t probe);
    void take_open(std::size_t i);

    std::vector<con_info> m_settled;  // no two of them are close, but for the last one in work
    columns m_settled_columns;
    std::vector<unsigned char> m_scratch;

    const con_info* m_open;                // boxes not yet looked at, in list order
    columns m_open_columns;                // padded to whole blocks
    std::vector<unsigned char> m_open_in;  // how many boxes of each block are still open
    std::vector<unsigned char> m_close;    // of the measured block: whether each box is close to the probe

    // Around each block of open boxes, and how much the probe must grow before a box of the block can be close to it.
    columns m_frames;
    std::vector<int> m_wake;
    int m_growth;           // of the probe, in pixels its edges moved outward, since start_search
    std::size_t m_first;    // blocks before this have no open boxes
    std::size_t m_from;     // blocks before this are not due
    uint64_t m_close_bits;  // boxes of the measured block that are close and were not passed
    int m_least;            // distance beyond the limit of its nearest that is not close
};

}  // namespace orva_fd

#endif
