// Connected components of a binary image, found from its runs: horizontal stretches of foreground pixels.
#ifndef ORVA_FD_IMGPROC_BWLABEL_CCL_H
#define ORVA_FD_IMGPROC_BWLABEL_CCL_H

#include <utility>
#include <vector>

#include "imgproc/common.h"

namespace orva_fd {

// Two passes: provisional labels with recorded equivalences, then their resolution. Neighbours share an edge; touching
// at a corner does not connect (the accelerator connects corners too; the difference is deliberate). Any thread; the
// object has no state. Every function returns 0. Allocation failures throw.
class bwlabel_ccl {
public:
    // Labels plane 0 of img (any non-zero byte is foreground; width and height 1 to 65535) and fills out, one record
    // per component in raster order of their first pixels. An image without foreground leaves out untouched. Otherwise
    // out is resized; entries that it already held keep their values and are added to (deliberate: callers pass it
    // empty). A new record starts with left 352 and top 288, so a component beyond them keeps these numbers
    // (deliberate).
    int do_comm_ccl(fd_yuv_frame* img, std::vector<con_info>& out);

    // Appends the image's runs in raster order: first column, last column, row. runCount and the vectors start empty.
    int fillRunVectors(unsigned char* data, int width, int height, int stride, int& runCount,
                       std::vector<unsigned short>& stRun, std::vector<unsigned short>& enRun,
                       std::vector<unsigned short>& rowRun);

    // Gives each run a provisional label, 1-based, and records which labels belong together, in the order found.
    int firstPass(std::vector<unsigned short>& stRun, std::vector<unsigned short>& enRun,
                  std::vector<unsigned short>& rowRun, int runCount, std::vector<int>& runLabels,
                  std::vector<std::pair<int, int>>& equivalences, int& labelCount);

    // finalLabels[p - 1] becomes the 1-based group of provisional label p; groups are numbered in the order of their
    // smallest label.
    int replaceSameLabel(int labelCount, std::vector<std::pair<int, int>>& equivalences, std::vector<int>& finalLabels,
                         int& groupCount);
};

}  // namespace orva_fd

#endif
