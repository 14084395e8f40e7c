// bench/plain/ is the pipeline as one would first write it: one stage after the other over whole planes, a table lookup
// or a branch per pixel, vectors for lists, merging that starts again from the head, every component of 50 stored lists
// compared. It gives the results and the log text of the library and is what the library's speed is measured against.
// It is frozen: it changes only with the behaviour, never for speed.
//
// The same text is compiled twice, at -O2 and at -O3 -march=native, each time in its own namespace.
#ifndef ORVA_BENCH_PLAIN_PLAIN_H
#define ORVA_BENCH_PLAIN_PLAIN_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ORVA_FireDetection.h"
#include "bench/six_functions.h"

namespace plain_o2 {
extern const bench::six_functions functions;
}
namespace plain_o3 {
extern const bench::six_functions functions;
}

#ifdef ORVA_PLAIN_NAMESPACE
namespace ORVA_PLAIN_NAMESPACE {

struct component {
    int area;
    short left;
    short right;
    short top;
    short bottom;
};

inline unsigned char* row_of(const fd_yuv_frame* image, int plane, int y) {
    return image->virt_addr[plane] + static_cast<std::size_t>(image->stride[plane]) * static_cast<std::size_t>(y);
}

// pixels.cpp
void fill_tables();
void difference(const fd_yuv_frame* a, const fd_yuv_frame* b, fd_yuv_frame* dst);
int otsu(const fd_yuv_frame* image, int low, int high);
void threshold(const fd_yuv_frame* src, fd_yuv_frame* dst, int limit);
void dilate(const fd_yuv_frame* src, fd_yuv_frame* dst);
void copy_plane(const fd_yuv_frame* src, fd_yuv_frame* dst);
void convert(const fd_yuv_frame* src, fd_yuv_frame* dst);
void colour_filter(fd_yuv_frame* mask, const fd_yuv_frame* rgb, const fd_yuv_frame* yuv);

// labels.cpp
void label(const fd_yuv_frame* image, std::vector<component>& out);

// boxes.cpp
void find_candidates(const fd_yuv_frame* roi, const fd_yuv_frame* mask, std::vector<component>& list,
                     std::vector<component>& candidates);
void find_stable(const std::vector<std::vector<component>>& history, const std::vector<component>& candidates,
                 int least_matches, fd_result& result);

// channel.cpp
extern bench::stage_hook on_stage;

class channel {
public:
    explicit channel(fd_rect region);
    int set_frame(fd_yuv_frame& frame, fd_result& result);
    int set_grade(int grade);

private:
    channel(const channel&) = delete;
    channel& operator=(const channel&) = delete;

    bool place_region(fd_rect* region, const fd_yuv_frame& frame) const;
    void adopt_size(const fd_yuv_frame& roi);
    void find_components(const fd_yuv_frame& roi, std::vector<component>& list);
    void analyse(const fd_yuv_frame& roi, std::vector<component>& list, fd_result& result);
    void hold(const fd_yuv_frame& frame, fd_result& result);

    fd_rect m_region;
    std::vector<unsigned char> m_mask_bytes;
    std::vector<unsigned char> m_work_bytes;
    std::vector<unsigned char> m_rgb_bytes;
    fd_yuv_frame m_mask;
    fd_yuv_frame m_work;  // previous luma between frames
    fd_yuv_frame m_rgb;
    std::vector<std::vector<component>> m_history;
    int m_least_matches;
    int m_held;
    fd_result m_last;
    bool m_size_known;
    unsigned int m_width;
    unsigned int m_height;
};

}  // namespace ORVA_PLAIN_NAMESPACE
#endif

#endif
