// The one door to private members, for states that calls do not reach and results that no call shows.
#ifndef ORVA_TESTS_SUPPORT_TEST_ACCESS_H
#define ORVA_TESTS_SUPPORT_TEST_ACCESS_H

#include <pthread.h>

#include <vector>

#include "channel/frame_process.h"
#include "manager/FireDetectionManager.h"
#include "preprocess/pre_process.h"

namespace orva_fd {

struct test_access {
    static void hold(hisi_mmz_mem& memory, unsigned int phys_addr, void* virt_addr, unsigned int size) {
        memory.m_phys_addr = phys_addr;
        memory.m_virt_addr = virt_addr;
        memory.m_size = size;
    }

    static fd_yuv_frame& fg_img(pre_process& stage) { return stage.m_fg_img; }
    static fd_yuv_frame& rgb_img(pre_process& stage) { return stage.m_rgb_img; }
    static fd_yuv_frame& diff_img(pre_process& stage) { return stage.m_diff_img; }
    static hisi_mmz_mem& fg_mem(pre_process& stage) { return stage.m_fg_mem; }
    static hisi_mmz_mem& rgb_mem(pre_process& stage) { return stage.m_rgb_mem; }
    static hisi_mmz_mem& diff_mem(pre_process& stage) { return stage.m_diff_mem; }
    static hisi_mmz_mem& blob_mem(pre_process& stage) { return stage.m_blob_mem; }
    static uint16_t& width(pre_process& stage) { return stage.m_width; }
    static uint16_t& height(pre_process& stage) { return stage.m_height; }

    static std::vector<std::vector<con_info>>& history(foreground_analysis& analysis) { return analysis.m_history; }
    static int& stable_thresh(foreground_analysis& analysis) { return analysis.m_stable_thresh; }

    static pre_process& stage(frame_process& channel) { return channel.m_pre_process; }
    static foreground_analysis& analysis(frame_process& channel) { return channel.m_fg_analysis; }
    static fd_rect& roi(frame_process& channel) { return channel.m_roi; }
    static uint16_t& hold_count(frame_process& channel) { return channel.m_hold_count; }
    static fd_result& last_result(frame_process& channel) { return channel.m_last_result; }
    static bool& roi_size_known(frame_process& channel) { return channel.m_roi_size_known; }
    static uint16_t& roi_width(frame_process& channel) { return channel.m_roi_width; }
    static uint16_t& roi_height(frame_process& channel) { return channel.m_roi_height; }

    static bool created(const CMutex& mutex) { return mutex.m_created; }
    static pthread_mutex_t& native(CMutex& mutex) { return mutex.m_lock; }

    static CMutex& mutex(CHandleDispather& handles) { return handles.m_mutex; }
    static unsigned char* busy(CHandleDispather& handles) { return handles.m_busy; }
    static int handle_num(const CHandleDispather& handles) { return handles.m_handle_num; }

    static CHandleDispather& handles(CFireDetectionMngr& manager) { return manager.m_handles; }
    static frame_process*& detector(CFireDetectionMngr& manager, int handle) { return manager.m_detector[handle]; }
    static CMutex& detector_mutex(CFireDetectionMngr& manager, int handle) { return manager.m_detector_mutex[handle]; }
};

}  // namespace orva_fd

#endif
