#include "tests/pipeline/twin_runner.h"

#include <algorithm>
#include <cstring>

#include "api/GlobalObject.h"
#include "tests/support/test_access.h"

namespace scenes {

namespace {

using orva_fd::test_access;

orva_fd::pre_process* stage_of(int handle) {
    orva_fd::frame_process* channel =
        test_access::detector(*orva_fd::CGlobalObject::Instance()->FireDetectionMan(), handle);
    return channel == nullptr ? nullptr : &test_access::stage(*channel);
}

// Where a working image differs from the twin's, or nothing.
std::string image_difference(const char* name, const fd_yuv_frame& image, const ref::working_image& twin) {
    const unsigned char* bytes = image.virt_addr[0];
    const std::vector<unsigned char>& expected = twin.bytes();
    if (std::memcmp(bytes, expected.data(), expected.size()) == 0) return {};
    const std::size_t at =
        static_cast<std::size_t>(std::mismatch(expected.begin(), expected.end(), bytes).first - expected.begin());
    return std::string(name) + " image, byte " + std::to_string(at) + " (row " + std::to_string(at / 352) +
           ", column " + std::to_string(at % 352) + "): " + std::to_string(bytes[at]) + ", twin " +
           std::to_string(expected[at]);
}

}  // namespace

void twin_runner::note(const std::string& what) {
    if (m_difference.empty()) m_difference = what;
}

void twin_runner::compare(const std::string& call, int code, int twin_code) {
    const std::string text = m_tap.take();
    const std::string twin_text = m_twin.take_log();
    if (code != twin_code) note(call + " returns " + std::to_string(code) + ", twin " + std::to_string(twin_code));
    if (text != twin_text) note(call + " prints\n" + text + "\ntwin\n" + twin_text);
}

void twin_runner::compare_images(const std::string& call, int handle) {
    orva_fd::pre_process* stage = stage_of(handle);
    ref::channel* twin = m_twin.channel_of(handle);
    if (stage == nullptr || twin == nullptr) return;
    ref::pre_stage& twin_stage = twin->stage();
    for (const std::string& found :
         {image_difference("mask", test_access::fg_img(*stage), twin_stage.foreground()),
          image_difference("RGB", test_access::rgb_img(*stage), twin_stage.rgb()),
          image_difference("difference", test_access::diff_img(*stage), twin_stage.difference())}) {
        if (!found.empty()) note(call + ": " + found);
    }
}

void twin_runner::init() {
    const int code = ORVA_FireDetection_Init();
    compare("Init", code, m_twin.init());
}

void twin_runner::un_init() {
    const int code = ORVA_FireDetection_UnInit();
    compare("UnInit", code, m_twin.un_init());
}

int twin_runner::start(fd_rect region) {
    int handle = -1;
    int twin_handle = -1;
    const int code = ORVA_FireDetection_Start(&handle, region);
    compare("Start", code, m_twin.start(&twin_handle, region));
    if (handle != twin_handle) note("Start gives handle " + std::to_string(handle));
    return handle;
}

void twin_runner::start_without_handle(fd_rect region) {
    const int code = ORVA_FireDetection_Start(nullptr, region);
    compare("Start without a handle", code, m_twin.start(nullptr, region));
}

void twin_runner::stop(int handle) {
    const int code = ORVA_FireDetection_Stop(handle);
    compare("Stop", code, m_twin.stop(handle));
}

void twin_runner::set_grade(int handle, int grade) {
    const int code = ORVA_FireDetection_SetSensitiveGrade(handle, grade);
    compare("SetSensitiveGrade", code, m_twin.set_sensitive_grade(handle, grade));
}

void twin_runner::set_frame(int handle, const fd_yuv_frame& frame) {
    const std::string call = "frame " + std::to_string(m_frames);
    std::memset(&m_result, 0xA5, sizeof m_result);
    fd_result twin_result = m_result;
    const int code = ORVA_FireDetection_SetFrame(handle, frame, &m_result);
    compare(call, code, m_twin.set_frame(handle, frame, &twin_result));
    if (std::memcmp(&m_result, &twin_result, sizeof m_result) != 0) note(call + ": the results differ");
    compare_images(call, handle);
    ++m_frames;
    if (code == FD_OK && m_result.count > 0) ++m_frames_with_boxes;
}

void twin_runner::play(const settings& scene, std::uint64_t seed) {
    init();
    const int handle = start(scene.region);
    player frames(scene, seed);
    while (!frames.done()) {
        const int grade = frames.grade();
        if (grade >= 0) set_grade(handle, grade);
        set_frame(handle, frames.next());
        if (!m_difference.empty()) break;
    }
    stop(handle);
    un_init();
    if (!m_difference.empty()) m_difference += "\nin scene '" + scene.name + "', seed " + std::to_string(seed);
}

}  // namespace scenes
