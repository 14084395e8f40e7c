// Live sources: cameras that come, go, fall silent and refuse.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/live_source.h"
#include "apps/orva_fire/pipe_input.h"
#include "apps/orva_fire/stop_signal.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/fake_camera.h"
#include "tests/apps/pictures.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

const int k_pictures = 20;

std::string small_clip(const temporary_folder& folder, int width = 64, int height = 48) {
    clip_recipe recipe;
    recipe.path = folder.file("small" + std::to_string(width) + ".mp4");
    recipe.codec = "libx264";
    recipe.width = width;
    recipe.height = height;
    recipe.times = steady(k_pictures, 25);
    recipe.paint = [&](int index, AVFrame& picture) {
        paint(picture, 0, 0, width, height, {90, 90, 90});
        paint(picture, 2 * index, 8, 8, 8, k_blue);
    };
    make_clip(recipe);
    return recipe.path;
}

live_settings quick() {
    live_settings settings;
    settings.first_pause = 0.05;
    settings.longest_pause = 0.1;
    return settings;
}

// The next picture with a frame; gathers warnings on the way.
source_picture next_picture(live_source& source, std::string& warnings) {
    source_picture picture;
    do {
        if (!source.next(picture)) break;
        for (const std::string& warning : source.take_warnings()) warnings += warning + "\n";
    } while (!picture.frame);
    return picture;
}

TEST(live_source, goes_on_over_lost_connections) {
    const temporary_folder folder;
    fake_camera camera({small_clip(folder), after_clip::hang_up, "", ""});
    live_source source(camera_address(camera.address(), "", 10), quick());
    std::string warnings;
    double last = -1;
    int gaps = 0;
    for (int i = 0; i < 3 * k_pictures; ++i) {
        const source_picture picture = next_picture(source, warnings);
        ASSERT_TRUE(picture.frame) << i;
        EXPECT_EQ(picture.index, i);
        EXPECT_GT(picture.seconds, last);
        EXPECT_TRUE(picture.wall_milliseconds);
        last = picture.seconds;
        gaps += picture.after_gap;
    }
    EXPECT_GE(gaps, 1);
    EXPECT_GE(camera.viewers(), 3);
    EXPECT_NE(warnings.find("trying again in 0.05 s"), std::string::npos) << warnings;
    EXPECT_NE(warnings.find("there are pictures again"), std::string::npos) << warnings;
    EXPECT_EQ(source.dropped(), 0);
}

TEST(live_source, finds_a_camera_that_is_switched_off_and_on) {
    const temporary_folder folder;
    fake_camera camera({small_clip(folder), after_clip::fall_silent, "", ""});
    live_source source(camera_address(camera.address(), "", 10), quick());
    std::string warnings;
    for (int i = 0; i < k_pictures / 2; ++i) ASSERT_TRUE(next_picture(source, warnings).frame);
    camera.switch_off();
    source_picture nothing;
    while (warnings.find("refused") == std::string::npos) {
        ASSERT_TRUE(source.next(nothing));
        for (const std::string& warning : source.take_warnings()) warnings += warning + "\n";
    }
    camera.switch_on();
    bool gap = false;
    for (int i = 0; i < k_pictures && !gap; ++i) gap = next_picture(source, warnings).after_gap;
    EXPECT_TRUE(gap) << warnings;
}

TEST(live_source, leaves_a_camera_that_falls_silent) {
    const temporary_folder folder;
    fake_camera camera({small_clip(folder), after_clip::fall_silent, "", ""});
    live_settings settings = quick();
    settings.patience = 1;
    live_source source(camera_address(camera.address(), "", 60), settings);
    std::string warnings;
    bool silent = false;
    source_picture picture;
    while (!picture.after_gap) {
        ASSERT_TRUE(source.next(picture));
        silent |= !picture.frame;
        for (const std::string& warning : source.take_warnings()) warnings += warning + "\n";
    }
    EXPECT_TRUE(silent) << "a picture without a frame tells the caller that time goes by";
    EXPECT_GE(camera.viewers(), 2);
    EXPECT_NE(warnings.find("no picture for 1 s"), std::string::npos) << warnings;
}

TEST(live_source, knows_the_password_with_all_its_characters) {
    const temporary_folder folder;
    const std::string password = "p@ss:w/rd%20 #1";
    fake_camera camera({small_clip(folder), after_clip::hang_up, "viewer", password});
    live_source source(camera_address(camera.address("viewer"), password, 10), quick());
    std::string warnings;
    EXPECT_TRUE(next_picture(source, warnings).frame);
    EXPECT_EQ(warnings.find(password), std::string::npos) << warnings;
}

TEST(live_source, ends_when_the_camera_refuses_the_password_and_does_not_tell_it) {
    const temporary_folder folder;
    fake_camera camera({small_clip(folder), after_clip::hang_up, "viewer", "right"});
    live_source source(camera_address(camera.address("viewer"), "wrong-one", 10), quick());
    source_picture picture;
    try {
        while (source.next(picture)) EXPECT_FALSE(picture.frame);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const refused_error& error) {
        const std::string said = error.what();
        EXPECT_NE(said.find("refused the user or the password"), std::string::npos) << said;
        EXPECT_EQ(said.find("wrong-one"), std::string::npos) << said;
    }
}

TEST(live_source, throws_the_oldest_pictures_away_when_nobody_takes_them) {
    const temporary_folder folder;
    fake_camera camera({small_clip(folder), after_clip::hang_up, "", ""});
    live_settings settings = quick();
    settings.queue_bytes = 5 * 64 * 48 * 3 / 2;
    settings.reconnects = false;
    live_source source(camera_address(camera.address(), "", 10), settings);
    // Nothing is taken until all have come.
    while (source.dropped() < k_pictures - 5) std::this_thread::yield();
    source_picture picture;
    int count = 0;
    while (source.next(picture)) count += picture.frame != nullptr;
    EXPECT_EQ(count, 5);
    EXPECT_EQ(source.dropped(), k_pictures - 5);
}

TEST(live_source, of_a_pipe_ends_with_it) {
    const temporary_folder folder;
    clip_recipe recipe;
    recipe.path = folder.file("a.mkv");
    recipe.width = 64;
    recipe.height = 48;
    recipe.times = steady(k_pictures, 25);
    recipe.paint = [](int index, AVFrame& picture) { paint(picture, 0, 0, 64, 48, {4.0 * index, 90, 90}); };
    make_clip(recipe);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread writer([&] {
        const std::string bytes = read_file(recipe.path);
        EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(ends[1]);
    });
    live_settings settings = quick();
    settings.reconnects = false;
    input_address address = pipe_address(ends[0], "standard input");
    address.live = true;
    int count = 0;
    {
        live_source source(address, settings);
        source_picture picture;
        while (source.next(picture)) count += picture.frame != nullptr;
        EXPECT_EQ(source.problem(), "");
    }
    writer.join();
    close(ends[0]);
    EXPECT_EQ(count, k_pictures);
}

TEST(live_source, stops_at_once_while_it_waits) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        live_source source(pipe_address(ends[0], "standard input"), quick());
        request_stop();
        source_picture picture;
        EXPECT_FALSE(source.next(picture));
    }
    forget_stop();
    close(ends[0]);
    close(ends[1]);
}

TEST(back_off, doubles_up_to_its_limit_and_starts_anew) {
    back_off pauses(1, 30);
    for (const double expected : {1, 2, 4, 8, 16, 30, 30}) EXPECT_EQ(pauses.next(), expected);
    pauses.succeeded();
    EXPECT_EQ(pauses.next(), 1);
}

}  // namespace
