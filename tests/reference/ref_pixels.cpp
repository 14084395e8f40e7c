#include "tests/reference/ref_pixels.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

namespace ref {

namespace {

// What a 32-bit processor keeps of a sum or a product.
std::int32_t wrap(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

std::int32_t wrapped_product(std::int32_t a, std::int32_t b) {
    return wrap(static_cast<std::int64_t>(a) * static_cast<std::int64_t>(b));
}

// value / 256, rounded towards minus infinity.
std::int32_t shift_right_8(std::int32_t value) {
    const std::int32_t quotient = value / 256;
    return value % 256 < 0 ? quotient - 1 : quotient;
}

int clip(int value) {
    if (value < 0) return 0;
    if (value > 255) return 255;
    return value;
}

bool is_set(const plane& img, int x, int y) {
    return (img.at(x, y) & 1) != 0;
}

// Calls visit(dx, dy) for every neighbour that the template selects.
template <typename visitor>
void for_each_selected(const std::array<std::uint32_t, 3>& mask, visitor visit) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const std::uint32_t bit = 1u << (8 * column);
            if ((mask[static_cast<std::size_t>(row)] & bit) != 0) visit(column - 1, row - 1);
        }
    }
}

void copy_whole_buffer(const plane& src, const plane& dst) {
    if (src.height <= 0) return;
    std::memcpy(dst.data, src.data, static_cast<std::size_t>(src.stride) * static_cast<std::size_t>(src.height));
}

// Number of set pixels in a block, and the least number of them that must have the colour of fire.
int needed_fire_pixels(int set_pixels) {
    switch (set_pixels) {
        case 0:
            return 0;
        case 1:
        case 2:
            return 1;
        case 3:
            return 2;
        default:
            return 3;
    }
}

}  // namespace

int get_stride(int width, int align) {
    return (width + align - 1) / align * align;
}

int limit_range(int value, int min, int max) {
    if (value < min) return min;
    if (value >= max) return max;
    return value;
}

int sub(const plane& a, const plane& b, const plane& dst, log_book& log) {
    if (a.width != b.width || a.height != b.height) {
        log.entered("common", "sub", 169);
        return 7;
    }
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            const int difference = a.at(x, y) - b.at(x, y);
            dst.at(x, y) = static_cast<unsigned char>(difference < 0 ? -difference : difference);
        }
    }
    return 0;
}

int threshold_binary(const plane& src, const plane& dst, int thresh, log_book& log) {
    if (src.data == nullptr || dst.data == nullptr) {
        log.entered("common", "threshold_binary", 198);
        return 7;
    }
    for (int y = 0; y < src.height; ++y) {
        for (int x = 0; x < src.width; ++x) {
            dst.at(x, y) = src.at(x, y) > thresh ? 255 : 0;
        }
    }
    return 0;
}

int otsu_threshold(const plane& img, int margin_x, int margin_y, int t_min, int t_max) {
    if (t_min >= t_max) return t_min;
    std::array<std::int32_t, 256> histogram{};
    for (int y = margin_y; y <= img.height - margin_y - 1; ++y) {
        for (int x = margin_x; x <= img.width - margin_x - 1; ++x) ++histogram[img.at(x, y)];
    }

    std::int32_t all = 0;
    std::int32_t all_moment = 0;
    for (int k = 0; k < 256; ++k) {
        all = wrap(std::int64_t{all} + histogram[static_cast<std::size_t>(k)]);
        all_moment = wrap(std::int64_t{all_moment} + wrapped_product(k, histogram[static_cast<std::size_t>(k)]));
    }

    std::int64_t best = 0;
    int result = t_min;
    for (int t = t_min; t <= t_max; ++t) {
        std::int32_t low = 0;
        std::int32_t low_moment = 0;
        for (int k = 0; k <= t; ++k) {
            low = wrap(std::int64_t{low} + histogram[static_cast<std::size_t>(k)]);
            low_moment = wrap(std::int64_t{low_moment} + wrapped_product(k, histogram[static_cast<std::size_t>(k)]));
        }
        if (low == 0) continue;
        const std::int32_t high = all - low;
        if (high == 0) break;
        const std::int32_t low_mean = wrapped_product(low_moment, 256) / low;
        const std::int32_t high_mean = wrapped_product(wrap(std::int64_t{all_moment} - low_moment), 256) / high;
        const std::int32_t distance = wrap(std::int64_t{low_mean} - high_mean);
        const std::int32_t a = shift_right_8(wrapped_product(low, distance));
        const std::int32_t b = shift_right_8(wrapped_product(high, distance));
        const std::int64_t value = std::int64_t{a} * std::int64_t{b};
        if (value > best) {
            best = value;
            result = t;
        }
    }
    return result;
}

void copy_rows(const plane& src, const plane& dst) {
    for (int y = 0; y < src.height; ++y) {
        for (int x = 0; x < src.width; ++x) dst.at(x, y) = src.at(x, y);
    }
}

