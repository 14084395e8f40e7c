// Row functions over boxes held by columns, for the merger. Compiled like those of imgproc/rows.
#ifndef ORVA_FD_CHANNEL_BOX_ROWS_H
#define ORVA_FD_CHANNEL_BOX_ROWS_H

namespace orva_fd {

const int k_nearest_limit = 40;   // boxes nearer than this are always close
const int k_farthest_limit = 80;  // boxes as far as this never are

// The box that others are compared with.
struct probe_box {
    int left;
    int right;
    int top;
    int bottom;
    int size;  // width + height
};

// How far each of count boxes lies beyond the limit at which it is close to the probe; negative if it is close. Returns
// the least, INT_MAX for no boxes.
int slack_row(const int* left, const int* right, const int* top, const int* bottom, const int* size, probe_box probe,
              int* slack, int count);

// For frames around several boxes each: how many pixels the probe's edges can move, all together, before a box inside
// can be close to it.
void wake_row(const int* left, const int* right, const int* top, const int* bottom, probe_box probe, int* wake,
              int count);

}  // namespace orva_fd

#endif
