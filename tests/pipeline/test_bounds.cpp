// The public header names the bytes of a frame that are read. Here the page behind them cannot be read at all.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "tests/pipeline/output_tap.h"
#include "tests/pipeline/scenes.h"

namespace {

// Memory whose last byte lies directly before an unreadable page.
class fenced_memory {
public:
    explicit fenced_memory(std::size_t size) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t usable = (size + page - 1) / page * page;
        m_length = usable + page;
        m_start = static_cast<unsigned char*>(
            mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (m_start == MAP_FAILED || mprotect(m_start + usable, page, PROT_NONE) != 0) std::abort();
        m_bytes = m_start + usable - size;
    }
    ~fenced_memory() { munmap(m_start, m_length); }
    fenced_memory(const fenced_memory&) = delete;
    fenced_memory& operator=(const fenced_memory&) = delete;
    unsigned char* bytes() { return m_bytes; }

private:
    unsigned char* m_start;
    unsigned char* m_bytes;
    std::size_t m_length;
};

// stride * (height + (height + 1) / 2 + 1) bytes, as the header promises to its hosts.
std::size_t promised_bytes(const fd_yuv_frame& frame) {
    return static_cast<std::size_t>(frame.stride[0]) * (frame.height + (frame.height + 1) / 2 + 1);
}

void play_fenced(const scenes::settings& scene, std::uint64_t seed) {
    int handle = -1;
    ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
    ASSERT_EQ(ORVA_FireDetection_Start(&handle, scene.region), FD_OK);
    scenes::player frames(scene, seed);
    while (!frames.done()) {
        fd_yuv_frame frame = frames.next();
        fenced_memory memory(promised_bytes(frame));
        std::memcpy(memory.bytes(), frame.virt_addr[0], promised_bytes(frame));
        frame.virt_addr[0] = memory.bytes();
        frame.virt_addr[1] = memory.bytes() + static_cast<std::size_t>(frame.stride[0]) * frame.height;
        fd_result result;
        ASSERT_EQ(ORVA_FireDetection_SetFrame(handle, frame, &result), FD_OK) << scene.name;
    }
    ASSERT_EQ(ORVA_FireDetection_UnInit(), FD_OK);
}

TEST(bounds, nothing_behind_the_promised_bytes_is_read_in_named_scenes) {
    scenes::output_tap tap;
    for (scenes::settings scene : scenes::named_scenes()) {
        scene.refused_period = 0;
        if (scene.name == "smallest pictures") continue;
        scene.frames = std::min(scene.frames, 70);
        play_fenced(scene, 3);
    }
}

// Random shapes down to a few pixels, odd ones among them, with flames and salt up to the edges.
TEST(bounds, nothing_behind_the_promised_bytes_is_read_at_random_sizes) {
    scenes::output_tap tap;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        scenes::random_source random(seed);
        scenes::settings scene = scenes::random_scene(seed);
        const int width = random.between(2, 70);
        scene.sizes = {{width, random.between(2, 60), width + width % 2 + random.between(0, 3)}};
        scene.region = scenes::whole_picture();
        scene.frames = 8;
        scene.salt = 30;
        scene.radius = 400;
        scene.refused_period = 0;
        play_fenced(scene, seed);
    }
}

}  // namespace
