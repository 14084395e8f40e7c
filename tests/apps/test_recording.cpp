// Clocks, rates, and the annotated video in one file or a row of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "apps/orva_fire/rate_watch.h"
#include "apps/orva_fire/video_recorder.h"
#include "apps/orva_fire/video_source.h"
#include "apps/orva_fire/wall_clock.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
namespace fs = std::filesystem;

TEST(wall_clock, is_written_as_rfc_3339_in_utc) {
    EXPECT_EQ(rfc3339(0), "1970-01-01T00:00:00.000Z");
    // 20,454 days after 1970 is the first of January 2026.
    EXPECT_EQ(rfc3339(20454LL * 86400000 + 3600000 + 61001), "2026-01-01T01:01:01.001Z");
    EXPECT_EQ(rfc3339(951782400999), "2000-02-29T00:00:00.999Z");
    EXPECT_EQ(rfc3339(-1), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(file_time(20454LL * 86400000 + 3600000 + 61001), "20260101T010101Z");
}

std::string watched(double rate, double seconds) {
    rate_watch watch;
    std::string said;
    for (int i = 0; i < rate * seconds; ++i) said += watch.observe(i / rate);
    return said;
}

TEST(rate_watch, says_once_what_a_low_rate_means) {
    const std::string said = watched(5, 60);
    EXPECT_NE(said.find("gets 5.0 pictures a second"), std::string::npos) << said;
    EXPECT_NE(said.find("10 s after the fire"), std::string::npos) << said;
    EXPECT_EQ(said.find("gets", said.find("gets") + 1), std::string::npos) << said;
}

TEST(rate_watch, is_silent_about_good_rates_and_short_videos) {
    EXPECT_EQ(watched(10, 60), "");
    EXPECT_EQ(watched(25, 60), "");
    EXPECT_EQ(watched(5, 4), "");
}

frame_ptr grey_picture() {
    return flat_picture(AV_PIX_FMT_YUV420P, 64, 48, {90, 90, 90}, AVCOL_RANGE_MPEG, AVCOL_SPC_SMPTE170M);
}

std::set<std::string> names_in(const temporary_folder& folder) {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(folder.path())) found.insert(entry.path().filename().string());
    return found;
}

TEST(video_recorder, begins_a_new_file_when_one_is_long_enough) {
    const temporary_folder folder;
    recorder_settings settings;
    settings.path = folder.file("annotated.mp4");
    settings.segment = 1;
    video_recorder recorder(settings);
    for (int i = 0; i < 60; ++i) recorder.write(*grey_picture(), i / 25.0, std::nullopt);
    recorder.close();
    EXPECT_EQ(recorder.pictures(), 60);
    EXPECT_EQ(names_in(folder),
              (std::set<std::string>{"annotated-0001.mp4", "annotated-0002.mp4", "annotated-0003.mp4"}));
    int count = 0;
    video_source second(folder.file("annotated-0002.mp4"));
    source_picture picture;
    while (second.next(picture)) ++count;
    EXPECT_EQ(count, 25);
    EXPECT_EQ(second.problem(), "");
}

TEST(video_recorder, names_the_files_of_a_camera_by_their_time_and_removes_old_ones) {
    const temporary_folder folder;
    const int64_t hour = 3600000, now = 20454LL * 24 * hour;
    for (const char* name : {"annotated-20251230T235959Z.mp4", "annotated-20251231T000000Z.mp4", "annotated.mp4",
                             "other-20200101T000000Z.mp4", "annotated-20200101T000000Z.txt"}) {
        write_file(folder.file(name), "x");
    }
    recorder_settings settings;
    settings.path = folder.file("annotated.mp4");
    settings.segment = 600;
    settings.keep_hours = 24;
    video_recorder recorder(settings);
    recorder.write(*grey_picture(), 0, now);
    const std::set<std::string> others = {"annotated.mp4", "other-20200101T000000Z.mp4",
                                          "annotated-20200101T000000Z.txt"};
    std::set<std::string> expected = others;
    expected.insert({"annotated-20251231T000000Z.mp4", "annotated-20260101T000000Z.mp4"});
    EXPECT_EQ(names_in(folder), expected) << "what is a day old to the second is kept";
    recorder.write(*grey_picture(), 600, now + 600000);
    recorder.close();
    expected = others;
    expected.insert({"annotated-20260101T000000Z.mp4", "annotated-20260101T001000Z.mp4"});
    EXPECT_EQ(names_in(folder), expected);
}

TEST(video_writer, leaves_a_file_that_can_be_read_when_it_is_cut) {
    const temporary_folder folder;
    recorder_settings settings;
    settings.path = folder.file("a.mp4");
    video_recorder recorder(settings);
    // Twelve seconds with a picture to jump to every two.
    for (int i = 0; i < 300; ++i) {
        const frame_ptr picture = grey_picture();
        paint(*picture, i % 50, 10, 10, 10, k_blue);
        recorder.write(*picture, i / 25.0, std::nullopt);
    }
    recorder.close();
    const std::string bytes = read_file(settings.path);
    write_file(settings.path, bytes.substr(0, bytes.size() * 3 / 4));
    video_source source(settings.path);
    source_picture picture;
    int count = 0;
    while (source.next(picture)) ++count;
    EXPECT_GE(count, 150);
}

}  // namespace
