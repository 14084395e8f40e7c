#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "imgproc/log.h"
#include "imgproc/status.h"

using orva_fd::CGlobalObject;

namespace {

const char k_file[] = "FireDetection_Api";
enum log_line {
    k_line_init_again = 10,
    k_line_uninit_not_inited = 24,
    k_line_start_not_inited = 36,
    k_line_start_null_handle = 41,
    k_line_start_zero_reference = 48,
    k_line_start_horizontal = 59,
    k_line_start_vertical = 64,
    k_line_start_failed = 72,
    k_line_stop_not_inited = 83,
    k_line_stop_bad_handle = 89,
    k_line_stop_failed = 95,
    k_line_frame_not_inited = 105,
    k_line_frame_bad_handle = 111,
    k_line_frame_failed = 117,
    k_line_grade_not_inited = 127,
    k_line_grade_bad_handle = 134,
    k_line_grade_failed = 140
};

// Prints the line of a failure on its way to the host and returns its code.
int failed(int code, const char* function, int line) {
    orva_fd::log_entered(k_file, function, line);
    return code;
}

// value / reference in 16.16 fixed point. Values of 32768 and more come out negative and fail every test (deliberate),
// so the shift is done on the bits.
int fixed_point(uint16_t value, uint16_t reference) {
    return static_cast<int32_t>(static_cast<uint32_t>(value) << 16) / reference;
}

// Whether a span lies within the picture: start below 1, length above 0, their sum at most 1.
bool span_is_legal(uint16_t start, uint16_t start_ref, uint16_t length, uint16_t length_ref) {
    const int one = 65536;
    const int first = fixed_point(start, start_ref);
    const int size = fixed_point(length, length_ref);
    return first >= 0 && first < one && size >= 1 && size <= one && first + size <= one;
}

bool is_handle(int handle) {
    return handle >= 0 && handle < FD_MAX_CHANNELS;
}

}  // namespace

int ORVA_FireDetection_Init(void) {
    CGlobalObject* object = CGlobalObject::Instance();
    if (object->IsInited()) return failed(FD_ALREADY_INITIALISED, "ORVA_FireDetection_Init", k_line_init_again);
    if (object->Initialize() == FD_OK) return FD_OK;
    return object->Initialize();
}

int ORVA_FireDetection_UnInit(void) {
    CGlobalObject* object = CGlobalObject::Instance();
    if (!object->IsInited()) return failed(FD_NOT_INITIALISED, "ORVA_FireDetection_UnInit", k_line_uninit_not_inited);
    (void)object->Destroy();
    return FD_OK;
}

int ORVA_FireDetection_Start(int* handle, fd_rect rect) {
    static const char name[] = "ORVA_FireDetection_Start";
    CGlobalObject* object = CGlobalObject::Instance();
    if (!object->IsInited()) return failed(FD_NOT_INITIALISED, name, k_line_start_not_inited);
    if (handle == nullptr) return failed(FD_INVALID_ARGUMENT, name, k_line_start_null_handle);
    if (rect.x_ref == 0 || rect.y_ref == 0 || rect.width_ref == 0 || rect.height_ref == 0)
        return failed(FD_INVALID_ARGUMENT, name, k_line_start_zero_reference);
    if (!span_is_legal(rect.x, rect.x_ref, rect.width, rect.width_ref))
        return failed(FD_INVALID_ARGUMENT, name, k_line_start_horizontal);
    if (!span_is_legal(rect.y, rect.y_ref, rect.height, rect.height_ref))
        return failed(FD_INVALID_ARGUMENT, name, k_line_start_vertical);
    int local = -1;
    const int code = object->FireDetectionMan()->Start(local, rect);
    if (code != FD_OK || local == -1) return failed(code, name, k_line_start_failed);
    *handle = local;
    return FD_OK;
}

int ORVA_FireDetection_Stop(int handle) {
    static const char name[] = "ORVA_FireDetection_Stop";
    CGlobalObject* object = CGlobalObject::Instance();
    if (!object->IsInited()) return failed(FD_NOT_INITIALISED, name, k_line_stop_not_inited);
    if (!is_handle(handle)) return failed(FD_INVALID_ARGUMENT, name, k_line_stop_bad_handle);
    const int code = object->FireDetectionMan()->Stop(handle);
    return code == FD_OK ? FD_OK : failed(code, name, k_line_stop_failed);
}

int ORVA_FireDetection_SetFrame(int handle, fd_yuv_frame frame, fd_result* result) {
    static const char name[] = "ORVA_FireDetection_SetFrame";
    CGlobalObject* object = CGlobalObject::Instance();
    if (!object->IsInited()) return failed(FD_NOT_INITIALISED, name, k_line_frame_not_inited);
    if (!is_handle(handle)) return failed(FD_BAD_HANDLE, name, k_line_frame_bad_handle);
    const int code = object->FireDetectionMan()->FireDetectionMain(handle, frame, *result);
    return code == FD_OK ? FD_OK : failed(code, name, k_line_frame_failed);
}

int ORVA_FireDetection_SetSensitiveGrade(int handle, int grade) {
    static const char name[] = "ORVA_FireDetection_SetSensitiveGrade";
    CGlobalObject* object = CGlobalObject::Instance();
    if (!object->IsInited()) return failed(FD_NOT_INITIALISED, name, k_line_grade_not_inited);
    if (!is_handle(handle)) return failed(FD_BAD_HANDLE, name, k_line_grade_bad_handle);
    const int code = object->FireDetectionMan()->SetSensitiveGrade(handle, grade);
    return code == FD_OK ? FD_OK : failed(code, name, k_line_grade_failed);
}
