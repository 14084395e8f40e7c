#include "gst/element.h"

#include <gst/video/gstvideofilter.h>

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "apps/orva_fire/error.h"
#include "gst/draw.h"
#include "gst/fire_watch.h"
#include "gst/library_share.h"
#include "gst/properties.h"
#include "gst/report.h"

GST_DEBUG_CATEGORY_STATIC(orvafire_debug);
#define GST_CAT_DEFAULT orvafire_debug

namespace orva_gst {

// What an element knows. The streaming thread owns all of it but `values`, which the object lock guards.
struct element_state {
    property_values values;
    bool values_changed = false;

    fire_settings settings;
    caps_colour colour;
    std::unique_ptr<fire_watch> watch;
    orva_fire::moment now;
    buffer_times times;
    bool running = false;  // a picture has come since the start
    int reports = 0;
};

}  // namespace orva_gst

// GObject's macros want these names in this style.
struct OrvaFire {
    GstVideoFilter parent;
    orva_gst::element_state* state;
};
struct OrvaFireClass {
    GstVideoFilterClass parent_class;
};
G_DEFINE_TYPE(OrvaFire, orva_fire, GST_TYPE_VIDEO_FILTER)

namespace orva_gst {
namespace {

const double k_usual_rate = 25;  // pictures a second where neither time stamps nor caps tell

// A smaller picture than 16 x 16 pixels holds nothing that could be seen to flicker.
const char k_caps[] =
    "video/x-raw, format = (string) { NV21, NV12, I420, YUY2, BGRx }, width = (int) [ 16, max ], "
    "height = (int) [ 16, max ], framerate = (fraction) [ 0, max ]";

const char k_description[] =
    "Finds fire in the pictures of a fixed camera. Passes every picture on, adds a GstVideoRegionOfInterestMeta named "
    "fire "
    "with a structure detection (label, confidence, xmin, ymin, xmax, ymax, zone) for each box, and posts an element "
    "message orvafire at the start and the end of each report. The detector prints lines on standard output";

OrvaFire* element_of(gpointer object) {
    return reinterpret_cast<OrvaFire*>(object);
}

element_state& state_of(gpointer object) {
    return *element_of(object)->state;
}

// The modules name options as on orva-fire's command line; the element's properties are called alike.
std::string without_dashes(const std::string& text) {
    return text.compare(0, 2, "--") == 0 ? text.substr(2) : text;
}

// Runs work that may throw, at the border to C. Posts what went wrong as the element's error; returns false then.
template <typename Work>
bool guarded(gpointer element, Work work) {
    try {
        work();
        return true;
    } catch (const orva_fire::usage_error& error) {
        GST_ELEMENT_ERROR(element, RESOURCE, SETTINGS, ("%s", without_dashes(error.what()).c_str()), (nullptr));
    } catch (const std::bad_alloc&) {
        GST_ELEMENT_ERROR(element, RESOURCE, NO_SPACE_LEFT, ("orvafire: out of memory"), (nullptr));
    } catch (const std::exception& error) {
        GST_ELEMENT_ERROR(element, LIBRARY, FAILED, ("%s", error.what()), (nullptr));
    }
    return false;
}

fire_settings read_settings(const property_values& values) {
    fire_settings settings;
    if (values.grade != k_library_grade) settings.grade = values.grade;
    if (!values.zones.empty()) settings.zones = orva_fire::read_zones(values.zones);
    settings.tiles = orva_fire::parse_tiles(values.tiles);
    settings.confirm.seconds = values.confirm;
    settings.confirm.cooldown = values.cooldown;
    settings.max_age = values.max_age;
    settings.interval = values.interval;
    return settings;
}

void post(gpointer element, const std::vector<orva_fire::fire_event>& events, const char* reason) {
    const element_state& state = state_of(element);
    for (const orva_fire::fire_event& event : events) {
        const std::string& zone = state.watch->zones()[event.zone].name;
        // What the tracker itself sees end, with pictures going on, is simply gone.
        const char* why = event.ended == orva_fire::event_end::input_ended ? reason : "gone";
        GST_INFO_OBJECT(element, "report %d in zone %s", event.id, zone.c_str());
        gst_element_post_message(
            GST_ELEMENT(element),
            gst_message_new_element(GST_OBJECT(element),
                                    message_structure(event, zone, state.watch->size(), state.times, why)));
    }
}

// Ends what is reported and drops the evidence; the channels stay for what comes next.
void restart(gpointer element, const char* reason) {
    element_state& state = state_of(element);
    if (state.watch) post(element, state.watch->restart(), reason);
}

// Gives the channels back as well.
void close_watch(gpointer element, const char* reason) {
    element_state& state = state_of(element);
    restart(element, reason);
    if (state.watch) state.reports = state.watch->reports();
    state.watch.reset();
}

// The values that an application set since the last picture, if there are any.
bool take_changed_values(OrvaFire* element, property_values& values) {
    element_state& state = *element->state;
    GST_OBJECT_LOCK(element);
    const bool changed = state.values_changed;
    state.values_changed = false;
    values = state.values;
    GST_OBJECT_UNLOCK(element);
    return changed;
}

bool wants_drawing(OrvaFire* element) {
    GST_OBJECT_LOCK(element);
    const bool draw = element->state->values.draw;
    GST_OBJECT_UNLOCK(element);
    return draw;
}

double picture_interval(const GstVideoInfo& info) {
    const bool known = info.fps_n > 0 && info.fps_d > 0;
    return known ? static_cast<double>(info.fps_d) / info.fps_n : 1 / k_usual_rate;
}

// Sets the moment of the picture. A picture without time stamp comes one picture's time after the last.
void read_times(OrvaFire* element, GstBuffer* buffer) {
    element_state& state = *element->state;
    const GstSegment& segment = element->parent.element.segment;
    const GstClockTime timestamp = GST_BUFFER_PTS(buffer);
    state.times.timestamp = timestamp;
    state.times.stream_time = gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, timestamp);
    state.times.running_time = gst_segment_to_running_time(&segment, GST_FORMAT_TIME, timestamp);
    if (state.running) ++state.now.frame;
    if (GST_CLOCK_TIME_IS_VALID(state.times.running_time)) {
        state.now.seconds = static_cast<double>(state.times.running_time) / GST_SECOND;
    } else if (state.running) {
        state.now.seconds += picture_interval(element->parent.in_info);
    }
    state.running = true;
}

void look(OrvaFire* element, const GstVideoFrame& picture) {
    element_state& state = *element->state;
    property_values values;
    if (take_changed_values(element, values)) {
        close_watch(element, "settings changed");
        state.settings = read_settings(values);
    }
    if (!state.watch) {
        const orva_fire::picture_size size{GST_VIDEO_FRAME_WIDTH(&picture), GST_VIDEO_FRAME_HEIGHT(&picture)};
        state.watch = std::make_unique<fire_watch>(state.settings, size, state.reports);
    }
    post(element, state.watch->observe(*view_of(picture, state.colour), state.now), "gap");
}

// Maps a picture for as long as it lives.
class mapped_picture {
public:
    mapped_picture(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags) {
        // The buffer outlives this object, and a reference more would make it read-only.
        const auto all = static_cast<GstMapFlags>(int{flags} | int{GST_VIDEO_FRAME_MAP_FLAG_NO_REF});
        if (!gst_video_frame_map(&m_frame, const_cast<GstVideoInfo*>(&info), buffer, all)) {
            throw orva_fire::io_error("a picture's memory cannot be mapped");
        }
        // A layout of the buffer's own may be that of a larger picture, of which the caps' is the upper left part.
        m_frame.info.width = info.width;
        m_frame.info.height = info.height;
        if (!lies_in_its_memory(m_frame)) {
            gst_video_frame_unmap(&m_frame);
            throw orva_fire::io_error("a picture's layout does not fit its memory");
        }
    }
    ~mapped_picture() { gst_video_frame_unmap(&m_frame); }
    mapped_picture(const mapped_picture&) = delete;
    mapped_picture& operator=(const mapped_picture&) = delete;

