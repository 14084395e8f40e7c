// The GStreamer element between two pads, with caps, buffers, events and settings of the fuzzer's choice. Each buffer's
// memory is a heap block of exactly its bytes. Every picture is passed on with boxes that lie in it, and unchanged
// unless boxes are drawn; or the element says why not, in a message.
#include <gst/gst.h>
#include <gst/video/video.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "gst/element.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/differences.h"
#include "tests/fuzz/printed_text.h"

namespace {

using fuzz::byte_source;
using fuzz::differ;

const long k_bytes_of_an_input = 4L << 20;  // of pictures, so that no input takes longer than a fraction of a second

// Pads that take whatever comes.
GstStaticPadTemplate k_before = GST_STATIC_PAD_TEMPLATE("before", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
GstStaticPadTemplate k_behind = GST_STATIC_PAD_TEMPLATE("behind", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);

// What all inputs of this process came to; scripts add the lines up.
struct totals {
    long pictures = 0;
    long passed = 0;
    long with_boxes = 0;
    long errors = 0;
    ~totals() {
        std::fprintf(stderr, "gst_element: %ld pictures, %ld passed on, %ld with boxes, %ld errors told\n", pictures,
                     passed, with_boxes, errors);
    }
};

totals all;

void require(bool holds, const char* what) {
    if (!holds) differ(what);
}

void start_gstreamer() {
    g_setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", TRUE);
    g_setenv("GST_PLUGIN_PATH_1_0", "", TRUE);
    g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
    // What the framework itself thinks of impossible requests is not of interest here.
    g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
    gst_init(nullptr, nullptr);
    gst_debug_set_active(FALSE);
    require(orva_gst::register_element(nullptr), "the element cannot be registered");
}

// The element, with a pad before and one behind it.
class bench {
public:
    explicit bench(byte_source& input) : m_input(input) {
        m_element = gst_element_factory_make("orvafire", nullptr);
        gst_object_ref_sink(m_element);
        m_bus = gst_bus_new();
        gst_element_set_bus(m_element, m_bus);
        m_before = gst_pad_new_from_static_template(&k_before, "before");
        m_behind = gst_pad_new_from_static_template(&k_behind, "behind");
        gst_pad_set_chain_function(m_behind, take);
        link(m_before, "sink", true);
        link(m_behind, "src", false);
        // Reports at once.
        g_object_set(m_element, "confirm", 0.0, "cooldown", 0.0, nullptr);
        start();
    }
    ~bench() {
        gst_element_set_state(m_element, GST_STATE_NULL);
        if (m_zones >= 0) close(m_zones);
        gst_pad_set_active(m_before, FALSE);
        gst_pad_set_active(m_behind, FALSE);
        gst_element_set_bus(m_element, nullptr);
        gst_object_unref(m_bus);
        gst_object_unref(m_element);
        gst_object_unref(m_before);
        gst_object_unref(m_behind);
    }
    bench(const bench&) = delete;
    bench& operator=(const bench&) = delete;

    void play() {
        set_caps();
        while (!m_input.empty() && m_bytes > 0) step();
        m_printed.take();
    }

private:
    void link(GstPad* pad, const char* name, bool forth) {
        GstPad* own = gst_element_get_static_pad(m_element, name);
        gst_pad_set_active(pad, TRUE);
        const GstPadLinkReturn linked = forth ? gst_pad_link(pad, own) : gst_pad_link(own, pad);
        require(linked == GST_PAD_LINK_OK, "pads that cannot be linked");
        gst_object_unref(own);
    }

    void step() {
        switch (m_input.below(16)) {
            case 0:
            case 1:
                set_caps();
                break;
            case 2:
                set_odd_caps();
                break;
            case 3:
                set_number();
                break;
            case 4:
                set_text();
                break;
            case 5:
                set_zones();
                break;
            case 6:
                send_event();
                break;
            case 7:
                gst_element_set_state(m_element, GST_STATE_READY);
                start();
                break;
            case 8:
                odd_picture();
                break;
            case 9:
                picture_with_own_layout();
                break;
            default:
                for (int i = m_input.between(1, 64); i > 0 && m_bytes > 0; --i) push(picture());
                break;
        }
    }

    // --- the element ------------------------------------------------------------------------------------------------

    // Whether it starts depends on its settings.
    void start() {
        gst_pad_set_active(m_before, FALSE);
        gst_pad_set_active(m_behind, FALSE);
        gst_pad_set_active(m_behind, TRUE);
        gst_pad_set_active(m_before, TRUE);
        const bool started = gst_element_set_state(m_element, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
        if (!started) require(errors_told() > 0, "a start that fails without a word");
        gst_pad_push_event(m_before, gst_event_new_stream_start("camera"));
        send_caps();
        send_segment();
    }

    int errors_told() {
        int errors = 0;
        while (GstMessage* message = gst_bus_pop(m_bus)) {
            errors += GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR;
            gst_message_unref(message);
        }
        all.errors += errors;
        return errors;
    }

    void send_caps() {
        if (m_caps) gst_pad_push_event(m_before, gst_event_new_caps(m_caps.get()));
    }

    void send_segment() {
        GstSegment segment;
        gst_segment_init(&segment, m_input.one_in(8) ? GST_FORMAT_BYTES : GST_FORMAT_TIME);
        if (m_input.one_in(4)) segment.start = segment.time = static_cast<guint64>(m_input.word()) * GST_MSECOND;
        if (m_input.one_in(8)) segment.rate = -1.0;
        gst_pad_push_event(m_before, gst_event_new_segment(&segment));
    }

    void send_event() {
        switch (m_input.below(5)) {
            case 0:
                gst_pad_push_event(m_before, gst_event_new_flush_start());
                gst_pad_push_event(m_before, gst_event_new_flush_stop(TRUE));
                send_segment();
                break;
            case 1:
                gst_pad_push_event(m_before, gst_event_new_eos());
                gst_pad_push_event(m_before, gst_event_new_stream_start("next"));
                send_caps();
                send_segment();
                break;
            case 2:
                gst_pad_push_event(m_before, gst_event_new_gap(m_time, GST_SECOND));
                break;
            case 3:
                send_segment();
                break;
            default:
                gst_pad_push_event(m_before, gst_event_new_stream_start("another"));
                break;
        }
    }

    // --- settings ---------------------------------------------------------------------------------------------------

    void set_number() {
        switch (m_input.below(6)) {
            case 0:
                g_object_set(m_element, "grade", m_input.below(102) - 1, nullptr);
                break;
            case 1:
                g_object_set(m_element, "confirm", m_input.byte() / 16.0, nullptr);
                break;
            case 2:
                g_object_set(m_element, "cooldown", m_input.byte() / 16.0, nullptr);
                break;
            case 3:
                g_object_set(m_element, "max-age", m_input.byte() / 4.0, nullptr);
                break;
            case 4:
                g_object_set(m_element, "interval", m_input.byte() / 64.0, nullptr);
                break;
            default:
                m_draw = m_input.one_in(2);
                g_object_set(m_element, "draw", m_draw, nullptr);
                break;
        }
    }

    void set_text() {
        static const char* const texts[] = {"1x1", "2x2", "auto", "16x16", "3x1", "", "0x1", "17x1", "1x1x1"};
        g_object_set(m_element, "tiles", texts[m_input.below(9)], nullptr);
    }

    // A file under a name that stays while the element may read it.
    void set_zones() {
        static const char* const starts[] = {"{\"zones\":[", ""};
        const int rectangles = m_input.below(3);
        std::string text = starts[m_input.one_in(8)];
        for (int i = 0; i < rectangles; ++i) {
            char zone[200];
            std::snprintf(
                zone, sizeof zone,
                "%s{\"name\":\"%c\",\"rectangles\":[{\"x\":%d,\"y\":\"%d%%\",\"width\":\"%d%%\",\"height\":%d}]}",
                i > 0 ? "," : "", 'a' + m_input.below(8), m_input.byte(), m_input.below(101), m_input.below(102),
                m_input.byte());
            text += zone;
        }
        text += "]}";
        const int file = memfd_create("zones", MFD_CLOEXEC);
        if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
        if (m_zones >= 0) close(m_zones);
        m_zones = file;
        const std::string path = "/proc/self/fd/" + std::to_string(m_input.one_in(16) ? 9999 : file);
        g_object_set(m_element, "zones", m_input.one_in(4) ? nullptr : path.c_str(), nullptr);
    }

    // --- caps -------------------------------------------------------------------------------------------------------

    int read_length() {
        const int choice = m_input.byte();
        if (choice < 32) return 16 + choice;
        return choice < 250 ? 2 * (choice - 16) : 1 + m_input.below(16);
    }

    void set_caps() {
        static const char* const formats[] = {"NV21", "NV12", "I420", "YUY2", "BGRx"};
        static const char* const colours[] = {"bt709", "bt601",   "smpte240m", "bt2020",
                                              "sRGB",  "1:4:0:0", "2:0:0:0",   "rubbish"};
        const char* format = formats[m_input.below(5)];
        const int width = read_length();
        const int height = read_length();
        m_caps.reset(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, format, "width", G_TYPE_INT, width,
                                         "height", G_TYPE_INT, height, "framerate", GST_TYPE_FRACTION,
                                         m_input.below(61), m_input.between(1, 4), nullptr));
        if (m_input.one_in(2)) {
            gst_caps_set_simple(m_caps.get(), "colorimetry", G_TYPE_STRING, colours[m_input.below(8)], nullptr);
        }
        m_known = gst_video_info_from_caps(&m_info, m_caps.get());
        send_caps();
    }

    // Of any type and size, or text of the fuzzer's own.
    void set_odd_caps() {
        char text[200];
        if (m_input.one_in(2)) {
            std::snprintf(text, sizeof text, "video/x-raw, format=%s, width=%d, height=%d, framerate=%d/%d",
                          m_input.one_in(2) ? "BGRx" : "NV12", m_input.word() << m_input.below(16),
                          m_input.word() << m_input.below(16), m_input.word(), m_input.byte());
        } else {
            std::size_t length = 0;
            while (length + 1 < sizeof text && !m_input.empty()) {
                text[length] = static_cast<char>(m_input.byte());
                if (text[length++] == '\n') break;
            }
            text[length] = '\0';
        }
        GstCaps* caps = gst_caps_from_string(text);
        if (!caps) return;
        // Pictures go on as they were.
        if (gst_caps_is_fixed(caps)) gst_pad_push_event(m_before, gst_event_new_caps(caps));
        gst_caps_unref(caps);
    }

    // --- pictures ---------------------------------------------------------------------------------------------------

    // In a block of exactly so many bytes.
    GstBuffer* buffer_of(std::size_t bytes) {
        m_bytes -= static_cast<long>(bytes) + 4096;
        void* block = std::malloc(bytes);
        GstBuffer* buffer = gst_buffer_new();
        if (bytes > 0) {
            paint(static_cast<unsigned char*>(block), bytes);
            gst_buffer_append_memory(buffer, gst_memory_new_wrapped(m_input.one_in(16) ? GST_MEMORY_FLAG_READONLY
                                                                                       : static_cast<GstMemoryFlags>(0),
                                                                    block, bytes, 0, bytes, block, std::free));
        } else {
            std::free(block);
        }
        read_time(buffer);
        return buffer;
    }

    // A small flame in odd pictures and a large one in even ones, in front of grey.
    void paint(unsigned char* bytes, std::size_t count) {
        ++m_number;
        std::memset(bytes, m_known && GST_VIDEO_INFO_N_PLANES(&m_info) == 1 ? 60 : 128, count);
        if (!m_known) return;
        const int width = GST_VIDEO_INFO_WIDTH(&m_info), height = GST_VIDEO_INFO_HEIGHT(&m_info);
        const int half = m_number % 2 == 1 ? 12 : 20;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool burns = std::abs(x - width / 2) < half && std::abs(y - height / 2) < half;
                paint_pixel(bytes, count, x, y, burns ? 210 + m_number % 2 * 20 + (x * 7 + y * 5) % 20 : 40, burns);
            }
        }
    }

