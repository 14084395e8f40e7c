#include "preprocess/pre_process.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "backend/accelerator.h"
#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "pre_process";
const char k_memory_file[] = "hisi_mmz_mem";  // an image that could not be had is reported in its memory's words first
enum log_line {
    k_line_memory_init_failed = 53,
    k_line_fg_failed = 42,
    k_line_diff_failed = 50,
    k_line_rgb_failed = 59,
    k_line_blob_failed = 80,
    k_line_null_frame = 105,
    k_line_reinit_failed = 115,
    k_line_sub_failed = 124,
    k_line_motion_dilate_failed = 141,
    k_line_color_trans_failed = 150,
    k_line_color_filter_failed = 159,
    k_line_color_dilate_failed = 168,
    k_line_ccl_failed = 189,
    k_line_keep_luma_failed = 197
};

const int k_blob_bytes = 4 + 254 * 12;  // header and regions of the accelerator's result

// Passes a failed step's code up, with its line.
int failed(int code, int line) {
    log_entered(k_file, "set_frame", line);
    return code;
}

// Whether a component can be one of a width x height picture. Software finds no others; what the engine is said to have
// found is rubbish if its result was not flushed, and everything behind this reads pixels by it.
bool is_possible(const con_info& component, int width, int height) {
    const bool across = component.left >= 0 && component.left <= component.right && component.right < width;
    const bool down = component.top >= 0 && component.top <= component.bottom && component.bottom < height;
    return across && down && component.area >= 1 && component.area <= box_width(component) * box_height(component);
}

void drop_impossible(int width, int height, std::vector<con_info>* comps) {
    comps->erase(std::remove_if(comps->begin(), comps->end(),
                                [&](const con_info& one) { return !is_possible(one, width, height); }),
                 comps->end());
}

// Least number of fire-coloured pixels for a block to stay, by the number of its set pixels.
const int k_need[5] = {0, 1, 1, 2, 3};

}  // namespace

int pre_process::m_sat_table[256];

// Saturation of a flame pixel is at least 1.1 * (255 - red) / 150: the darker the red, the purer. In terms of the
// allowed ratio of blue that is 1 - 1.1 * (255 - red) / 150, here rounded in single precision step by step, with one
// fused multiply-add: the entries are fixed, and 12 of them differ by 1 from exact arithmetic.
int pre_process::init() {
    for (int red = 0; red < 256; ++red) {
        const float missing = static_cast<float>(255 - red);
        const float scaled = 1.1f * missing;
        const float ratio = std::fma(-scaled, 1048576.0f, 157286400.0f);
        const float rounded = ratio + 75.0f;
        m_sat_table[red] = static_cast<int>(rounded / 150.0f);
    }
    return FD_OK;
}

int pre_process::destroy() {
    return FD_OK;
}

pre_process::pre_process() : m_fg_img(), m_rgb_img(), m_diff_img(), m_width(0), m_height(0) {}

int pre_process::obtain_image(hisi_mmz_mem* memory, fd_yuv_frame* image, int planes, int failure_line) {
    const int stride = get_stride(m_width, 4);
    const int size = stride * m_height * planes;
    const int code = memory->alloc_mmz(static_cast<unsigned int>(size), true);
    if (code != FD_OK) {
        log_entered(k_memory_file, "init", k_line_memory_init_failed);
        log_entered(k_file, "start", failure_line);
        return code;
    }
    init_yuv_frame(image, m_width, m_height, stride, size, memory->phys_addr(), memory->virt_addr());
    if (k_has_accelerator) {
        // The zone's memory is not cleared; without this the first frame would depend on what ran before.
        std::memset(memory->virt_addr(), 0, static_cast<std::size_t>(size));
        (void)memory->flush_mmz(0);  // deliberate: a failing flush shows in the first job
    }
    return FD_OK;
}

// Planes 1 and 2 follow plane 0, height rows apart.
void pre_process::place_rgb_planes() {
    const uint32_t plane_bytes = m_rgb_img.stride[0] * m_rgb_img.height;
    for (unsigned int plane = 1; plane < 3; ++plane) {
        m_rgb_img.phys_addr[plane] = m_rgb_img.phys_addr[0] + plane * plane_bytes;
        m_rgb_img.virt_addr[plane] = m_rgb_img.virt_addr[0] + plane * static_cast<std::size_t>(plane_bytes);
        m_rgb_img.stride[plane] = m_rgb_img.stride[0];
    }
}

int pre_process::start() {
    if (!k_has_accelerator) m_scan.reserve();
    m_width = k_max_width;
    m_height = k_max_height;
    int code = obtain_image(&m_fg_mem, &m_fg_img, 1, k_line_fg_failed);
    if (code == FD_OK) code = obtain_image(&m_diff_mem, &m_diff_img, 1, k_line_diff_failed);
    if (code == FD_OK) code = obtain_image(&m_rgb_mem, &m_rgb_img, 3, k_line_rgb_failed);
    if (code == FD_OK) {
        place_rgb_planes();
        code = m_blob_mem.alloc_mmz(k_blob_bytes, true);
        if (code != FD_OK) log_entered(k_file, "start", k_line_blob_failed);
    }
    if (code != FD_OK) {
        m_rgb_mem.free_mmz();
        m_diff_mem.free_mmz();
        m_fg_mem.free_mmz();
    }
    return code;
}

