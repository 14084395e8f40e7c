// A host that ends in the state that its argument names. The process's exit must be clean and silent, and whatever the
// library held must have been given back by its end, not only be forgotten.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ORVA_FireDetection.h"
#include "tests/api/failing_new.h"
#include "tests/support/scene.h"

namespace {

void open_channels(int count) {
    support::nv21_picture picture(64, 64);
    for (int i = 0; i < count; ++i) {
        int handle = -1;
        ORVA_FireDetection_Start(&handle, {0, 1, 0, 1, 1, 1, 1, 1});
        for (int number = 1; number <= 5; ++number) {
            support::paint_flame_frame(picture, number, 10, 10);
            fd_result result;
            ORVA_FireDetection_SetFrame(handle, picture.frame(), &result);
        }
    }
}

long live_at_start = 0;

// Registered before the library's first call, and so run after the library's own exit handler.
void check_that_all_was_given_back() {
    if (failing_new::live_blocks() == live_at_start) return;
    std::fprintf(stderr, "%ld blocks were not given back\n", failing_new::live_blocks() - live_at_start);
    _exit(3);
}

}  // namespace

int main(int argc, char** argv) {
    const char* state = argc > 1 ? argv[1] : "";
    live_at_start = failing_new::live_blocks();
    std::atexit(check_that_all_was_given_back);
    if (std::strcmp(state, "untouched") == 0) return 0;
    if (std::strcmp(state, "refused") == 0) return ORVA_FireDetection_UnInit() - 1;
    ORVA_FireDetection_Init();
    if (std::strcmp(state, "initialised") == 0) return 0;
    open_channels(3);
    if (std::strcmp(state, "channels-open") == 0) return 0;
    if (std::strcmp(state, "channels-open-exit") == 0) std::exit(0);
    ORVA_FireDetection_UnInit();
    if (std::strcmp(state, "uninitialised") == 0) return 0;
    ORVA_FireDetection_Init();
    open_channels(2);
    if (std::strcmp(state, "initialised-again") == 0) return 0;
    std::fprintf(stderr, "unknown state: %s\n", state);
    return 2;
}