    void paint_pixel(unsigned char* bytes, std::size_t count, int x, int y, int luma, bool burns) {
        const auto put = [&](guint plane, int row, int column, int value) {
            const std::size_t at = GST_VIDEO_INFO_PLANE_OFFSET(&m_info, plane) +
                                   static_cast<std::size_t>(row * GST_VIDEO_INFO_PLANE_STRIDE(&m_info, plane) + column);
            if (at < count) bytes[at] = static_cast<unsigned char>(value);
        };
        const int u = burns ? 100 : 128, v = burns ? 160 : 128;
        const GstVideoFormat format = GST_VIDEO_INFO_FORMAT(&m_info);
        if (format == GST_VIDEO_FORMAT_BGRx) {
            put(0, y, 4 * x, burns ? luma - 80 : 40);
            put(0, y, 4 * x + 1, burns ? luma - 40 : 40);
            put(0, y, 4 * x + 2, burns ? std::min(luma + 20, 255) : 40);
        } else if (format == GST_VIDEO_FORMAT_YUY2) {
            put(0, y, 2 * x, luma);
            put(0, y, 2 * x + 1, x % 2 == 0 ? u : v);
        } else {
            put(0, y, x, luma);
            const bool planar = format == GST_VIDEO_FORMAT_I420, v_first = format == GST_VIDEO_FORMAT_NV21;
            put(1, y / 2, planar ? x / 2 : x / 2 * 2, v_first ? v : u);
            put(planar ? 2 : 1, y / 2, planar ? x / 2 : x / 2 * 2 + 1, v_first ? u : v);
        }
    }

