// A long run: 128 channels on small pictures of changing sizes, with flames that come and go, grades that change and
// channels that stop and start again. One channel in eight is compared with its plain twin, result for result. Memory
// and descriptors of the process must stay as they are.
//
//   orva-soak FRAMES SECONDS     ends after so many frames of all channels, or after that time; 0 seconds: no limit
#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ORVA_FireDetection.h"
#include "tests/fuzz/painted_frame.h"
#include "tests/reference/ref_channel.h"

namespace {

const int k_channels = FD_MAX_CHANNELS;
const int k_compared_each = 8;      // every eighth channel has a twin
const int k_pictures = 40;          // of each size: as many burn as are calm
const int k_frames_of_a_size = 61;  // primes, so that the changes meet in ever new ways
const int k_frames_of_a_grade = 251;
const int k_frames_of_a_start = 601;
const int k_burning = 150, k_course = 240;  // of so many frames the first burn
const long k_warm_frames = 700;             // of each channel: by then it has seen every size and a second start
const long k_resident_growth = 8192;        // KiB that the second half of a run may hold more than the first,
const long k_used_growth = 1024;            // and of what it obtained and did not give back

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "orva-soak: %s\n", what.c_str());
    std::exit(1);
}

long resident_kilobytes() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    long all = 0, resident = 0;
    if (file == nullptr || std::fscanf(file, "%ld %ld", &all, &resident) != 2) fail("cannot read /proc/self/statm");
    std::fclose(file);
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// Of the heap and of large blocks: obtained and not given back.
long used_kilobytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

int open_descriptors() {
    DIR* folder = opendir("/proc/self/fd");
    if (folder == nullptr) fail("cannot read /proc/self/fd");
    int count = 0;
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
}

// --- pictures -------------------------------------------------------------------------------------------------------

// All pictures of the run, painted once and only read from then on: first the burning ones of a size, then the calm.
class gallery {
public:
    gallery() {
        static const int sizes[][2] = {{48, 36}, {64, 48}, {62, 46}, {80, 60}, {64, 64}, {96, 80}};
        for (const auto& size : sizes) {
            m_pictures.emplace_back();
            for (int i = 0; i < k_pictures; ++i) m_pictures.back().push_back(painted(size[0], size[1], i));
        }
    }
    int sizes() const { return static_cast<int>(m_pictures.size()); }

    fd_yuv_frame picture(int size, bool burning, int number) const {
        const int half = k_pictures / 2;
        const int index = number % half + (burning ? 0 : half);
        return m_pictures[static_cast<std::size_t>(size)][static_cast<std::size_t>(index)]->view();
    }

private:
    static std::unique_ptr<fuzz::painted_frame> painted(int width, int height, int number) {
        fuzz::painting style = {50, 5, 7 + number, number < k_pictures / 2 ? 1 : 0, 0x88, height * 3 / 4, 40,
                                0,  0, false};
        auto frame = std::make_unique<fuzz::painted_frame>(fuzz::frame_shape{width, height, (width + 15) / 16 * 16});
        frame->paint(style, number);
        return frame;
    }

    std::vector<std::vector<std::unique_ptr<fuzz::painted_frame>>> m_pictures;
};

// --- channels -------------------------------------------------------------------------------------------------------

struct totals {
    std::atomic<long> frames{0};
    std::atomic<long> compared{0};
    std::atomic<long> reported{0};
    std::atomic<long> restarts{0};
};

// One channel of the library, and its twin if it is one of those that are compared.
class soaked_channel {
public:
    soaked_channel(int index, const gallery& pictures, totals& all) : m_index(index), m_pictures(pictures), m_all(all) {
        start();
    }

    void step() {
        ++m_frame;
        if ((m_frame + 5 * m_index) % k_frames_of_a_start == 0) {
            if (ORVA_FireDetection_Stop(m_handle) != FD_OK) fail("a channel does not stop");
            ++m_all.restarts;
            start();
        }
        if (m_frame % k_frames_of_a_grade == 0) set_grade((m_frame / k_frames_of_a_grade + m_index) % 101);
        const int size = (m_frame / k_frames_of_a_size + m_index) % m_pictures.sizes();
        set_frame(m_pictures.picture(size, (m_frame + m_index) % k_course < k_burning, m_frame + m_index));
    }

private:
    // Whole pictures, and now and then a half of them.
    fd_rect region() const {
        if (m_index % 4 != 3) return {0, 1, 0, 1, 1, 1, 1, 1};
        return {100, 1000, 0, 1, 800, 1000, 1, 1};
    }

    void start() {
        if (ORVA_FireDetection_Start(&m_handle, region()) != FD_OK) fail("a channel does not start");
        if (m_index % k_compared_each == 0) m_twin = std::make_unique<ref::channel>(m_log, region());
    }

    void set_grade(int grade) {
        if (ORVA_FireDetection_SetSensitiveGrade(m_handle, grade) != FD_OK) fail("a grade is refused");
        if (m_twin) m_twin->set_sensitive(grade);
    }

