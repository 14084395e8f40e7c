// Runs the library and its plain twin side by side, call by call, and says where they first differ.
#ifndef ORVA_TESTS_PIPELINE_TWIN_RUNNER_H
#define ORVA_TESTS_PIPELINE_TWIN_RUNNER_H

#include <string>

#include "tests/pipeline/output_tap.h"
#include "tests/pipeline/scenes.h"
#include "tests/reference/ref_library.h"

namespace scenes {

// The library of this process beside one twin. Each call goes to both; status, result, printed text and, for frames,
// the three working images with their padding must be the same. The first difference is kept; later calls still run.
class twin_runner {
public:
    void init();
    void un_init();
    int start(fd_rect region);  // the handle, or -1
    void start_without_handle(fd_rect region);
    void stop(int handle);
    void set_grade(int handle, int grade);
    void set_frame(int handle, const fd_yuv_frame& frame);

    // Plays a scene on a channel of its own, from Init to UnInit.
    void play(const settings& scene, std::uint64_t seed);

    const std::string& difference() const { return m_difference; }
    long frames() const { return m_frames; }
    long frames_with_boxes() const { return m_frames_with_boxes; }
    ref::log_book& book() { return m_twin.book(); }
    const fd_result& last_result() const { return m_result; }

private:
    void compare(const std::string& call, int code, int twin_code);
    void compare_images(const std::string& call, int handle);
    void note(const std::string& what);

    ref::library m_twin;
    output_tap m_tap;
    std::string m_difference;
    fd_result m_result{};
    long m_frames = 0;
    long m_frames_with_boxes = 0;
};

}  // namespace scenes

#endif
