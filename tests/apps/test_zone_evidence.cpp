// Evidence beside a zone's channels, in every arrangement of tiles and ages: the same answers, picture by picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/run_observer.h"
#include "apps/orva_fire/zone_evidence.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

const double k_rate = 25;

frame_ptr canvas(picture_size size) {
    frame_ptr frame = new_picture(AV_PIX_FMT_YUV420P, size.width, size.height);
    frame->color_range = AVCOL_RANGE_MPEG;
    frame->colorspace = AVCOL_SPC_SMPTE170M;
    return frame;
}

struct zone_row : support::named_row {
    picture_size source;
    std::vector<box> parts;
    tile_grid tiles;
    double max_age;
    std::optional<int> grade;
    size_t channels;
};

class a_zone : public testing::TestWithParam<zone_row> {};

TEST_P(a_zone, has_the_evidence_of_its_answers) {
    const zone_row& row = GetParam();
    const library_output quiet("");
    const detector_session session;
    watch_settings settings;
    settings.grade = row.grade;
    settings.tiles = row.tiles;
    settings.max_age = row.max_age;
    zone_watcher watcher(row.parts, settings);
    ASSERT_EQ(watcher.tiles().size(), row.channels);

    std::vector<std::vector<box>> lists;
    bool fresh = false;
    zone_evidence evidence(watcher, row.grade, quiet, [&](const zone_evidence::view& view) {
        EXPECT_EQ(view.area, watcher.tiles()[view.tile]);
        lists.emplace_back();
        for (const box& b : view.seen.answered) lists.back().push_back(to_source(b, view.seen.size, view.area));
        fresh = fresh || view.seen.fresh;
        const stage_pictures stages = view.stages.make(view.picture);
        EXPECT_EQ(std::count(stages.mask.bytes.begin(), stages.mask.bytes.end(), 255), view.seen.mask);
    });
    fire_pictures pictures(row.source.width, row.source.height, 0.4);
    const frame_ptr frame = canvas(row.source);
    stopwatch unused;
    int reported = 0;
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE("picture " + std::to_string(i));
        // A gap in time, after which the zone starts afresh.
        const double seconds = i / k_rate + (i < 80 ? 0 : 60);
        pictures.paint(i / k_rate, i, *frame);
        lists.clear();
        fresh = false;
        evidence.set_moment({i, seconds});
        const zone_answer answer = watcher.observe(*frame, seconds, unused, unused);
        ASSERT_EQ(lists.size(), row.channels);
        EXPECT_EQ(merge_boxes(lists), answer.boxes);
        EXPECT_EQ(fresh, answer.fresh);
        reported += !answer.boxes.empty();
    }
    EXPECT_GT(reported, 0) << "the scene must burn";
}

INSTANTIATE_TEST_SUITE_P(
    table, a_zone,
    testing::Values(zone_row{{"in one piece"}, {320, 240}, {{0, 0, 320, 240}}, {}, 0, {}, 1},
                    zone_row{{"at a higher grade"}, {320, 240}, {{0, 0, 320, 240}}, {}, 0, 100, 1},
                    zone_row{{"as large as the library takes it"}, {704, 576}, {{0, 0, 704, 576}}, {}, 0, {}, 1},
                    zone_row{{"in tiles"}, {640, 480}, {{0, 0, 640, 480}}, {2, 2, false}, 0, {}, 4},
                    zone_row{{"of two parts"}, {640, 480}, {{0, 0, 300, 480}, {300, 0, 340, 480}}, {}, 0, {}, 2},
                    zone_row{{"with evidence that ages"}, {320, 240}, {{0, 0, 320, 240}}, {}, 3, 100, 1}),
    row_name());

TEST(a_run, that_is_observed_writes_its_report_and_what_is_explained) {
    const temporary_folder folder;
    const library_output quiet("");
    const detector_session session;
    zone_watcher watcher({{0, 0, 320, 240}}, {});
    observer_settings settings;
    settings.folder = folder.path();
    settings.source = "yard & co.mp4";
    settings.explain = frame_choice::parse("1,3-4");
    run_observer observer(settings, {{"stove", &watcher, 85}}, {320, 240}, quiet);
    fire_pictures pictures(320, 240, 0);
    const frame_ptr frame = canvas({320, 240});
    stopwatch unused;
    for (int i = 0; i < 20; ++i) {
        pictures.paint(i / k_rate, i, *frame);
        observer.set_moment({i, i / k_rate});
        watcher.observe(*frame, i / k_rate, unused, unused);
    }
    fire_event event;
    event.id = 1;
    event.boxes = {{10, 20, 30, 40}};
    event.largest = event.boxes[0];
    event.at = {5, 0.2};
    event.grew = true;
    observer.add(event, *frame, {"annotated.mp4", 0});
    event.kind = event_kind::end;
    event.grew = false;
    event.at = {10, 0.4};
    observer.add(event, *frame, {"annotated.mp4", 0});
    observer.start_trouble("dark", 0.5);
    report_data about;
    about.seconds = 0.8;
    about.frames = 20;
    observer.finish(about);

    const std::string page = read_file(folder.file("report.html"));
    for (const char* part :
         {"yard &amp; co.mp4", "stove", "annotated.mp4#t=0.20", "dark: 0:00.5 to 0:00.8", "evidence still gathering",
          "<td data-l=\"grade\">85</td>", "event 1, start at 0:00.2", "event 1, largest at 0:00.0"}) {
        EXPECT_NE(page.find(part), std::string::npos) << part;
    }
    int explained = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.file("explain")))
        explained += entry.is_directory();
    EXPECT_EQ(explained, 3);
    EXPECT_TRUE(std::filesystem::exists(folder.file("explain/picture-000003-zone-1-1/8-boxes.png")));
}

TEST(a_report, of_an_endless_stream_stays_small) {
    report_builder builder({report_zone()});
    const frame_ptr picture = canvas({64, 48});
    fire_event event;
    for (event.id = 1; event.id <= 1000; ++event.id) {
        for (const event_kind kind : {event_kind::start, event_kind::end}) {
            event.kind = kind;
            event.at.seconds += 1;
            builder.add(event, *picture, {});
        }
        builder.start_trouble("dark", event.at.seconds);
    }
    const report_data made = builder.finish({});
    EXPECT_EQ(made.events.size(), 200u);
    EXPECT_EQ(made.events_left_out, 800);
    EXPECT_EQ(made.events[199].to, 400);
    EXPECT_EQ(made.troubles.size(), 200u);
}

}  // namespace
