#include "gst/report.h"

#include <cmath>

namespace orva_gst {
namespace {

using orva_fire::box;
using orva_fire::picture_size;

const char k_label[] = "fire";
const char k_message[] = "orvafire";
const char k_detection[] = "detection";

GstStructure* detection(const box& where, picture_size size, double confidence, const std::string& zone) {
    return gst_structure_new(k_detection,                                                                       //
                             "label", G_TYPE_STRING, k_label,                                                   //
                             "confidence", G_TYPE_DOUBLE, confidence,                                           //
                             "xmin", G_TYPE_DOUBLE, static_cast<double>(where.x) / size.width,                  //
                             "ymin", G_TYPE_DOUBLE, static_cast<double>(where.y) / size.height,                 //
                             "xmax", G_TYPE_DOUBLE, static_cast<double>(where.x + where.width) / size.width,    //
                             "ymax", G_TYPE_DOUBLE, static_cast<double>(where.y + where.height) / size.height,  //
                             "zone", G_TYPE_STRING, zone.c_str(), nullptr);
}

// The same for a message, which has no meta to hold the pixels. An event is confirmed, so its confidence is 1.
void append_box(GValue* list, const box& where, picture_size size, const std::string& zone) {
    GstStructure* structure = detection(where, size, 1, zone);
    gst_structure_set(structure, "x", G_TYPE_INT, where.x, "y", G_TYPE_INT, where.y, "width", G_TYPE_INT, where.width,
                      "height", G_TYPE_INT, where.height, nullptr);
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GST_TYPE_STRUCTURE);
    g_value_take_boxed(&value, structure);
    gst_value_array_append_and_take_value(list, &value);
}

void set_boxes(GstStructure* structure, const std::vector<box>& boxes, picture_size size, const std::string& zone) {
    GValue list = G_VALUE_INIT;
    g_value_init(&list, GST_TYPE_ARRAY);
    for (const box& where : boxes) append_box(&list, where, size, zone);
    gst_structure_take_value(structure, "boxes", &list);
}

guint64 in_nanoseconds(double seconds) {
    return static_cast<guint64>(std::llround(seconds * GST_SECOND));
}

}  // namespace

void add_metas(GstBuffer* buffer, const std::vector<zone_state>& zones, picture_size size) {
    for (const zone_state& zone : zones) {
        for (const box& where : zone.boxes) {
            GstVideoRegionOfInterestMeta* meta = gst_buffer_add_video_region_of_interest_meta(
                buffer, k_label, static_cast<guint>(where.x), static_cast<guint>(where.y),
                static_cast<guint>(where.width), static_cast<guint>(where.height));
            meta->id = zone.report;
            gst_video_region_of_interest_meta_add_param(meta, detection(where, size, zone.confidence, zone.name));
        }
    }
}

GstStructure* message_structure(const orva_fire::fire_event& event, const std::string& zone, picture_size size,
                                const buffer_times& times, const char* reason) {
    const bool ends = event.kind == orva_fire::event_kind::end;
    GstStructure* structure = gst_structure_new(k_message,                                                     //
                                                "event", G_TYPE_STRING, ends ? "end" : "start",                //
                                                "id", G_TYPE_INT, event.id,                                    //
                                                "zone", G_TYPE_STRING, zone.c_str(),                           //
                                                "frame", G_TYPE_UINT64, static_cast<guint64>(event.at.frame),  //
                                                "timestamp", G_TYPE_UINT64, times.timestamp,                   //
                                                "stream-time", G_TYPE_UINT64, times.stream_time,               //
                                                "running-time", G_TYPE_UINT64, times.running_time, nullptr);
    set_boxes(structure, event.boxes, size, zone);
    if (ends) {
        gst_structure_set(structure, "reason", G_TYPE_STRING, reason, "duration", G_TYPE_UINT64,
                          in_nanoseconds(event.at.seconds - event.started.seconds), nullptr);
    }
    return structure;
}

}  // namespace orva_gst
