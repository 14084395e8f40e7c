#include "tests/gst/harness.h"

#include <algorithm>
#include <stdexcept>

#include "tests/apps/pictures.h"

namespace gst_test {
namespace {

using orva_fire::box;

// What the library reports, and nothing made of it: most tests count its pictures.
const char k_plain[] = "orvafire tiles=1x1 confirm=0 cooldown=0 max-age=0 ";

const int k_cells_across = 6, k_cells_down = 14, k_tip_cells = 8;

// Even edges, so that no cell shares a chroma sample with another.
int edge(int start, int length, int cell, int cells) {
    return (start + length * cell / cells) / 2 * 2;
}

// A map of a buffer for painting.
class painted {
public:
    painted(const GstVideoInfo& info, GstBuffer* buffer) {
        if (!gst_video_frame_map(&m_frame, const_cast<GstVideoInfo*>(&info), buffer, GST_MAP_READWRITE)) {
            throw std::runtime_error("a test picture cannot be mapped");
        }
    }
    ~painted() { gst_video_frame_unmap(&m_frame); }
    painted(const painted&) = delete;
    painted& operator=(const painted&) = delete;
    const GstVideoFrame& frame() const { return m_frame; }

private:
    GstVideoFrame m_frame;
};

std::string text_field(const GstStructure* structure, const char* name) {
    const char* text = gst_structure_get_string(structure, name);
    return text ? text : "";
}

int int_field(const GstStructure* structure, const char* name) {
    int value = -1;
    gst_structure_get_int(structure, name, &value);
    return value;
}

guint64 time_field(const GstStructure* structure, const char* name) {
    guint64 value = 0;
    gst_structure_get_uint64(structure, name, &value);
    return value;
}

double share_field(const GstStructure* structure, const char* name) {
    double value = -1;
    gst_structure_get_double(structure, name, &value);
    return value;
}

fire_message read_message(const GstStructure* structure) {
    fire_message message;
    message.event = text_field(structure, "event");
    message.zone = text_field(structure, "zone");
    message.reason = text_field(structure, "reason");
    message.id = int_field(structure, "id");
    message.frame = time_field(structure, "frame");
    message.running_time = time_field(structure, "running-time");
    message.duration = time_field(structure, "duration");
    const GValue* boxes = gst_structure_get_value(structure, "boxes");
    for (guint i = 0; boxes && i < gst_value_array_get_size(boxes); ++i) {
        const GstStructure* where = gst_value_get_structure(gst_value_array_get_value(boxes, i));
        message.boxes.push_back(
            {int_field(where, "x"), int_field(where, "y"), int_field(where, "width"), int_field(where, "height")});
    }
    return message;
}

}  // namespace

void start_gstreamer() {
    // No other plug-in is looked for, and nothing is written into the user's cache.
    g_setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", TRUE);
    g_setenv("GST_PLUGIN_PATH_1_0", "", TRUE);
    g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
    gst_init(nullptr, nullptr);
    GError* error = nullptr;
    GstPlugin* plugin = gst_plugin_load_file(ORVA_GST_PLUGIN, &error);
    if (!plugin) throw std::runtime_error(error->message);
    gst_registry_add_plugin(gst_registry_get(), plugin);
    gst_object_unref(plugin);
}

camera::camera(const camera_settings& settings) : m_settings(settings) {
    if (!gst_video_info_from_caps(&m_info, caps().get())) throw std::runtime_error("bad test caps");
    m_colour = orva_gst::colour_of_caps(caps().get());
    m_room.reset(gst_buffer_new_allocate(nullptr, m_info.size, nullptr));
    gst_buffer_memset(m_room.get(), 0, 0, m_info.size);
    const painted room(m_info, m_room.get());
    apps_test::paint(*orva_gst::view_of(room.frame(), m_colour), 0, 0, m_settings.width, m_settings.height,
                     {60, 60, 60});
    m_fire = middle();
}

caps_ptr camera::caps() const {
    caps_ptr caps(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, m_settings.format, "width", G_TYPE_INT,
                                      m_settings.width, "height", G_TYPE_INT, m_settings.height, "framerate",
                                      GST_TYPE_FRACTION, m_settings.rate, 1, nullptr));
    if (*m_settings.colorimetry) {
        gst_caps_set_simple(caps.get(), "colorimetry", G_TYPE_STRING, m_settings.colorimetry, nullptr);
    }
    return caps;
}

box camera::middle() const {
    return {m_settings.width * 45 / 100 / 2 * 2, m_settings.height * 30 / 100 / 2 * 2,
            m_settings.width * 14 / 100 / 2 * 2, m_settings.height * 40 / 100 / 2 * 2};
}

GstClockTime camera::time(int index) const {
    return static_cast<GstClockTime>(index) * GST_SECOND / static_cast<GstClockTime>(std::max(1, m_settings.rate));
}

