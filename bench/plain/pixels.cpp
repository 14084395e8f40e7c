#include <cmath>
#include <cstring>

#include "bench/plain/plain.h"

namespace ORVA_PLAIN_NAMESPACE {

namespace {

unsigned char difference_table[512];
const unsigned char* const absolute = difference_table + 255;
int red_from_v[256];
int green_from_v[256];
int green_from_u[256];
int blue_from_u[256];
unsigned char clip_table[1024];
int saturation_table[256];

const int k_clip_zero = 384;
const int k_need[5] = {0, 1, 1, 2, 3};

int fire_coloured(int r, int g, int b, int y, int u, int v) {
    if (r < g || g <= b) return 0;
    if (b <= 80 || r <= 150 || g <= 100) return 0;
    const int sum = r + g + b;
    if (sum <= 350) return 0;
    if (r >= 2 * g) return 0;
    if (y <= u + 30) return 0;
    if (v <= u || v <= 120) return 0;
    const int blue = (b * 3 * (1 << 20) + sum / 2) / sum;
    return blue <= saturation_table[r] ? 1 : 0;
}

std::uint32_t word_at(const unsigned char* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

std::int32_t wrapped(std::uint32_t value) {
    return static_cast<std::int32_t>(value);
}

}  // namespace

void fill_tables() {
    for (int i = 0; i < 511; ++i) difference_table[i] = static_cast<unsigned char>(i < 255 ? 255 - i : i - 255);
    for (int c = 0; c < 256; ++c) {
        red_from_v[c] = ((c - 128) * 359) >> 8;
        green_from_v[c] = ((c - 128) * 183) >> 8;
        green_from_u[c] = ((c - 128) * 88) >> 8;
        blue_from_u[c] = ((c - 128) * 454) >> 8;
    }
    for (int i = 0; i < 1024; ++i) {
        const int value = i - k_clip_zero;
        clip_table[i] = static_cast<unsigned char>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
    for (int r = 0; r < 256; ++r) {
        const float scaled = 1.1f * static_cast<float>(255 - r);
        const float rounded = std::fma(-scaled, 1048576.0f, 157286400.0f) + 75.0f;
        saturation_table[r] = static_cast<int>(rounded / 150.0f);
    }
}

void difference(const fd_yuv_frame* a, const fd_yuv_frame* b, fd_yuv_frame* dst) {
    const int width = static_cast<int>(a->width);
    const int height = static_cast<int>(a->height);
    for (int y = 0; y < height; ++y) {
        const unsigned char* pa = row_of(a, 0, y);
        const unsigned char* pb = row_of(b, 0, y);
        unsigned char* out = row_of(dst, 0, y);
        for (int x = 0; x < width; ++x) out[x] = absolute[pa[x] - pb[x]];
    }
}

int otsu(const fd_yuv_frame* image, int low, int high) {
    std::uint32_t histogram[256] = {};
    const int width = static_cast<int>(image->width);
    const int height = static_cast<int>(image->height);
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = row_of(image, 0, y);
        for (int x = 0; x < width; ++x) ++histogram[row[x]];
    }
    std::uint32_t count[256];
    std::uint32_t moment[256];
    std::uint32_t sum = 0;
    std::uint32_t weighted = 0;
    for (std::uint32_t t = 0; t < 256; ++t) {
        count[t] = sum += histogram[t];
        moment[t] = weighted += t * histogram[t];
    }
    std::int64_t best = 0;
    int result = low;
    for (int t = low; t <= high; ++t) {
        const std::uint32_t below = count[t];
        const std::uint32_t above = count[255] - below;
        if (below == 0) continue;
        if (above == 0) break;
        const std::int32_t mean_below = wrapped(moment[t] << 8) / wrapped(below);
        const std::int32_t mean_above = wrapped((moment[255] - moment[t]) << 8) / wrapped(above);
        const std::uint32_t distance = static_cast<std::uint32_t>(mean_below) - static_cast<std::uint32_t>(mean_above);
        const std::int64_t score =
            static_cast<std::int64_t>(wrapped(below * distance) >> 8) * (wrapped(above * distance) >> 8);
        if (score > best) {
            best = score;
            result = t;
        }
    }
    return result;
}

void threshold(const fd_yuv_frame* src, fd_yuv_frame* dst, int limit) {
    unsigned char table[256];
    for (int i = 0; i < 256; ++i) table[i] = i > limit ? 255 : 0;
    const int width = static_cast<int>(src->width);
    const int height = static_cast<int>(src->height);
    for (int y = 0; y < height; ++y) {
        const unsigned char* in = row_of(src, 0, y);
        unsigned char* out = row_of(dst, 0, y);
        for (int x = 0; x < width; ++x) out[x] = table[in[x]];
    }
}

// The square of 3 x 3 as a mask on the word that starts left of the pixel: the lowest bit of three bytes.
void dilate(const fd_yuv_frame* src, fd_yuv_frame* dst) {
    const std::uint32_t square = 0x10101;
    const int width = static_cast<int>(src->width);
    const int height = static_cast<int>(src->height);
    std::memcpy(dst->virt_addr[0], src->virt_addr[0], static_cast<std::size_t>(src->stride[0]) * src->height);
    if (height <= 2 || width <= 3) return;
    for (int y = 1; y < height - 1; ++y) {
        const unsigned char* above = row_of(src, 0, y - 1);
        const unsigned char* row = row_of(src, 0, y);
        const unsigned char* below = row_of(src, 0, y + 1);
        unsigned char* out = row_of(dst, 0, y);
        for (int x = 1; x < width - 2; ++x) {
            if ((word_at(above + x - 1) & square) || (word_at(row + x - 1) & square) ||
                (word_at(below + x - 1) & square))
                out[x] = 255;
        }
    }
}

void copy_plane(const fd_yuv_frame* src, fd_yuv_frame* dst) {
    const int height = static_cast<int>(src->height);
    for (int y = 0; y < height; ++y) std::memcpy(row_of(dst, 0, y), row_of(src, 0, y), src->width);
}

void convert(const fd_yuv_frame* src, fd_yuv_frame* dst) {
    const unsigned char* clip = clip_table + k_clip_zero;
    const int width = static_cast<int>(src->width);
    const int height = static_cast<int>(src->height);
    const std::size_t stride = dst->stride[0];
    for (int y = 0; y < height; y += 2) {
        const unsigned char* chroma = row_of(src, 1, y / 2);
        const unsigned char* upper = row_of(src, 0, y);
        const unsigned char* lower = row_of(src, 0, y + 1);
        unsigned char* out[3];
        for (int plane = 0; plane < 3; ++plane)
            out[plane] = dst->virt_addr[plane] + static_cast<std::size_t>(y) * stride;
        for (int x = 0; x < width; x += 2) {
            const int v = chroma[x];
            const int u = chroma[x + 1];
            const int dv = red_from_v[v];
            const int dg = green_from_u[u] + green_from_v[v];
            const int du = blue_from_u[u];
            out[0][x] = clip[upper[x] + du];
            out[1][x] = clip[upper[x] - dg];
            out[2][x] = clip[upper[x] + dv];
            out[0][x + 1] = clip[upper[x + 1] + du];
            out[1][x + 1] = clip[upper[x + 1] - dg];
            out[2][x + 1] = clip[upper[x + 1] + dv];
            const std::size_t next = stride + static_cast<std::size_t>(x);
            out[0][next] = clip[lower[x] + du];
            out[1][next] = clip[lower[x] - dg];
            out[2][next] = clip[lower[x] + dv];
            out[0][next + 1] = clip[lower[x + 1] + du];
            out[1][next + 1] = clip[lower[x + 1] - dg];
            out[2][next + 1] = clip[lower[x + 1] + dv];
        }
    }
}

void colour_filter(fd_yuv_frame* mask, const fd_yuv_frame* rgb, const fd_yuv_frame* yuv) {
    const int width = static_cast<int>(mask->width);
    const int height = static_cast<int>(mask->height);
    const std::size_t stride = rgb->stride[0];
    for (int y = 0; y < height; y += 2) {
        const unsigned char* chroma = row_of(yuv, 1, y / 2);
        for (int x = 0; x < width; x += 2) {
            int set = 0;
            int fire = 0;
            for (int pixel = 0; pixel < 4; ++pixel) {
                const int row = y + pixel / 2;
                const int column = x + pixel % 2;
                if (row_of(mask, 0, row)[column] == 0) continue;
                const std::size_t at = stride * static_cast<std::size_t>(row) + static_cast<std::size_t>(column);
                ++set;
                fire += fire_coloured(rgb->virt_addr[2][at], rgb->virt_addr[1][at], rgb->virt_addr[0][at],
                                      row_of(yuv, 0, row)[column], chroma[x + 1], chroma[x]);
            }
            if (fire >= k_need[set]) continue;
            for (int pixel = 0; pixel < 4; ++pixel) row_of(mask, 0, y + pixel / 2)[x + pixel % 2] = 0;
        }
    }
}

}  // namespace ORVA_PLAIN_NAMESPACE
