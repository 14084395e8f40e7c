#include "channel/frame_process.h"

#include <cstdio>

#include "imgproc/log.h"

namespace orva_fd {

namespace {

const char k_file[] = "frame_process";
enum log_line {
    k_line_preprocess_start_failed = 25,
    k_line_analysis_start_failed = 32,
    k_line_preprocess_stop_failed = 48,
    k_line_analysis_stop_failed = 54,
    k_line_bad_grade = 67,
    k_line_bad_frame = 78,
    k_line_preprocess_failed = 104,
    k_line_analysis_failed = 114,
    k_line_hold_failed = 122
};

const int k_frozen_frames = 6;  // a reported result stays for these whatever is seen
const int k_held_frames = 15;   // and for these if nothing is seen

const unsigned int k_stride_align = 16;

int scaled(int dimension, int value, int reference) {
    return reference == 0 ? 0 : dimension * value / reference;
}

int round_up_even(int value) {
    return value + (value & 1);
}

// Moves the start of a span down to a multiple of align and makes its length even, without exceeding limit alone.
void align_span(uint16_t* start, uint16_t* length, int align, uint32_t limit) {
    const int distance = *start % align;
    *start = static_cast<uint16_t>(*start - distance);
    *length = static_cast<uint16_t>(*length + distance);
    if (*length % 2 == 0) return;
    const bool fits = *length + 1u <= limit;
    *length = static_cast<uint16_t>(fits ? *length + 1 : *length - 1);
}

void align_region(fd_rect* region, const fd_yuv_frame& frame) {
    if (frame.stride[0] % k_stride_align != 0) return;
    align_span(&region->x, &region->width, 16, frame.width);
    align_span(&region->y, &region->height, 2, frame.height);
}

// The working images hold at most the frame's size rounded up to even, and an empty region has nothing to label.
bool span_fits(int start, int length, uint32_t frame_length) {
    return length >= 1 && start + length <= round_up_even(static_cast<int>(frame_length));
}

}  // namespace

frame_process::frame_process()
    : m_hold_count(0), m_last_result(), m_roi_size_known(false), m_roi_width(0), m_roi_height(0), m_roi() {}

int frame_process::start(fd_rect roi) {
    m_components.reserve(run_labeller::k_most_components);
    m_roi_width = k_max_width;
    m_roi_height = k_max_height;
    int code = m_pre_process.start();
    if (code != FD_OK) {
        log_entered(k_file, "start", k_line_preprocess_start_failed);
        return code;
    }
    code = m_fg_analysis.start();
    if (code != FD_OK) {
        log_entered(k_file, "start", k_line_analysis_start_failed);
        m_pre_process.stop();
        return code;
    }
    m_roi_size_known = false;
    m_hold_count = 0;
    m_roi = roi;
    return FD_OK;
}

int frame_process::stop() {
    if (m_pre_process.stop() != FD_OK) log_entered(k_file, "stop", k_line_preprocess_stop_failed);
    if (m_fg_analysis.stop() != FD_OK) log_entered(k_file, "stop", k_line_analysis_stop_failed);
    m_roi = fd_rect();
    m_last_result = fd_result();
    return FD_OK;
}

int frame_process::set_sensitive(int grade) {
    const int code = m_fg_analysis.set_sensitive(grade);
    if (code != FD_OK) log_error(k_file, "set_sensitive", k_line_bad_grade);
    return code;
}

void frame_process::rescale(fd_rect* region, const fd_yuv_frame& frame) {
    if (frame.width == region->x_ref && frame.height == region->y_ref) return;
    trans_region(region, static_cast<int>(frame.width), static_cast<int>(frame.height));
}

// Whether the frame has a form that the channel takes, and the region a place on it. Looks at a copy: a refused frame
// leaves the region as it was.
bool frame_process::accepts(const fd_yuv_frame& frame) {
    if (frame.format != FD_PIXEL_FORMAT_YUV420SP) return false;
    if (frame.width > static_cast<uint32_t>(k_max_width) || frame.height > static_cast<uint32_t>(k_max_height))
        return false;
    if (frame.virt_addr[0] == nullptr || frame.virt_addr[1] == nullptr) return false;
    fd_rect region = m_roi;
    rescale(&region, frame);
    align_region(&region, frame);
    return span_fits(region.x, region.width, frame.width) && span_fits(region.y, region.height, frame.height);
}

void frame_process::note_roi_size(const fd_yuv_frame& roi_frame) {
    const bool same = m_roi_size_known && roi_frame.width == m_roi_width && roi_frame.height == m_roi_height;
    if (same) return;
    m_roi_width = static_cast<uint16_t>(roi_frame.width);
    m_roi_height = static_cast<uint16_t>(roi_frame.height);
    m_hold_count = 0;
    m_roi_size_known = true;
}

int frame_process::set_frame(fd_yuv_frame& frame, fd_result& result) {
    if (!accepts(frame)) {
        log_error(k_file, "set_frame", k_line_bad_frame);
        return FD_INVALID_ARGUMENT;
    }
    rescale(&m_roi, frame);
    fd_yuv_frame roi_frame = frame;
    get_frame_roi(&frame, &roi_frame);
    note_roi_size(roi_frame);

    m_components.clear();
    int code = m_pre_process.set_frame(&roi_frame, m_components);
    if (code != FD_OK) {
        std::printf("ret code : 0x%x\n", static_cast<unsigned int>(code));
        log_entered(k_file, "set_frame", k_line_preprocess_failed);
        return code;
    }
    result = fd_result();
    code = m_fg_analysis.set_frame(&roi_frame, m_pre_process.get_fg_img(), m_pre_process.get_rgb_img(), m_components,
                                   result);
    if (code != FD_OK) {
        log_entered(k_file, "set_frame", k_line_analysis_failed);
        return code;
    }
    code = stable_result(result, &frame);
    if (code != FD_OK) log_entered(k_file, "set_frame", k_line_hold_failed);
    return code;
}

int frame_process::get_frame_roi(fd_yuv_frame* src, fd_yuv_frame* dst) {
    align_region(&m_roi, *src);
    // The chroma plane is stepped with the luma stride, and a pair of chroma bytes covers two columns: x counts for
    // both.
    const uint32_t stride = src->stride[0];
    const uint32_t offsets[2] = {stride * m_roi.y + m_roi.x, stride * (m_roi.y / 2u) + m_roi.x};
    for (int plane = 0; plane < 2; ++plane) {
        dst->phys_addr[plane] = src->phys_addr[plane] + offsets[plane];
        dst->virt_addr[plane] = src->virt_addr[plane] + offsets[plane];
    }
    dst->width = m_roi.width;
    dst->height = m_roi.height;
    return FD_OK;
}

int frame_process::trans_region(fd_rect* rect, int width, int height) {
    rect->x = static_cast<uint16_t>(scaled(width, rect->x, rect->x_ref));
    rect->y = static_cast<uint16_t>(scaled(height, rect->y, rect->y_ref));
    rect->width = static_cast<uint16_t>(scaled(width, rect->width, rect->width_ref));
    rect->height = static_cast<uint16_t>(scaled(height, rect->height, rect->height_ref));
    rect->x_ref = rect->width_ref = static_cast<uint16_t>(width);
    rect->y_ref = rect->height_ref = static_cast<uint16_t>(height);
    return FD_OK;
}

int frame_process::stable_result(fd_result& result, fd_yuv_frame* frame) {
    const bool reporting = m_last_result.count != 0;
    const bool keep = result.count == 0 || m_hold_count < k_frozen_frames;
    if (m_hold_count != k_held_frames && reporting && keep) {
        ++m_hold_count;
        result = m_last_result;
        return FD_OK;
    }
    m_last_result.count = result.count;
    for (uint16_t i = 0; i < result.count; ++i) {
        fd_rect& box = m_last_result.rects[i];
        box = result.rects[i];
        box.x = static_cast<uint16_t>(box.x + m_roi.x);
        box.y = static_cast<uint16_t>(box.y + m_roi.y);
        box.x_ref = box.width_ref = static_cast<uint16_t>(frame->width);
        box.y_ref = box.height_ref = static_cast<uint16_t>(frame->height);
    }
    m_hold_count = 0;
    result = m_last_result;  // deliberate: the whole record, old boxes behind the count included
    return FD_OK;
}

}  // namespace orva_fd