    void set_frame(const fd_yuv_frame& frame) {
        fd_result result;
        std::memset(&result, 0xA5, sizeof result);
        const int code = ORVA_FireDetection_SetFrame(m_handle, frame, &result);
        if (code != FD_OK) fail("a frame is refused with " + std::to_string(code));
        ++m_all.frames;
        if (result.count > 0) ++m_all.reported;
        if (m_twin) compare(frame, result);
    }

    void compare(const fd_yuv_frame& frame, const fd_result& result) {
        fd_result wanted;
        std::memset(&wanted, 0xA5, sizeof wanted);
        fd_yuv_frame copy = frame;
        if (m_twin->set_frame(copy, wanted) != FD_OK || std::memcmp(&wanted, &result, sizeof result) != 0) {
            fail("channel " + std::to_string(m_index) + " differs from its twin in frame " + std::to_string(m_frame));
        }
        (void)m_log.take_text();
        ++m_all.compared;
    }

    const int m_index;
    const gallery& m_pictures;
    totals& m_all;
    int m_handle = -1;
    int m_frame = 0;
    ref::log_book m_log;
    std::unique_ptr<ref::channel> m_twin;
};

// --- the run --------------------------------------------------------------------------------------------------------

class clock_of_run {
public:
    explicit clock_of_run(double seconds) : m_limit(seconds) {}
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count(); }
    bool is_over() const { return m_limit > 0 && seconds() >= m_limit; }

private:
    const double m_limit;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// What the process holds, once it is warm. Memory goes up and down with the sizes of pictures, as untouched pages are
// not there, and with starts; so the most of the run's first half is held against the most of its second.
class holdings {
public:
    void sample() {
        m_resident.push_back(resident_kilobytes());
        m_used.push_back(used_kilobytes());
        m_descriptors.push_back(open_descriptors());
    }
    void check() const {
        if (m_used.size() < 10) fail("the run was too short to look at its memory");
        check("resident memory", m_resident, k_resident_growth);
        check("memory in use", m_used, k_used_growth);
        const auto descriptors = std::minmax_element(m_descriptors.begin(), m_descriptors.end());
        std::printf("descriptors: %d to %d\n", *descriptors.first, *descriptors.second);
        if (*descriptors.first != *descriptors.second) fail("descriptors were not closed");
    }

private:
    static void check(const char* name, const std::vector<long>& samples, long growth) {
        const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
        const long before = *std::max_element(samples.begin(), middle);
        const long after = *std::max_element(middle, samples.end());
        std::printf("%s: at most %ld KiB in the first half, %ld in the second, %zu samples\n", name, before, after,
                    samples.size());
        if (after > before + growth) fail(std::string(name) + " grew");
    }

    std::vector<long> m_resident, m_used;
    std::vector<int> m_descriptors;
};

// One thread's share of the channels. The first looks at what the process holds, now and then.
void soak(const gallery& pictures, totals& all, holdings& held, long frames, const clock_of_run& time, int part,
          int parts) {
    std::vector<std::unique_ptr<soaked_channel>> channels;
    for (int i = part * k_channels / parts; i < (part + 1) * k_channels / parts; ++i) {
        channels.push_back(std::make_unique<soaked_channel>(i, pictures, all));
    }
    double sampled = 0;
    while (all.frames < frames && !time.is_over()) {
        for (const auto& channel : channels) channel->step();
        const bool warm = all.frames >= k_channels * k_warm_frames;
        if (part != 0 || !warm || time.seconds() < sampled + 0.25) continue;
        held.sample();
        sampled = time.seconds();
    }
}

}  // namespace

int main(int count, char** words) {
    const long frames = count > 1 ? std::atol(words[1]) : 10000000;
    const double seconds = count > 2 ? std::atof(words[2]) : 0;
    if (frames < 1) fail("usage: orva-soak FRAMES SECONDS");
    // What is freed in large blocks goes back to the system at once: the process then holds what is in use, not what
    // the heap keeps for later.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024);
    mallopt(M_ARENA_MAX, 1);
    // The library's lines go nowhere; this program's go to what was standard output.
    const int own = dup(STDOUT_FILENO);
    if (own < 0 || std::freopen("/dev/null", "w", stdout) == nullptr) fail("standard output is closed");
    if (ORVA_FireDetection_Init() != FD_OK) fail("the library does not start");
    const gallery pictures;
    totals all;
    holdings held;
    const clock_of_run time(seconds);
    const int width = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    std::vector<std::thread> threads;
    for (int i = 0; i < width; ++i) {
        threads.emplace_back([&, i] { soak(pictures, all, held, frames, time, i, width); });
    }
    for (std::thread& thread : threads) thread.join();
    const double took = time.seconds();
    std::fflush(stdout);
    dup2(own, STDOUT_FILENO);
    close(own);
    std::printf("%ld frames on %d channels in %.0f s, %ld with reports, %ld channels started anew\n", all.frames.load(),
                k_channels, took, all.reported.load(), all.restarts.load());
    std::printf("%ld frames of %d channels equal to the twin's\n", all.compared.load(), k_channels / k_compared_each);
    if (all.reported == 0 || all.compared == 0) fail("nothing was reported or compared");
    held.check();
    if (ORVA_FireDetection_UnInit() != FD_OK) fail("the library does not end");
    return 0;
}
