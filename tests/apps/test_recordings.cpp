// Which recordings there are, what their results are called, and how long they are.
#include "apps/orva_fire/recordings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/open_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/pictures.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;
namespace fs = std::filesystem;

class recordings : public testing::Test {
protected:
    void put(const std::string& name) {
        fs::create_directories(fs::path(m_folder.file(name)).parent_path());
        write_file(m_folder.file(name), "x");
    }

    std::vector<std::string> names(const recording_search& search) {
        std::vector<std::string> found;
        for (const recording& each : find_recordings(search)) found.push_back(each.name);
        return found;
    }

    recording_search in(const std::string& source) {
        recording_search search;
        search.sources = {m_folder.file(source)};
        return search;
    }

    using list = std::vector<std::string>;
    temporary_folder m_folder;
};

TEST_F(recordings, are_the_videos_in_all_folders_below_by_name) {
    for (const char* name : {"r/gate/2.mp4", "r/gate/10.MKV", "r/a.mp4", "r/door/deep/1.ts", "r/notes.txt"}) put(name);
    EXPECT_EQ(names(in("r")), (list{"a.mp4", "door/deep/1.ts", "gate/10.MKV", "gate/2.mp4"}));
}

TEST_F(recordings, keep_the_path_that_they_are_opened_by) {
    put("r/gate/2.mp4");
    EXPECT_EQ(find_recordings(in("r")).at(0).path, m_folder.file("r/gate/2.mp4"));
}

TEST_F(recordings, are_not_looked_for_in_hidden_places) {
    for (const char* name : {"r/.trash/1.mp4", "r/.2.mp4", "r/3.mp4"}) put(name);
    EXPECT_EQ(names(in("r")), (list{"3.mp4"}));
}

TEST_F(recordings, are_not_looked_for_among_results) {
    for (const char* name : {"r/1.mp4", "r/out/1.mp4/annotated.mp4", "r/old/2.mp4/annotated.mp4", "r/old/3.mp4"})
        put(name);
    put(std::string("r/old/2.mp4/") + k_done_name);
    recording_search search = in("r");
    search.results = m_folder.file("r/out");
    EXPECT_EQ(names(search), (list{"1.mp4", "old/3.mp4"}));
}

TEST_F(recordings, that_are_named_twice_are_there_once) {
    for (const char* name : {"r/1.mp4", "r/2.mp4"}) put(name);
    recording_search search = in("r");
    search.sources.push_back(m_folder.file("r/gate/../2.mp4"));
    search.base = m_folder.file("r");
    EXPECT_EQ(names(search), (list{"1.mp4", "2.mp4"}));
}

TEST_F(recordings, have_the_same_name_whether_their_folder_or_they_are_named) {
    put("r/gate/1.mp4");
    recording_search search = in("r/gate/1.mp4");
    search.base = m_folder.file("r/");
    EXPECT_EQ(names(search), (list{"gate/1.mp4"}));
    EXPECT_EQ(names(in("r/")), (list{"gate/1.mp4"}));
}

TEST_F(recordings, come_from_a_list_too) {
    for (const char* name : {"r/1.mp4", "r/2.mp4", "r/deep/3.mp4"}) put(name);
    recording_search search;
    search.list = m_folder.file("list");
    search.base = m_folder.file("r");
    write_file(search.list, m_folder.file("r/2.mp4") + "\r\n\n" + m_folder.file("r/deep") + "\n");
    EXPECT_EQ(names(search), (list{"2.mp4", "deep/3.mp4"}));
}

TEST_F(recordings, that_are_named_need_not_exist) {
    recording_search search = in("r/gone.mp4");
    search.base = m_folder.file("r");
    EXPECT_EQ(names(search), (list{"gone.mp4"}));
    EXPECT_EQ(state_of(m_folder.file("r/gone.mp4")).size, -1);
}

TEST_F(recordings, must_lie_below_the_base) {
    put("r/1.mp4");
    recording_search search = in("r/1.mp4");
    search.base = m_folder.file("r/1.mp4");
    EXPECT_THROW((void)find_recordings(search), usage_error);
    search.base = m_folder.file("other");
    EXPECT_THROW((void)find_recordings(search), usage_error);
}

TEST_F(recordings, are_not_those_of_a_folder_or_list_that_cannot_be_read) {
    recording_search search;
    search.list = m_folder.file("none");
    EXPECT_THROW((void)find_recordings(search), io_error);
    search.list = m_folder.path();
    EXPECT_THROW((void)find_recordings(search), io_error);
}

struct refused_row : support::named_row {
    const char* source;
};

class no_recording : public testing::TestWithParam<refused_row> {};

TEST_P(no_recording, is_refused) {
    recording_search search;
    search.sources = {GetParam().source};
    EXPECT_THROW((void)find_recordings(search), usage_error);
}

INSTANTIATE_TEST_SUITE_P(table, no_recording,
                         testing::Values(refused_row{{"a camera"}, "rtsp://camera/main"},
                                         refused_row{{"a device"}, "/dev/video0"}, refused_row{{"a pipe"}, "-"}),
                         row_name());

// --- lengths ---------------------------------------------------------------------------------------------------------

std::string clip(const temporary_folder& folder, const std::string& name, const char* codec, int pictures) {
    clip_recipe recipe;
    recipe.path = folder.file(name);
    recipe.codec = codec;
    recipe.width = 160;
    recipe.height = 120;
    recipe.times = steady(pictures, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, 160, 120, {90, 90, 90.0 + 10 * (index % 3)});
    };
    make_clip(recipe);
    return recipe.path;
}

TEST_F(recordings, are_as_long_as_their_container_states) {
    EXPECT_EQ(recording_length(clip(m_folder, "a.mkv", "ffv1", 50)), 2000000);
    EXPECT_EQ(recording_length(clip(m_folder, "a.mp4", "libx264", 75)), 3000000);
    EXPECT_EQ(recording_length(clip(m_folder, "a.avi", "mjpeg", 25)), 1000000);
}

TEST_F(recordings, without_a_stated_length_are_weighed_by_size) {
    const std::string path = clip(m_folder, "a.ts", "libx264", 50);
    EXPECT_EQ(recording_length(path), 8 * static_cast<int64_t>(fs::file_size(path)));
}

TEST_F(recordings, that_cannot_be_read_weigh_nothing) {
    put("text.mp4");
    write_file(m_folder.file("empty.mp4"), "");
    for (const char* name : {"text.mp4", "empty.mp4", "gone.mp4"}) {
        EXPECT_EQ(recording_length(m_folder.file(name)), 0) << name;
    }
}

}  // namespace
