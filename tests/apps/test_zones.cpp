// Files of zones: what is read, and a clear word on everything that is wrong.
#include <gtest/gtest.h>

#include <clocale>
#include <functional>
#include <string>
#include <vector>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/zones.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace orva_fire {

static void PrintTo(const box& b, std::ostream* out) {
    *out << b.x << "," << b.y << " " << b.width << "x" << b.height;
}

}  // namespace orva_fire

namespace {

using namespace orva_fire;
using support::row_name;

const char k_two_zones[] = R"({
    "zones": [
        {"name": "stove", "grade": 85,
         "rectangles": [{"x": "10%", "y": 0, "width": "50%", "height": "100%"}]},
        {"name": "door and window",
         "rectangles": [{"x": 0, "y": 0, "width": 64, "height": 48},
                        {"x": "87.5%", "y": "25.0%", "width": "12.5%", "height": 90}]}
    ]})";

TEST(zones, are_read_with_all_they_say) {
    const std::vector<zone_spec> zones = parse_zones(k_two_zones, "zones.json");
    ASSERT_EQ(zones.size(), 2u);
    EXPECT_EQ(zones[0].name, "stove");
    EXPECT_EQ(zones[0].grade, 85);
    EXPECT_EQ(zones[0].file, "zones.json");
    ASSERT_EQ(zones[0].parts.size(), 1u);
    EXPECT_TRUE(zones[0].parts[0].x.percent);
    EXPECT_EQ(zones[0].parts[0].x.number, 10);
    EXPECT_FALSE(zones[0].parts[0].y.percent);
    EXPECT_EQ(zones[0].parts[0].y.number, 0);
    EXPECT_EQ(zones[1].name, "door and window");
    EXPECT_EQ(zones[1].grade, std::nullopt);
    ASSERT_EQ(zones[1].parts.size(), 2u);
    EXPECT_EQ(zones[1].parts[1].x.number, 87.5);
    EXPECT_EQ(zones[1].parts[1].y.number, 25);
    EXPECT_EQ(zones[1].parts[1].height.number, 90);
}

TEST(zones, lie_where_they_should) {
    const std::vector<zone_spec> zones = parse_zones(k_two_zones, "zones.json");
    EXPECT_EQ(place_zone(zones[0], {640, 360}), (std::vector<box>{{64, 0, 320, 360}}));
    EXPECT_EQ(place_zone(zones[1], {640, 360}), (std::vector<box>{{0, 0, 64, 48}, {560, 90, 80, 90}}));
}

TEST(zones, may_have_any_readable_name) {
    const std::string text =
        R"({"zones":[{"name":"<img src=x onerror=alert(1)> \"К\u00fcche\" \\ ;rm -rf","rectangles":[{"x":0,"y":0,"width":16,"height":16}]}]})";
    EXPECT_EQ(parse_zones(text, "f")[0].name, "<img src=x onerror=alert(1)> \"К\u00fcche\" \\ ;rm -rf");
}

TEST(zones, are_read_the_same_where_decimals_have_a_comma) {
    const std::string old = std::setlocale(LC_NUMERIC, nullptr);
    const bool other = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
    const std::vector<zone_spec> zones = parse_zones(k_two_zones, "zones.json");
    std::setlocale(LC_NUMERIC, old.c_str());
    EXPECT_EQ(zones[1].parts[1].x.number, 87.5) << (other ? "with" : "without") << " a comma";
}

TEST(zones, are_read_from_a_file) {
    apps_test::temporary_folder folder;
    apps_test::write_file(folder.file("z.json"), k_two_zones);
    EXPECT_EQ(read_zones(folder.file("z.json")).size(), 2u);
    EXPECT_THROW(read_zones(folder.file("missing.json")), io_error);
    EXPECT_THROW(read_zones(folder.path()), io_error) << "a folder is no file";
    apps_test::write_file(folder.file("huge.json"), std::string((1 << 20) + 1, ' '));
    EXPECT_THROW(read_zones(folder.file("huge.json")), usage_error);
    apps_test::write_file(folder.file("just.json"),
                          k_two_zones + std::string((1 << 20) - sizeof(k_two_zones) + 1, ' '));
    EXPECT_EQ(read_zones(folder.file("just.json")).size(), 2u);
}

