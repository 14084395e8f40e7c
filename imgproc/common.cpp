#include "imgproc/common.h"

#include <sys/time.h>

#include <cstring>

#include "imgproc/log.h"
#include "imgproc/rows.h"

namespace orva_fd {

namespace {

const char k_file[] = "common";
enum log_line { k_line_sub_sizes_differ = 169, k_line_threshold_null_plane = 198 };

// Arithmetic that wraps in 32 bits, read as signed.
int32_t wrapped(uint32_t value) {
    return static_cast<int32_t>(value);
}

void sum_histogram(const uint32_t* histogram, histogram_sums* sums) {
    uint32_t count = 0;
    uint32_t moment = 0;
    for (uint32_t t = 0; t < 256; ++t) {
        count += histogram[t];
        moment += t * histogram[t];
        sums->count[t] = count;
        sums->moment[t] = moment;
    }
    sums->all_count = count;
    sums->all_moment = moment;
}

// Between-class variance of the split at t, up to a factor. Both classes hold pixels.
int64_t split_score(const histogram_sums& sums, int t) {
    const uint32_t below = sums.count[t];
    const uint32_t above = sums.all_count - below;
    const int32_t mean_below = wrapped(sums.moment[t] << 8) / wrapped(below);
    const int32_t mean_above = wrapped((sums.all_moment - sums.moment[t]) << 8) / wrapped(above);
    const uint32_t distance = static_cast<uint32_t>(mean_below) - static_cast<uint32_t>(mean_above);
    const int32_t a = wrapped(below * distance) >> 8;
    const int32_t b = wrapped(above * distance) >> 8;
    return static_cast<int64_t>(a) * b;
}

}  // namespace

int init_yuv_frame(fd_yuv_frame* frame, int width, int height, int stride, unsigned int phys_addr, void* virt_addr,
                   fd_pixel_format format) {
    std::memset(frame, 0, sizeof(*frame));
    frame->format = format;
    frame->width = static_cast<uint32_t>(width);
    frame->height = static_cast<uint32_t>(height);
    frame->stride[0] = static_cast<uint32_t>(stride);
    frame->phys_addr[0] = phys_addr;
    frame->virt_addr[0] = static_cast<unsigned char*>(virt_addr);
    frame->reserved = -1;
    return FD_OK;
}

int init_yuv_frame(fd_yuv_frame* frame, int width, int height, int stride, int size, unsigned int phys_addr,
                   void* virt_addr) {
    frame->phys_addr[0] = phys_addr;
    frame->virt_addr[0] = static_cast<unsigned char*>(virt_addr);
    if (width == 1 && height == 1) {
        frame->stride[0] = static_cast<uint32_t>(size);  // deliberate: a raw block keeps its length here
        return FD_OK;
    }
    frame->width = static_cast<uint32_t>(width);
    frame->height = static_cast<uint32_t>(height);
    frame->stride[0] = static_cast<uint32_t>(stride);
    return FD_OK;
}

int get_stride(int width, int align) {
    return (width + align - 1) / align * align;
}

int limit_range(int value, int min, int max) {
    if (value < min) return min;
    return value >= max ? max : value;
}

unsigned int get_cur_time() {
    timeval now;
    gettimeofday(&now, nullptr);
    return static_cast<uint32_t>(now.tv_sec) * 1000u + static_cast<uint32_t>(now.tv_usec / 1000);
}

unsigned char fd_table::m_abs_table[512];
unsigned char* fd_table::m_abs_lut = nullptr;

int fd_table::init() {
    if (m_abs_lut != nullptr) return FD_OK;
    for (int i = 0; i < 256; ++i) m_abs_table[i] = static_cast<unsigned char>(255 - i);
    for (int k = 0; k < 255; ++k) m_abs_table[256 + k] = static_cast<unsigned char>(k + 1);
    m_abs_table[511] = 0;
    m_abs_lut = m_abs_table + 255;
    return FD_OK;
}

int fd_table::destroy() {
    return FD_OK;
}

int sub(fd_yuv_frame* a, fd_yuv_frame* b, fd_yuv_frame* dst) {
    if (a->width != b->width || a->height != b->height) {
        log_entered(k_file, "sub", k_line_sub_sizes_differ);
        return FD_INVALID_ARGUMENT;
    }
    const int width = static_cast<int>(a->width);
    const int height = static_cast<int>(a->height);
    for (int y = 0; y < height; ++y) abs_diff_row(plane_row(a, 0, y), plane_row(b, 0, y), plane_row(dst, 0, y), width);
    return FD_OK;
}

int threshold_binary(fd_yuv_frame* src, fd_yuv_frame* dst, int thresh) {
    if (src->virt_addr[0] == nullptr || dst->virt_addr[0] == nullptr) {
        log_entered(k_file, "threshold_binary", k_line_threshold_null_plane);
        return FD_INVALID_ARGUMENT;
    }
    const int width = static_cast<int>(src->width);
    const int height = static_cast<int>(src->height);
    for (int y = 0; y < height; ++y) threshold_row(plane_row(src, 0, y), plane_row(dst, 0, y), width, thresh);
    return FD_OK;
}

#if ORVA_HAS_VECTORS
void add_capped_sums(const unsigned char* stack, capped_sums* sums) {
    static const unsigned char zeros[k_widest_row] = {};
    for (int i = 0; i < k_caps; ++i) sums->held[i] += sum_held(stack, i + 1);
    for (int row = 0; row < k_stack_rows; ++row) {
        sums->all += measure_motion_row(stack + row * k_widest_row, zeros, k_widest_row).sum;
    }
}
#endif

int search_otsu(const histogram_sums& sums, int t_min, int t_max) {
    int64_t best = 0;
    int result = t_min;
    for (int t = t_min; t <= t_max; ++t) {
        if (sums.count[t] == 0) continue;
        if (sums.count[t] == sums.all_count) break;
        const int64_t score = split_score(sums, t);
        if (score > best) {
            best = score;
            result = t;
        }
    }
    return result;
}

int getThreshVal_Otsu(fd_yuv_frame* img, int margin_x, int margin_y, int t_min, int t_max) {
    if (t_min >= t_max) return t_min;
    uint32_t histogram[256] = {};
    const int right = static_cast<int>(img->width) - margin_x;
    const int bottom = static_cast<int>(img->height) - margin_y;
    for (int y = margin_y; y < bottom; ++y) {
        const unsigned char* row = plane_row(img, 0, y);
        for (int x = margin_x; x < right; ++x) ++histogram[row[x]];
    }
    histogram_sums sums;
    sum_histogram(histogram, &sums);
    return search_otsu(sums, t_min, t_max);
}

}  // namespace orva_fd
