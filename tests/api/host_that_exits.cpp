// A host that ends in the state that its argument names. The process's exit must be clean and silent.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ORVA_FireDetection.h"
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

}  // namespace

int main(int argc, char** argv) {
    const char* state = argc > 1 ? argv[1] : "";
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
