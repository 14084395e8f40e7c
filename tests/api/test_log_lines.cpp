// Every line that the library can print in a build without the accelerator, with its exact bytes: trigger and text.
//
// Not here, because no state leads to them in such a build: FireDetection_Api 95 (Stop of the manager always gives 0),
// FireDetectionManager 54 (new throws before it gives null), frame_process 32, 48, 54, 104, 114 and 122 and pre_process
// 115 to 197 (what they pass on cannot fail without the accelerator), hisi_mmz_mem 66 (there is nothing to flush), and
// the lines of the accelerator's own functions. The lines of do_sub, do_dilate and do_color_trans, which a channel
// never makes them print, are in the back end's tests.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "imgproc/morphology.h"
#include "preprocess/CYuv420_Rgb.h"
#include "tests/api/failing_new.h"
#include "tests/support/capture.h"
#include "tests/support/images.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using namespace orva_fd;
using support::grey_image;
using support::nv21_picture;
using support::output_of;

struct line_row : support::named_row {
    std::function<void()> trigger;
    std::string text;
};

class log_lines : public testing::TestWithParam<line_row> {
protected:
    static void SetUpTestSuite() {
        fd_table::init();
        pre_process::init();
        CYuv420_Rgb::init();
    }
};

TEST_P(log_lines, are_printed_byte_by_byte) {
    EXPECT_EQ(output_of(GetParam().trigger), GetParam().text);
}

const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

// --- the exported functions -----------------------------------------------------------------------------------------

// Runs something on the initialised library; what UnInit prints is nothing.
std::function<void()> initialised(std::function<void()> work) {
    return [work] {
        ORVA_FireDetection_Init();
        work();
        ORVA_FireDetection_UnInit();
    };
}

void start(fd_rect region) {
    int handle;
    ORVA_FireDetection_Start(&handle, region);
}

void start_many(int count) {
    for (int i = 0; i < count; ++i) start(k_whole);
}

void frame(int handle, unsigned width) {
    nv21_picture picture(32, 32);
    fd_yuv_frame record = picture.frame();
    record.width = width;
    fd_result result;
    ORVA_FireDetection_SetFrame(handle, record, &result);
}

