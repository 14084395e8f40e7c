#include "tests/reference/ref_library.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace ref {

namespace {

const int k_ok = 0;
const int k_not_initialised = 1;
const int k_not_in_use = 2;
const int k_already_there = 3;
const int k_no_table_lock = 4;
const int k_bad_argument = 7;
const int k_no_free_handle = 8;
const int k_bad_handle = 9;

const char k_api[] = "FireDetection_Api";
const char k_manager[] = "FireDetectionManager";
const char k_table[] = "Handledispather";
const char k_mutex[] = "Mutex";

bool is_handle(int handle) {
    return handle >= 0 && handle < FD_MAX_CHANNELS;
}

// value / reference in 16.16 fixed point, as a signed 32-bit processor computes it: from 32768 on it is negative.
std::int32_t fixed_point(std::uint16_t value, std::uint16_t reference) {
    const std::int32_t shifted = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << 16);
    return shifted / reference;
}

// Whether a stretch of `size` from `position` on lies inside the picture.
bool stretch_fits(std::uint16_t position, std::uint16_t position_ref, std::uint16_t size, std::uint16_t size_ref) {
    const std::int32_t from = fixed_point(position, position_ref);
    const std::int32_t extent = fixed_point(size, size_ref);
    if (from < 0 || from >= 65536) return false;
    if (extent < 1 || extent > 65536) return false;
    return from + extent <= 65536;
}

}  // namespace

// --- mutexes --------------------------------------------------------------------------------------------------------

bool lock_state::create(log_book& log) {
    if (m_created) {
        log.entered(k_mutex, "Create", 37);
        return false;
    }
    m_created = true;
    return true;
}

void lock_state::wait(log_book& log) const {
    if (!m_created) log.warn_no_mutex(k_mutex, "Wait", 79);
}

int lock_state::release(log_book& log) const {
    if (m_created) return k_ok;
    log.warn_no_mutex(k_mutex, "Release", 115);
    return 2;
}

bool lock_state::close(log_book& log) {
    if (!m_created) {
        log.entered(k_mutex, "Close", 59);
        return false;
    }
    m_created = false;
    return true;
}

// --- the handle table -----------------------------------------------------------------------------------------------

bool handle_table::init(int num, log_book& log) {
    m_handle_num = num;
    if (!m_lock.create(log)) {
        log.info_no_mutex(k_table, "Init", 44);
        return false;
    }
    for (int h = 0; h < num; ++h) set_flag(h, false);
    return true;
}

bool handle_table::is_handle_busy(int h, log_book& log) const {
    if (h < 0 || h >= m_handle_num) {
        log.entered(k_table, "IsHandleBusy", 109);
        return false;
    }
    m_lock.wait(log);
    const bool busy = m_busy[static_cast<std::size_t>(h)];
    m_lock.release(log);
    return busy;
}

int handle_table::create_handle(int& h, log_book& log) {
    m_lock.wait(log);
    int code = k_no_free_handle;
    for (int candidate = 0; candidate < m_handle_num; ++candidate) {
        if (m_busy[static_cast<std::size_t>(candidate)]) continue;
        set_flag(candidate, true);
        h = candidate;
        code = k_ok;
        break;
    }
    if (code != k_ok) log.entered(k_table, "CreateHandle", 86);
    m_lock.release(log);
    return code;
}

void handle_table::destroy_handle(int h, log_book& log) {
    if (h < 0 || h >= m_handle_num) {
        log.entered(k_table, "DestroyHandle", 97);
        return;
    }
    m_lock.wait(log);
    set_flag(h, false);
    m_lock.release(log);
}

void handle_table::close(log_book& log) {
    for (int h = 0; h < m_handle_num; ++h) set_flag(h, false);
    m_lock.close(log);
}

// --- the manager ----------------------------------------------------------------------------------------------------

int manager::init() {
    if (!m_table.init(FD_MAX_CHANNELS, m_log)) {
        m_log.entered(k_manager, "Init", 23);
        return k_no_table_lock;
    }
    for (std::unique_ptr<channel>& installed : m_slots) installed.reset();
    return k_ok;
}

int manager::destroy() {
    for (int h = 0; h < FD_MAX_CHANNELS; ++h) {
        if (m_table.is_handle_busy(h, m_log)) stop(h);
    }
    m_table.close(m_log);
    return k_ok;
}

int manager::start(int& handle, const fd_rect& rect) {
    std::unique_ptr<channel> started(new channel(m_log, rect));
    int h = -1;
    if (m_table.create_handle(h, m_log) != k_ok || h == -1) {
        m_log.entered(k_manager, "Start", 70);
        return k_no_free_handle;
    }
    // Deliberate: stopping what was left in the slot clears the new handle's flag again.
    if (slot(h) != nullptr) stop(h);
    if (!slot_lock(h).create(m_log)) {
        m_log.entered(k_manager, "Start", 84);
        m_table.close(m_log);
        return k_already_there;
    }
    slot_lock(h).wait(m_log);
    slot(h) = std::move(started);
    handle = h;
    slot_lock(h).release(m_log);
    return k_ok;
}

