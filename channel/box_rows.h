// Row functions over boxes held by columns, for the merger. Compiled like those of imgproc/rows. Columns are of 16
// bits, of which a register holds twice as many as of 32: pictures have at most 16,383 columns and rows, so that the
// sum of two distances fits.
#ifndef ORVA_FD_CHANNEL_BOX_ROWS_H
#define ORVA_FD_CHANNEL_BOX_ROWS_H

namespace orva_fd {

const int k_nearest_limit = 40;   // boxes nearer than this are always close
const int k_farthest_limit = 80;  // boxes as far as this never are

// Width and height of a box together count up to this; of larger ones the limit is the farthest whatever the other's.
const int k_largest_size = 2 * k_farthest_limit;

// Edges of a box that is far from every box of a picture, with sums of distances that fit just so.
const short k_far_column = 24575;
const short k_far_row = 8192;

// The box that others are compared with.
struct probe_box {
    short left;
    short right;
    short top;
    short bottom;
    short size;  // width + height, held to k_largest_size
};

// Boxes by columns.
struct box_columns {
    const short* left;
    const short* right;
    const short* top;
    const short* bottom;
    const short* size;
};

// Sets close[i] to 1 where box i lies nearer to the probe than the limit, to 0 elsewhere. Returns the least distance
// beyond the limit of those that do not, 32767 for none.
int closeness_row(const box_columns& boxes, probe_box probe, unsigned char* close, int count);

// The frame around count boxes, at least one; its size is not set.
probe_box frame_row(const box_columns& boxes, int count);

// For frames around several boxes each: how many pixels the probe's edges can move, all together, before a box inside
// can be close to it.
void wake_row(const box_columns& frames, probe_box probe, int* wake, int count);

}  // namespace orva_fd

#endif