INSTANTIATE_TEST_SUITE_P(
    api, log_lines,
    testing::Values(
        line_row{{"Init twice"},
                 initialised([] { ORVA_FireDetection_Init(); }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Init] 10 entered \n"},
        line_row{{"UnInit before Init"},
                 [] { ORVA_FireDetection_UnInit(); },
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_UnInit] 24 entered \n"},
        line_row{{"Start before Init"},
                 [] { start(k_whole); },
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 36 entered \n"},
        line_row{{"Start with null"},
                 initialised([] { ORVA_FireDetection_Start(nullptr, k_whole); }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 41 entered \n"},
        line_row{{"Start with reference 0"},
                 initialised([] {
                     start({0, 0, 0, 1, 1, 1, 1, 1});
                 }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 48 entered \n"},
        line_row{{"Start too wide"},
                 initialised([] {
                     start({0, 1, 0, 1, 2, 1, 1, 1});
                 }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 59 entered \n"},
        line_row{{"Start too high"},
                 initialised([] {
                     start({0, 1, 0, 1, 1, 1, 2, 1});
                 }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 64 entered \n"},
        line_row{{"Start for the 129th time"},
                 initialised([] { start_many(129); }),
                 "[Fire Detection: Handledispather: CreateHandle] 86 entered \n"
                 "[Fire Detection: FireDetectionManager: Start] 70 entered \n"
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 72 entered \n"},
        line_row{{"Stop before Init"},
                 [] { ORVA_FireDetection_Stop(0); },
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Stop] 83 entered \n"},
        line_row{{"Stop of handle 128"},
                 initialised([] { ORVA_FireDetection_Stop(128); }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Stop] 89 entered \n"},
        line_row{{"Stop of a free handle"},
                 initialised([] { ORVA_FireDetection_Stop(4); }),
                 "WARN.[Fire Detection: Mutex::Wait : 79] \n"
                 "mutex not create\n"
                 "WARN.[Fire Detection: Mutex::Release : 115] \n"
                 "mutex not create\n"
                 "[Fire Detection: Mutex: Close] 59 entered \n"
                 "[Fire Detection: FireDetectionManager: Stop] 115 entered \n"},
        line_row{{"SetFrame before Init"},
                 [] { frame(0, 32); },
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetFrame] 105 entered \n"},
        line_row{{"SetFrame for handle 128"},
                 initialised([] { frame(128, 32); }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetFrame] 111 entered \n"},
        line_row{{"SetFrame for a free handle"},
                 initialised([] { frame(0, 32); }),
                 "[Fire Detection: FireDetectionManager: FireDetectionMain] 124 entered \n"
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetFrame] 117 entered \n"},
        line_row{{"SetFrame of a frame that is too wide"},
                 initialised([] { start_many(1), frame(0, 353); }),
                 "ERR. [Fire Detection: frame_process::set_frame : 78] \n"
                 "[Fire Detection: FireDetectionManager: FireDetectionMain] 140 entered \n"
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetFrame] 117 entered \n"},
        line_row{{"SetSensitiveGrade before Init"},
                 [] { ORVA_FireDetection_SetSensitiveGrade(0, 50); },
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetSensitiveGrade] 127 entered \n"},
        line_row{{"SetSensitiveGrade for handle 128"},
                 initialised([] { ORVA_FireDetection_SetSensitiveGrade(128, 50); }),
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetSensitiveGrade] 134 entered \n"},
        line_row{{"SetSensitiveGrade for a free handle"},
                 initialised([] { ORVA_FireDetection_SetSensitiveGrade(0, 50); }),
                 "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 151 entered \n"
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetSensitiveGrade] 140 entered \n"},
        line_row{{"SetSensitiveGrade of 101"},
                 initialised([] { start_many(1), ORVA_FireDetection_SetSensitiveGrade(0, 101); }),
                 "ERR. [Fire Detection: foreground_analysis::set_sensitive : 36] \n"
                 "ERR. [Fire Detection: frame_process::set_sensitive : 67] \n"
                 "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 167 entered \n"
                 "[Fire Detection: FireDetection_Api: ORVA_FireDetection_SetSensitiveGrade] 140 entered \n"}),
    support::row_name());

// --- a buffer that cannot be had ------------------------------------------------------------------------------------

std::function<void()> start_without_buffer(int which) {
    return initialised([which] {
        failing_new::plan plan(failing_new::kind::nothrow, which, 1);
        start(k_whole);
    });
}

const std::string k_no_buffer =
    "ERR. [Fire Detection: hisi_mmz_mem::alloc_mmz : 41] \n"
    "HI_MPI_SYS_MmzAlloc failed, ret = ffffffff\n";
const std::string k_start_failed =
    "[Fire Detection: frame_process: start] 25 entered \n"
    "[Fire Detection: FireDetectionManager: Start] 61 entered \n"
    "[Fire Detection: FireDetection_Api: ORVA_FireDetection_Start] 72 entered \n";

INSTANTIATE_TEST_SUITE_P(buffers, log_lines,
                         testing::Values(line_row{{"Start without the foreground image"},
                                                  start_without_buffer(1),
                                                  k_no_buffer +
                                                      "[Fire Detection: hisi_mmz_mem: init] 53 entered \n"
                                                      "[Fire Detection: pre_process: start] 42 entered \n" +
                                                      k_start_failed},
                                         line_row{{"Start without the difference image"},
                                                  start_without_buffer(2),
                                                  k_no_buffer +
                                                      "[Fire Detection: hisi_mmz_mem: init] 53 entered \n"
                                                      "[Fire Detection: pre_process: start] 50 entered \n" +
                                                      k_start_failed},
                                         line_row{{"Start without the RGB image"},
                                                  start_without_buffer(3),
                                                  k_no_buffer +
                                                      "[Fire Detection: hisi_mmz_mem: init] 53 entered \n"
                                                      "[Fire Detection: pre_process: start] 59 entered \n" +
                                                      k_start_failed},
                                         line_row{{"Start without the labelling result"},
                                                  start_without_buffer(4),
                                                  k_no_buffer + "[Fire Detection: pre_process: start] 80 entered \n" +
                                                      k_start_failed}),
                         support::row_name());

// --- the manager ----------------------------------------------------------------------------------------------------

// Runs something on an open manager that holds one channel, which is stopped again.
std::function<void()> with_channel(std::function<void(CFireDetectionMngr&)> work) {
    return [work] {
        CFireDetectionMngr manager;
        manager.Init();
        int handle = -1;
        manager.Start(handle, k_whole);
        work(manager);
        manager.Destroy();
    };
}

void without_detector(CFireDetectionMngr& manager, const std::function<void(int&)>& work) {
    frame_process* const own = test_access::detector(manager, 0);
    test_access::detector(manager, 0) = nullptr;
    int handle = 0;
    work(handle);
    test_access::detector(manager, 0) = own;
}

INSTANTIATE_TEST_SUITE_P(
    manager, log_lines,
    testing::Values(line_row{{"Init twice"},
                             with_channel([](CFireDetectionMngr& manager) { manager.Init(); }),
                             "[Fire Detection: Mutex: Create] 37 entered \n"
                             "INFO.[Fire Detection: Handledispather::Init: 44] \n"
                             "CreateMutex failed \n"
                             "[Fire Detection: FireDetectionManager: Init] 23 entered \n"},
                    line_row{{"Start on a lock left created"},
                             [] {
                                 CFireDetectionMngr manager;
                                 manager.Init();
                                 test_access::detector_mutex(manager, 0).Create();
                                 int handle = -1;
                                 manager.Start(handle, k_whole);
                                 test_access::detector_mutex(manager, 0).Close();
                             },
                             "[Fire Detection: Mutex: Create] 37 entered \n"
                             "[Fire Detection: FireDetectionManager: Start] 84 entered \n"},
                    line_row{{"a frame without channel"},
                             with_channel([](CFireDetectionMngr& manager) {
                                 without_detector(manager, [&](int& handle) {
                                     fd_result result;
                                     manager.FireDetectionMain(handle, fd_yuv_frame(), result);
                                 });
                             }),
                             "[Fire Detection: FireDetectionManager: FireDetectionMain] 131 entered \n"},
                    line_row{{"a grade without channel"},
                             with_channel([](CFireDetectionMngr& manager) {
                                 without_detector(manager, [&](int& handle) { manager.SetSensitiveGrade(handle, 50); });
                             }),
                             "[Fire Detection: FireDetectionManager: SetSensitiveGrade] 159 entered \n"},
                    line_row{{"deleting nothing"},
                             [] { CFireDetectionMngr().delDetector(nullptr); },
                             "[Fire Detection: FireDetectionManager: delDetector] 182 entered \n"},
                    line_row{{"asking for handle 1000"},
                             [] { CHandleDispather().IsHandleBusy(1000); },
                             "[Fire Detection: Handledispather: IsHandleBusy] 109 entered \n"},
                    line_row{{"freeing handle minus 1"},
                             [] { CHandleDispather().DestroyHandle(-1); },
                             "[Fire Detection: Handledispather: DestroyHandle] 97 entered \n"},
                    line_row{{"locking a null mutex"},
                             [] { CAutoMutex lock(nullptr); },
                             "[Fire Detection: Mutex: CAutoMutex] 148 entered \n"}),
    support::row_name());

// --- the channel ----------------------------------------------------------------------------------------------------

// A box of 10 x 10 at (20, 20) of a picture of 50 x 50.
const con_info k_box = {100, 20, 29, 20, 29};

void verify(int bright_pixels, int set_pixels, unsigned char inside, unsigned char around) {
    grey_image luma(50, 50, 50, 0, around), mask(50, 50);
    luma.fill_rect(20, 20, 10, 10, 0);
    for (int i = 0; i < bright_pixels; ++i) luma.at(20 + i % 10, 20 + i / 10) = inside;
    for (int i = 0; i < set_pixels; ++i) mask.at(20 + i % 10, 20 + i / 10) = 255;
    fd_yuv_frame roi = luma.frame(), fg = mask.frame();
    con_info box = k_box;
    foreground_analysis().verify_fire(&roi, &fg, nullptr, &box);
}

void steady_component() {
    foreground_analysis analysis;
    test_access::history(analysis).assign(50, {k_box});
    std::vector<con_info> candidates = {k_box};
    fd_result result;
    analysis.get_stable_rects(candidates, result);
}

INSTANTIATE_TEST_SUITE_P(
    channel, log_lines,
    testing::Values(line_row{{"too few bright pixels"},
                             [] { verify(11, 37, 255, 0); },
                             "ratio1 = 0.11, fire_area = 37, ratio = 0.37 ==========\n"},
                    line_row{{"too few set pixels"},
                             [] { verify(100, 19, 255, 0); },
                             "ratio1 = 1.00, fire_area = 19, ratio = 0.19 ==========\n"},
                    line_row{{"not brighter than around"},
                             [] { verify(100, 100, 209, 200); },
                             " avg_center = 209, avg_arround = 200, ratio = 1.04\n"},
                    line_row{{"a component that does not flicker"}, steady_component, "0.00  -----------------\n"},
                    line_row{{"no region"},
                             [] {
                                 std::vector<con_info> components;
                                 fd_result result;
                                 foreground_analysis().set_frame(nullptr, nullptr, nullptr, components, result);
                             },
                             "ERR. [Fire Detection: foreground_analysis::set_frame : 49] \n"},
                    line_row{{"no frame"},
                             [] {
                                 std::vector<con_info> components;
                                 pre_process().set_frame(nullptr, components);
                             },
                             "ERR. [Fire Detection: pre_process::set_frame : 105] \n"}),
    support::row_name());

// --- operations -----------------------------------------------------------------------------------------------------

void on_two_images(int second_width, const std::function<void(fd_yuv_frame*, fd_yuv_frame*)>& work) {
    grey_image a(8, 8), b(8, 8);
    fd_yuv_frame first = a.frame(), second = b.frame();
    second.width = static_cast<unsigned>(second_width);
    work(&first, &second);
}

INSTANTIATE_TEST_SUITE_P(
    operations, log_lines,
    testing::Values(
        line_row{{"an odd size for the accelerator"},
                 [] { hisi_ive_func().check_ive_support(0, 16, 7, 8, ive_type_sub); },
                 "[Fire Detection: hisi_ive_func: check_ive_support] 33 entered \n"},
        line_row{{"an unaligned address for the accelerator"},
                 [] { hisi_ive_func().check_ive_support(8, 16, 8, 8, ive_type_sub); },
                 "[Fire Detection: hisi_ive_func: check_ive_support] 39 entered \n"},
        line_row{{"do_dma of two sizes"},
                 [] { on_two_images(7, [](fd_yuv_frame* a, fd_yuv_frame* b) { hisi_ive_func().do_dma(a, b, true); }); },
                 "ERR. [Fire Detection: hisi_ive_func::do_dma : 162] \n"},
        line_row{{"do_thres of two sizes"},
                 [] {
                     on_two_images(7,
                                   [](fd_yuv_frame* a, fd_yuv_frame* b) { hisi_ive_func().do_thres(a, b, 20, true); });
                 },
                 "ERR. [Fire Detection: hisi_ive_func::do_thres : 313] \n"},
        line_row{{"do_color_trans to hsv"},
                 [] {
                     on_two_images(8, [](fd_yuv_frame* a, fd_yuv_frame* b) {
                         hisi_ive_func().do_color_trans(a, b, color_trans_hsv, true);
                     });
                 },
                 "[Fire Detection: hisi_ive_func: do_color_trans] 414 entered \n"},
        line_row{{"sub of two sizes"},
                 [] { on_two_images(7, [](fd_yuv_frame* a, fd_yuv_frame* b) { sub(a, b, a); }); },
                 "[Fire Detection: common: sub] 169 entered \n"},
        line_row{{"threshold_binary of nothing"},
                 [] {
                     on_two_images(8, [](fd_yuv_frame* a, fd_yuv_frame* b) {
                         a->virt_addr[0] = nullptr;
                         threshold_binary(a, b, 20);
                     });
                 },
                 "[Fire Detection: common: threshold_binary] 198 entered \n"},
        line_row{{"an unknown structuring element"},
                 [] {
                     unsigned mask[3];
                     morphology().get_mask(9, mask);
                 },
                 "ERR. [Fire Detection: morphology::get_mask : 113] \n"
                 "unknown morph template, 9"}),
    support::row_name());

}  // namespace
