#include "channel/box_rows.h"

#include "imgproc/rows.h"

namespace orva_fd {

namespace {

inline short nearer(short a, short b) {
    return a < b ? a : b;
}
inline short farther(short a, short b) {
    return a > b ? a : b;
}
inline short distance(short a, short b) {
    const short difference = static_cast<short>(a - b);
    return difference < 0 ? static_cast<short>(-difference) : difference;
}

// Least distance between an edge of one span and an edge of the other.
inline short edge_distance(short a_low, short a_high, short b_low, short b_high) {
    return nearer(nearer(distance(a_low, b_low), distance(a_low, b_high)),
                  nearer(distance(a_high, b_low), distance(a_high, b_high)));
}

// Distance of a point from a span; 0 inside.
inline short outside(short at, short low, short high) {
    return farther(farther(static_cast<short>(low - at), static_cast<short>(at - high)), 0);
}

}  // namespace

ORVA_ROW_FUNCTION
int closeness_row(const box_columns& boxes, probe_box probe, unsigned char* close, int count) {
    const short* left = boxes.left;
    const short* right = boxes.right;
    const short* top = boxes.top;
    const short* bottom = boxes.bottom;
    const short* size = boxes.size;
    const uint16_t none = 32767;
    uint16_t least = none;  // negative numbers read as unsigned ones are larger
    for (int i = 0; i < count; ++i) {
        const short dx = edge_distance(probe.left, probe.right, left[i], right[i]);
        const short dy = edge_distance(probe.top, probe.bottom, top[i], bottom[i]);
        const short half = static_cast<short>(static_cast<short>(probe.size + size[i]) >> 1);
        const short limit = farther(k_nearest_limit, nearer(half, k_farthest_limit));
        const short slack = static_cast<short>(static_cast<short>(dx + dy) - limit);
        close[i] = slack < 0 ? 1 : 0;
        const uint16_t beyond = static_cast<uint16_t>(slack);
        least = beyond < least ? beyond : least;
    }
    return least;
}

ORVA_ROW_FUNCTION
probe_box frame_row(const box_columns& boxes, int count) {
    const short* left = boxes.left;
    const short* right = boxes.right;
    const short* top = boxes.top;
    const short* bottom = boxes.bottom;
    probe_box frame = {left[0], right[0], top[0], bottom[0], 0};
    for (int i = 1; i < count; ++i) {
        frame.left = nearer(frame.left, left[i]);
        frame.right = farther(frame.right, right[i]);
        frame.top = nearer(frame.top, top[i]);
        frame.bottom = farther(frame.bottom, bottom[i]);
    }
    return frame;
}

// A box inside a frame is at least as far away as the frame, and no limit exceeds the farthest, so only distance can
// shrink: by one for each pixel. Rarely asked: one version is enough.
void wake_row(const box_columns& frames, probe_box probe, int* wake, int count) {
    const short* left = frames.left;
    const short* right = frames.right;
    const short* top = frames.top;
    const short* bottom = frames.bottom;
    for (int i = 0; i < count; ++i) {
        const short dx = nearer(outside(probe.left, left[i], right[i]), outside(probe.right, left[i], right[i]));
        const short dy = nearer(outside(probe.top, top[i], bottom[i]), outside(probe.bottom, top[i], bottom[i]));
        wake[i] = farther(static_cast<short>(dx + dy - k_farthest_limit + 1), 0);
    }
}

}  // namespace orva_fd
