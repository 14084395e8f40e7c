// Properties, zones and tiles, and what is said about those that cannot be.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/gst/harness.h"

namespace gst_test {
namespace {

using orva_fire::box;

// A file with zones that is gone with the test.
class zone_file {
public:
    explicit zone_file(const std::string& text) {
        gchar* name = nullptr;
        const int file = g_file_open_tmp("orva-zones-XXXXXX.json", &name, nullptr);
        if (file < 0) throw std::runtime_error("no temporary file");
        close(file);
        m_path = name;
        g_free(name);
        std::ofstream(m_path) << text;
    }
    ~zone_file() { std::filesystem::remove(m_path); }
    zone_file(const zone_file&) = delete;
    zone_file& operator=(const zone_file&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

const char k_two_zones[] = R"({"zones": [
    {"name": "stove", "rectangles": [{"x": 0, "y": 0, "width": "50%", "height": "100%"}]},
    {"name": "door", "grade": 100, "rectangles": [{"x": "50%", "y": 0, "width": "50%", "height": "100%"}]}]})";

TEST(properties, hold_their_defaults_until_they_are_set) {
    GstElement* element = gst_element_factory_make("orvafire", nullptr);
    int grade = 0;
    gchar *zones = nullptr, *tiles = nullptr;
    double confirm = -1, cooldown = -1, max_age = -1, interval = -1;
    gboolean draw = TRUE;
    g_object_get(element, "grade", &grade, "zones", &zones, "tiles", &tiles, "confirm", &confirm, "cooldown", &cooldown,
                 "max-age", &max_age, "draw", &draw, "interval", &interval, nullptr);
    EXPECT_EQ(grade, -1);
    EXPECT_EQ(zones, nullptr);
    EXPECT_STREQ(tiles, "auto");
    EXPECT_EQ(confirm, 0.5);
    EXPECT_EQ(cooldown, 10);
    EXPECT_EQ(max_age, 30);
    EXPECT_EQ(draw, FALSE);
    EXPECT_EQ(interval, 0);
    g_free(zones);
    g_free(tiles);
    gst_object_unref(element);
}

TEST(properties, return_what_was_set) {
    const element_harness harness("grade=85 tiles=3x2 confirm=1.5 cooldown=4 max-age=120 draw=true interval=0.1");
    int grade = 0;
    gchar* tiles = nullptr;
    double confirm = -1, cooldown = -1, max_age = -1, interval = -1;
    gboolean draw = FALSE;
    g_object_get(harness.element(), "grade", &grade, "tiles", &tiles, "confirm", &confirm, "cooldown", &cooldown,
                 "max-age", &max_age, "draw", &draw, "interval", &interval, nullptr);
    EXPECT_EQ(grade, 85);
    EXPECT_STREQ(tiles, "3x2");
    EXPECT_EQ(confirm, 1.5);
    EXPECT_EQ(cooldown, 4);
    EXPECT_EQ(max_age, 120);
    EXPECT_EQ(draw, TRUE);
    EXPECT_EQ(interval, 0.1);
    g_free(tiles);
}

TEST(properties, are_all_documented) {
    const element_harness harness;
    guint count = 0;
    GParamSpec** pspecs = g_object_class_list_properties(G_OBJECT_GET_CLASS(harness.element()), &count);
    int own = 0;
    for (guint i = 0; i < count; ++i) {
        if (pspecs[i]->owner_type != G_OBJECT_TYPE(harness.element())) continue;
        ++own;
        EXPECT_GT(std::string(g_param_spec_get_blurb(pspecs[i])).size(), 30u) << pspecs[i]->name;
    }
    g_free(pspecs);
    EXPECT_EQ(own, 8);
}

struct zone_row {
    const char* name;
    box fire;
    const char* zone;
};

TEST(two_zones, report_each_its_own_fire) {
    const zone_file file(k_two_zones);
    const zone_row rows[] = {{"a fire on the left", {60, 80, 48, 116}, "stove"},
                             {"a fire on the right", {240, 80, 48, 116}, "door"}};
    for (const zone_row& row : rows) {
        SCOPED_TRACE(row.name);
        camera source({"I420", 352, 288, "bt601"});
        source.set_fire(row.fire);
        element_harness harness("zones=" + file.path());
        harness.set_caps(source);
        const std::vector<fire_meta> metas = harness.run(source, 0, 60);
        ASSERT_EQ(metas.size(), 1u);
        EXPECT_EQ(metas[0].zone, row.zone);
        const std::vector<fire_message> messages = harness.messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].zone, row.zone);
    }
}

TEST(two_zones, report_a_fire_over_both_twice) {
    const zone_file file(k_two_zones);
    camera source({"I420", 352, 288, "bt601"});
    source.set_fire(box{116, 80, 120, 116});
    element_harness harness("zones=" + file.path());
    harness.set_caps(source);
    const std::vector<fire_meta> metas = harness.run(source, 0, 60);
    ASSERT_EQ(metas.size(), 2u);
    EXPECT_EQ(metas[0].zone, "stove");
    EXPECT_EQ(metas[1].zone, "door");
    EXPECT_LE(metas[0].where.x + metas[0].where.width, 176);
    EXPECT_GE(metas[1].where.x, 176);
}

