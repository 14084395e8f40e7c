// Plays fixed scenes through the six exported functions and prints every result, between the library's own lines. The
// output of two builds for different processors must be the same, byte for byte. With the stand-in the pictures are
// known to the engine and some vendor calls fail; the output of that build is another one.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "ORVA_FireDetection.h"
#ifdef SCENES_ON_STANDIN
#include "tests/fakes/chip_camera.h"
typedef fakes::chip_camera scene_camera;
#else
#include "tests/fakes/camera.h"
typedef fakes::camera scene_camera;
#endif

namespace {

struct scene {
    const char* name;
    int width, height, stride, shift;
    fd_rect region;
    int grade;
    int flames;
    int frames;
};

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};
const scene k_scenes[] = {
    {"one flame", 96, 80, 0, 0, k_whole, 70, 1, 130},
    {"two flames, sensitive", 128, 96, 0, 0, k_whole, 100, 2, 100},
    {"a region", 176, 144, 0, 0, {20, 176, 21, 144, 120, 176, 101, 144}, 100, 1, 90},
    {"odd size and stride", 97, 81, 101, 0, k_whole, 100, 1, 90},
    {"an unaligned address", 96, 80, 0, 4, k_whole, 100, 1, 90},
    {"the largest picture", 352, 288, 0, 0, k_whole, 100, 1, 70},
    {"too small for an engine", 48, 48, 0, 0, k_whole, 100, 1, 60},
};

void print_result(int frame, int code, const fd_result& result) {
    std::printf("frame %d: code %d", frame, code);
    for (int i = 0; code == 0 && i < result.count; ++i) {
        const fd_rect& box = result.rects[i];
        std::printf(" [%u/%u %u/%u %u/%u %u/%u]", box.x, box.x_ref, box.y, box.y_ref, box.width, box.width_ref,
                    box.height, box.height_ref);
    }
    std::printf("\n");
}

// What can go wrong on the way in, on every build alike.
void play_refusals() {
    int handle = -1;
    fd_result result = fd_result();
    fd_yuv_frame frame = fd_yuv_frame();
    std::printf("%d\n", ORVA_FireDetection_Start(&handle, k_whole));
    std::printf("%d\n", ORVA_FireDetection_Init());
    std::printf("%d\n", ORVA_FireDetection_Init());
    std::printf("%d\n", ORVA_FireDetection_Start(nullptr, k_whole));
    std::printf("%d\n", ORVA_FireDetection_Start(&handle, {1, 100, 0, 100, 100, 100, 100, 100}));
    std::printf("%d\n", ORVA_FireDetection_Start(&handle, {40000, 50000, 0, 1, 1, 50000, 1, 1}));
    std::printf("%d\n", ORVA_FireDetection_SetFrame(5, frame, &result));
    std::printf("%d\n", ORVA_FireDetection_SetFrame(-1, frame, &result));
    std::printf("%d\n", ORVA_FireDetection_SetSensitiveGrade(200, 50));
    std::printf("%d\n", ORVA_FireDetection_Stop(127));
    std::printf("%d\n", ORVA_FireDetection_Start(&handle, k_whole));
    std::printf("%d\n", ORVA_FireDetection_SetSensitiveGrade(handle, 101));
    std::printf("%d\n", ORVA_FireDetection_SetFrame(handle, frame, &result));
    std::printf("%d\n", ORVA_FireDetection_Stop(handle));
}

void play(const scene& what, std::uint32_t seed) {
    std::printf("scene: %s\n", what.name);
    int handle = -1;
    std::printf("start: code %d\n", ORVA_FireDetection_Start(&handle, what.region));
    ORVA_FireDetection_SetSensitiveGrade(handle, what.grade);
    scene_camera view(what.width, what.height, what.stride, what.shift, seed);
    view.flames = what.flames;
    fd_result result = fd_result();
    for (int frame = 0; frame < what.frames; ++frame) {
        view.burning = frame % 80 < 70;
        print_result(frame, ORVA_FireDetection_SetFrame(handle, view.next(), &result), result);
    }
    std::printf("stop: code %d\n", ORVA_FireDetection_Stop(handle));
}

}  // namespace

int main() {
    play_refusals();
    std::uint32_t seed = 42;
    for (const scene& what : k_scenes) play(what, ++seed);
#ifdef SCENES_ON_STANDIN
    for (long nth = 1; nth <= 60; nth += 3) {
        standin::reset();
        standin::fail_any(nth, false);
        play({"a failing call", 64, 64, 0, 0, k_whole, 100, 1, 4}, static_cast<std::uint32_t>(nth));
    }
    standin::reset();
    std::printf("live buffers: %d\n", standin::live_buffers());
#endif
    std::printf("%d\n", ORVA_FireDetection_UnInit());
    return EXIT_SUCCESS;
}
