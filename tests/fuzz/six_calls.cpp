// Sequences of the six calls, as the fuzzer's bytes choose them, given to the library and to its plain twin: codes,
// handles, results, printed text and working images must be the same, and the host's frames stay untouched.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ORVA_FireDetection.h"
#include "api/GlobalObject.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/differences.h"
#include "tests/fuzz/painted_frame.h"
#include "tests/fuzz/printed_text.h"
#include "tests/reference/ref_library.h"
#include "tests/support/test_access.h"

namespace {

using fuzz::byte_source;
using fuzz::differ;
using fuzz::expect_equal;
using fuzz::painted_frame;
using fuzz::painting;
using orva_fd::test_access;

const long k_pixels_of_an_input = 64L * 48 * 320;  // so that no input takes longer than a fraction of a second
const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};

// What all inputs of this process came to; scripts add the lines up.
struct totals {
    long calls = 0;
    long accepted = 0;
    long reported = 0;
    ~totals() {
        std::fprintf(stderr, "six_calls: %ld calls, %ld accepted frames, %ld frames with reports\n", calls, accepted,
                     reported);
    }
};

totals all;

// Library and twin through one sequence.
class sequence {
public:
    explicit sequence(byte_source& input) : m_input(input) {}

    void play() {
        if (m_input.byte() % 8 != 0) {
            init();
            start(k_whole);
        }
        while (!m_input.empty()) step();
        if (m_initialised) un_init();
    }

private:
    void step() {
        const int choice = m_input.byte();
        switch (choice % 20) {
            case 0:
                choice < 100 ? stop(read_handle()) : init();
                break;
            case 1:
                if (choice < 40) un_init();
                break;
            case 2:
            case 3:
                start(read_region());
                break;
            case 4:
                choice == 244 ? start_all() : start_without_handle(read_region());
                break;
            case 5:
            case 6:
                set_grade(read_handle(), choice < 200 ? m_input.below(104) : m_input.word() - 32768);
                break;
            case 7:
            case 8:
            case 9:
                frames(1);
                break;
            case 10:
            case 11:
            case 12:
            case 13:
                frames(m_input.between(1, 64));
                break;
            case 14:
            case 15:
                refused_frame();
                break;
            case 16:
                sweep(4 * m_input.byte());
                break;
            default:
                again(m_input.between(1, 32));
                break;
        }
    }

    // --- the calls --------------------------------------------------------------------------------------------------

    void compare(const char* call, int code, int twin_code) {
        ++all.calls;
        expect_equal(std::string("the code of ") + call, code, twin_code);
        expect_equal(std::string("the text of ") + call, m_printed.take(), m_twin.take_log());
    }

    void init() {
        const int code = ORVA_FireDetection_Init();
        compare("Init", code, m_twin.init());
        m_initialised = true;
    }

    void un_init() {
        const int code = ORVA_FireDetection_UnInit();
        compare("UnInit", code, m_twin.un_init());
        m_initialised = false;
        m_open.clear();
    }

    void start(fd_rect region) {
        int handle = -77;
        int twin_handle = -77;
        const int code = ORVA_FireDetection_Start(&handle, region);
        compare("Start", code, m_twin.start(&twin_handle, region));
        expect_equal("the handle of Start", handle, twin_handle);
        if (code == FD_OK) m_open.push_back(handle);
    }

    void start_without_handle(fd_rect region) {
        const int code = ORVA_FireDetection_Start(nullptr, region);
        compare("Start without a handle", code, m_twin.start(nullptr, region));
    }

    // All 128 and one too many. Once an input: a channel is large.
    void start_all() {
        if (m_started_all) return;
        m_started_all = true;
        for (int i = 0; i <= FD_MAX_CHANNELS; ++i) start(k_whole);
    }

    void stop(int handle) {
        const int code = ORVA_FireDetection_Stop(handle);
        compare("Stop", code, m_twin.stop(handle));
    }

    void set_grade(int handle, int grade) {
        const int code = ORVA_FireDetection_SetSensitiveGrade(handle, grade);
        compare("SetSensitiveGrade", code, m_twin.set_sensitive_grade(handle, grade));
    }

    int set_frame(int handle, const fd_yuv_frame& frame) {
        fd_result result;
        fd_result twin_result;
        std::memset(&result, 0xA5, sizeof result);
        std::memset(&twin_result, 0xA5, sizeof twin_result);
        const int code = ORVA_FireDetection_SetFrame(handle, frame, &result);
        compare("SetFrame", code, m_twin.set_frame(handle, frame, &twin_result));
        if (std::memcmp(&result, &twin_result, sizeof result) != 0) differ("the results of SetFrame");
        if (code != FD_OK) return code;
        ++all.accepted;
        if (result.count > 0) ++all.reported;
        compare_images(handle);
        return code;
    }

