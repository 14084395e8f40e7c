// The element's properties: what they are called, what they may hold, and what a user reads about them.
#ifndef ORVA_GST_PROPERTIES_H
#define ORVA_GST_PROPERTIES_H

#include <glib-object.h>

#include <string>

namespace orva_gst {

enum property_id {
    k_property_grade = 1,
    k_property_zones,
    k_property_tiles,
    k_property_confirm,
    k_property_cooldown,
    k_property_max_age,
    k_property_draw,
    k_property_interval
};

const int k_library_grade = -1;  // leave the library's own sensitivity

// The properties' values as the application set them.
struct property_values {
    int grade;
    std::string zones;
    std::string tiles;
    double confirm;
    double cooldown;
    double max_age;
    bool draw;
    double interval;

    // The defaults: those of orva-fire, so that both report the same.
    property_values();
};

void install_properties(GObjectClass* type);

// Both return false for a number that is no property's.
bool set_value(property_values& values, guint id, const GValue* value);
bool get_value(const property_values& values, guint id, GValue* value);

}  // namespace orva_gst

#endif
