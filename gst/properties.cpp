#include "gst/properties.h"

#include <gst/gst.h>

#include "apps/orva_fire/aged_channel.h"
#include "apps/orva_fire/confirmation.h"

namespace orva_gst {
namespace {

const double k_longest_time = 86400;  // seconds; a day
const char k_tiles[] = "auto";

const auto k_flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

// A property that is a time.
void install_seconds(GObjectClass* type, guint id, const char* name, const char* nick, const char* blurb,
                     double standard) {
    g_object_class_install_property(type, id,
                                    g_param_spec_double(name, nick, blurb, 0, k_longest_time, standard, k_flags));
}

void install_looking(GObjectClass* type) {
    const property_values standard;
    g_object_class_install_property(
        type, k_property_grade,
        g_param_spec_int("grade", "Sensitivity",
                         "How much evidence a report needs, from 47 of 50 pictures (0) to 30 of 50 (100); a zone's own "
                         "grade comes first; -1: the library's own, 35 of 50",
                         k_library_grade, 100, standard.grade, k_flags));
    g_object_class_install_property(
        type, k_property_zones,
        g_param_spec_string("zones", "Zones",
                            "Path of a JSON file with the named parts of the picture that are looked at, in pixels or "
                            "percent; empty or unset: the whole picture",
                            nullptr, k_flags));
    g_object_class_install_property(
        type, k_property_tiles,
        g_param_spec_string("tiles", "Tiles",
                            "How each zone is divided into overlapping tiles that are looked at separately, so that "
                            "small and distant fires are seen: COLUMNSxROWS (1x1 to 16x16), or auto for tiles of about "
                            "640 x 360 pixels; each costs a channel of the library",
                            k_tiles, k_flags));
}

void install_reporting(GObjectClass* type) {
    const property_values standard;
    install_seconds(type, k_property_confirm, "confirm", "Confirmation",
                    "Seconds that new reports must cover within a window of four times that length before a start is "
                    "posted; 0: the first report counts",
                    standard.confirm);
    install_seconds(type, k_property_cooldown, "cooldown", "Cooldown",
                    "Seconds without a report after which the end is posted; 0: at once", standard.cooldown);
    install_seconds(type, k_property_max_age, "max-age", "Largest age of evidence",
                    "Seconds for which evidence is kept, which takes two channels of the library for each tile; 0: "
                    "without limit",
                    standard.max_age);
    g_object_class_install_property(type, k_property_draw,
                                    g_param_spec_boolean("draw", "Draw boxes",
                                                         "Draw a frame around each box into the picture: red, or "
                                                         "yellow until it is confirmed; without it no pixel is changed",
                                                         standard.draw, k_flags));
    install_seconds(type, k_property_interval, "interval", "Interval",
                    "Seconds at least from one picture that is looked at to the next; pictures in between carry the "
                    "last boxes; 0: look at every picture",
                    standard.interval);
}

std::string text_of(const GValue* value) {
    const char* text = g_value_get_string(value);
    return text ? text : "";
}

}  // namespace

property_values::property_values()
    : grade(k_library_grade),
      tiles(k_tiles),
      confirm(orva_fire::k_default_confirm),
      cooldown(orva_fire::k_default_cooldown),
      max_age(orva_fire::k_default_max_age),
      draw(false),
      interval(0) {}

void install_properties(GObjectClass* type) {
    install_looking(type);
    install_reporting(type);
}

bool set_value(property_values& values, guint id, const GValue* value) {
    switch (id) {
        case k_property_grade:
            values.grade = g_value_get_int(value);
            return true;
        case k_property_zones:
            values.zones = text_of(value);
            return true;
        case k_property_tiles:
            values.tiles = text_of(value);
            return true;
        case k_property_confirm:
            values.confirm = g_value_get_double(value);
            return true;
        case k_property_cooldown:
            values.cooldown = g_value_get_double(value);
            return true;
        case k_property_max_age:
            values.max_age = g_value_get_double(value);
            return true;
        case k_property_draw:
            values.draw = g_value_get_boolean(value);
            return true;
        case k_property_interval:
            values.interval = g_value_get_double(value);
            return true;
        default:
            return false;
    }
}

bool get_value(const property_values& values, guint id, GValue* value) {
    switch (id) {
        case k_property_grade:
            g_value_set_int(value, values.grade);
            return true;
        case k_property_zones:
            g_value_set_string(value, values.zones.empty() ? nullptr : values.zones.c_str());
            return true;
        case k_property_tiles:
            g_value_set_string(value, values.tiles.c_str());
            return true;
        case k_property_confirm:
            g_value_set_double(value, values.confirm);
            return true;
        case k_property_cooldown:
            g_value_set_double(value, values.cooldown);
            return true;
        case k_property_max_age:
            g_value_set_double(value, values.max_age);
            return true;
        case k_property_draw:
            g_value_set_boolean(value, values.draw);
            return true;
        case k_property_interval:
            g_value_set_double(value, values.interval);
            return true;
        default:
            return false;
    }
}

}  // namespace orva_gst
