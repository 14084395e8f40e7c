// The whole library as a host sees it, over the plain twin: six calls with their codes, and the text they would print.
#ifndef ORVA_TESTS_REFERENCE_REF_LIBRARY_H
#define ORVA_TESTS_REFERENCE_REF_LIBRARY_H

#include <array>
#include <memory>
#include <string>

#include "ORVA_FireDetection.h"
#include "tests/reference/ref_channel.h"
#include "tests/reference/ref_log.h"

namespace ref {

// Whether a mutex exists, and what its four operations print when it does not (or, for create, when it does already).
class lock_state {
public:
    bool create(log_book& log);
    void wait(log_book& log) const;
    int release(log_book& log) const;
    bool close(log_book& log);

    bool created() const { return m_created; }
    void leave_created() { m_created = true; }  // for tests: a mutex that nobody closed

private:
    bool m_created = false;
};

// Which handles are in use.
class handle_table {
public:
    bool init(int num, log_book& log);
    bool is_handle_busy(int h, log_book& log) const;
    int create_handle(int& h, log_book& log);
    void destroy_handle(int h, log_book& log);
    void close(log_book& log);

    void set_flag(int h, bool busy) { m_busy[static_cast<std::size_t>(h)] = busy; }  // for tests
    int handle_num() const { return m_handle_num; }

private:
    lock_state m_lock;
    std::array<bool, 1000> m_busy{};
    int m_handle_num = 1000;
};

// Handles to channels.
class manager {
public:
    explicit manager(log_book& log) : m_log(log) {}

    int init();
    int destroy();
    int start(int& handle, const fd_rect& rect);
    int stop(int handle);
    int set_frame(int handle, const fd_yuv_frame& frame, fd_result& result);
    int set_sensitive_grade(int handle, int grade);

    handle_table& table() { return m_table; }
    std::unique_ptr<channel>& slot(int h) { return m_slots[static_cast<std::size_t>(h)]; }
    lock_state& slot_lock(int h) { return m_locks[static_cast<std::size_t>(h)]; }

private:
    log_book& m_log;
    handle_table m_table;
    std::array<std::unique_ptr<channel>, FD_MAX_CHANNELS> m_slots;
    std::array<lock_state, FD_MAX_CHANNELS> m_locks;
};

// Not copied, used by one thread at a time; several objects live side by side without touching each other.
class library {
public:
    library() = default;
    library(const library&) = delete;
    library& operator=(const library&) = delete;

    int init();
    int un_init();
    int start(int* handle, fd_rect rect);
    int stop(int handle);
    int set_frame(int handle, fd_yuv_frame frame, fd_result* result);
    int set_sensitive_grade(int handle, int grade);

    const std::string& log() const { return m_log.text(); }
    std::string take_log() { return m_log.take_text(); }  // the text since the last call; then it is empty
    log_book& book() { return m_log; }                    // counts of lines and of branches, kept from the beginning

    channel* channel_of(int handle);  // null if none is open under it
    manager& handles() { return m_manager; }

private:
    log_book m_log;
    bool m_inited = false;
    manager m_manager{m_log};
};

}  // namespace ref

#endif
