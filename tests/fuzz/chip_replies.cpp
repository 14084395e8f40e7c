// A channel on the stand-in chip, whose replies the fuzzer's bytes choose: codes, time-outs, lost jobs, memory that is
// not there, labelling results that no picture gives. As long as the replies are those of a chip in order, and after it
// is in order again, the channel does what its twin does; in between every frame gives 0 or 4, nothing is read that is
// not the channel's or the host's, and nothing is left behind.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "channel/frame_process.h"
#include "preprocess/CYuv420_Rgb.h"
#include "tests/fakes/chip_camera.h"
#include "tests/fakes/twin_channel.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/differences.h"
#include "tests/fuzz/printed_text.h"
#include "tests/support/test_access.h"

namespace {

using fakes::chip_camera;
using fuzz::byte_source;
using fuzz::differ;
using fuzz::expect_equal;
using orva_fd::test_access;
using standin::call;

const long k_pixels_of_an_input = 96L * 80 * 80;  // so that no input takes longer than a fraction of a second
const fd_rect k_whole = {0, 1, 0, 1, 1, 1, 1, 1};
const unsigned char k_unwritten = 0xA5;

// What all inputs of this process came to; scripts add the lines up.
struct totals {
    long frames = 0;
    long compared = 0;
    long refused = 0;
    long reported = 0;
    ~totals() {
        std::fprintf(stderr,
                     "chip_replies: %ld frames, %ld frames compared with the twin, %ld frames refused, %ld frames with "
                     "reports\n",
                     frames, compared, refused, reported);
    }
};

totals all;

// A started channel and, while the chip is in order, its twin.
class channel_beside_twin {
public:
    explicit channel_beside_twin(fuzz::printed_text& printed) : m_printed(printed) {
        m_started = m_channel.start(k_whole) == FD_OK;
        m_printed.take();
        if (!m_started) return;
        const std::size_t phase = test_access::diff_mem(test_access::stage(m_channel)).phys_addr() % 32;
        m_twin = std::make_unique<twin::accelerated_channel>(m_log, k_whole, phase);
    }
    ~channel_beside_twin() {
        if (m_started) m_channel.stop();
        m_printed.take();
    }
    channel_beside_twin(const channel_beside_twin&) = delete;
    channel_beside_twin& operator=(const channel_beside_twin&) = delete;

    bool started() const { return m_started; }

    // From now on results are the chip's, not the twin's.
    void leave_twin() { m_twin.reset(); }

    void set_grade(int grade) {
        m_channel.set_sensitive(grade);
        if (m_twin) m_twin->set_sensitive(grade);
        expect_equal("the text of a grade", m_printed.take(), m_log.take_text());
    }

    void set_frame(const fd_yuv_frame& frame) {
        fd_result result;
        std::memset(&result, k_unwritten, sizeof result);
        fd_yuv_frame copy = frame;
        const int code = m_channel.set_frame(copy, result);
        const std::string text = m_printed.take();
        ++all.frames;
        if (code != FD_OK && code != FD_PLATFORM_FAILED) differ("the code " + std::to_string(code));
        if (code == FD_OK && result.count > FD_RESULT_MAX_RECTS) differ("more boxes than a result holds");
        if (code != FD_OK && !is_unwritten(result)) differ("the result of a frame that failed");
        all.refused += code != FD_OK;
        all.reported += code == FD_OK && result.count > 0;
        if (m_twin) compare(frame, code, result, text);
    }

private:
    static bool is_unwritten(const fd_result& result) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&result);
        return std::all_of(bytes, bytes + sizeof result, [](unsigned char byte) { return byte == k_unwritten; });
    }

    void compare(const fd_yuv_frame& frame, int code, const fd_result& result, const std::string& text) {
        fd_result wanted;
        std::memset(&wanted, k_unwritten, sizeof wanted);
        expect_equal("the code of a frame", code, m_twin->set_frame(frame, wanted));
        expect_equal("the text of a frame", text, m_log.take_text());
        if (std::memcmp(&result, &wanted, sizeof result) != 0) differ("the results of a frame");
        orva_fd::pre_process& stage = test_access::stage(m_channel);
        expect_image("the mask", test_access::fg_mem(stage), m_twin->stage().foreground());
        expect_image("the difference image", test_access::diff_mem(stage), m_twin->stage().difference());
        expect_image("the RGB image", test_access::rgb_mem(stage), m_twin->stage().rgb());
        ++all.compared;
    }

    static void expect_image(const char* name, const orva_fd::hisi_mmz_mem& memory, const twin::cached_memory& wanted) {
        const std::vector<unsigned char>& bytes = wanted.processor_bytes();
        if (std::memcmp(memory.virt_addr(), bytes.data(), bytes.size()) != 0) differ(name);
    }

    fuzz::printed_text& m_printed;
    orva_fd::frame_process m_channel;
    ref::log_book m_log;
    std::unique_ptr<twin::accelerated_channel> m_twin;
    bool m_started = false;
};

