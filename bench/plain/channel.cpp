#include <cstdio>
#include <cstring>

#include "bench/plain/plain.h"

namespace ORVA_PLAIN_NAMESPACE {

bench::stage_hook on_stage = nullptr;

namespace {

const std::size_t k_history_limit = 50;
const int k_frozen_frames = 6;
const int k_held_frames = 15;

void ended(bench::stage stage) {
    if (on_stage != nullptr) on_stage(stage);
}

void describe(fd_yuv_frame* image, std::vector<unsigned char>& bytes) {
    *image = fd_yuv_frame();
    image->width = FD_MAX_FRAME_WIDTH;
    image->height = FD_MAX_FRAME_HEIGHT;
    image->stride[0] = FD_MAX_FRAME_WIDTH;
    image->virt_addr[0] = bytes.data();
}

void place_planes(fd_yuv_frame* rgb) {
    for (unsigned int plane = 1; plane < 3; ++plane) {
        rgb->virt_addr[plane] = rgb->virt_addr[0] + static_cast<std::size_t>(plane) * rgb->stride[0] * rgb->height;
        rgb->stride[plane] = rgb->stride[0];
    }
}

std::uint16_t scaled(std::uint32_t dimension, int value, int reference) {
    return static_cast<std::uint16_t>(reference == 0 ? 0 : static_cast<int>(dimension) * value / reference);
}

void rescale(fd_rect* region, const fd_yuv_frame& frame) {
    if (frame.width == region->x_ref && frame.height == region->y_ref) return;
    region->x = scaled(frame.width, region->x, region->x_ref);
    region->y = scaled(frame.height, region->y, region->y_ref);
    region->width = scaled(frame.width, region->width, region->width_ref);
    region->height = scaled(frame.height, region->height, region->height_ref);
    region->x_ref = region->width_ref = static_cast<std::uint16_t>(frame.width);
    region->y_ref = region->height_ref = static_cast<std::uint16_t>(frame.height);
}

void align(std::uint16_t* start, std::uint16_t* length, int step, std::uint32_t limit) {
    const int distance = *start % step;
    *start = static_cast<std::uint16_t>(*start - distance);
    *length = static_cast<std::uint16_t>(*length + distance);
    if (*length % 2 == 0) return;
    *length = static_cast<std::uint16_t>(*length + 1u <= limit ? *length + 1 : *length - 1);
}

bool fits(int start, int length, std::uint32_t limit) {
    return length >= 1 && start + length <= static_cast<int>(limit + (limit & 1));
}

}  // namespace

channel::channel(fd_rect region)
    : m_region(region),
      m_mask_bytes(FD_MAX_FRAME_WIDTH * FD_MAX_FRAME_HEIGHT),
      m_work_bytes(FD_MAX_FRAME_WIDTH * FD_MAX_FRAME_HEIGHT),
      m_rgb_bytes(3 * FD_MAX_FRAME_WIDTH * FD_MAX_FRAME_HEIGHT),
      m_least_matches(35),
      m_held(0),
      m_last(),
      m_size_known(false),
      m_width(FD_MAX_FRAME_WIDTH),
      m_height(FD_MAX_FRAME_HEIGHT) {
    describe(&m_mask, m_mask_bytes);
    describe(&m_work, m_work_bytes);
    describe(&m_rgb, m_rgb_bytes);
    place_planes(&m_rgb);
}

int channel::set_grade(int grade) {
    if (grade < 0 || grade > 100) {
        std::printf("ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n");
        std::printf("ERR. [Fire Detection: frame_process::set_sensitive : 67] \n");
        return FD_INVALID_ARGUMENT;
    }
    m_least_matches = (103 - grade) / 6 + 30;
    return FD_OK;
}

// Brings a region to the frame's size and alignment; false if the frame is refused.
bool channel::place_region(fd_rect* region, const fd_yuv_frame& frame) const {
    if (frame.format != FD_PIXEL_FORMAT_YUV420SP) return false;
    if (frame.width > FD_MAX_FRAME_WIDTH || frame.height > FD_MAX_FRAME_HEIGHT) return false;
    if (frame.virt_addr[0] == nullptr || frame.virt_addr[1] == nullptr) return false;
    rescale(region, frame);
    if (frame.stride[0] % 16 == 0) {
        align(&region->x, &region->width, 16, frame.width);
        align(&region->y, &region->height, 2, frame.height);
    }
    return fits(region->x, region->width, frame.width) && fits(region->y, region->height, frame.height);
}

void channel::adopt_size(const fd_yuv_frame& roi) {
    if (!m_size_known || roi.width != m_width || roi.height != m_height) m_held = 0;
    m_size_known = true;
    if (roi.width == m_mask.width && roi.height == m_mask.height) return;
    m_width = m_mask.width = m_work.width = m_rgb.width = roi.width;
    m_height = m_mask.height = m_work.height = m_rgb.height = roi.height;
    place_planes(&m_rgb);
}

void channel::find_components(const fd_yuv_frame& roi, std::vector<component>& list) {
    difference(&roi, &m_work, &m_work);
    ended(bench::stage_difference);
    const int limit = otsu(&m_work, 20, 35);
    ended(bench::stage_otsu);
    threshold(&m_work, &m_work, limit);
    ended(bench::stage_threshold);
    dilate(&m_work, &m_mask);
    ended(bench::stage_motion_dilate);
    convert(&roi, &m_rgb);
    ended(bench::stage_conversion);
    colour_filter(&m_mask, &m_rgb, &roi);
    ended(bench::stage_colour_filter);
    dilate(&m_mask, &m_work);
    ended(bench::stage_colour_dilate);
    copy_plane(&m_work, &m_mask);
    ended(bench::stage_mask_copy);
    label(&m_work, list);
    ended(bench::stage_label);
    copy_plane(&roi, &m_work);
    ended(bench::stage_keep_luma);
}

void channel::analyse(const fd_yuv_frame& roi, std::vector<component>& list, fd_result& result) {
    std::vector<component> candidates;
    find_candidates(&roi, &m_mask, list, candidates);
    ended(bench::stage_boxes);
    if (m_history.size() == k_history_limit) {
        find_stable(m_history, candidates, m_least_matches, result);
        if (!list.empty()) m_history.erase(m_history.begin());
    }
    if (!list.empty()) m_history.push_back(list);
    ended(bench::stage_history);
}

void channel::hold(const fd_yuv_frame& frame, fd_result& result) {
    if (m_held != k_held_frames && m_last.count != 0 && (result.count == 0 || m_held < k_frozen_frames)) {
        ++m_held;
        result = m_last;
        return;
    }
    m_last.count = result.count;
    for (int i = 0; i < result.count; ++i) {
        fd_rect& box = m_last.rects[i];
        box = result.rects[i];
        box.x = static_cast<std::uint16_t>(box.x + m_region.x);
        box.y = static_cast<std::uint16_t>(box.y + m_region.y);
        box.x_ref = box.width_ref = static_cast<std::uint16_t>(frame.width);
        box.y_ref = box.height_ref = static_cast<std::uint16_t>(frame.height);
    }
    m_held = 0;
    result = m_last;
}

int channel::set_frame(fd_yuv_frame& frame, fd_result& result) {
    fd_rect region = m_region;
    if (!place_region(&region, frame)) {
        std::printf("ERR. [Fire Detection: frame_process::set_frame : 78] \n");
        return FD_INVALID_ARGUMENT;
    }
    m_region = region;
    fd_yuv_frame roi = frame;
    roi.virt_addr[0] += static_cast<std::size_t>(frame.stride[0]) * region.y + region.x;
    roi.virt_addr[1] += static_cast<std::size_t>(frame.stride[0]) * (region.y / 2u) + region.x;
    roi.width = region.width;
    roi.height = region.height;
    adopt_size(roi);
    std::vector<component> list;
    find_components(roi, list);
    result = fd_result();
    analyse(roi, list, result);
    hold(frame, result);
    return FD_OK;
}

}  // namespace ORVA_PLAIN_NAMESPACE
