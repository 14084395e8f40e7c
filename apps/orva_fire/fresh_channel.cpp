#include "apps/orva_fire/fresh_channel.h"

#include <string>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

void check(int status, const char* call) {
    if (status == FD_OK) return;
    if (status == FD_NO_FREE_HANDLE) {
        throw io_error("all " + std::to_string(FD_MAX_CHANNELS) +
                       " channels of the library are in use; use fewer zones or tiles");
    }
    throw io_error(std::string("the detector refused: ") + call + " returned " + std::to_string(status));
}

// A region at the upper left corner of a frame, in pixels of that frame, so that nothing is rounded.
fd_rect region_of(picture_size region, picture_size frame) {
    fd_rect rect = {};
    rect.width = static_cast<uint16_t>(region.width);
    rect.height = static_cast<uint16_t>(region.height);
    rect.x_ref = rect.width_ref = static_cast<uint16_t>(frame.width);
    rect.y_ref = rect.height_ref = static_cast<uint16_t>(frame.height);
    return rect;
}

}  // namespace

fresh_channel::stated_sizes fresh_channel::choose_sizes(picture_size seen) {
    const bool rows_full = seen.height + 2 > FD_MAX_FRAME_HEIGHT;
    const bool columns_full = seen.width + 2 > FD_MAX_FRAME_WIDTH;
    if (rows_full && !columns_full) {
        return {seen, {seen.width + 1, seen.height}, {seen.width + 2, seen.height}};
    }
    const picture_size region{seen.width, rows_full ? seen.height - 2 : seen.height};
    return {region, {region.width, region.height + 1}, {region.width, region.height + 2}};
}

fresh_channel::fresh_channel(picture_size seen) : m_sizes(choose_sizes(seen)), m_stated(m_sizes.first) {
    check(ORVA_FireDetection_Start(&m_handle, region_of(m_sizes.region, m_stated)), "Start");
}

fresh_channel::~fresh_channel() {
    (void)ORVA_FireDetection_Stop(m_handle);
}

void fresh_channel::set_grade(int grade) {
    check(ORVA_FireDetection_SetSensitiveGrade(m_handle, grade), "SetSensitiveGrade");
}

channel_answer fresh_channel::analyse(nv21_picture& picture) {
    fd_yuv_frame frame = picture.view();
    frame.width = static_cast<uint32_t>(m_stated.width);
    frame.height = static_cast<uint32_t>(m_stated.height);
    fd_result result = {};
    check(ORVA_FireDetection_SetFrame(m_handle, frame, &result), "SetFrame");

    channel_answer answer;
    for (int i = 0; i < result.count; ++i) {
        const fd_rect& rect = result.rects[i];
        answer.boxes.push_back({rect.x, rect.y, rect.width, rect.height});
    }
    if (result.count == 0) return answer;
    answer.fresh = picture_size{result.rects[0].x_ref, result.rects[0].y_ref} == m_stated;
    // The next picture must not have the size that the boxes just made carry.
    if (answer.fresh) m_stated = m_stated == m_sizes.first ? m_sizes.second : m_sizes.first;
    return answer;
}

}  // namespace orva_fire