TEST(a_zone, with_a_grade_of_its_own_does_not_take_the_element_s) {
    // At grade 100 a place must be seen in 30 of 50 pictures, at grade 0 in 47. This fire is out in every third.
    const zone_file file(k_two_zones);
    const zone_row rows[] = {{"grade 0 of the element", {60, 80, 48, 116}, ""},
                             {"grade 100 of the zone", {240, 80, 48, 116}, "door"}};
    for (const zone_row& row : rows) {
        SCOPED_TRACE(row.name);
        camera source({"I420", 352, 288, "bt601"});
        element_harness harness("grade=0 zones=" + file.path());
        harness.set_caps(source);
        std::string zone;
        for (int i = 0; i < 150; ++i) {
            // Instead of it something else burns for a picture, or the picture would hold no evidence at all.
            source.set_fire(i % 3 == 2 ? box{row.fire.x + 80, 8, 12, 28} : row.fire);
            const buffer_ptr passed = harness.pass(source.picture(i));
            for (const fire_meta& meta : metas_of(passed.get())) zone = meta.zone;
        }
        EXPECT_EQ(zone, row.zone);
    }
}

TEST(tiles, show_a_fire_that_is_too_small_in_the_whole_picture) {
    camera source({"NV12", 1280, 720, "bt709"});
    source.set_fire(box{1000, 200, 24, 56});
    for (const bool tiled : {false, true}) {
        SCOPED_TRACE(tiled ? "tiles" : "whole picture");
        element_harness harness(tiled ? "tiles=auto" : "");
        harness.set_caps(source);
        EXPECT_EQ(harness.run(source, 0, 60).size(), tiled ? 1u : 0u);
    }
}

struct refused_row {
    const char* name;
    const char* properties;
    const char* zones;  // text of a file, or none
    std::vector<const char*> told;
};

std::ostream& operator<<(std::ostream& out, const refused_row& row) {
    return out << row.name;
}

class bad_settings : public testing::TestWithParam<refused_row> {};

// Refused before the first picture, with a text that says what is wrong.
TEST_P(bad_settings, are_refused_with_their_reason) {
    const refused_row& row = GetParam();
    const zone_file file(row.zones ? row.zones : "");
    std::string properties = row.properties;
    if (row.zones) properties += " zones=" + file.path();
    const camera source({"NV12", 200, 320, "bt601"});
    element_harness harness(properties);
    harness.set_caps(source);
    EXPECT_FALSE(harness.pass(source.picture(0)));
    const std::vector<std::string> errors = harness.errors();
    ASSERT_EQ(errors.size(), 1u);
    for (const char* part : row.told) EXPECT_NE(errors[0].find(part), std::string::npos) << errors[0];
    const std::string named = row.zones ? file.path() : "";
    EXPECT_NE(errors[0].find(named), std::string::npos) << errors[0];
}

INSTANTIATE_TEST_SUITE_P(
    of, bad_settings,
    testing::Values(
        refused_row{"a missing file", "zones=no-such-file.json", nullptr, {"no-such-file.json"}},
        refused_row{"a file that is no JSON", "", "fire", {}},
        refused_row{"an unknown key", "", R"({"zones": [{"nam": "stove"}]})", {"nam"}},
        refused_row{
            "a zone outside the picture",
            "",
            R"({"zones": [{"name": "hearth", "rectangles": [{"x": 150, "y": 0, "width": 100, "height": 50}]}]})",
            {"hearth"}},
        refused_row{"tiles without a number", "tiles=many", nullptr, {"tiles", "many"}},
        refused_row{"more tiles than channels", "tiles=12x11", nullptr, {"132", "128"}},
        refused_row{"tiles of a few pixels", "tiles=16x8", nullptr, {"tiles: 16 tiles over a width of 200 pixels"}}),
    [](const testing::TestParamInfo<refused_row>& row) {
        std::string name = row.param.name;
        for (char& c : name) {
            if (c == ' ') c = '_';
        }
        return name;
    });

TEST(too_many_elements, are_told_that_no_channel_is_left) {
    const camera source({"NV12", 640, 640, "bt601"});
    element_harness first("tiles=11x11"), second("tiles=3x3");
    first.set_caps(source);
    second.set_caps(source);
    ASSERT_TRUE(first.pass(source.picture(0)));
    EXPECT_FALSE(second.pass(source.picture(0)));
    const std::vector<std::string> errors = second.errors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0].find("128"), std::string::npos) << errors[0];
}

TEST(caps, of_other_formats_and_of_tiny_pictures_are_refused) {
    GstElement* element = gst_element_factory_make("orvafire", nullptr);
    GstPad* pad = gst_element_get_static_pad(element, "sink");
    struct row {
        const char* caps;
        bool accepted;
    };
    for (const row& r : {row{"video/x-raw, format=NV21, width=16, height=16", true},
                         row{"video/x-raw, format=BGRx, width=7680, height=4320", true},
                         row{"video/x-raw, format=NV12, width=15, height=16", false},
                         row{"video/x-raw, format=NV12, width=16, height=15", false},
                         row{"video/x-raw, format=GRAY8, width=640, height=360", false},
                         row{"video/x-raw(memory:DMABuf), format=NV12, width=640, height=360", false}}) {
        const caps_ptr caps(gst_caps_from_string(r.caps));
        EXPECT_EQ(gst_pad_query_accept_caps(pad, caps.get()), r.accepted) << r.caps;
    }
    gst_object_unref(pad);
    gst_object_unref(element);
}

}  // namespace
}  // namespace gst_test