int get_mask(int type, std::array<std::uint32_t, 3>& mask, log_book& log) {
    switch (type) {
        case 0:
            mask = {0, 0x10101, 0};
            break;
        case 1:
            mask = {0x100, 0x100, 0x100};
            break;
        case 2:
            mask = {0x100, 0x10101, 0x100};
            break;
        case 3:
            mask = {0x10101, 0x10101, 0x10101};
            break;
        case 4:
            // Deliberate: the lower-left corner has no partner on the right.
            mask = {0x100, 0x10101, 0x101};
            break;
        default:
            log.error("morphology", "get_mask", 113);
            log.plain("unknown morph template", "unknown morph template, " + std::to_string(type));
            break;
    }
    return 0;
}

void dilate(const plane& src, const plane& dst, int type) {
    copy_whole_buffer(src, dst);
    if (src.height <= 2 || src.width <= 3) return;
    log_book no_log;
    std::array<std::uint32_t, 3> mask{};
    get_mask(type, mask, no_log);
    for (int y = 1; y <= src.height - 2; ++y) {
        // Deliberate: column width - 2 is left as copied.
        for (int x = 1; x <= src.width - 3; ++x) {
            bool any = false;
            for_each_selected(mask, [&](int dx, int dy) { any = any || is_set(src, x + dx, y + dy); });
            if (any) dst.at(x, y) = 255;
        }
    }
}

void erode(const plane& src, const plane& dst, int type) {
    copy_whole_buffer(src, dst);
    if (src.height <= 2 || src.width <= 3) return;
    log_book no_log;
    std::array<std::uint32_t, 3> mask{};
    get_mask(type, mask, no_log);
    for (int y = 1; y <= src.height - 2; ++y) {
        for (int x = 1; x <= src.width - 3; ++x) {
            bool all = true;
            for_each_selected(mask, [&](int dx, int dy) { all = all && is_set(src, x + dx, y + dy); });
            if (!all) dst.at(x, y) = 0;
        }
    }
}

bgr convert_pixel(int y, int u, int v) {
    const int red_offset = shift_right_8((v - 128) * 359);
    const int green_offset = shift_right_8((u - 128) * 88) + shift_right_8((v - 128) * 183);
    const int blue_offset = shift_right_8((u - 128) * 454);
    return {clip(y + blue_offset), clip(y - green_offset), clip(y + red_offset)};
}

void convert_image(const yuv_view& src, const rgb_view& dst) {
    const plane green = dst.green_plane();
    const plane red = dst.red_plane();
    for (int block_y = 0; block_y < src.luma.height; block_y += 2) {
        for (int block_x = 0; block_x < src.luma.width; block_x += 2) {
            const int v = src.chroma_at(block_x, block_y);
            const int u = src.chroma_at(block_x + 1, block_y);
            for (int pixel = 0; pixel < 4; ++pixel) {
                const int x = block_x + pixel % 2;
                const int y = block_y + pixel / 2;
                const bgr colour = convert_pixel(src.luma.at(x, y), u, v);
                // The order matters where the planes overlap.
                dst.blue.at(x, y) = static_cast<unsigned char>(colour.blue);
                green.at(x, y) = static_cast<unsigned char>(colour.green);
                red.at(x, y) = static_cast<unsigned char>(colour.red);
            }
        }
    }
}

int saturation_limit(int red) {
    const float x = static_cast<float>(255 - red);
    const float scaled = 1.1f * x;
    const float sum = std::fma(-scaled, 1048576.0f, 157286400.0f);
    const float rounded = sum + 75.0f;
    const float quotient = rounded / 150.0f;
    return static_cast<int>(quotient);
}

int check_fire_pt(int r, int g, int b, int y, int u, int v) {
    if (!(r >= g && g > b)) return 0;
    if (!(b > 80 && r > 150 && g > 100)) return 0;
    const int s = r + g + b;
    if (!(s > 350)) return 0;
    if (!(r < 2 * g)) return 0;
    if (!(y > u + 30)) return 0;
    if (!(v > u && v > 120)) return 0;
    const int q = (b * 3 * 1048576 + s / 2) / s;
    return q <= saturation_limit(r) ? 1 : 0;
}

void color_filter(const plane& mask, const rgb_view& rgb, const yuv_view& yuv) {
    const plane green = rgb.green_plane();
    const plane red = rgb.red_plane();
    for (int block_y = 0; block_y < mask.height; block_y += 2) {
        for (int block_x = 0; block_x < mask.width; block_x += 2) {
            const int v = yuv.chroma_at(block_x, block_y);
            const int u = yuv.chroma_at(block_x + 1, block_y);
            int set_pixels = 0;
            int fire_pixels = 0;
            for (int pixel = 0; pixel < 4; ++pixel) {
                const int x = block_x + pixel % 2;
                const int y = block_y + pixel / 2;
                if (mask.at(x, y) == 0) continue;
                ++set_pixels;
                fire_pixels += check_fire_pt(red.at(x, y), green.at(x, y), rgb.blue.at(x, y), yuv.luma.at(x, y), u, v);
            }
            if (fire_pixels >= needed_fire_pixels(set_pixels)) continue;
            for (int pixel = 0; pixel < 4; ++pixel) mask.at(block_x + pixel % 2, block_y + pixel / 2) = 0;
        }
    }
}

}  // namespace ref
