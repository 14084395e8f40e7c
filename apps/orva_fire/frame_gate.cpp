#include "apps/orva_fire/frame_gate.h"

#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace orva_fire {
namespace {

// Time stamps are rounded, to milliseconds in some containers; a picture this much of an interval early is on time.
const double k_early_share = 0.1;

}  // namespace

bool rate_limiter::passes(double seconds) {
    if (m_rate <= 0) return true;
    const double interval = 1 / m_rate;
    if (m_started && seconds < m_due - k_early_share * interval) return false;
    // The grid of moments goes on from the last one, so that rounding does not add up; after a gap it starts afresh.
    m_due = m_started && m_due + interval > seconds ? m_due + interval : seconds + interval;
    m_started = true;
    return true;
}

bool same_picture(const AVFrame& a, const AVFrame& b) {
    if (a.width != b.width || a.height != b.height || a.format != b.format) return false;
    const auto format = static_cast<AVPixelFormat>(a.format);
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const bool chroma = plane == 1 || plane == 2;
        const int rows = chroma ? AV_CEIL_RSHIFT(a.height, description->log2_chroma_h) : a.height;
        const auto bytes = static_cast<size_t>(av_image_get_linesize(format, a.width, plane));
        for (int y = 0; y < rows; ++y) {
            const ptrdiff_t row = y;
            if (std::memcmp(a.data[plane] + row * a.linesize[plane], b.data[plane] + row * b.linesize[plane], bytes)) {
                return false;
            }
        }
    }
    return true;
}

bool repeat_finder::repeats(const AVFrame& picture) {
    if (m_last && same_picture(*m_last, picture)) return true;
    m_last = share_picture(picture);
    return false;
}

}  // namespace orva_fire