// --- what is refused -------------------------------------------------------------------------------------------------

// A file with one zone "stove" of one rectangle, parts of which are replaced.
std::string one_zone(const std::string& rest, const std::string& rectangle = R"("x":0,"y":0,"width":64,"height":48)") {
    return R"({"zones":[{"name":"stove")" + rest + R"(,"rectangles":[{)" + rectangle + "}]}]}";
}

std::string with_x(const std::string& value) {
    return one_zone("", R"("y":0,"width":64,"height":48,"x":)" + value);
}

struct bad_row : support::named_row {
    std::string text;
    std::vector<std::string> said;  // parts of the message, beside the file's name
};

class bad_zones : public testing::TestWithParam<bad_row> {};

TEST_P(bad_zones, are_refused_with_file_zone_and_key) {
    try {
        parse_zones(GetParam().text, "my zones.json");
        FAIL() << "not refused";
    } catch (const usage_error& error) {
        const std::string said = error.what();
        EXPECT_EQ(said.rfind("'my zones.json'", 0), 0u) << said;
        for (const std::string& part : GetParam().said) EXPECT_NE(said.find(part), std::string::npos) << said;
        EXPECT_EQ(said.find('\n'), std::string::npos) << said;
        EXPECT_LT(said.size(), 400u) << said;
    }
}

