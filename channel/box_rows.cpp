#include "channel/box_rows.h"

#include <climits>
#include <cstdlib>

#include "imgproc/rows.h"

namespace orva_fd {

namespace {

inline int nearer(int a, int b) {
    return a < b ? a : b;
}
inline int farther(int a, int b) {
    return a > b ? a : b;
}

// Least distance between an edge of one span and an edge of the other.
inline int edge_distance(int a_low, int a_high, int b_low, int b_high) {
    return nearer(nearer(std::abs(a_low - b_low), std::abs(a_low - b_high)),
                  nearer(std::abs(a_high - b_low), std::abs(a_high - b_high)));
}

// Distance of a point from a span; 0 inside.
inline int outside(int at, int low, int high) {
    return farther(farther(low - at, at - high), 0);
}

}  // namespace

ORVA_ROW_FUNCTION
int slack_row(const int* left, const int* right, const int* top, const int* bottom, const int* size, probe_box probe,
              int* slack, int count) {
    int least = INT_MAX;
    for (int i = 0; i < count; ++i) {
        const int dx = edge_distance(probe.left, probe.right, left[i], right[i]);
        const int dy = edge_distance(probe.top, probe.bottom, top[i], bottom[i]);
        const int limit = farther(k_nearest_limit, nearer((probe.size + size[i]) >> 1, k_farthest_limit));
        slack[i] = dx + dy - limit;
        least = nearer(least, slack[i]);
    }
    return least;
}

// A box inside a frame is at least as far away as the frame, and no limit exceeds the farthest, so only distance can
// shrink: by one for each pixel.
ORVA_ROW_FUNCTION
void wake_row(const int* left, const int* right, const int* top, const int* bottom, probe_box probe, int* wake,
              int count) {
    for (int i = 0; i < count; ++i) {
        const int dx = nearer(outside(probe.left, left[i], right[i]), outside(probe.right, left[i], right[i]));
        const int dy = nearer(outside(probe.top, top[i], bottom[i]), outside(probe.bottom, top[i], bottom[i]));
        wake[i] = farther(dx + dy - k_farthest_limit + 1, 0);
    }
}

}  // namespace orva_fd
