// Manifests: what is read, and a clear word on everything that is wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/labels.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

const char k_manifest[] =
    "# fires of the kitchen\n"
    "file,from,to,box,set,group,note\n"
    "\n"
    "kitchen/pan.mp4,12.5,40,0.40 0.30 0.62 0.71,tune,kitchen,oil in a pan\r\n"
    "  kitchen/pan.mp4 ,55,,,tune,kitchen,again\n"
    "\"a \"\"b\"\", c.mp4\",,,,,,\"no fire,\nbut steam\"\n"
    "/elsewhere/d.mp4,0,1,,test,,";

TEST(labels, are_read_with_all_they_say) {
    const std::vector<labelled_clip> clips = parse_labels(k_manifest, "/data/fires.csv");
    ASSERT_EQ(clips.size(), 3u);
    EXPECT_EQ(clips[0].file, "kitchen/pan.mp4");
    EXPECT_EQ(clips[0].path, "/data/kitchen/pan.mp4");
    EXPECT_TRUE(clips[0].tuning);
    EXPECT_EQ(clips[0].group, "kitchen");
    ASSERT_EQ(clips[0].fires.size(), 2u);
    EXPECT_EQ(clips[0].fires[0].from, 12.5);
    EXPECT_EQ(clips[0].fires[0].to, 40);
    EXPECT_EQ(clips[0].fires[0].where->left, 0.4);
    EXPECT_EQ(clips[0].fires[0].where->bottom, 0.71);
    EXPECT_EQ(clips[0].fires[1].from, 55);
    EXPECT_FALSE(clips[0].fires[1].to) << "until the end";
    EXPECT_FALSE(clips[0].fires[1].where) << "anywhere";
    EXPECT_EQ(clips[1].file, "a \"b\", c.mp4");
    EXPECT_FALSE(clips[1].tuning);
    EXPECT_TRUE(clips[1].fires.empty());
    EXPECT_EQ(clips[2].path, "/elsewhere/d.mp4");
}

TEST(labels, take_columns_in_any_order_and_without_the_optional_ones) {
    const std::vector<labelled_clip> clips = parse_labels("\xef\xbb\xbfto,file,from\n7,a.mp4,3\n", "fires.csv");
    ASSERT_EQ(clips.size(), 1u);
    EXPECT_EQ(clips[0].path, "a.mp4");
    EXPECT_EQ(clips[0].fires[0].from, 3);
    EXPECT_EQ(clips[0].fires[0].to, 7);
}

TEST(labels, have_places_in_whole_pixels_rounded_outwards) {
    labelled_fire fire;
    EXPECT_EQ(place_label(fire, {640, 360}), (box{0, 0, 640, 360}));
    fire.where = labelled_fire::edges{0.1001, 0.25, 0.4999, 1};
    // 64.06 and 319.9 of 640, 90 of 360
    EXPECT_EQ(place_label(fire, {640, 360}), (box{64, 90, 256, 270}));
}

TEST(labels, are_read_from_a_file) {
    apps_test::temporary_folder folder;
    apps_test::write_file(folder.file("f.csv"), k_manifest);
    EXPECT_EQ(read_labels(folder.file("f.csv"))[0].path, folder.file("kitchen/pan.mp4"));
    EXPECT_THROW(read_labels(folder.file("missing.csv")), io_error);
    EXPECT_THROW(read_labels(folder.path()), io_error);
}

TEST(labels, of_the_examples_are_read) {
    const std::string folder = ORVA_MANIFESTS;
    const struct {
        const char* file;
        size_t fires, others;
    } examples[] = {{"/mivia-fire.csv", 14, 17}, {"/firesense-flame.csv", 11, 16}};
    for (const auto& example : examples) {
        const std::vector<labelled_clip> clips = read_labels(folder + example.file);
        const auto burns = [](const labelled_clip& clip) { return !clip.fires.empty(); };
        const auto fires = static_cast<size_t>(std::count_if(clips.begin(), clips.end(), burns));
        EXPECT_EQ(fires, example.fires) << example.file;
        EXPECT_EQ(clips.size() - fires, example.others) << example.file;
    }
}

