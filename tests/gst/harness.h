// An orvafire element between two test pads, and a camera whose pictures show a fire.
#ifndef ORVA_TESTS_GST_HARNESS_H
#define ORVA_TESTS_GST_HARNESS_H

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "gst/frame_view.h"

namespace gst_test {

struct gst_deleter {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
};
using buffer_ptr = std::unique_ptr<GstBuffer, gst_deleter>;
using caps_ptr = std::unique_ptr<GstCaps, gst_deleter>;
using message_ptr = std::unique_ptr<GstMessage, gst_deleter>;

// Starts GStreamer with the plug-in under test and no other. To be called first of all.
void start_gstreamer();

struct camera_settings {
    const char* format = "NV21";
    int width = 176, height = 144;
    const char* colorimetry = "1:4:0:0";  // as in caps: full range, BT.601; empty: the caps say nothing
    int rate = 25;                        // 0: the caps say nothing
};

// A grey room in which a fire burns: bright yellow cells that change from picture to picture, under a wavering tip.
class camera {
public:
    explicit camera(const camera_settings& settings);

    // What the pictures are, for an element's sink pad.
    caps_ptr caps() const;
    const GstVideoInfo& info() const { return m_info; }
    orva_gst::caps_colour colour() const { return m_colour; }

    // How bright the fire's colours are, and where it is; {} puts it out.
    void set_fire(std::optional<orva_fire::box> where) { m_fire = where; }
    void set_warmth(int warmth) { m_warmth = warmth; }

    // The picture of one moment, with its time stamp. The same number gives the same pixels.
    buffer_ptr picture(int index) const;
    GstClockTime time(int index) const;

    // The middle of the picture, where the fire is if nothing else is said.
    orva_fire::box middle() const;

private:
    void paint_fire(AVFrame& picture, int index) const;

    const camera_settings m_settings;
    GstVideoInfo m_info;
    orva_gst::caps_colour m_colour;
    buffer_ptr m_room;
    std::optional<orva_fire::box> m_fire;
    int m_warmth = 0;
};

// What an application reads from an element message.
struct fire_message {
    std::string event, zone, reason;
    int id = 0;
    guint64 frame = 0, running_time = 0, duration = 0;
    std::vector<orva_fire::box> boxes;
};

// What another element reads from one meta.
struct fire_meta {
    orva_fire::box where;
    std::string label, zone;
    double confidence = 0, xmin = 0, ymin = 0, xmax = 0, ymax = 0;
    int id = 0;
};

std::vector<fire_meta> metas_of(GstBuffer* buffer);

class element_harness {
public:
    // properties: as on a command line, "grade=70 draw=true". Without any the element looks at the whole picture and
    // reports what the library does at once, which its defaults do not.
    explicit element_harness(const std::string& properties = "");
    ~element_harness();
    element_harness(const element_harness&) = delete;
    element_harness& operator=(const element_harness&) = delete;

    GstHarness* get() const { return m_harness; }
    GstElement* element() const { return m_element; }

    void set_caps(const camera& source);

    // Passes one picture; returns what comes out, or nothing if the element fails.
    buffer_ptr pass(buffer_ptr picture);
    // Passes pictures `from` to `to` - 1; returns what the last one carries.
    std::vector<fire_meta> run(const camera& source, int from, int to);

    // The element messages and the error texts since the last call.
    std::vector<fire_message> messages();
    std::vector<std::string> errors();

private:
    void read_bus();

    GstElement* m_element;
    GstHarness* m_harness = nullptr;  // none if the element does not start
    GstBus* m_bus;
    std::vector<fire_message> m_messages;
    std::vector<std::string> m_errors;
};

// All bytes of a buffer.
std::vector<guint8> bytes_of(GstBuffer* buffer);

}  // namespace gst_test

#endif
