#include "apps/orva_fire/frame_gate.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace orva_fire {
namespace {

// Time stamps are rounded, to milliseconds in some containers, and cameras waver a little; a picture that is early by
// no more than both of these, a share of the interval and seconds, is on time.
const double k_early_share = 0.1;
const double k_early_seconds = 0.005;

// A coder leaves a trace of noise on a repeated picture. On real recordings its mean stays below this many grey levels,
// and no block of 8 x 8 pixels reaches the second number; the smallest flicker of a flame does at once.
const double k_noise_mean = 0.05;
const int k_noise_block = 2;
const int k_block = 8;

bool has_byte_luma(const AVFrame& picture) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const bool rgb = description->flags & AV_PIX_FMT_FLAG_RGB;
    return !rgb && description->comp[0].depth == 8 && description->comp[0].step == 1;
}

const uint8_t* row_of(const AVFrame& picture, int plane, int y) {
    return picture.data[plane] + static_cast<ptrdiff_t>(y) * picture.linesize[plane];
}

int row_difference(const uint8_t* a, const uint8_t* b, int width) {
    int sum = 0;
    for (int x = 0; x < width; ++x) sum += std::abs(a[x] - b[x]);
    return sum;
}

int block_difference(const AVFrame& a, const AVFrame& b, int x, int y, int width, int height) {
    int sum = 0;
    for (int row = y; row < y + height; ++row)
        sum += row_difference(row_of(a, 0, row) + x, row_of(b, 0, row) + x, width);
    return sum;
}

// Blocks at the right and lower edge may be narrower; they are held to the same mean.
bool same_luma(const AVFrame& a, const AVFrame& b) {
    int64_t total = 0;
    for (int y = 0; y < a.height; y += k_block) {
        const int height = std::min(k_block, a.height - y);
        for (int x = 0; x < a.width; x += k_block) {
            const int width = std::min(k_block, a.width - x);
            const int difference = block_difference(a, b, x, y, width, height);
            if (difference >= k_noise_block * width * height) return false;
            total += difference;
        }
    }
    return static_cast<double>(total) < k_noise_mean * a.width * a.height;
}

bool same_bytes(const AVFrame& a, const AVFrame& b) {
    const auto format = static_cast<AVPixelFormat>(a.format);
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const bool chroma = plane == 1 || plane == 2;
        const int rows = chroma ? AV_CEIL_RSHIFT(a.height, description->log2_chroma_h) : a.height;
        const auto bytes = static_cast<size_t>(av_image_get_linesize(format, a.width, plane));
        for (int y = 0; y < rows; ++y) {
            if (std::memcmp(row_of(a, plane, y), row_of(b, plane, y), bytes) != 0) return false;
        }
    }
    return true;
}

}  // namespace

bool rate_limiter::passes(double seconds) {
    if (m_rate <= 0) return true;
    const double interval = 1 / m_rate;
    if (m_started && seconds < m_due - std::min(k_early_share * interval, k_early_seconds)) return false;
    // The grid of moments goes on from the last one, so that rounding does not add up; after a gap it starts afresh.
    m_due = m_started && m_due + interval > seconds ? m_due + interval : seconds + interval;
    m_started = true;
    return true;
}

bool same_picture(const AVFrame& a, const AVFrame& b) {
    if (a.width != b.width || a.height != b.height || a.format != b.format) return false;
    return has_byte_luma(a) ? same_luma(a, b) : same_bytes(a, b);
}

bool repeat_finder::repeats(const AVFrame& picture) {
    if (m_last && same_picture(*m_last, picture)) return true;
    m_last = share_picture(picture);
    return false;
}

}  // namespace orva_fire
