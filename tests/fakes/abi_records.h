/* Functions of the shapes that the public header has, which tell what arrived of their arguments. Compiled once as C
 * and once as C++, so that each language calls the other. */
#ifndef ORVA_TESTS_FAKES_ABI_RECORDS_H
#define ORVA_TESTS_FAKES_ABI_RECORDS_H

#include "ORVA_FireDetection.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Like Start: 0 if the fields hold 1 to 8 in order, and writes 77. */
int abi_c_takes_rect(int* handle, fd_rect rect);
int abi_cpp_takes_rect(int* handle, fd_rect rect);

/* Like SetFrame: 0 if every field holds what abi_frame gives it, and writes a full result. */
int abi_c_takes_frame(int handle, fd_yuv_frame frame, fd_result* result);
int abi_cpp_takes_frame(int handle, fd_yuv_frame frame, fd_result* result);

/* Calls both and checks what comes back: the number of things that went wrong. */
int abi_c_calls(void);
int abi_cpp_calls(void);

#ifdef __cplusplus
}
#endif

#endif