int manager::stop(int handle) {
    slot_lock(handle).wait(m_log);
    std::unique_ptr<channel> stopped = std::move(slot(handle));
    slot_lock(handle).release(m_log);
    stopped.reset();
    m_table.destroy_handle(handle, m_log);
    if (!slot_lock(handle).close(m_log)) m_log.entered(k_manager, "Stop", 115);
    return k_ok;
}

int manager::set_frame(int handle, const fd_yuv_frame& frame, fd_result& result) {
    if (!m_table.is_handle_busy(handle, m_log)) {
        m_log.entered(k_manager, "FireDetectionMain", 124);
        return k_not_in_use;
    }
    slot_lock(handle).wait(m_log);
    int code = k_not_in_use;
    if (slot(handle) == nullptr) {
        m_log.entered(k_manager, "FireDetectionMain", 131);
    } else {
        code = slot(handle)->set_frame(frame, result);
        if (code != k_ok) m_log.entered(k_manager, "FireDetectionMain", 140);
    }
    slot_lock(handle).release(m_log);
    return code;
}

int manager::set_sensitive_grade(int handle, int grade) {
    if (!m_table.is_handle_busy(handle, m_log)) {
        m_log.entered(k_manager, "SetSensitiveGrade", 151);
        return k_not_in_use;
    }
    slot_lock(handle).wait(m_log);
    int code = k_not_in_use;
    if (slot(handle) == nullptr) {
        m_log.entered(k_manager, "SetSensitiveGrade", 159);
    } else {
        code = slot(handle)->set_sensitive(grade);
        if (code != k_ok) m_log.entered(k_manager, "SetSensitiveGrade", 167);
    }
    slot_lock(handle).release(m_log);
    return code;
}

// --- the six calls --------------------------------------------------------------------------------------------------

int library::init() {
    if (m_inited) {
        m_log.entered(k_api, "ORVA_FireDetection_Init", 10);
        return k_already_there;
    }
    m_manager.init();
    m_inited = true;
    return k_ok;
}

int library::un_init() {
    if (!m_inited) {
        m_log.entered(k_api, "ORVA_FireDetection_UnInit", 24);
        return k_not_initialised;
    }
    m_inited = false;
    m_manager.destroy();
    return k_ok;
}

int library::start(int* handle, fd_rect rect) {
    const char function[] = "ORVA_FireDetection_Start";
    if (!m_inited) {
        m_log.entered(k_api, function, 36);
        return k_not_initialised;
    }
    if (handle == nullptr) {
        m_log.entered(k_api, function, 41);
        return k_bad_argument;
    }
    if (rect.x_ref == 0 || rect.y_ref == 0 || rect.width_ref == 0 || rect.height_ref == 0) {
        m_log.entered(k_api, function, 48);
        return k_bad_argument;
    }
    if (!stretch_fits(rect.x, rect.x_ref, rect.width, rect.width_ref)) {
        m_log.entered(k_api, function, 59);
        return k_bad_argument;
    }
    if (!stretch_fits(rect.y, rect.y_ref, rect.height, rect.height_ref)) {
        m_log.entered(k_api, function, 64);
        return k_bad_argument;
    }
    int started = -1;
    const int code = m_manager.start(started, rect);
    if (code == k_ok && started != -1) {
        *handle = started;
        return k_ok;
    }
    m_log.entered(k_api, function, 72);
    return code;
}

int library::stop(int handle) {
    const char function[] = "ORVA_FireDetection_Stop";
    if (!m_inited) {
        m_log.entered(k_api, function, 83);
        return k_not_initialised;
    }
    if (!is_handle(handle)) {
        m_log.entered(k_api, function, 89);
        return k_bad_argument;
    }
    const int code = m_manager.stop(handle);
    if (code != k_ok) m_log.entered(k_api, function, 95);
    return code;
}

int library::set_frame(int handle, fd_yuv_frame frame, fd_result* result) {
    const char function[] = "ORVA_FireDetection_SetFrame";
    if (!m_inited) {
        m_log.entered(k_api, function, 105);
        return k_not_initialised;
    }
    if (!is_handle(handle)) {
        m_log.entered(k_api, function, 111);
        return k_bad_handle;
    }
    const int code = m_manager.set_frame(handle, frame, *result);
    if (code != k_ok) m_log.entered(k_api, function, 117);
    return code;
}

int library::set_sensitive_grade(int handle, int grade) {
    const char function[] = "ORVA_FireDetection_SetSensitiveGrade";
    if (!m_inited) {
        m_log.entered(k_api, function, 127);
        return k_not_initialised;
    }
    if (!is_handle(handle)) {
        m_log.entered(k_api, function, 134);
        return k_bad_handle;
    }
    const int code = m_manager.set_sensitive_grade(handle, grade);
    if (code != k_ok) m_log.entered(k_api, function, 140);
    return code;
}

channel* library::channel_of(int handle) {
    return is_handle(handle) ? m_manager.slot(handle).get() : nullptr;
}

}  // namespace ref
