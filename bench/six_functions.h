// The six functions of a fire-detection library as a table, so that the benchmark can drive several side by side.
#ifndef ORVA_BENCH_SIX_FUNCTIONS_H
#define ORVA_BENCH_SIX_FUNCTIONS_H

#include "ORVA_FireDetection.h"

namespace bench {

// Stages of a frame, for those who can tell when one ends.
enum stage {
    stage_difference,
    stage_otsu,
    stage_threshold,
    stage_motion_dilate,
    stage_conversion,
    stage_colour_filter,
    stage_colour_dilate,
    stage_mask_copy,
    stage_label,
    stage_keep_luma,
    stage_boxes,
    stage_history,
    k_stage_count
};

// Called at the end of each stage.
typedef void (*stage_hook)(stage ended);

struct six_functions {
    int (*init)();
    int (*uninit)();
    int (*start)(int* handle, fd_rect rect);
    int (*stop)(int handle);
    int (*set_frame)(int handle, fd_yuv_frame frame, fd_result* result);
    int (*set_grade)(int handle, int grade);
    void (*watch_stages)(stage_hook hook);  // null if stages cannot be told apart; hook null: stop watching
};

}  // namespace bench

#endif