class sequence {
public:
    explicit sequence(byte_source& input) : m_input(input) {
        change_view();
        mend();
    }
    ~sequence() {
        m_channel.reset();
        if (standin::live_buffers() != 0) differ("the number of buffers that are held: some were not released");
    }
    sequence(const sequence&) = delete;
    sequence& operator=(const sequence&) = delete;

    void play() {
        while (!m_input.empty() && m_pixels > 0) step();
        mend();
        if (!m_channel->started()) differ("a start on a chip in order");
        m_pixels += m_width * m_height * 4;
        frames(3);
    }

private:
    void step() {
        switch (m_input.below(16)) {
            case 0:
                change_view();
                break;
            case 1:
                if (m_channel->started()) m_channel->set_grade(m_input.below(101));
                break;
            case 2:
                standin::time_out_queries(m_input.between(1, 8));
                break;
            case 3:
                standin::time_out_engine(m_input.between(1, 4));
                leave_order();  // the threshold before the job is lost with it
                break;
            case 4:
                standin::set_label_status(static_cast<HI_S8>(m_input.byte()));
                break;
            case 5:
                answer_a_query();
                break;
            case 6:
                answer_a_job();
                break;
            case 7:
                standin::fail_any(m_input.between(1, 60), m_input.one_in(8));
                leave_order();
                break;
            case 8:
                standin::spoil_labels(labels_near_the_picture());
                leave_order();
                break;
            case 9:
                standin::spoil_labels(any_labels());
                leave_order();
                break;
            case 10:
                m_input.one_in(2) ? mend() : start();
                break;
            default:
                frames(m_input.between(1, 60));
                break;
        }
    }

    // --- the channel ------------------------------------------------------------------------------------------------

    // What the chip was told stays: the start may meet it.
    void start() {
        m_channel.reset();
        m_channel = std::make_unique<channel_beside_twin>(m_printed);
        if (!m_in_order) m_channel->leave_twin();
    }

    // The chip is in order again: a channel that starts now does what its twin does.
    void mend() {
        standin::reset();
        standin::keep_records(false);
        m_in_order = true;
        start();
    }

    void leave_order() {
        m_in_order = false;
        m_channel->leave_twin();
    }

    // Sizes, strides and addresses of which some qualify for everything, some for nothing, some in part.
    void change_view() {
        static const int sizes[][2] = {{96, 80}, {96, 80}, {64, 64}, {95, 80}, {96, 79}, {62, 60}, {31, 40}, {128, 96}};
        const int choice = m_input.byte();
        m_width = sizes[choice % 8][0];
        m_height = sizes[choice % 8][1];
        const int aligned = (m_width + 15) / 16 * 16;
        m_view = std::make_unique<chip_camera>(m_width, m_height, choice / 8 % 4 == 3 ? aligned + 6 : 0,
                                               choice / 32 % 4 == 3 ? 4 : 0, static_cast<std::uint32_t>(choice));
        m_view->noisy = choice < 128;
    }

    void frames(int count) {
        if (!m_channel->started()) return;
        for (int i = 0; i < count && m_pixels > 0; ++i) {
            m_channel->set_frame(m_view->next());
            m_pixels -= m_width * m_height + 500;
        }
    }

    // --- the chip's replies -----------------------------------------------------------------------------------------

