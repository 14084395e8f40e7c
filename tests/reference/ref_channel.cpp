#include "tests/reference/ref_channel.h"

#include <cstddef>
#include <cstdint>

namespace ref {

namespace {

const int k_bad_argument = 7;
const int k_frozen_up_to = 5;
const int k_hold_limit = 15;

std::uint16_t low_16(int value) {
    return static_cast<std::uint16_t>(value);
}

std::uint16_t scaled(int dimension, std::uint16_t value, std::uint16_t reference) {
    if (reference == 0) return 0;
    return low_16(dimension * value / reference);
}

// Makes an odd size even: one more, or one less where one more would exceed the frame.
int made_even(int size, std::uint32_t frame_size) {
    if (size % 2 == 0) return size;
    return static_cast<std::uint32_t>(size + 1) > frame_size ? size - 1 : size + 1;
}

bool same_scale(const fd_rect& roi, const fd_yuv_frame& frame) {
    return roi.x_ref == frame.width && roi.y_ref == frame.height;
}

int up_to_even(std::uint32_t size) {
    return static_cast<int>(size + size % 2);
}

plane luma_of(const fd_yuv_frame& region) {
    return {region.virt_addr[0], static_cast<int>(region.width), static_cast<int>(region.height),
            static_cast<int>(region.stride[0])};
}

yuv_view yuv_of(const fd_yuv_frame& region) {
    return {luma_of(region), region.virt_addr[1], static_cast<int>(region.stride[1])};
}

}  // namespace

void trans_region(fd_rect& rect, int width, int height) {
    rect.x = scaled(width, rect.x, rect.x_ref);
    rect.y = scaled(height, rect.y, rect.y_ref);
    rect.width = scaled(width, rect.width, rect.width_ref);
    rect.height = scaled(height, rect.height, rect.height_ref);
    rect.x_ref = low_16(width);
    rect.width_ref = low_16(width);
    rect.y_ref = low_16(height);
    rect.height_ref = low_16(height);
}

void align_region(fd_rect& roi, const fd_yuv_frame& frame) {
    if (frame.stride[0] % 16 != 0) return;
    const int dx = roi.x % 16;
    roi.x = low_16(roi.x - dx);
    roi.width = low_16(made_even(roi.width + dx, frame.width));
    const int dy = roi.y % 2;
    roi.y = low_16(roi.y - dy);
    roi.height = low_16(made_even(roi.height + dy, frame.height));
}

fd_yuv_frame cut_region(const fd_rect& roi, const fd_yuv_frame& frame) {
    const std::size_t stride = frame.stride[0];
    const std::size_t luma_offset = stride * roi.y + roi.x;
    const std::size_t chroma_offset = stride * (roi.y / 2u) + roi.x;
    fd_yuv_frame region = frame;
    region.phys_addr[0] = static_cast<std::uint32_t>(frame.phys_addr[0] + luma_offset);
    region.phys_addr[1] = static_cast<std::uint32_t>(frame.phys_addr[1] + chroma_offset);
    region.virt_addr[0] = frame.virt_addr[0] + luma_offset;
    region.virt_addr[1] = frame.virt_addr[1] + chroma_offset;
    region.width = roi.width;
    region.height = roi.height;
    return region;
}

bool region_fits(fd_rect roi, const fd_yuv_frame& frame) {
    if (!same_scale(roi, frame)) trans_region(roi, static_cast<int>(frame.width), static_cast<int>(frame.height));
    align_region(roi, frame);
    if (roi.width < 1 || roi.height < 1) return false;
    return roi.x + roi.width <= up_to_even(frame.width) && roi.y + roi.height <= up_to_even(frame.height);
}

// --- working images -------------------------------------------------------------------------------------------------

working_image::working_image(int planes)
    : m_bytes(static_cast<std::size_t>(k_stride) * static_cast<std::size_t>(k_rows) * static_cast<std::size_t>(planes),
              0) {}

void working_image::resize(int width, int height) {
    m_width = width;
    m_height = height;
}

plane working_image::view() {
    return {m_bytes.data(), m_width, m_height, k_stride};
}

rgb_view working_image::rgb() {
    const std::ptrdiff_t distance = static_cast<std::ptrdiff_t>(k_stride) * m_height;
    return {view(), m_bytes.data() + distance, m_bytes.data() + 2 * distance};
}

void pre_stage::resize(const plane& luma) {
    m_log.hit(branch::stage_resized);
    m_width = luma.width;
    m_height = luma.height;
    m_foreground.resize(m_width, m_height);
    m_difference.resize(m_width, m_height);
    m_rgb.resize(m_width, m_height);
    // Deliberate: the luma goes to the blue plane, and the previous luma keeps whatever it holds.
    copy_rows(luma, m_rgb.view());
}

int pre_stage::set_frame(const fd_yuv_frame& region, std::vector<component>& components) {
    const yuv_view yuv = yuv_of(region);
    if (yuv.luma.width != m_width || yuv.luma.height != m_height) resize(yuv.luma);
    const plane foreground = m_foreground.view();
    const plane difference = m_difference.view();
    const rgb_view rgb = m_rgb.rgb();

    sub(yuv.luma, difference, difference, m_log);
    m_last_threshold = otsu_threshold(difference, 0, 0, 20, 35);
    threshold_binary(difference, difference, m_last_threshold, m_log);
    dilate(difference, foreground);
    convert_image(yuv, rgb);
    color_filter(foreground, rgb, yuv);
    dilate(foreground, difference);
    copy_rows(difference, foreground);
    label_components(difference, components);
    copy_rows(yuv.luma, difference);
    return 0;
}

// --- holding --------------------------------------------------------------------------------------------------------

void result_holder::count_branch(const fd_result& result) {
    const bool empty = result.count == 0;
    if (!reporting()) {
        m_log.hit(empty ? branch::hold_idle_empty : branch::hold_idle_new);
    } else if (m_count == k_hold_limit) {
        m_log.hit(empty ? branch::hold_limit_ended : branch::hold_limit_replaced);
    } else if (m_count <= k_frozen_up_to) {
        m_log.hit(empty ? branch::hold_frozen_empty : branch::hold_frozen_boxes);
    } else {
        m_log.hit(empty ? branch::hold_kept_empty : branch::hold_kept_replaced);
    }
}

void result_holder::refresh(const fd_result& found, const fd_rect& roi, int frame_width, int frame_height) {
    // Deliberate: entries behind the new count keep their old boxes.
    m_last.count = 0;
    for (int i = 0; i < found.count; ++i) {
        fd_rect box = found.rects[i];
        box.x = low_16(box.x + roi.x);
        box.y = low_16(box.y + roi.y);
        box.x_ref = low_16(frame_width);
        box.width_ref = low_16(frame_width);
        box.y_ref = low_16(frame_height);
        box.height_ref = low_16(frame_height);
        m_last.rects[i] = box;
        m_last.count = low_16(i + 1);
    }
    m_count = 0;
}

void result_holder::step(fd_result& result, const fd_rect& roi, int frame_width, int frame_height) {
    count_branch(result);
    if (m_count != k_hold_limit && m_last.count != 0 && (result.count == 0 || m_count <= k_frozen_up_to)) {
        ++m_count;
    } else {
        refresh(result, roi, frame_width, frame_height);
    }
    result = m_last;
}

// --- the channel ----------------------------------------------------------------------------------------------------

int channel::set_sensitive(int grade) {
    const int code = m_analysis.set_sensitive(grade);
    if (code != 0) m_log.error("frame_process", "set_sensitive", 67);
    return code;
}

bool channel::accepts(const fd_yuv_frame& frame) {
    if (frame.format != FD_PIXEL_FORMAT_YUV420SP) {
        m_log.hit(branch::refused_format);
    } else if (frame.width > FD_MAX_FRAME_WIDTH) {
        m_log.hit(branch::refused_width);
    } else if (frame.height > FD_MAX_FRAME_HEIGHT) {
        m_log.hit(branch::refused_height);
    } else if (frame.virt_addr[0] == nullptr || frame.virt_addr[1] == nullptr) {
        m_log.hit(branch::refused_null_plane);
    } else if (!region_fits(m_roi, frame)) {
        m_log.hit(branch::refused_region);
    } else {
        m_log.hit(branch::frame_taken);
        return true;
    }
    return false;
}

void channel::note_size(const fd_yuv_frame& region) {
    const int width = static_cast<int>(region.width);
    const int height = static_cast<int>(region.height);
    if (m_size_known && width == m_roi_width && height == m_roi_height) {
        m_log.hit(branch::size_same);
        return;
    }
    m_log.hit(!m_size_known          ? branch::size_first
              : m_holder.reporting() ? branch::size_changed_reporting
                                     : branch::size_changed_idle);
    m_roi_width = width;
    m_roi_height = height;
    m_holder.restart_count();
    m_size_known = true;
}

int channel::set_frame(const fd_yuv_frame& frame, fd_result& result) {
    if (!accepts(frame)) {
        m_log.error("frame_process", "set_frame", 78);
        return k_bad_argument;
    }
    const int frame_width = static_cast<int>(frame.width);
    const int frame_height = static_cast<int>(frame.height);
    if (!same_scale(m_roi, frame)) {
        m_log.hit(branch::region_rescaled);
        trans_region(m_roi, frame_width, frame_height);
    }
    m_log.hit(frame.stride[0] % 16 == 0 ? branch::region_aligned : branch::region_as_given);
    align_region(m_roi, frame);
    const fd_yuv_frame region = cut_region(m_roi, frame);
    note_size(region);

    std::vector<component> components;
    m_stage.set_frame(region, components);
    result = fd_result{};
    const plane luma = luma_of(region);
    m_analysis.set_frame(&luma, m_stage.foreground().view(), components, result);
    m_holder.step(result, m_roi, frame_width, frame_height);
    if (result.count != 0) m_log.hit(branch::frame_with_boxes);
    return 0;
}

}  // namespace ref
