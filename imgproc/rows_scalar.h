// What rows.h declares for processors without vector instructions only.
#ifndef ORVA_FD_IMGPROC_ROWS_SCALAR_H
#define ORVA_FD_IMGPROC_ROWS_SCALAR_H

#include <cstdint>

namespace orva_fd {

// distances = |luma - before|, then before = luma. Adds the differences to their sum and counts them by value; of those
// up to limit, 0 to 127, some are not counted. Returns whether any lies above limit. width: at most the widest row.
struct difference_counts {
    uint32_t of[256];
    uint32_t sum;
};
bool replace_row(const unsigned char* luma, unsigned char* before, unsigned char* distances, int width, int limit,
                 difference_counts* counts);

}  // namespace orva_fd

#endif