    HI_S32 read_code() {
        static const HI_S32 codes[] = {HI_ERR_IVE_ILLEGAL_PARAM, HI_ERR_IVE_NULL_PTR, HI_ERR_IVE_NOTREADY,
                                       HI_ERR_IVE_BUF_FULL,      HI_ERR_IVE_NOMEM,    HI_ERR_IVE_SYS_TIMEOUT,
                                       HI_ERR_IVE_QUERY_TIMEOUT, HI_FAILURE};
        const int choice = m_input.byte();
        if (choice < 224) return codes[choice % 8];
        return static_cast<HI_S32>(static_cast<HI_U32>(m_input.word()) << 16 | static_cast<HI_U32>(m_input.word()));
    }

    // A wait that says that the job is done is believed, whatever its code is. A wait that says 0 is believed too,
    // though the job did not run.
    void answer_a_query() {
        const bool finished = m_input.one_in(2);
        const HI_S32 code = read_code();
        standin::answer(call::query, m_input.between(1, 16), code, finished);
        if (!finished && code != HI_ERR_IVE_QUERY_TIMEOUT) leave_order();
    }

    void answer_a_job() {
        static const call functions[] = {call::sub, call::dma,          call::dilate,       call::thresh, call::csc,
                                         call::ccl, call::alloc_cached, call::alloc_cached, call::free,   call::flush};
        const call function = functions[m_input.below(10)];
        const HI_S32 code = read_code();
        standin::answer(function, m_input.between(1, 16), code == HI_SUCCESS ? HI_FAILURE : code);
        leave_order();
    }

    std::vector<HI_U8> bytes_of(const IVE_CCBLOB_S& blob) {
        const auto* first = reinterpret_cast<const HI_U8*>(&blob);
        return {first, first + sizeof blob};
    }

    // Regions whose edges lie in the picture, at its edges, or a little beside it.
    std::vector<HI_U8> labels_near_the_picture() {
        IVE_CCBLOB_S blob = {};
        blob.u8RegionNum = static_cast<HI_U8>(m_input.byte());
        const int slots = m_input.between(1, 12);
        for (int i = 0; i < slots; ++i) {
            IVE_REGION_S& region = blob.astRegion[m_input.byte() % IVE_MAX_REGION_NUM];
            region.u16Left = near(m_width);
            region.u16Right = near(m_width);
            region.u16Top = near(m_height);
            region.u16Bottom = near(m_height);
            region.u32Area = static_cast<HI_U32>(m_input.byte() * m_input.byte());
        }
        return bytes_of(blob);
    }

    HI_U16 near(int limit) {
        const int choice = m_input.byte();
        return static_cast<HI_U16>(choice < 240 ? choice * (limit - 1) / 239 : limit - 8 + choice - 240);
    }

    std::vector<HI_U8> any_labels() {
        IVE_CCBLOB_S blob = {};
        blob.u16CurAreaThr = static_cast<HI_U16>(m_input.word());
        blob.s8LabelStatus = static_cast<HI_S8>(m_input.byte());
        blob.u8RegionNum = static_cast<HI_U8>(m_input.byte());
        const int slots = m_input.between(1, 8);
        for (int i = 0; i < slots; ++i) {
            IVE_REGION_S& region = blob.astRegion[m_input.byte() % IVE_MAX_REGION_NUM];
            for (HI_U16* value : {&region.u16Left, &region.u16Right, &region.u16Top, &region.u16Bottom}) {
                *value = static_cast<HI_U16>(m_input.word());
            }
            region.u32Area = static_cast<HI_U32>(m_input.word()) << 16 | static_cast<HI_U32>(m_input.word());
        }
        return bytes_of(blob);
    }

    byte_source& m_input;
    fuzz::printed_text m_printed;
    long m_pixels = k_pixels_of_an_input;
    bool m_in_order = true;
    int m_width = 0;
    int m_height = 0;
    std::unique_ptr<chip_camera> m_view;
    std::unique_ptr<channel_beside_twin> m_channel;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool prepared = [] {
        orva_fd::fd_table::init();
        orva_fd::CYuv420_Rgb::init();
        orva_fd::pre_process::init();
        return true;
    }();
    (void)prepared;
    byte_source input(bytes, size);
    sequence(input).play();
    return 0;
}