    // The rows in which something may have changed.
    void compare_images(int handle) {
        orva_fd::pre_process& stage =
            test_access::stage(*test_access::detector(*orva_fd::CGlobalObject::Instance()->FireDetectionMan(), handle));
        ref::channel& twin = *m_twin.channel_of(handle);
        const std::size_t bytes = static_cast<std::size_t>(352 * twin.roi_height());
        const auto equal = [](const fd_yuv_frame& image, const ref::working_image& twin_image, std::size_t length) {
            return std::memcmp(image.virt_addr[0], twin_image.bytes().data(), length) == 0;
        };
        if (!equal(test_access::fg_img(stage), twin.stage().foreground(), bytes)) differ("the mask");
        if (!equal(test_access::diff_img(stage), twin.stage().difference(), bytes)) differ("the difference image");
        if (!equal(test_access::rgb_img(stage), twin.stage().rgb(), 3 * bytes)) differ("the RGB image");
    }

    // --- what the bytes choose --------------------------------------------------------------------------------------

    // Mostly one that is open.
    int read_handle() {
        const int choice = m_input.byte();
        const int odd_ones[] = {-1, 128, INT_MAX, INT_MIN, 127, 0, 999, 1000};
        if (choice >= 248) return odd_ones[choice - 248];
        if (choice >= 224 || m_open.empty()) return choice % 128;
        return m_open[static_cast<std::size_t>(choice) % m_open.size()];
    }

    std::uint16_t read_small(int limit) { return static_cast<std::uint16_t>(m_input.below(limit)); }
    std::uint16_t read_word() { return static_cast<std::uint16_t>(m_input.word()); }

    // Whole pictures, parts in per mille or in pixels of small pictures, and anything.
    fd_rect read_region() {
        const int kind = m_input.below(8);
        if (kind < 2) return k_whole;
        if (kind < 5) {
            const std::uint16_t x = read_small(64), y = read_small(48);
            return {x, 64, y, 48, read_small(66), 64, read_small(50), 48};
        }
        if (kind < 7) {
            const auto tenth = [&] { return static_cast<std::uint16_t>(100 * m_input.below(11)); };
            const std::uint16_t x = tenth(), y = tenth();
            return {x, 1000, y, 1000, tenth(), 1000, tenth(), 1000};
        }
        fd_rect any = {};
        for (std::uint16_t* value :
             {&any.x, &any.x_ref, &any.y, &any.y_ref, &any.width, &any.width_ref, &any.height, &any.height_ref}) {
            *value = read_word();
        }
        return any;
    }

    // Frames of one painting on one channel.
    void frames(int count) {
        m_handle = read_handle();
        m_shape = fuzz::read_shape(m_input);
        m_style = fuzz::read_painting(m_input);
        again(count);
    }

    void again(int count) {
        painted_frame picture(m_shape);
        const long pixels = static_cast<long>(m_shape.width) * m_shape.height;
        for (int i = 0; i < count && m_pixels > 0; ++i) {
            picture.paint(m_style, ++m_number);
            fd_yuv_frame frame = picture.view();
            frame.phys_addr[0] = static_cast<std::uint32_t>(m_number);  // never read without the accelerator
            frame.reserved = -m_number;
            set_frame(m_handle, frame);
            if (!picture.untouched()) differ("the host's frame");
            m_pixels -= pixels + 200;
        }
    }

    // Addresses that lead nowhere: a frame that must be refused is not looked at.
    void refused_frame() {
        fd_yuv_frame frame = {};
        frame.width = 64;
        frame.height = 48;
        frame.stride[0] = static_cast<std::uint32_t>(m_input.word());
        frame.stride[1] = static_cast<std::uint32_t>(m_input.word());
        for (unsigned char*& address : frame.virt_addr) address = reinterpret_cast<unsigned char*>(std::uintptr_t(16));
        const std::uint32_t much = static_cast<std::uint32_t>(m_input.word()) << 16 | 1u;
        switch (m_input.below(7)) {
            case 0:
                frame.format = static_cast<fd_pixel_format>(much);
                break;
            case 1:
                frame.width = 353 + much % 8;
                break;
            case 2:
                frame.height = 289 + much % 8;
                break;
            case 3:
                frame.width = 0x80000000u | much;
                break;
            case 4:
                frame.virt_addr[0] = nullptr;
                break;
            case 5:
                frame.virt_addr[1] = nullptr;
                break;
            default:
                (much & 65536u) != 0 ? frame.width = 0 : frame.height = 0;
                break;
        }
        if (set_frame(read_handle(), frame) == FD_OK) differ("a frame that must be refused was taken");
    }

    // Cheap calls on many handles.
    void sweep(int count) {
        const int first = m_input.byte();
        for (int i = 0; i < count; ++i) {
            set_grade((first + i) % 200 - 36, i * 7 % 140 - 20);
            if (i % 4 == 3) stop((first + i / 4) % 160 - 16);
        }
    }

    byte_source& m_input;
    fuzz::printed_text m_printed;
    ref::library m_twin;
    std::vector<int> m_open;  // every handle given since Init, also those stopped since
    bool m_initialised = false;
    bool m_started_all = false;
    long m_pixels = k_pixels_of_an_input;
    int m_number = 0;
    int m_handle = 0;
    fuzz::frame_shape m_shape = {64, 48, 64};
    painting m_style = {60, 4, 1, 1, 0x88, 20, 30, 0, 0, false};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    byte_source input(bytes, size);
    sequence(input).play();
    return 0;
}
