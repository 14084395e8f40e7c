#include <cstdio>
#include <memory>
#include <mutex>

#include "bench/plain/plain.h"

namespace ORVA_PLAIN_NAMESPACE {

namespace {

struct slot {
    std::mutex lock;
    std::unique_ptr<channel> open;
};

bool inited = false;
slot slots[FD_MAX_CHANNELS];

int failed(int code, const char* function, int line) {
    std::printf("[Fire Detection: FireDetection_Api: ORVA_FireDetection_%s] %d entered \n", function, line);
    return code;
}

void manager_line(const char* function, int line) {
    std::printf("[Fire Detection: FireDetectionManager: %s] %d entered \n", function, line);
}

bool is_handle(int handle) {
    return handle >= 0 && handle < FD_MAX_CHANNELS;
}

bool span_is_legal(int start, int start_ref, int length, int length_ref) {
    if (start > 32767 || length > 32767) return false;
    const int first = start * 65536 / start_ref;
    const int size = length * 65536 / length_ref;
    return first < 65536 && size >= 1 && size <= 65536 && first + size <= 65536;
}

int init() {
    if (inited) return failed(FD_ALREADY_INITIALISED, "Init", 10);
    fill_tables();
    inited = true;
    return FD_OK;
}

int uninit() {
    if (!inited) return failed(FD_NOT_INITIALISED, "UnInit", 24);
    inited = false;
    for (slot& s : slots) s.open.reset();
    return FD_OK;
}

int start(int* handle, fd_rect rect) {
    if (!inited) return failed(FD_NOT_INITIALISED, "Start", 36);
    if (handle == nullptr) return failed(FD_INVALID_ARGUMENT, "Start", 41);
    if (rect.x_ref == 0 || rect.y_ref == 0 || rect.width_ref == 0 || rect.height_ref == 0)
        return failed(FD_INVALID_ARGUMENT, "Start", 48);
    if (!span_is_legal(rect.x, rect.x_ref, rect.width, rect.width_ref)) return failed(FD_INVALID_ARGUMENT, "Start", 59);
    if (!span_is_legal(rect.y, rect.y_ref, rect.height, rect.height_ref))
        return failed(FD_INVALID_ARGUMENT, "Start", 64);
    for (int h = 0; h < FD_MAX_CHANNELS; ++h) {
        if (slots[h].open) continue;
        slots[h].open.reset(new channel(rect));
        *handle = h;
        return FD_OK;
    }
    std::printf("[Fire Detection: Handledispather: CreateHandle] 86 entered \n");
    manager_line("Start", 70);
    return failed(FD_NO_FREE_HANDLE, "Start", 72);
}

int stop(int handle) {
    if (!inited) return failed(FD_NOT_INITIALISED, "Stop", 83);
    if (!is_handle(handle)) return failed(FD_INVALID_ARGUMENT, "Stop", 89);
    std::lock_guard<std::mutex> lock(slots[handle].lock);
    slots[handle].open.reset();
    return FD_OK;
}

int set_frame(int handle, fd_yuv_frame frame, fd_result* result) {
    if (!inited) return failed(FD_NOT_INITIALISED, "SetFrame", 105);
    if (!is_handle(handle)) return failed(FD_BAD_HANDLE, "SetFrame", 111);
    std::lock_guard<std::mutex> lock(slots[handle].lock);
    int code = FD_NOT_IN_USE;
    if (slots[handle].open) code = slots[handle].open->set_frame(frame, *result);
    if (code == FD_OK) return FD_OK;
    manager_line("FireDetectionMain", code == FD_NOT_IN_USE ? 124 : 140);
    return failed(code, "SetFrame", 117);
}

int set_grade(int handle, int grade) {
    if (!inited) return failed(FD_NOT_INITIALISED, "SetSensitiveGrade", 127);
    if (!is_handle(handle)) return failed(FD_BAD_HANDLE, "SetSensitiveGrade", 134);
    std::lock_guard<std::mutex> lock(slots[handle].lock);
    int code = FD_NOT_IN_USE;
    if (slots[handle].open) code = slots[handle].open->set_grade(grade);
    if (code == FD_OK) return FD_OK;
    manager_line("SetSensitiveGrade", code == FD_NOT_IN_USE ? 151 : 167);
    return failed(code, "SetSensitiveGrade", 140);
}

void watch_stages(bench::stage_hook hook) {
    on_stage = hook;
}

}  // namespace

const bench::six_functions functions = {init, uninit, start, stop, set_frame, set_grade, watch_stages};

}  // namespace ORVA_PLAIN_NAMESPACE
