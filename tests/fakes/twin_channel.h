// The plain twin of a channel in a build with the accelerator: which operations go where, what each of the two sees of
// a cached picture, which lines are printed. From components onward it is the software twin's.
#ifndef ORVA_TESTS_FAKES_TWIN_CHANNEL_H
#define ORVA_TESTS_FAKES_TWIN_CHANNEL_H

#include <cstddef>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/reference/ref_boxes.h"
#include "tests/reference/ref_channel.h"
#include "tests/reference/ref_log.h"

namespace twin {

// Cached memory: the processor's bytes and the engine's.
class cached_memory {
public:
    // phase: the buffer's physical address modulo 32, which decides where its lines begin.
    cached_memory(std::size_t bytes, std::size_t phase);

    // Lines that the processor changed since the last flush go to the engine, the others come from it.
    void flush();

    unsigned char* processor() { return m_processor.data(); }
    unsigned char* engine() { return m_engine.data(); }
    const std::vector<unsigned char>& processor_bytes() const { return m_processor; }
    const std::vector<unsigned char>& engine_bytes() const { return m_engine; }

private:
    bool is_settled(std::size_t begin, std::size_t bytes) const;

    std::size_t m_phase;
    std::vector<unsigned char> m_processor;
    std::vector<unsigned char> m_engine;
    std::vector<unsigned char> m_at_flush;
};

// A picture as one operation sees it: the processor's view, the engine's, and what decides between them.
struct two_views {
    ref::plane processor;
    ref::plane engine;
    unsigned int phys_addr;
};

class accelerated_stage {
public:
    accelerated_stage(ref::log_book& log, std::size_t phase);

    // Returns 0, or 4 when the engine refuses.
    int set_frame(const fd_yuv_frame& region, std::vector<ref::component>& components);

    cached_memory& foreground() { return m_foreground; }
    cached_memory& difference() { return m_difference; }
    cached_memory& rgb() { return m_rgb; }
    ref::plane mask() { return view(m_foreground).processor; }
    long engine_operations() const { return m_engine_operations; }
    long software_operations() const { return m_software_operations; }

private:
    enum class way { engine, refused, software };

    two_views view(cached_memory& memory);
    static two_views host_luma(const fd_yuv_frame& region);
    way way_of(const std::vector<two_views>& images, bool is_copy);
    int engine_refused(const char* function, int refused_line, int dispatch_line, const char* vendor);
    int failed(int code, int line);

    int sub(const fd_yuv_frame& region);
    int copy(const two_views& src, const two_views& dst);
    int threshold(int low);
    int dilate(cached_memory& src, cached_memory& dst);
    int convert(const fd_yuv_frame& region);
    int label(std::vector<ref::component>& components);

    ref::log_book& m_log;
    cached_memory m_foreground;
    cached_memory m_rgb;
    cached_memory m_difference;
    int m_width = FD_MAX_FRAME_WIDTH;
    int m_height = FD_MAX_FRAME_HEIGHT;
    long m_engine_operations = 0;
    long m_software_operations = 0;
};

class accelerated_channel {
public:
    // Started on a region. log: outlives the channel.
    accelerated_channel(ref::log_book& log, const fd_rect& roi, std::size_t phase)
        : m_log(log), m_roi(roi), m_stage(log, phase), m_analysis(log), m_holder(log) {}

    int set_sensitive(int grade) { return m_analysis.set_sensitive(grade); }
    int set_frame(const fd_yuv_frame& frame, fd_result& result);

    accelerated_stage& stage() { return m_stage; }

private:
    bool accepts(const fd_yuv_frame& frame) const;
    void note_size(const fd_yuv_frame& region);

    ref::log_book& m_log;
    fd_rect m_roi;
    accelerated_stage m_stage;
    ref::analysis m_analysis;
    ref::result_holder m_holder;
    bool m_size_known = false;
    unsigned int m_roi_width = 0;
    unsigned int m_roi_height = 0;
};

}  // namespace twin

#endif