INSTANTIATE_TEST_SUITE_P(
    form, bad_zones,
    testing::Values(bad_row{{"an empty file"}, "", {"not JSON"}}, bad_row{{"no JSON"}, "zones: stove", {"not JSON"}},
                    bad_row{{"a file that is cut short"}, R"({"zones":[{"name":"st)", {"not JSON"}},
                    bad_row{{"something behind the end"}, one_zone("") + "}", {"not JSON"}},
                    bad_row{{"broken UTF-8"},
                            R"({"zones":[{"name":"st)"
                            "\xc3\x28"
                            R"("}]})",
                            {"not JSON"}},
                    bad_row{{"a zero byte"}, std::string("{\"zones\":\0[]}", 13), {"not JSON"}},
                    bad_row{{"a list at the top"}, "[]", {"object", "array"}},
                    bad_row{{"null"}, "null", {"object", "null"}}, bad_row{{"no zones"}, "{}", {"'zones' is missing"}},
                    bad_row{{"an empty list of zones"}, R"({"zones":[]})", {"'zones'", "list"}},
                    bad_row{{"zones that are no list"}, R"({"zones":{}})", {"'zones'", "list"}},
                    bad_row{{"an unknown key at the top"}, R"({"zones":[],"version":1})", {"unknown key 'version'"}},
                    bad_row{{"a zone that is a text"}, R"({"zones":["stove"]})", {"zone 1", "object", "string"}},
                    bad_row{{"a key that stands twice"}, one_zone(R"(,"grade":1,"grade":2)"), {"'grade'", "twice"}},
                    bad_row{{"a bottomless list"}, std::string(100000, '['), {"deeper"}},
                    bad_row{{"a bottomless object"},
                            [] {
                                std::string text;
                                for (int i = 0; i < 1000; ++i) text += "{\"zones\":";
                                return text;
                            }(),
                            {"deeper"}}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    keys, bad_zones,
    testing::Values(
        bad_row{{"an unknown key in a zone"}, one_zone(R"(,"colour":"red")"), {"zone 1", "unknown key 'colour'"}},
        bad_row{{"an unknown key in a rectangle"},
                one_zone("", R"("x":0,"y":0,"width":64,"height":48,"w":1)"),
                {"zone 'stove', rectangle 1", "unknown key 'w'"}},
        bad_row{{"no name"}, R"({"zones":[{"rectangles":[]}]})", {"zone 1", "'name' is missing"}},
        bad_row{{"an empty name"}, R"({"zones":[{"name":"","rectangles":[]}]})", {"zone 1", "'name'", "1 to 100"}},
        bad_row{{"a name of 101 bytes"},
                R"({"zones":[{"name":")" + std::string(101, 'n') + R"(","rectangles":[]}]})",
                {"zone 1", "'name'", "101"}},
        bad_row{{"a name with a line end"}, R"({"zones":[{"name":"a\nb","rectangles":[]}]})", {"'name'", "control"}},
        bad_row{{"a name with a zero"}, R"({"zones":[{"name":"a\u0000b","rectangles":[]}]})", {"'name'", "control"}},
        bad_row{{"a number as a name"}, R"({"zones":[{"name":7,"rectangles":[]}]})", {"'name' must be a text"}},
        bad_row{{"a name that occurs twice"},
                R"({"zones":[{"name":"a","rectangles":[{"x":0,"y":0,"width":16,"height":16}]},
                             {"name":"a","rectangles":[{"x":0,"y":0,"width":16,"height":16}]}]})",
                {"zone 'a'", "twice"}},
        bad_row{{"a grade of 101"}, one_zone(R"(,"grade":101)"), {"zone 'stove'", "'grade'", "not 101"}},
        bad_row{{"a negative grade"}, one_zone(R"(,"grade":-1)"), {"zone 'stove'", "'grade'", "not -1"}},
        bad_row{{"a grade that is no whole number"}, one_zone(R"(,"grade":70.5)"), {"'grade'", "not 70.5"}},
        bad_row{{"a grade as text"}, one_zone(R"(,"grade":"70")"), {"'grade'"}},
        bad_row{{"a grade of null"}, one_zone(R"(,"grade":null)"), {"'grade'", "not null"}},
        bad_row{{"a grade beyond all numbers"}, one_zone(R"(,"grade":99999999999999999999)"), {"'grade'"}},
        bad_row{{"no rectangles"}, R"({"zones":[{"name":"a"}]})", {"zone 'a'", "'rectangles' is missing"}},
        bad_row{{"an empty list of rectangles"},
                R"({"zones":[{"name":"a","rectangles":[]}]})",
                {"zone 'a'", "'rectangles'"}},
        bad_row{{"a rectangle that is a list"},
                R"({"zones":[{"name":"a","rectangles":[[0,0,64,48]]}]})",
                {"zone 'a', rectangle 1", "object"}}),
    row_name());

INSTANTIATE_TEST_SUITE_P(
    values, bad_zones,
    testing::Values(bad_row{{"no x"},
                            one_zone("", R"("y":0,"width":64,"height":48)"),
                            {"zone 'stove', rectangle 1", "'x' is missing"}},
                    bad_row{{"no height"}, one_zone("", R"("x":0,"y":0,"width":64)"), {"'height' is missing"}},
                    bad_row{{"half a pixel"}, with_x("1.5"), {"zone 'stove', rectangle 1", "'x'", "not 1.5"}},
                    bad_row{{"a negative number"}, with_x("-1"), {"'x'", "not -1"}},
                    bad_row{{"more pixels than any picture"}, with_x("65537"), {"'x'"}},
                    bad_row{{"a number beyond all bounds"}, with_x("1e300"), {"'x'"}},
                    bad_row{{"true"}, with_x("true"), {"'x'", "not true"}}, bad_row{{"null"}, with_x("null"), {"'x'"}},
                    bad_row{{"a text without percent"}, with_x("\"10\""), {"'x'", "not \"10\""}},
                    bad_row{{"percent alone"}, with_x("\"%\""), {"'x'"}},
                    bad_row{{"two percent signs"}, with_x("\"10%%\""), {"'x'"}},
                    bad_row{{"a blank before percent"}, with_x("\"10 %\""), {"'x'"}},
                    bad_row{{"a negative share"}, with_x("\"-10%\""), {"'x'"}},
                    bad_row{{"a point without digits"}, with_x("\"10.%\""), {"'x'"}},
                    bad_row{{"a point at the front"}, with_x("\".5%\""), {"'x'"}},
                    bad_row{{"two points"}, with_x("\"1.2.3%\""), {"'x'"}},
                    bad_row{{"a comma"}, with_x("\"12,5%\""), {"'x'"}},
                    bad_row{{"more than 100 percent"}, with_x("\"100.5%\""), {"'x'"}},
                    bad_row{{"a number without end"}, with_x("\"" + std::string(50, '1') + "%\""), {"'x'"}},
                    bad_row{{"not a number"}, with_x("\"nan%\""), {"'x'"}}),
    row_name());

