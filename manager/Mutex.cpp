#include "manager/Mutex.h"

#include "imgproc/log.h"
#include "imgproc/status.h"

namespace orva_fd {

namespace {

const char k_file[] = "Mutex";
enum log_line {
    k_line_created_already = 37,
    k_line_close_missing = 59,
    k_line_wait_missing = 79,
    k_line_release_missing = 115,
    k_line_null_mutex = 148
};
const char k_missing[] = "mutex not create";

}  // namespace

bool CMutex::Create() {
    if (m_created) {
        log_entered(k_file, "Create", k_line_created_already);
        return false;
    }
    (void)pthread_mutex_init(&m_lock, nullptr);  // deliberate: cannot fail with default attributes
    m_created = true;
    return true;
}

bool CMutex::Wait() {
    if (!m_created) {
        log_warning(k_file, "Wait", k_line_wait_missing, k_missing);
        return false;
    }
    (void)pthread_mutex_lock(&m_lock);
    return true;
}

int CMutex::Release() {
    if (!m_created) {
        log_warning(k_file, "Release", k_line_release_missing, k_missing);
        return FD_NOT_IN_USE;
    }
    (void)pthread_mutex_unlock(&m_lock);
    return FD_OK;
}

bool CMutex::Close() {
    if (!m_created) {
        log_entered(k_file, "Close", k_line_close_missing);
        return false;
    }
    (void)pthread_mutex_destroy(&m_lock);
    m_created = false;
    return true;
}

CAutoMutex::CAutoMutex(CMutex* m) : m_mutex(m) {
    if (m_mutex == nullptr) {
        log_entered(k_file, "CAutoMutex", k_line_null_mutex);
    } else {
        m_mutex->Wait();
    }
}

CAutoMutex::~CAutoMutex() {
    if (m_mutex != nullptr) m_mutex->Release();
}

}  // namespace orva_fd
