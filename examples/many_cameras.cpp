// A host with many cameras: a thread and a channel for each, one library for all.
//   many_cameras [CAMERAS]
// The cameras are drawn by the program: dark rooms, and in every second one a flame.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "ORVA_FireDetection.h"

namespace {

constexpr int k_width = 176;
constexpr int k_height = 144;
constexpr int k_frames = 70;
constexpr int k_flame_width = 24;

// A camera and what its thread found out. Nothing in it is shared with another thread, so no lock is needed.
struct camera {
    int flame_left = -1;   // column where the flame begins; -1: there is none
    int status = FD_OK;    // the first code that was not 0
    int first_report = 0;  // frame number, valid if box.width is not 0
    fd_rect box = {};
    std::vector<unsigned char> picture;
};

void draw_flame(camera& cam, int frame) {
    unsigned char* luma = cam.picture.data();
    unsigned char* chroma = luma + k_width * k_height;
    const int top = 45 + (frame * 17) % 40;
    for (int y = top; y < 100; ++y) {
        for (int x = cam.flame_left; x < cam.flame_left + k_flame_width; ++x) {
            luma[y * k_width + x] = static_cast<unsigned char>(150 + (frame * 31 + x * 7 + y * 13) % 80);
            chroma[y / 2 * k_width + x / 2 * 2] = 150;     // V
            chroma[y / 2 * k_width + x / 2 * 2 + 1] = 90;  // U
        }
    }
}

// The next picture of the camera: NV21, both planes in one block with a row to spare.
fd_yuv_frame next_picture(camera& cam, int frame) {
    cam.picture.resize(k_width * (k_height + k_height / 2 + 1));
    std::memset(cam.picture.data(), 60, k_width * k_height);
    std::memset(cam.picture.data() + k_width * k_height, 128, k_width * k_height / 2);
    if (cam.flame_left >= 0) draw_flame(cam, frame);
    fd_yuv_frame view = {};
    view.format = FD_PIXEL_FORMAT_YUV420SP;
    view.width = k_width;
    view.height = k_height;
    view.virt_addr[0] = cam.picture.data();
    view.virt_addr[1] = cam.picture.data() + k_width * k_height;
    view.stride[0] = view.stride[1] = k_width;
    return view;
}

// The life of a camera's thread. A channel belongs to one thread here, which also stops it: Stop must not run while
// another thread may still call into the same handle.
void watch(camera& cam) {
    const fd_rect whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};
    int handle = 0;
    cam.status = ORVA_FireDetection_Start(&handle, whole_picture);
    if (cam.status != FD_OK) return;
    for (int frame = 0; frame < k_frames && cam.status == FD_OK; ++frame) {
        fd_result result = {};
        cam.status = ORVA_FireDetection_SetFrame(handle, next_picture(cam, frame), &result);
        if (cam.status != FD_OK || result.count == 0) continue;
        if (cam.box.width == 0) cam.first_report = frame;
        cam.box = result.rects[0];
    }
    ORVA_FireDetection_Stop(handle);
}

// The library prints on descriptor 1. This program's own lines go to a copy of it, the library's to nowhere.
FILE* take_standard_output() {
    const int own = dup(1);
    const int sink = open("/dev/null", O_WRONLY);
    if (own < 0 || sink < 0 || dup2(sink, 1) < 0) return nullptr;
    close(sink);
    return fdopen(own, "w");
}

void print(FILE* out, std::size_t number, const camera& cam) {
    if (cam.status != FD_OK) {
        std::fprintf(out, "camera %zu: failed with code %d\n", number, cam.status);
    } else if (cam.box.width == 0) {
        std::fprintf(out, "camera %zu: no fire\n", number);
    } else {
        std::fprintf(out, "camera %zu: fire from frame %d, columns %d to %d\n", number, cam.first_report, cam.box.x,
                     cam.box.x + cam.box.width - 1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 4;
    if (count < 1 || count > FD_MAX_CHANNELS) {
        std::fprintf(stderr, "many_cameras: from 1 to %d cameras\n", FD_MAX_CHANNELS);
        return 2;
    }
    FILE* out = take_standard_output();
    if (out == nullptr || ORVA_FireDetection_Init() != FD_OK) return 1;  // Init while no other thread calls

    std::vector<camera> cameras(static_cast<std::size_t>(count));
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        camera& cam = cameras[static_cast<std::size_t>(i)];
        if (i % 2 == 1) cam.flame_left = 16 + 8 * (i % 16);
        threads.emplace_back(watch, std::ref(cam));
    }
    for (std::thread& thread : threads) thread.join();
    ORVA_FireDetection_UnInit();  // and UnInit when none does any more

    for (std::size_t i = 0; i < cameras.size(); ++i) print(out, i, cameras[i]);
    return std::fclose(out) == 0 ? 0 : 1;
}
