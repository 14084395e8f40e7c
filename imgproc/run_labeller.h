// Connected components from rows that arrive one after the other, in the order and with the records of bwlabel_ccl:
// only the runs of two rows are kept, and one record for each label.
#ifndef ORVA_FD_IMGPROC_RUN_LABELLER_H
#define ORVA_FD_IMGPROC_RUN_LABELLER_H

#include <vector>

#include "imgproc/common.h"

namespace orva_fd {

// One thread at a time. Memory grows as needed and is kept; reserve obtains it beforehand.
class run_labeller {
public:
    // Labels of one dilated mask of 352 x 288, and so its components. A run that touches nothing above gets a label.
    // Away from the border such a run lies over a set pixel of the row below, whose 3 x 3 square is set. Two of these
    // pixels less than three rows apart are at least four columns apart, exactly three rows apart at least three
    // columns; so the shapes that reach from each over 3, 4, 4 and 3 columns of four rows, 14 pixels, do not overlap:
    // there are at most (349 + 4) * (286 + 4) / 14. The rows and columns that dilation passes over (two and three) add
    // at most 2 * 176 and 3 * 144.
    static const int k_most_components = (349 + 4) * (286 + 4) / 14 + 2 * 176 + 3 * 144;

    // Obtains memory for rows of `width` bytes and for `labels` labels of one image. May throw; nothing is lost then.
    void reserve(int width, int labels);

    void begin();

    // The runs of non-zero bytes of row y, all of which lie in columns first to last - 1. Rows come in rising order;
    // rows without foreground may be left out.
    void add_row(const unsigned char* row, int first, int last, int y);

    // Resizes out to the number of components and adds each to its record; see bwlabel_ccl::do_comm_ccl. An image
    // without foreground leaves out untouched.
    void finish(std::vector<con_info>& out);

private:
    // Each run's first column and the column behind its last one, closed by a run beyond every column; and its label.
    struct run_row {
        std::vector<int> edges;
        std::vector<int> labels;
    };
    // Edges hold 16-bit values, as the records do.
    struct label {
        int parent;  // itself for a root; always the smaller label
        int area;
        int16_t left;
        int16_t right;
        int16_t top;
        int16_t bottom;
    };

    void make_room(std::size_t runs);
    std::size_t find_runs(const unsigned char* row, int first, int last);
    int join_touching(const int* above, const int* above_label, int end);

    run_row m_row;
    run_row m_row_above;
    int m_y = -2;                 // of the row above
    std::vector<label> m_labels;  // the first m_label_count count
    std::size_t m_label_count = 0;
    std::size_t m_roots = 0;
};

}  // namespace orva_fd

#endif