    void read_time(GstBuffer* buffer) {
        const int choice = m_input.below(32);
        m_time += GST_SECOND / 25;
        if (choice == 1) m_time += static_cast<guint64>(m_input.word()) * GST_MSECOND;
        if (choice == 2) m_time = static_cast<guint64>(m_input.word()) * GST_MSECOND;
        if (choice == 3) m_time = static_cast<guint64>(m_input.word()) << 48;
        GST_BUFFER_PTS(buffer) = choice == 4 ? GST_CLOCK_TIME_NONE : m_time;
        if (choice == 5) GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_GAP);
        if (choice == 6) GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
    }

    GstBuffer* picture() { return buffer_of(m_known ? m_info.size : 100); }

    // Of another size than the caps say.
    void odd_picture() {
        const std::size_t size = m_known ? m_info.size : 100;
        switch (m_input.below(4)) {
            case 0:
                push(buffer_of(0));
                break;
            case 1:
                push(buffer_of(size - std::min<std::size_t>(size, static_cast<std::size_t>(m_input.word()))));
                break;
            case 2:
                push(buffer_of(size + static_cast<std::size_t>(m_input.word())));
                break;
            default: {
                GstBuffer* first = buffer_of(size / 2);
                push(gst_buffer_append(first, buffer_of(size - size / 2)));
                break;
            }
        }
    }

    // With a layout of its own, which may not fit its memory, the caps or itself.
    void picture_with_own_layout() {
        if (!m_known) return;
        GstBuffer* buffer = buffer_of(m_info.size + static_cast<std::size_t>(m_input.one_in(2) ? m_input.word() : 0));
        gsize offsets[GST_VIDEO_MAX_PLANES] = {};
        gint strides[GST_VIDEO_MAX_PLANES] = {};
        const guint planes = GST_VIDEO_INFO_N_PLANES(&m_info);
        for (guint plane = 0; plane < planes; ++plane) {
            offsets[plane] = GST_VIDEO_INFO_PLANE_OFFSET(&m_info, plane);
            strides[plane] = GST_VIDEO_INFO_PLANE_STRIDE(&m_info, plane);
            if (m_input.one_in(4)) offsets[plane] = static_cast<gsize>(m_input.word());
            if (m_input.one_in(4)) strides[plane] = m_input.word() - 1024;
        }
        GstVideoFormat format = GST_VIDEO_INFO_FORMAT(&m_info);
        if (m_input.one_in(8)) format = GST_VIDEO_FORMAT_I420;
        guint width = static_cast<guint>(GST_VIDEO_INFO_WIDTH(&m_info));
        guint height = static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&m_info));
        if (m_input.one_in(4)) width = static_cast<guint>(m_input.word());
        if (m_input.one_in(4)) height = static_cast<guint>(m_input.word());
        gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, format, width, height, planes, offsets,
                                       strides);
        push(buffer);
    }

    void push(GstBuffer* buffer) {
        ++all.pictures;
        gst_buffer_ref(buffer);
        std::vector<unsigned char> before = bytes_of(buffer);
        const GstFlowReturn flow = gst_pad_push(m_before, buffer);
        const int errors = errors_told();
        if (flow == GST_FLOW_ERROR) require(errors > 0, "an element that fails without a word");
        if (!m_draw) require(before == bytes_of(buffer), "a picture that was changed");
        gst_buffer_unref(buffer);
    }

    static std::vector<unsigned char> bytes_of(GstBuffer* buffer) {
        std::vector<unsigned char> bytes(gst_buffer_get_size(buffer));
        gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
        return bytes;
    }

    // Behind the element.
    static GstFlowReturn take(GstPad* pad, GstObject*, GstBuffer* buffer) {
        ++all.passed;
        gpointer state = nullptr;
        bool any = false;
        while (GstMeta* found =
                   gst_buffer_iterate_meta_filtered(buffer, &state, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE)) {
            const auto* where = reinterpret_cast<GstVideoRegionOfInterestMeta*>(found);
            GstCaps* caps = gst_pad_get_current_caps(pad);
            GstVideoInfo info;
            require(caps && gst_video_info_from_caps(&info, caps), "a box on a picture without caps");
            gst_caps_unref(caps);
            require(where->w > 0 && where->h > 0 && where->x + where->w <= static_cast<guint>(info.width) &&
                        where->y + where->h <= static_cast<guint>(info.height),
                    "a box that is not in the picture");
            any = true;
        }
        all.with_boxes += any;
        gst_buffer_unref(buffer);
        return GST_FLOW_OK;
    }

    struct caps_unref {
        void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    };

    byte_source& m_input;
    fuzz::printed_text m_printed;  // the library's lines
    GstElement* m_element = nullptr;
    GstBus* m_bus = nullptr;
    GstPad* m_before = nullptr;
    GstPad* m_behind = nullptr;
    std::unique_ptr<GstCaps, caps_unref> m_caps;
    GstVideoInfo m_info = {};
    bool m_known = false;
    bool m_draw = false;
    int m_zones = -1;
    int m_number = 0;
    guint64 m_time = 0;
    long m_bytes = k_bytes_of_an_input;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool started = [] {
        start_gstreamer();
        return true;
    }();
    (void)started;
    byte_source input(bytes, size);
    bench(input).play();
    return 0;
}
