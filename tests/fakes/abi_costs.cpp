// Measures what a channel costs a camera: the stack that SetFrame needs and the memory that a channel holds. Prints
// both and fails above the limits that the command line gives. usage: abi_costs STACK_BYTES MEMORY_BYTES
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ORVA_FireDetection.h"
#include "tests/fakes/camera.h"

namespace {

const std::size_t k_stack_bytes = 512 * 1024;
const unsigned char k_paint = 0xA5;
const int k_frames = 90;
const int k_channels = 8;
const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

struct job {
    int handle;
    fd_yuv_frame frame;
    fd_result result;
    int code;
    unsigned char* stack;
    std::size_t depth;
};

// Runs on a stack of its own, painted below this call before and looked at after it.
void* run(void* argument) {
    job& what = *static_cast<job*>(argument);
    unsigned char here = 0;
    unsigned char* const top =
        reinterpret_cast<unsigned char*>(reinterpret_cast<std::size_t>(&here) & ~std::size_t{63});
    std::memset(what.stack, k_paint, static_cast<std::size_t>(top - what.stack) - 1024);
    what.code = ORVA_FireDetection_SetFrame(what.handle, what.frame, &what.result);
    const unsigned char* deepest = what.stack;
    while (*deepest == k_paint) ++deepest;
    what.depth = static_cast<std::size_t>(top - deepest);
    return nullptr;
}

std::size_t depth_of(job& what) {
    static void* const stack = mmap(nullptr, k_stack_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    what.stack = static_cast<unsigned char*>(stack);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, k_stack_bytes);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, run, &what) != 0) std::abort();
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    if (what.code != 0) std::abort();
    return what.depth;
}

// Deepest of a flame's frames, reports and printed ratios included.
std::size_t stack_of_set_frame() {
    std::size_t deepest = 0;
    job what = job();
    ORVA_FireDetection_Start(&what.handle, k_whole);
    ORVA_FireDetection_SetSensitiveGrade(what.handle, 100);
    fakes::camera view(352, 288, 0, 0, 1);
    for (int frame = 0; frame < k_frames; ++frame) {
        what.frame = view.next();
        deepest = std::max(deepest, depth_of(what));
    }
    if (what.result.count == 0) std::abort();
    ORVA_FireDetection_Stop(what.handle);
    return deepest;
}

std::size_t bytes_in_use() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::size_t memory_of_a_channel() {
    fakes::camera view(352, 288, 0, 0, 2);
    view.flames = 2;
    view.next();
    fd_result result;
    const std::size_t before = bytes_in_use();
    int handles[k_channels];
    for (int& handle : handles) ORVA_FireDetection_Start(&handle, k_whole);
    for (int frame = 0; frame < k_frames; ++frame) {
        const fd_yuv_frame picture = view.next();
        for (const int handle : handles) ORVA_FireDetection_SetFrame(handle, picture, &result);
    }
    const std::size_t held = bytes_in_use() - before;
    for (const int handle : handles) ORVA_FireDetection_Stop(handle);
    return held / k_channels;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return EXIT_FAILURE;
    const std::size_t stack_limit = std::strtoul(arguments[1], nullptr, 10);
    const std::size_t memory_limit = std::strtoul(arguments[2], nullptr, 10);
    std::printf("measuring\n");  // the stream's buffer is there now
    ORVA_FireDetection_Init();
    const std::size_t stack = stack_of_set_frame();
    const std::size_t memory = memory_of_a_channel();
    ORVA_FireDetection_UnInit();
    std::fprintf(stderr, "stack of SetFrame: %zu bytes (limit %zu)\n", stack, stack_limit);
    std::fprintf(stderr, "memory of a channel: %zu bytes (limit %zu)\n", memory, memory_limit);
    return stack <= stack_limit && memory <= memory_limit ? EXIT_SUCCESS : EXIT_FAILURE;
}
