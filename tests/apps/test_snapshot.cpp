// Pictures of events: which are taken, and what is in them.
#include <gtest/gtest.h>

#include <filesystem>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/snapshot.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
namespace fs = std::filesystem;

frame_ptr picture_of(const colour& c) {
    return flat_picture(AV_PIX_FMT_YUV420P, 64, 48, c, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709);
}

// The colour in the middle of a JPEG file, read back.
colour seen_in(const std::string& path) {
    video_source source(path);
    source_picture picture;
    EXPECT_TRUE(source.next(picture));
    EXPECT_EQ(picture.frame->width, 64);
    const triple yuv{1.0 * component(*picture.frame, 30, 20, 0), 1.0 * component(*picture.frame, 30, 20, 1),
                     1.0 * component(*picture.frame, 30, 20, 2)};
    return to_rgb(yuv, true, AVCOL_SPC_SMPTE170M);
}

void expect_colour(const colour& got, const colour& wanted) {
    EXPECT_NEAR(got.red, wanted.red, 5);
    EXPECT_NEAR(got.green, wanted.green, 5);
    EXPECT_NEAR(got.blue, wanted.blue, 5);
}

fire_event event_of(int id, event_kind kind, bool grew) {
    fire_event event;
    event.id = id;
    event.kind = kind;
    event.grew = grew;
    return event;
}

TEST(jpeg_writer, keeps_the_colours_of_limited_BT_709_video) {
    const temporary_folder folder;
    for (const colour& c : {k_white, k_orange, k_blue}) {
        jpeg_writer().write(folder.file("a.jpg"), *picture_of(c));
        expect_colour(seen_in(folder.file("a.jpg")), c);
    }
}

TEST(jpeg_writer, names_a_file_that_cannot_be_made) {
    EXPECT_THROW(jpeg_writer().write("/dev/null/a.jpg", *picture_of(k_white)), io_error);
    EXPECT_THROW(jpeg_writer().write("/dev/full", *picture_of(k_white)), io_error);
}

TEST(snapshot_taker, takes_the_start_at_once_and_the_largest_at_the_end) {
    const temporary_folder folder;
    snapshot_taker taker(folder.path());
    EXPECT_EQ(taker.take(event_of(1, event_kind::start, true), picture_of(k_orange)), "event-0001-start.jpg");
    EXPECT_TRUE(fs::exists(folder.file("event-0001-start.jpg")));
    EXPECT_EQ(taker.take(event_of(1, event_kind::update, true), picture_of(k_flame)), "");
    EXPECT_EQ(taker.take(event_of(1, event_kind::update, false), picture_of(k_blue)), "");
    EXPECT_FALSE(fs::exists(folder.file("event-0001-largest.jpg")));
    EXPECT_EQ(taker.take(event_of(1, event_kind::end, false), picture_of(k_black)), "event-0001-largest.jpg");
    expect_colour(seen_in(folder.file("event-0001-start.jpg")), k_orange);
    expect_colour(seen_in(folder.file("event-0001-largest.jpg")), k_flame);
}

TEST(snapshot_taker, keeps_events_apart) {
    const temporary_folder folder;
    snapshot_taker taker(folder.path());
    taker.take(event_of(1, event_kind::start, true), picture_of(k_orange));
    taker.take(event_of(2, event_kind::start, true), picture_of(k_blue));
    taker.take(event_of(1, event_kind::end, false), picture_of(k_black));
    taker.take(event_of(2, event_kind::end, false), picture_of(k_black));
    expect_colour(seen_in(folder.file("event-0001-largest.jpg")), k_orange);
    expect_colour(seen_in(folder.file("event-0002-largest.jpg")), k_blue);
}

TEST(snapshot_taker, removes_pictures_of_an_earlier_run_and_nothing_else) {
    const temporary_folder folder;
    for (const char* name :
         {"event-0007-start.jpg", "event-12345-largest.jpg", "event-1-start.jpg", "my-event-0001-start.jpg"}) {
        write_file(folder.file(name), "x");
    }
    const snapshot_taker taker(folder.path());
    EXPECT_FALSE(fs::exists(folder.file("event-0007-start.jpg")));
    EXPECT_FALSE(fs::exists(folder.file("event-12345-largest.jpg")));
    EXPECT_TRUE(fs::exists(folder.file("event-1-start.jpg")));
    EXPECT_TRUE(fs::exists(folder.file("my-event-0001-start.jpg")));
}

}  // namespace
