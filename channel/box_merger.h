// Merges boxes that lie close together. The rule is simple and slow: find the first close pair in list order, let its
// first box absorb the second, start again from the head. This class gives the same list, in the same order, in little
// more than linear time.
#ifndef ORVA_FD_CHANNEL_BOX_MERGER_H
#define ORVA_FD_CHANNEL_BOX_MERGER_H

#include <vector>

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
    // Boxes have left <= right and top <= bottom.
    void merge(std::vector<con_info>& list);

private:
    // Boxes by columns, which the search reads many at a time. An entry that was absorbed lies far from everything.
    struct columns {
        std::vector<int> left;
        std::vector<int> right;
        std::vector<int> top;
        std::vector<int> bottom;
        std::vector<int> size;  // width + height

        void reserve(std::size_t count);
        void resize(std::size_t count);
        void set(std::size_t i, const con_info& box);
        void remove(std::size_t i);
    };

    void load(const std::vector<con_info>& list);
    void frame_block(std::size_t block);
    void settle(const con_info& box);
    int absorb(std::size_t i, const con_info& other);
    void drop_settled(std::size_t i);
    std::size_t first_settled_close(std::size_t from, std::size_t to, std::size_t probe);
    void start_search(std::size_t probe);
    void note_growth(int growth);
    std::size_t next_open_close(std::size_t probe);
    void measure_block(std::size_t probe);
    void take_open(std::size_t i);

    std::vector<con_info> m_settled;  // no two of them are close, but for the last one in work
    columns m_settled_columns;

    std::vector<con_info> m_open;  // not yet looked at, in list order
    columns m_open_columns;        // padded to whole blocks
    std::vector<char> m_taken;     // absorbed or settled
    std::vector<int> m_scratch;

    // Around each block of open boxes, and how much the probe must grow before a box of the block can be close to it.
    columns m_frames;
    std::vector<int> m_wake;
    int m_growth;               // of the probe, in pixels its edges moved outward, since start_search
    std::size_t m_next;         // first open box that was not settled yet
    std::size_t m_from;         // blocks before this are not due
    std::size_t m_slack_block;  // the block that the following describe, or none
    std::vector<int> m_slack;   // distance beyond the limit for each box of it
    int m_slack_least;
    std::size_t m_slack_at;  // boxes before this one were passed
};

}  // namespace orva_fd

#endif
