#include "bench/floor.h"

#include <cstddef>

namespace bench {

namespace {

unsigned char read_row(const unsigned char* row, std::size_t width) {
    unsigned char mix = 0;
    for (std::size_t x = 0; x < width; ++x) mix = static_cast<unsigned char>(mix ^ row[x]);
    return mix;
}

unsigned char swap_row(const unsigned char* row, unsigned char* previous, std::size_t width) {
    unsigned char mix = 0;
    for (std::size_t x = 0; x < width; ++x) {
        mix = static_cast<unsigned char>(mix ^ previous[x]);
        previous[x] = row[x];
    }
    return mix;
}

}  // namespace

unsigned char touch_frame(const fd_yuv_frame& frame, unsigned char* previous) {
    unsigned char mix = 0;
    for (std::size_t y = 0; y < frame.height; ++y) {
        const unsigned char* luma = frame.virt_addr[0] + y * frame.stride[0];
        mix = static_cast<unsigned char>(mix ^ swap_row(luma, previous + y * frame.width, frame.width));
    }
    for (std::size_t y = 0; y < frame.height / 2; ++y)
        mix = static_cast<unsigned char>(mix ^ read_row(frame.virt_addr[1] + y * frame.stride[1], frame.width));
    return mix;
}

}  // namespace bench
