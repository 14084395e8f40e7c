#include "tests/fakes/twin_channel.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tests/fakes/twin_engine.h"

namespace twin {

namespace {

const std::size_t k_line = 32;
const std::size_t k_stretch = 128 * k_line;
const int k_stride = FD_MAX_FRAME_WIDTH;
const std::size_t k_plane_bytes = static_cast<std::size_t>(FD_MAX_FRAME_WIDTH) * FD_MAX_FRAME_HEIGHT;
const int k_refused = 4;
const char k_file[] = "hisi_ive_func";

// Least sizes of the engine.
bool engine_takes(const ref::plane& img, bool is_copy) {
    return is_copy ? img.width >= 32 : img.width >= 64 && img.height >= 64;
}

ref::yuv_view yuv_of(const fd_yuv_frame& region) {
    const ref::plane luma = {region.virt_addr[0], static_cast<int>(region.width), static_cast<int>(region.height),
                             static_cast<int>(region.stride[0])};
    return {luma, region.virt_addr[1], static_cast<int>(region.stride[1])};
}

ref::rgb_view rgb_of(const ref::plane& blue) {
    const std::ptrdiff_t distance = static_cast<std::ptrdiff_t>(blue.stride) * blue.height;
    return {blue, blue.data + distance, blue.data + 2 * distance};
}

}  // namespace

cached_memory::cached_memory(std::size_t bytes, std::size_t phase)
    : m_phase(phase), m_processor(bytes, 0), m_engine(bytes, 0), m_at_flush(bytes, 0) {}

// Whether neither side changed a stretch of bytes, as most of a small picture's memory is.
bool cached_memory::is_settled(std::size_t begin, std::size_t bytes) const {
    return std::memcmp(&m_processor[begin], &m_engine[begin], bytes) == 0 &&
           std::memcmp(&m_processor[begin], &m_at_flush[begin], bytes) == 0;
}

void cached_memory::flush() {
    std::size_t begin = 0;
    while (begin < m_processor.size()) {
        const std::size_t stretch = std::min(k_stretch, m_processor.size() - begin);
        if (is_settled(begin, stretch)) {
            begin += stretch;
            continue;
        }
        const std::size_t end = std::min((begin + m_phase) / k_line * k_line + k_line - m_phase, m_processor.size());
        const std::size_t length = end - begin;
        const bool changed = std::memcmp(&m_processor[begin], &m_at_flush[begin], length) != 0;
        if (changed) std::memcpy(&m_engine[begin], &m_processor[begin], length);
        if (!changed) std::memcpy(&m_processor[begin], &m_engine[begin], length);
        std::memcpy(&m_at_flush[begin], &m_engine[begin], length);
        begin = end;
    }
}

accelerated_stage::accelerated_stage(ref::log_book& log, std::size_t phase)
    : m_log(log),
      m_foreground(k_plane_bytes, phase),
      m_rgb(3 * k_plane_bytes, phase),
      m_difference(k_plane_bytes, phase) {}

two_views accelerated_stage::view(cached_memory& memory) {
    return {{memory.processor(), m_width, m_height, k_stride}, {memory.engine(), m_width, m_height, k_stride}, 16};
}

// The host's pictures come from video hardware and are not cached: both see the same.
two_views accelerated_stage::host_luma(const fd_yuv_frame& region) {
    const ref::plane luma = yuv_of(region).luma;
    return {luma, luma, region.phys_addr[0]};
}

// Asks every image, so that each that does not qualify leaves its line.
accelerated_stage::way accelerated_stage::way_of(const std::vector<two_views>& images, bool is_copy) {
    bool qualify = true;
    bool takes = true;
    for (const two_views& one : images) {
        const ref::plane& img = one.processor;
        takes = takes && engine_takes(img, is_copy) && one.phys_addr != 0;
        if (img.stride % 16 != 0) {
            qualify = false;
        } else if (!is_copy && (img.width % 2 != 0 || img.height % 2 != 0)) {
            m_log.entered(k_file, "check_ive_support", 33);
            qualify = false;
        } else if (!is_copy && one.phys_addr % 16 != 0) {
            m_log.entered(k_file, "check_ive_support", 39);
            qualify = false;
        }
    }
    ++(qualify ? m_engine_operations : m_software_operations);
    if (!qualify) return way::software;
    return takes ? way::engine : way::refused;
}

int accelerated_stage::engine_refused(const char* function, int refused_line, int dispatch_line, const char* vendor) {
    m_log.error(k_file, ("do_ive_" + std::string(function)).c_str(), refused_line);
    m_log.plain("refused", "HI_MPI_IVE_" + std::string(vendor) + " failed, ret = a01d8003\n");
    m_log.entered(k_file, ("do_" + std::string(function)).c_str(), dispatch_line);
    return k_refused;
}

int accelerated_stage::failed(int code, int line) {
    m_log.entered("pre_process", "set_frame", line);
    return code;
}

int accelerated_stage::sub(const fd_yuv_frame& region) {
    const two_views luma = host_luma(region);
    const two_views previous = view(m_difference);
    switch (way_of({luma, previous, previous}, false)) {
        case way::engine:
            twin::sub(luma.engine, previous.engine, previous.engine);
            return 0;
        case way::software:
            return ref::sub(luma.processor, previous.processor, previous.processor, m_log);
        default:
            return engine_refused("sub", 137, 93, "Sub");
    }
}

int accelerated_stage::copy(const two_views& src, const two_views& dst) {
    switch (way_of({src, dst}, true)) {
        case way::engine:
            ref::copy_rows(src.engine, dst.engine);
            return 0;
        case way::software:
            ref::copy_rows(src.processor, dst.processor);
            return 0;
        default:
            return engine_refused("dma", 211, 171, "DMA");
    }
}

int accelerated_stage::threshold(int low) {
    const two_views img = view(m_difference);
    switch (way_of({img, img}, false)) {
        case way::engine:
            twin::threshold(img.engine, img.engine, low);
            return 0;
        case way::software:
            return ref::threshold_binary(img.processor, img.processor, low, m_log);
        default:
            return engine_refused("thres", 366, 322, "Thresh");
    }
}

int accelerated_stage::dilate(cached_memory& src, cached_memory& dst) {
    const two_views from = view(src);
    const two_views to = view(dst);
    switch (way_of({from, to}, false)) {
        case way::engine:
            twin::dilate(from.engine, to.engine);
            return 0;
        case way::software:
            ref::dilate(from.processor, to.processor);
            return 0;
        default:
            return engine_refused("dilate", 288, 245, "Dilate");
    }
}

int accelerated_stage::convert(const fd_yuv_frame& region) {
    const two_views luma = host_luma(region);
    const two_views blue = view(m_rgb);
    switch (way_of({luma, blue}, false)) {
        case way::engine:
            twin::convert_image(yuv_of(region), rgb_of(blue.engine));
            return 0;
        case way::software:
            ref::convert_image(yuv_of(region), rgb_of(blue.processor));
            return 0;
        default:
            return engine_refused("color_trans", 466, 401, "CSC");
    }
}

int accelerated_stage::label(std::vector<ref::component>& components) {
    const two_views img = view(m_difference);
    switch (way_of({img}, false)) {
        case way::engine:
            twin::label(img.engine, 10, 2, components);
            return 0;
        case way::software:
            ref::label_components(img.processor, components);
            return 0;
        default:
            return engine_refused("ccl", 525, 484, "CCL");
    }
}

int accelerated_stage::set_frame(const fd_yuv_frame& region, std::vector<ref::component>& components) {
    const bool resized = static_cast<int>(region.width) != m_width || static_cast<int>(region.height) != m_height;
    m_width = static_cast<int>(region.width);
    m_height = static_cast<int>(region.height);
    if (resized) copy(host_luma(region), view(m_rgb));

    if (const int code = sub(region)) return failed(code, 124);
    m_difference.flush();
    threshold(ref::otsu_threshold(view(m_difference).processor, 0, 0, 20, 35));
    if (const int code = dilate(m_difference, m_foreground)) return failed(code, 141);
    m_foreground.flush();

    if (const int code = convert(region)) return failed(code, 150);
    m_rgb.flush();
    ref::color_filter(mask(), rgb_of(view(m_rgb).processor), yuv_of(region));
    m_foreground.flush();
    if (const int code = dilate(m_foreground, m_difference)) return failed(code, 168);
    copy(view(m_difference), view(m_foreground));
    m_foreground.flush();

    if (const int code = label(components)) return failed(code, 189);
    if (const int code = copy(host_luma(region), view(m_difference))) return failed(code, 197);
    return 0;
}

bool accelerated_channel::accepts(const fd_yuv_frame& frame) const {
    return frame.format == FD_PIXEL_FORMAT_YUV420SP && frame.width <= FD_MAX_FRAME_WIDTH &&
           frame.height <= FD_MAX_FRAME_HEIGHT && frame.virt_addr[0] != nullptr && frame.virt_addr[1] != nullptr &&
           ref::region_fits(m_roi, frame);
}

void accelerated_channel::note_size(const fd_yuv_frame& region) {
    if (!m_size_known || region.width != m_roi_width || region.height != m_roi_height) m_holder.restart_count();
    m_size_known = true;
    m_roi_width = region.width;
    m_roi_height = region.height;
}

int accelerated_channel::set_frame(const fd_yuv_frame& frame, fd_result& result) {
    if (!accepts(frame)) {
        m_log.error("frame_process", "set_frame", 78);
        return 7;
    }
    const int width = static_cast<int>(frame.width);
    const int height = static_cast<int>(frame.height);
    if (m_roi.x_ref != frame.width || m_roi.y_ref != frame.height) ref::trans_region(m_roi, width, height);
    ref::align_region(m_roi, frame);
    const fd_yuv_frame region = ref::cut_region(m_roi, frame);
    note_size(region);

    std::vector<ref::component> components;
    if (const int code = m_stage.set_frame(region, components)) {
        m_log.plain("code", "ret code : 0x" + std::to_string(code) + "\n");
        m_log.entered("frame_process", "set_frame", 104);
        return code;
    }
    result = fd_result{};
    const ref::plane luma = yuv_of(region).luma;
    m_analysis.set_frame(&luma, m_stage.mask(), components, result);
    m_holder.step(result, m_roi, width, height);
    return 0;
}

}  // namespace twin
