#include "manager/Handledispather.h"

#include <cstring>

#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "Handledispather";
enum log_line {
    k_line_init_failed = 44,
    k_line_no_free_handle = 86,
    k_line_destroy_out_of_range = 97,
    k_line_busy_out_of_range = 109
};

}  // namespace

CHandleDispather::CHandleDispather() : m_busy(), m_handle_num(static_cast<int>(sizeof(m_busy))) {}

bool CHandleDispather::Init(int num) {
    m_handle_num = num;
    if (!m_mutex.Create()) {
        log_information(k_file, "Init", k_line_init_failed, "CreateMutex failed ");
        return false;
    }
    std::memset(m_busy, 0, static_cast<std::size_t>(m_handle_num));
    return true;
}

bool CHandleDispather::IsHandleBusy(int h) {
    if (!in_range(h)) {
        log_entered(k_file, "IsHandleBusy", k_line_busy_out_of_range);
        return false;
    }
    CAutoMutex lock(&m_mutex);
    return m_busy[h] == 1;
}

int CHandleDispather::CreateHandle(int& h) {
    CAutoMutex lock(&m_mutex);
    for (int i = 0; i < m_handle_num; ++i) {
        if (m_busy[i] != 0) continue;
        m_busy[i] = 1;
        h = i;
        return FD_OK;
    }
    log_entered(k_file, "CreateHandle", k_line_no_free_handle);
    return FD_NO_FREE_HANDLE;
}

bool CHandleDispather::DestroyHandle(int h) {
    if (!in_range(h)) {
        log_entered(k_file, "DestroyHandle", k_line_destroy_out_of_range);
        return false;
    }
    CAutoMutex lock(&m_mutex);
    m_busy[h] = 0;
    return true;
}

void CHandleDispather::Close() {
    std::memset(m_busy, 0, static_cast<std::size_t>(m_handle_num));
    m_mutex.Close();
}

}  // namespace orva_fd
