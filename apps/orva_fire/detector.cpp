#include "apps/orva_fire/detector.h"

#include <string>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

// The channel's pictures hold its region and nothing else, so the library's own region is the whole picture.
const fd_rect k_whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};

void check(int status, const char* call) {
    if (status == FD_OK) return;
    throw io_error(std::string("the detector refused: ") + call + " returned " + std::to_string(status));
}

}  // namespace

detector_session::detector_session() {
    check(ORVA_FireDetection_Init(), "Init");
}

detector_session::~detector_session() {
    (void)ORVA_FireDetection_UnInit();
}

detector_channel::detector_channel(const box& region) : m_region(region), m_converter(region) {
    check(ORVA_FireDetection_Start(&m_handle, k_whole_picture), "Start");
}

detector_channel::~detector_channel() {
    (void)ORVA_FireDetection_Stop(m_handle);
}

void detector_channel::set_grade(int grade) {
    check(ORVA_FireDetection_SetSensitiveGrade(m_handle, grade), "SetSensitiveGrade");
}

std::vector<box> detector_channel::analyse(const AVFrame& picture, stopwatch& converting, stopwatch& detecting) {
    nv21_picture* seen = nullptr;
    {
        const stopwatch::running timer(converting);
        seen = &m_converter.convert(picture);
    }
    fd_result result = {};
    {
        const stopwatch::running timer(detecting);
        check(ORVA_FireDetection_SetFrame(m_handle, seen->view(), &result), "SetFrame");
    }
    std::vector<box> boxes;
    for (int i = 0; i < result.count; ++i) {
        const fd_rect& rect = result.rects[i];
        boxes.push_back(to_source({rect.x, rect.y, rect.width, rect.height}, seen->size(), m_region));
    }
    return boxes;
}

}  // namespace orva_fire