// --- names, places and channels --------------------------------------------------------------------------------------

zone_spec zone_of(const std::string& name, const std::vector<std::string>& parts) {
    zone_spec zone;
    zone.name = name;
    for (const std::string& part : parts) zone.parts.push_back(parse_region(part));
    return zone;
}

std::string complaint(const std::function<void()>& action) {
    try {
        action();
    } catch (const usage_error& error) {
        return error.what();
    }
    return "";
}

TEST(zone_names, must_differ_over_file_and_command_line) {
    EXPECT_NO_THROW(check_names({zone_of("a", {"0,0,16,16"}), zone_of("b", {"0,0,16,16"})}));
    EXPECT_EQ(complaint([] {
                  check_names({zone_of("a", {}), zone_of("b", {}), zone_of("a", {})});
              }),
              "zone 'a': this name occurs twice");
}

TEST(zone_place, names_what_does_not_fit) {
    zone_spec zone = zone_of("stove", {"0,0,64,48", "600,0,64,48"});
    zone.file = "z.json";
    const std::string said = complaint([&] { place_zone(zone, {640, 360}); });
    EXPECT_EQ(said.rfind("'z.json', zone 'stove', rectangle 2: ", 0), 0u) << said;
    EXPECT_NE(said.find("to 664 of 640 pixels"), std::string::npos) << said;
    EXPECT_NE(complaint([] {
                  place_zone(zone_of("a", {"0,0,8,48"}), {640, 360});
              }).find("at least 16"),
              std::string::npos);
}

TEST(channels, are_one_for_each_tile_and_twice_that_with_an_age) {
    tile_grid three_by_two;
    three_by_two.columns = 3;
    three_by_two.rows = 2;
    const std::vector<zone_spec> zones{zone_of("a", {"0,0,50%,50%"}), zone_of("b", {"0,0,50%,50%", "50%,0,50%,50%"})};
    EXPECT_EQ(count_channels(zones, {640, 360}, tile_grid(), false), 3);
    EXPECT_EQ(count_channels(zones, {640, 360}, tile_grid(), true), 6);
    EXPECT_EQ(count_channels(zones, {640, 360}, three_by_two, false), 18);
    EXPECT_EQ(count_channels(zones, {640, 360}, three_by_two, true), 36);
}

TEST(channels, are_128_at_most) {
    std::vector<zone_spec> zones;
    for (int i = 0; i < 64; ++i) zones.push_back(zone_of("zone " + std::to_string(i), {"0,0,16,16"}));
    EXPECT_EQ(count_channels(zones, {640, 360}, tile_grid(), true), 128);
    zones.push_back(zone_of("one more", {"0,0,16,16"}));
    EXPECT_EQ(count_channels(zones, {640, 360}, tile_grid(), false), 65);
    const std::string said = complaint([&] { count_channels(zones, {640, 360}, tile_grid(), true); });
    EXPECT_NE(said.find("need 130 channels"), std::string::npos) << said;
    EXPECT_NE(said.find("has 128"), std::string::npos) << said;
    EXPECT_NE(said.find("--max-age 0"), std::string::npos) << said;
}

}  // namespace