void camera::paint_fire(AVFrame& picture, int index) const {
    const int tip = index * 5 % k_tip_cells;
    for (int row = tip; row < k_cells_down; ++row) {
        const int top = edge(m_fire->y, m_fire->height, row, k_cells_down);
        const int bottom = edge(m_fire->y, m_fire->height, row + 1, k_cells_down);
        for (int column = 0; column < k_cells_across; ++column) {
            const int left = edge(m_fire->x, m_fire->width, column, k_cells_across);
            const int right = edge(m_fire->x, m_fire->width, column + 1, k_cells_across);
            const int light = (index * 31 + column * 28 + row * 52) % 80;
            if ((index * 7 + column * 3 + row * 5) % 4 == 0) continue;  // a gap, for more flicker
            apps_test::paint(picture, left, top, right - left, bottom - top,
                             {181.0 + light, 147.0 + light, 83.0 + light - m_warmth});
        }
    }
}

buffer_ptr camera::picture(int index) const {
    buffer_ptr buffer(gst_buffer_copy_deep(m_room.get()));
    GST_BUFFER_PTS(buffer.get()) = time(index);
    GST_BUFFER_DURATION(buffer.get()) = time(1);
    if (!m_fire) return buffer;
    const painted picture(m_info, buffer.get());
    paint_fire(*orva_gst::view_of(picture.frame(), m_colour), index);
    return buffer;
}

std::vector<fire_meta> metas_of(GstBuffer* buffer) {
    std::vector<fire_meta> metas;
    gpointer state = nullptr;
    while (GstMeta* found =
               gst_buffer_iterate_meta_filtered(buffer, &state, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE)) {
        auto* meta = reinterpret_cast<GstVideoRegionOfInterestMeta*>(found);
        fire_meta fire;
        fire.where = {static_cast<int>(meta->x), static_cast<int>(meta->y), static_cast<int>(meta->w),
                      static_cast<int>(meta->h)};
        fire.id = meta->id;
        if (const GstStructure* detection = gst_video_region_of_interest_meta_get_param(meta, "detection")) {
            fire.label = text_field(detection, "label");
            fire.zone = text_field(detection, "zone");
            fire.confidence = share_field(detection, "confidence");
            fire.xmin = share_field(detection, "xmin");
            fire.ymin = share_field(detection, "ymin");
            fire.xmax = share_field(detection, "xmax");
            fire.ymax = share_field(detection, "ymax");
        }
        metas.push_back(fire);
    }
    return metas;
}

element_harness::element_harness(const std::string& properties) : m_bus(gst_bus_new()) {
    m_element = gst_parse_launch((std::string(k_plain) + properties).c_str(), nullptr);
    if (!m_element) throw std::runtime_error("no element from: orvafire " + properties);
    gst_object_ref_sink(m_element);
    gst_element_set_bus(m_element, m_bus);
    // The harness itself ends the process if an element does not start.
    const GstStateChangeReturn started = gst_element_set_state(m_element, GST_STATE_PAUSED);
    if (started != GST_STATE_CHANGE_FAILURE) m_harness = gst_harness_new_with_element(m_element, "sink", "src");
}

element_harness::~element_harness() {
    gst_element_set_bus(m_element, nullptr);
    if (m_harness) gst_harness_teardown(m_harness);
    gst_element_set_state(m_element, GST_STATE_NULL);
    gst_object_unref(m_element);
    gst_object_unref(m_bus);
}

void element_harness::set_caps(const camera& source) {
    if (m_harness) gst_harness_set_src_caps(m_harness, source.caps().release());
}

buffer_ptr element_harness::pass(buffer_ptr picture) {
    if (!m_harness || gst_harness_push(m_harness, picture.release()) != GST_FLOW_OK) return nullptr;
    return buffer_ptr(gst_harness_pull(m_harness));
}

std::vector<fire_meta> element_harness::run(const camera& source, int from, int to) {
    std::vector<fire_meta> last;
    for (int i = from; i < to; ++i) {
        const buffer_ptr passed = pass(source.picture(i));
        if (!passed) throw std::runtime_error("the element failed");
        last = metas_of(passed.get());
    }
    return last;
}

void element_harness::read_bus() {
    while (const message_ptr message{gst_bus_pop(m_bus)}) {
        if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ELEMENT && gst_message_has_name(message.get(), "orvafire")) {
            m_messages.push_back(read_message(gst_message_get_structure(message.get())));
        }
        if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
            GError* error = nullptr;
            gst_message_parse_error(message.get(), &error, nullptr);
            m_errors.push_back(error->message);
            g_error_free(error);
        }
    }
}

std::vector<fire_message> element_harness::messages() {
    read_bus();
    return std::move(m_messages);
}

std::vector<std::string> element_harness::errors() {
    read_bus();
    return std::move(m_errors);
}

std::vector<guint8> bytes_of(GstBuffer* buffer) {
    std::vector<guint8> bytes(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
    return bytes;
}

}  // namespace gst_test
