// A host's frame in a heap block of exactly the bytes that the public header says are read.
#ifndef ORVA_TESTS_FUZZ_PAINTED_FRAME_H
#define ORVA_TESTS_FUZZ_PAINTED_FRAME_H

#include <memory>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/fuzz/byte_source.h"

namespace fuzz {

struct frame_shape {
    int width;
    int height;
    int stride;
};

// Widths and heights mostly small, so that many frames fit into a second; now and then the largest. Strides from the
// width rounded up to even, a third of them multiples of 16.
frame_shape read_shape(byte_source& input);

// How a frame is painted: what a few bytes say, for as many frames as wanted.
struct painting {
    int background;  // luma
    int noise;       // of the luma, to both sides
    int seed;        // of noise, and of flames that wander
    int flames;
    int place;    // of the first flame, in 1/16 of the picture: high half x, low half y
    int size;     // of a flame, in pixels
    int swing;    // by how much it changes, per cent of the size
    int rhythm;   // 0 to 2: in turn large and small, in steps of three, at random
    int colour;   // 0 fire, 1 pale, 2 random
    bool random;  // every byte is noise
};

painting read_painting(byte_source& input);

class painted_frame {
public:
    explicit painted_frame(frame_shape shape);

    void paint(const painting& style, int number);
    fd_yuv_frame view();
    const std::vector<unsigned char>& copy() const { return m_copy; }

    // Whether the block is as it was painted.
    bool untouched() const;

private:
    void paint_flame(const painting& style, int number, int index, noise_source& noise);
    void paint_block(int x, int y, int luma, int u, int v);

    frame_shape m_shape;
    std::size_t m_length;
    std::unique_ptr<unsigned char[]> m_bytes;
    std::vector<unsigned char> m_copy;
};

}  // namespace fuzz

#endif
