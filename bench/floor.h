// What a frame costs at least: its bytes and the previous luma read once, the new luma written once, nothing computed.
#ifndef ORVA_BENCH_FLOOR_H
#define ORVA_BENCH_FLOOR_H

#include "ORVA_FireDetection.h"

namespace bench {

// Reads both planes of the frame and `previous` (width * height bytes, no padding), replaces previous by the luma.
// Returns a mix of all bytes, so that nothing is left out.
unsigned char touch_frame(const fd_yuv_frame& frame, unsigned char* previous);

}  // namespace bench

#endif