struct bad_row : support::named_row {
    std::string text;
    std::string said;
};

class bad_labels : public testing::TestWithParam<bad_row> {};

TEST_P(bad_labels, are_refused_with_file_and_line) {
    try {
        parse_labels(GetParam().text, "my.csv");
        FAIL() << "not refused";
    } catch (const usage_error& error) {
        const std::string said = error.what();
        EXPECT_EQ(said.rfind("'my.csv', line ", 0), 0u) << said;
        EXPECT_NE(said.find(GetParam().said), std::string::npos) << said;
    }
}

const char k_head[] = "file,from,to,box,set\n";

std::string with_head(const char* rows) {
    return std::string(k_head) + rows;
}

INSTANTIATE_TEST_SUITE_P(
    table, bad_labels,
    testing::Values(
        bad_row{{"an empty file"}, "", "line 1: the file is empty"}, bad_row{{"columns alone"}, k_head, "no recording"},
        bad_row{{"an unknown column"}, "file,from,to,colour\n", "line 1: unknown column 'colour'"},
        bad_row{{"a column that stands twice"}, "file,from,to,from\n", "column 'from' stands twice"},
        bad_row{{"no column for the end"}, "file,from\na,1\n", "column 'to' is missing"},
        bad_row{{"too few values"}, with_head("a.mp4,1,2\n"), "line 2: 3 values for 5 columns"},
        bad_row{{"too many values"}, with_head("a.mp4,1,2,,,\n"), "6 values for 5 columns"},
        bad_row{{"no file"}, with_head(",1,2,,\n"), "column 'file' is empty"},
        bad_row{{"a time that is none"}, with_head("a.mp4,soon,2,,\n"), "column 'from': 'soon'"},
        bad_row{{"a negative time"}, with_head("a.mp4,-1,2,,\n"), "column 'from': '-1'"},
        bad_row{{"a time with an exponent"}, with_head("a.mp4,1e3,2,,\n"), "column 'from': '1e3'"},
        bad_row{{"a time with two points"}, with_head("a.mp4,1.2.3,2,,\n"), "column 'from': '1.2.3'"},
        bad_row{{"a time beyond all recordings"}, with_head("a.mp4,1,99999999999,,\n"), "column 'to'"},
        bad_row{{"an end without a beginning"}, with_head("a.mp4,,2,,\n"), "'from' is empty"},
        bad_row{{"a fire that ends before it begins"}, with_head("a.mp4,5,2,,\n"), "before it begins"},
        bad_row{{"a fire without length"}, with_head("a.mp4,5,5,,\n"), "before it begins"},
        bad_row{{"a box of three numbers"}, with_head("a.mp4,1,2,0 0 1,\n"), "column 'box'"},
        bad_row{{"a box in pixels"}, with_head("a.mp4,1,2,0 0 640 360,\n"), "column 'box': '640'"},
        bad_row{{"a box that is upside down"}, with_head("a.mp4,1,2,0 0.5 1 0.2,\n"), "upside down"},
        bad_row{{"a box without a fire"}, with_head("a.mp4,,,0 0 1 1,\n"), "without fire"},
        bad_row{{"an unknown set"}, with_head("a.mp4,1,2,,train\n"), "'train'"},
        bad_row{{"a recording in both sets"},
                with_head("a.mp4,1,2,,tune\na.mp4,3,4,,test\n"),
                "line 3: 'a.mp4' stands in both"},
        bad_row{{"fire and no fire"}, with_head("a.mp4,1,2,,\na.mp4,,,,\n"), "line without fire"},
        bad_row{{"no fire twice"}, with_head("a.mp4,,,,\na.mp4,,,,\n"), "line without fire"},
        bad_row{{"a quote that is not closed"}, with_head("\"a.mp4,1,2,,\n"), "line 2: a quote that is not closed"},
        bad_row{{"a quote in the middle"}, with_head("a\"b.mp4,1,2,,\n"), "a quote in a value"},
        bad_row{{"something behind a quote"}, with_head("\"a\"b,1,2,,\n"), "behind a closing quote"}),
    row_name());

}  // namespace
