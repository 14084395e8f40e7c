// Pictures to play: a scene is a ring of frames, drawn once from integers and a seed, so that every machine draws the
// same bytes. Neighbours in the ring differ as successive pictures of a camera do.
#ifndef ORVA_BENCH_SCENES_H
#define ORVA_BENCH_SCENES_H

#include <cstdint>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/support/xorshift_source.h"

namespace bench {

using random_source = support::xorshift_source;

// A frame as the public header asks for it: one block of memory, both planes and a row to spare.
class picture {
public:
    picture(int width, int height);
    fd_yuv_frame view() const;
    int width() const { return m_width; }
    int height() const { return m_height; }
    void set_luma(int x, int y, int luma);
    void set_chroma(int x, int y, int u, int v);  // of the pair that covers x, y
    int luma(int x, int y) const;

private:
    std::size_t at(int x, int y) const;

    int m_width;
    int m_height;
    int m_stride;
    std::vector<unsigned char> m_bytes;
};

struct scene {
    std::string name;
    std::vector<picture> frames;

    fd_yuv_frame frame(std::size_t number) const { return frames[number % frames.size()].view(); }
    double pixels() const { return static_cast<double>(frames[0].width()) * frames[0].height(); }
};

const int k_full_width = FD_MAX_FRAME_WIDTH;
const int k_full_height = FD_MAX_FRAME_HEIGHT;

// The whole picture as a region.
fd_rect whole_picture();

// Still picture, sensor noise, one flame.
scene quiet_scene(int width, int height);

// Everything moves, and `blobs` fire-coloured blobs with it.
scene busy_scene(int width, int height, int blobs);

}  // namespace bench

#endif
