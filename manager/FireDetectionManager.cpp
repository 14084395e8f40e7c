#include "manager/FireDetectionManager.h"

#include <algorithm>
#include <memory>

#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "FireDetectionManager";
enum log_line {
    k_line_init_failed = 23,
    k_line_no_object = 54,
    k_line_start_failed = 61,
    k_line_no_handle = 70,
    k_line_lock_exists = 84,
    k_line_no_lock_to_close = 115,
    k_line_frame_not_busy = 124,
    k_line_frame_no_channel = 131,
    k_line_frame_failed = 140,
    k_line_grade_not_busy = 151,
    k_line_grade_no_channel = 159,
    k_line_grade_failed = 167,
    k_line_delete_null = 182
};

}  // namespace

CFireDetectionMngr::CFireDetectionMngr() : m_handles(), m_detector_mutex(), m_detector() {}

int CFireDetectionMngr::Init() {
    if (!m_handles.Init(FD_MAX_CHANNELS)) {
        log_entered(k_file, "Init", k_line_init_failed);
        return FD_PLATFORM_FAILED;
    }
    std::fill(m_detector, m_detector + FD_MAX_CHANNELS, nullptr);
    return FD_OK;
}

int CFireDetectionMngr::Destroy() {
    for (int h = 0; h < FD_MAX_CHANNELS; ++h) {
        if (m_handles.IsHandleBusy(h)) Stop(h);
    }
    m_handles.Close();
    return FD_OK;
}

int CFireDetectionMngr::Start(int& handle, fd_rect rect) {
    frame_process* p = newDetector();
    if (p == nullptr) {
        log_entered(k_file, "Start", k_line_no_object);
        return FD_NO_CHANNEL;
    }
    std::unique_ptr<frame_process> owner(p);  // until the channel is installed; its start may throw
    const int code = p->start(rect);
    if (code != FD_OK) {
        log_entered(k_file, "Start", k_line_start_failed);
        delDetector(owner.release());
        return code;
    }
    int h = -1;
    if (m_handles.CreateHandle(h) != FD_OK || h == -1) {
        log_entered(k_file, "Start", k_line_no_handle);
        p->stop();
        delDetector(owner.release());
        return FD_NO_FREE_HANDLE;
    }
    // Deliberate: stopping a channel that was left in the slot frees the handle's flag, and nothing sets it again.
    if (is_left_over(h)) Stop(h);
    if (!m_detector_mutex[h].Create()) {
        log_entered(k_file, "Start", k_line_lock_exists);
        p->stop();
        delDetector(owner.release());
        m_handles.Close();
        return FD_ALREADY_INITIALISED;
    }
    CAutoMutex lock(&m_detector_mutex[h]);
    installed(h) = owner.release();
    handle = h;
    return FD_OK;
}

int CFireDetectionMngr::Stop(int& handle) {
    const int h = handle;
    m_detector_mutex[h].Wait();
    frame_process* p = installed(h);
    installed(h) = nullptr;
    m_detector_mutex[h].Release();
    if (p != nullptr) {
        p->stop();
        delDetector(p);
    }
    // The lock goes before the handle is free: a start on another thread may be given the handle at once, and takes a
    // lock that it finds for an inner fault. Only a lock that is not there is missed afterwards, as its line says.
    const bool had_lock = m_detector_mutex[h].Exists();
    if (had_lock) m_detector_mutex[h].Close();
    m_handles.DestroyHandle(h);
    if (!had_lock && !m_detector_mutex[h].Close()) log_entered(k_file, "Stop", k_line_no_lock_to_close);
    return FD_OK;
}

int CFireDetectionMngr::FireDetectionMain(int& handle, fd_yuv_frame frame, fd_result& result) {
    if (!m_handles.IsHandleBusy(handle)) {
        log_entered(k_file, "FireDetectionMain", k_line_frame_not_busy);
        return FD_NOT_IN_USE;
    }
    CAutoMutex lock(&m_detector_mutex[handle]);
    frame_process* p = installed(handle);
    if (p == nullptr) {
        log_entered(k_file, "FireDetectionMain", k_line_frame_no_channel);
        return FD_NOT_IN_USE;
    }
    const int code = p->set_frame(frame, result);
    if (code != FD_OK) log_entered(k_file, "FireDetectionMain", k_line_frame_failed);
    return code;
}

int CFireDetectionMngr::SetSensitiveGrade(int& handle, int grade) {
    if (!m_handles.IsHandleBusy(handle)) {
        log_entered(k_file, "SetSensitiveGrade", k_line_grade_not_busy);
        return FD_NOT_IN_USE;
    }
    CAutoMutex lock(&m_detector_mutex[handle]);
    frame_process* p = installed(handle);
    if (p == nullptr) {
        log_entered(k_file, "SetSensitiveGrade", k_line_grade_no_channel);
        return FD_NOT_IN_USE;
    }
    const int code = p->set_sensitive(grade);
    if (code != FD_OK) log_entered(k_file, "SetSensitiveGrade", k_line_grade_failed);
    return code;
}

frame_process* CFireDetectionMngr::newDetector() {
    return new frame_process;
}

int CFireDetectionMngr::delDetector(frame_process* p) {
    if (p == nullptr) {
        log_entered(k_file, "delDetector", k_line_delete_null);
        return FD_INVALID_ARGUMENT;
    }
    delete p;
    return FD_OK;
}

}  // namespace orva_fd