int pre_process::stop() {
    m_fg_mem.free_mmz();
    m_diff_mem.free_mmz();
    m_rgb_mem.free_mmz();
    m_blob_mem.free_mmz();
    return FD_OK;
}

int pre_process::reinit(fd_yuv_frame* frame) {
    m_width = static_cast<uint16_t>(frame->width);
    m_height = static_cast<uint16_t>(frame->height);
    for (fd_yuv_frame* image : {&m_fg_img, &m_diff_img, &m_rgb_img}) {
        image->width = m_width;
        image->height = m_height;
    }
    place_rgb_planes();
    (void)m_ive.do_dma(frame, &m_rgb_img, true);  // deliberate: the conversion overwrites it; nothing depends on it
    return FD_OK;
}

int pre_process::set_frame(fd_yuv_frame* frame, std::vector<con_info>& comps) {
    if (frame == nullptr) {
        log_error(k_file, "set_frame", k_line_null_frame);
        return FD_INVALID_ARGUMENT;
    }
    int code = FD_OK;
    if (frame->width != m_width || frame->height != m_height) code = reinit(frame);
    if (code != FD_OK) return failed(code, k_line_reinit_failed);
    if (!k_has_accelerator) {
        m_scan.run(frame, &m_fg_img, &m_rgb_img, &m_diff_img, comps);
        return FD_OK;
    }

    // Motion.
    code = m_ive.do_sub(frame, &m_diff_img, &m_diff_img, true);
    if (code != FD_OK) return failed(code, k_line_sub_failed);
    (void)m_diff_mem.flush_mmz(0);
    const int threshold = getThreshVal_Otsu(&m_diff_img, 0, 0, region_scan::k_otsu_min, region_scan::k_otsu_max);
    (void)m_ive.do_thres(&m_diff_img, &m_diff_img, threshold, false);  // deliberate: a failure shows in the next job
    code = m_ive.do_dilate(&m_diff_img, &m_fg_img, true);
    if (code != FD_OK) return failed(code, k_line_motion_dilate_failed);
    (void)m_fg_mem.flush_mmz(0);

    // Colour.
    code = m_ive.do_color_trans(frame, &m_rgb_img, color_trans_rgb, true);
    if (code != FD_OK) return failed(code, k_line_color_trans_failed);
    (void)m_rgb_mem.flush_mmz(0);
    code = color_filter(&m_fg_img, &m_rgb_img, frame);
    if (code != FD_OK) return failed(code, k_line_color_filter_failed);
    (void)m_fg_mem.flush_mmz(0);
    code = m_ive.do_dilate(&m_fg_img, &m_diff_img, false);
    if (code != FD_OK) return failed(code, k_line_color_dilate_failed);
    (void)m_ive.do_dma(&m_diff_img, &m_fg_img, true);  // deliberate: a failure shows in labelling
    (void)m_fg_mem.flush_mmz(0);

    // Components; labelling may overwrite the difference image, which then takes the luma for the next frame.
    code = m_ive.do_ccl(&m_diff_img, &m_blob_mem, comps, true);
    if (code != FD_OK) return failed(code, k_line_ccl_failed);
    drop_impossible(m_width, m_height, &comps);
    code = m_ive.do_dma(frame, &m_diff_img, true);
    if (code != FD_OK) return failed(code, k_line_keep_luma_failed);
    return FD_OK;
}

int pre_process::check_fire_pt(unsigned char r, unsigned char g, unsigned char b, unsigned char y, unsigned char u,
                               unsigned char v) {
    if (r < g || g <= b) return 0;
    if (b <= 80 || r <= 150 || g <= 100) return 0;
    const int sum = r + g + b;
    if (sum <= 350) return 0;
    if (r >= 2 * g) return 0;
    if (y <= u + 30) return 0;
    if (v <= u || v <= 120) return 0;
    const int blue_ratio = (b * 3 * (1 << 20) + sum / 2) / sum;  // at most 802,160,640 + 382: fits 32 bits
    return blue_ratio <= m_sat_table[r] ? 1 : 0;
}

int pre_process::color_filter(fd_yuv_frame* mask, fd_yuv_frame* rgb, fd_yuv_frame* yuv) {
    const int width = static_cast<int>(mask->width);
    const int height = static_cast<int>(mask->height);
    for (int y = 0; y < height; y += 2) {
        const unsigned char* chroma = plane_row(yuv, 1, y / 2);
        for (int x = 0; x < width; x += 2) {
            const unsigned char v = chroma[x];
            const unsigned char u = chroma[x + 1];
            int set = 0;
            int fire = 0;
            for (int pixel = 0; pixel < 4; ++pixel) {
                const int row = y + pixel / 2;
                const int column = x + pixel % 2;
                if (plane_row(mask, 0, row)[column] == 0) continue;
                const std::size_t at = static_cast<std::size_t>(rgb->stride[0]) * static_cast<std::size_t>(row) +
                                       static_cast<std::size_t>(column);
                ++set;
                fire += check_fire_pt(rgb->virt_addr[2][at], rgb->virt_addr[1][at], rgb->virt_addr[0][at],
                                      plane_row(yuv, 0, row)[column], u, v);
            }
            if (fire >= k_need[set]) continue;
            for (int pixel = 0; pixel < 4; ++pixel) plane_row(mask, 0, y + pixel / 2)[x + pixel % 2] = 0;
        }
    }
    return FD_OK;
}

}  // namespace orva_fd
