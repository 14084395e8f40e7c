// orva-fire on sources of every kind: one and the same fire, coded in many ways, is found in each where it burns.
#include <gtest/gtest.h>

#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using support::row_name;

struct source_row : support::named_row {
    const char* file;
    const char* codec;
    AVPixelFormat format = AV_PIX_FMT_YUV420P;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    int turn = 0;
    bool interlaced = false;
    bool varying = false;
    int width = 320, height = 240;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    const char* said = "";
};

class every_source : public testing::TestWithParam<source_row> {};

// 25 pictures a second, or the same pictures at uneven distances.
std::vector<double> times_of(const source_row& row) {
    std::vector<double> times = steady(110, 25);
    for (size_t i = 0; row.varying && i < times.size(); ++i) times[i] += 0.015 * static_cast<double>(i * 7 % 3) / 2;
    return times;
}

flame_clip::pixel_box turned(const flame_clip::pixel_box& box, const source_row& row) {
    if (row.turn == 90) return {row.height - box.y - box.height, box.x, box.height, box.width};
    if (row.turn == 180) {
        return {row.width - box.x - box.width, row.height - box.y - box.height, box.width, box.height};
    }
    if (row.turn == 270) return {box.y, row.width - box.x - box.width, box.height, box.width};
    return box;
}

TEST_P(every_source, shows_the_fire_where_it_burns) {
    const source_row& row = GetParam();
    const temporary_folder folder;
    clip_recipe recipe;
    recipe.path = folder.file(row.file);
    recipe.codec = row.codec;
    recipe.format = row.format;
    recipe.range = row.range;
    recipe.matrix = row.matrix;
    recipe.transfer = row.transfer;
    recipe.turn = row.turn;
    recipe.interlaced = row.interlaced;
    recipe.width = row.width;
    recipe.height = row.height;
    recipe.times = times_of(row);
    fire_pictures fire(row.width, row.height, 0.3);
    recipe.paint = [&](int index, AVFrame& picture) { fire.paint(index / 25.0, index, picture); };
    make_clip(recipe);

    const program_result result =
        run_program({ORVA_FIRE_PROGRAM, recipe.path, "-o", folder.file("out"), "--events", "-"});
    EXPECT_EQ(result.exit_code, 10) << result.errors;
    EXPECT_NE(result.errors.find(row.said), std::string::npos) << result.errors;
    EXPECT_EQ(result.errors.find("warning") != std::string::npos, row.said[0] != '\0') << result.errors;
    const flame_clip::pixel_box truth = turned(*fire.truth(), row);
    const auto events = json_lines(result.output);
    ASSERT_FALSE(events.empty());
    for (const auto& event : events) {
        for (const auto& box : event["boxes"]) {
            const int middle_x = box["x"].get<int>() + box["width"].get<int>() / 2;
            const int middle_y = box["y"].get<int>() + box["height"].get<int>() / 2;
            EXPECT_TRUE(middle_x >= truth.x && middle_x <= truth.x + truth.width) << event;
            EXPECT_TRUE(middle_y >= truth.y && middle_y <= truth.y + truth.height) << event;
        }
    }
}

const AVColorRange k_limited = AVCOL_RANGE_MPEG, k_full = AVCOL_RANGE_JPEG, k_unknown = AVCOL_RANGE_UNSPECIFIED;
const AVColorSpace k_601 = AVCOL_SPC_SMPTE170M, k_709 = AVCOL_SPC_BT709, k_none = AVCOL_SPC_UNSPECIFIED;

INSTANTIATE_TEST_SUITE_P(
    table, every_source,
    testing::Values(
        source_row{{"H264, untagged"}, "a.mp4", "libx264"},
        source_row{{"H264, limited and BT 601"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_601},
        source_row{{"H264, full range"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_full, k_601},
        source_row{{"H264, BT 709"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_709},
        source_row{{"H264, full and BT 709"}, "a.mkv", "libx264", AV_PIX_FMT_YUV420P, k_full, k_709},
        source_row{{"H264 of 10 bits"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P10LE, k_limited, k_601},
        source_row{{"H264, 4 2 2"}, "a.mkv", "libx264", AV_PIX_FMT_YUV422P, k_limited, k_601},
        source_row{{"motion JPEG"}, "a.avi", "mjpeg", AV_PIX_FMT_YUVJ420P, k_full, k_601},
        source_row{{"lossless RGB"}, "a.mkv", "ffv1", AV_PIX_FMT_BGR0},
        source_row{{"turned by 90 degrees"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_601, 90},
        source_row{{"turned by 180 degrees"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_601, 180},
        source_row{{"turned by 270 degrees"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_601, 270},
        source_row{{"interlaced"}, "a.mpg", "mpeg2video", AV_PIX_FMT_YUV420P, k_limited, k_none, 0, true},
        source_row{{"a varying rate"}, "a.mkv", "libx264", AV_PIX_FMT_YUV420P, k_limited, k_601, 0, false, true},
        source_row{{"exactly the detector's size"},
                   "a.mkv",
                   "ffv1",
                   AV_PIX_FMT_YUV420P,
                   k_unknown,
                   k_none,
                   0,
                   false,
                   false,
                   352,
                   288},
        source_row{
            {"HD, untagged"}, "a.mp4", "libx264", AV_PIX_FMT_YUV420P, k_unknown, k_none, 0, false, false, 1280, 720},
        source_row{{"high dynamic range by its tag"},
                   "a.mkv",
                   "libx264",
                   AV_PIX_FMT_YUV420P10LE,
                   k_limited,
                   AVCOL_SPC_BT2020_NCL,
                   0,
                   false,
                   false,
                   320,
                   240,
                   AVCOL_TRC_ARIB_STD_B67,
                   "high dynamic range (HLG)"}),
    row_name());

}  // namespace
