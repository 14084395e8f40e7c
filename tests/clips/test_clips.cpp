// Library and twin on real clips, frame by frame, and a table of what is reported in them. Each picture is passed once,
// whole, as orva-fire converts it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"
#include "apps/orva_fire/video_source.h"
#include "tests/pipeline/twin_runner.h"

namespace {

namespace fs = std::filesystem;

struct clip_row {
    std::string name;
    std::string difference;
    long frames = 0;
    long first_report = -1;
    long reported = 0;
};

clip_row play(const fs::path& clip) {
    clip_row row;
    row.name = clip.stem().string();
    scenes::twin_runner both;
    both.init();
    const int handle = both.start(scenes::whole_picture());
    orva_fire::video_source source(clip.string());
    orva_fire::source_picture picture;
    std::unique_ptr<orva_fire::nv21_converter> converter;
    while (row.difference.empty() && source.next(picture)) {
        if (!converter) {
            converter = std::make_unique<orva_fire::nv21_converter>(
                orva_fire::box{0, 0, picture.frame->width, picture.frame->height});
        }
        both.set_frame(handle, converter->convert(*picture.frame).view());
        if (both.last_result().count > 0) {
            if (row.first_report < 0) row.first_report = row.frames;
            ++row.reported;
        }
        ++row.frames;
        row.difference = both.difference();
    }
    both.stop(handle);
    both.un_init();
    return row;
}

std::vector<fs::path> clips_in(const fs::path& folder) {
    std::vector<fs::path> clips;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".mp4") clips.push_back(entry.path());
    }
    std::sort(clips.begin(), clips.end());
    return clips;
}

class clip_folder : public testing::TestWithParam<const char*> {};

TEST_P(clip_folder, looks_the_same_to_library_and_twin) {
    const char* root = std::getenv("ORVA_CLIPS");
    if (root == nullptr) GTEST_SKIP() << "skipped: ORVA_CLIPS names no folder of clips";
    int reporting = 0;
    std::vector<fs::path> clips = clips_in(fs::path(root) / GetParam());
    std::printf("| %s | frames | first report | reported frames |\n|---|---|---|---|\n", GetParam());
    for (const fs::path& clip : clips) {
        const clip_row row = play(clip);
        EXPECT_EQ(row.difference, "") << row.name;
        EXPECT_GT(row.frames, 0) << row.name;
        const std::string first = row.first_report < 0 ? "-" : std::to_string(row.first_report);
        std::printf("| %s | %ld | %s | %ld |\n", row.name.c_str(), row.frames, first.c_str(), row.reported);
        std::fflush(stdout);
        reporting += row.reported > 0 ? 1 : 0;
    }
    std::printf("%s: %d of %zu clips with a report\n", GetParam(), reporting, clips.size());
}

INSTANTIATE_TEST_SUITE_P(clips, clip_folder, testing::Values("fire", "fire_more", "nofire", "nofire_long"),
                         [](const testing::TestParamInfo<const char*>& row) { return std::string(row.param); });

}  // namespace