    GstVideoFrame& frame() { return m_frame; }

private:
    GstVideoFrame m_frame;
};

void draw(OrvaFire* element, GstBuffer* buffer) {
    const element_state& state = *element->state;
    std::vector<drawn_box> boxes;
    for (const zone_state& zone : state.watch->zones()) {
        for (const orva_fire::box& where : zone.boxes) boxes.push_back({where, zone.confirmed});
    }
    if (boxes.empty()) return;
    mapped_picture picture(element->parent.in_info, buffer, GST_MAP_READWRITE);
    draw_boxes(picture.frame(), state.colour, boxes);
}

// The base class maps for writing, which copies the pixels of every picture that somebody else holds too. Here they are
// read, and written only when there is something to draw.
GstFlowReturn transform_ip(GstBaseTransform* base, GstBuffer* buffer) {
    OrvaFire* element = element_of(base);
    const bool done = guarded(element, [&] {
        const GstVideoInfo& info = element->parent.in_info;
        read_times(element, buffer);
        {
            mapped_picture picture(info, buffer, GST_MAP_READ);
            look(element, picture.frame());
        }
        if (wants_drawing(element)) draw(element, buffer);
        add_metas(buffer, element->state->watch->zones(), element->state->watch->size());
    });
    return done ? GST_FLOW_OK : GST_FLOW_ERROR;
}

gboolean set_info(GstVideoFilter* filter, GstCaps* caps, GstVideoInfo* info, GstCaps*, GstVideoInfo*) {
    element_state& state = state_of(filter);
    state.colour = colour_of_caps(caps);
    const orva_fire::picture_size size{GST_VIDEO_INFO_WIDTH(info), GST_VIDEO_INFO_HEIGHT(info)};
    if (state.watch && state.watch->size() != size) close_watch(filter, "caps changed");
    return TRUE;
}

gboolean sink_event(GstBaseTransform* base, GstEvent* event) {
    switch (GST_EVENT_TYPE(event)) {
        case GST_EVENT_EOS:
            restart(base, "end of stream");
            break;
        case GST_EVENT_FLUSH_STOP:
            restart(base, "flush");
            break;
        case GST_EVENT_STREAM_START:
            restart(base, "new stream");
            break;
        default:
            break;
    }
    return GST_BASE_TRANSFORM_CLASS(orva_fire_parent_class)->sink_event(base, event);
}

gboolean start(GstBaseTransform* base) {
    OrvaFire* element = element_of(base);
    element_state& state = *element->state;
    property_values values;
    (void)take_changed_values(element, values);
    state.now = orva_fire::moment();
    state.times = buffer_times();
    state.running = false;
    state.reports = 0;
    return guarded(element, [&] {
        state.settings = read_settings(values);
        share_library();
    });
}

gboolean stop(GstBaseTransform* base) {
    close_watch(base, "stopped");
    return TRUE;
}

void set_property(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    element_state& state = state_of(object);
    GST_OBJECT_LOCK(object);
    const bool known = set_value(state.values, id, value);
    // Whether boxes are drawn has no influence on what is found.
    if (id != k_property_draw) state.values_changed = true;
    GST_OBJECT_UNLOCK(object);
    if (!known) G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
    GST_OBJECT_LOCK(object);
    const bool known = get_value(state_of(object).values, id, value);
    GST_OBJECT_UNLOCK(object);
    if (!known) G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

void finalize(GObject* object) {
    delete element_of(object)->state;
    G_OBJECT_CLASS(orva_fire_parent_class)->finalize(object);
}

void describe(GstElementClass* type) {
    gst_element_class_set_static_metadata(type, "Fire detector", "Filter/Analyzer/Video", k_description,
                                          "The orva_fd authors");
    GstCaps* caps = gst_caps_from_string(k_caps);
    gst_element_class_add_pad_template(type, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(type, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

}  // namespace

bool register_element(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(orvafire_debug, "orvafire", 0, "fire detector");
    return gst_element_register(plugin, "orvafire", GST_RANK_NONE, orva_fire_get_type());
}

}  // namespace orva_gst

static void orva_fire_class_init(OrvaFireClass* type) {
    GObjectClass* object = G_OBJECT_CLASS(type);
    object->set_property = orva_gst::set_property;
    object->get_property = orva_gst::get_property;
    object->finalize = orva_gst::finalize;
    orva_gst::install_properties(object);
    orva_gst::describe(GST_ELEMENT_CLASS(type));

    GstBaseTransformClass* transform = GST_BASE_TRANSFORM_CLASS(type);
    transform->start = orva_gst::start;
    transform->stop = orva_gst::stop;
    transform->sink_event = orva_gst::sink_event;
    transform->transform_ip = orva_gst::transform_ip;
    GST_VIDEO_FILTER_CLASS(type)->set_info = orva_gst::set_info;
}

static void orva_fire_init(OrvaFire* element) {
    element->state = new orva_gst::element_state;
    GstBaseTransform* base = GST_BASE_TRANSFORM(element);
    gst_base_transform_set_in_place(base, TRUE);
    // Late pictures are passed on like any other: whoever records them behind this element wants them all.
    gst_base_transform_set_qos_enabled(base, FALSE);
    gst_base_transform_set_gap_aware(base, TRUE);
}
