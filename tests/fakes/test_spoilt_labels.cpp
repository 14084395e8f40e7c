// Labelling results that no picture gives: an engine that lost its way, or memory that was never flushed. Components
// that lie in the picture pass, others are dropped before anything is read by them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "channel/frame_process.h"
#include "preprocess/CYuv420_Rgb.h"
#include "preprocess/pre_process.h"
#include "tests/fakes/channel_pair.h"
#include "tests/fakes/chip_camera.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/rows.h"

namespace {

using fakes::chip_camera;
using standin::call;

const int k_width = 96;
const int k_height = 80;

struct label_row : support::named_row {
    IVE_REGION_S region;  // area, left, right, top, bottom
    bool passes;
};

std::vector<label_row> label_rows() {
    return {
        {{"all of the picture"}, {96 * 80, 0, 95, 0, 79}, true},
        {{"one pixel in the last corner"}, {1, 95, 95, 79, 79}, true},
        {{"one column too far right"}, {11, 90, 96, 0, 10}, false},
        {{"one row too far down"}, {11, 0, 10, 70, 80}, false},
        {{"the right edge before the left one"}, {11, 20, 19, 0, 10}, false},
        {{"the lower edge above the upper one"}, {11, 0, 10, 20, 19}, false},
        {{"a left edge that is negative as a short"}, {11, 65535, 10, 0, 10}, false},
        {{"an upper edge that is negative as a short"}, {11, 0, 10, 32768, 10}, false},
        {{"as many pixels as its box"}, {121, 0, 10, 0, 10}, true},
        {{"more pixels than its box"}, {122, 0, 10, 0, 10}, false},
        {{"an area that is negative as an int"}, {0xFFFFFFFFu, 0, 10, 0, 10}, false},
        {{"bytes of fresh memory"}, {0xCCCCCCCCu, 0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC}, false},
    };
}

std::vector<HI_U8> result_with(const IVE_REGION_S& region) {
    IVE_CCBLOB_S blob = {};
    blob.u8RegionNum = 1;
    blob.astRegion[0] = region;
    std::vector<HI_U8> bytes(sizeof blob);
    std::memcpy(bytes.data(), &blob, sizeof blob);
    return bytes;
}

class spoilt_labels : public fakes::chip_test, public testing::WithParamInterface<label_row> {
protected:
    spoilt_labels() {
        orva_fd::CYuv420_Rgb::init();
        orva_fd::pre_process::init();
    }
};

TEST_P(spoilt_labels, pass_if_they_lie_in_the_picture) {
    orva_fd::pre_process stage;
    ASSERT_EQ(stage.start(), 0);
    chip_camera view(k_width, k_height, 0, 0, 1);
    fd_yuv_frame frame = view.next();
    standin::spoil_labels(result_with(GetParam().region));
    std::vector<orva_fd::con_info> components;
    EXPECT_EQ(stage.set_frame(&frame, components), 0);
    EXPECT_EQ(components.size(), GetParam().passes ? 1u : 0u);
    if (GetParam().passes && !components.empty()) {
        EXPECT_EQ(static_cast<HI_U32>(components[0].area), GetParam().region.u32Area);
        EXPECT_EQ(components[0].right, GetParam().region.u16Right);
    }
    stage.stop();
}

INSTANTIATE_TEST_SUITE_P(table, spoilt_labels, testing::ValuesIn(label_rows()), support::row_name());

class unflushed_labels : public fakes::chip_test {};

// The sixth flush of a frame is that of the labelling result. Without it the processor finds what lay in the memory.
TEST_F(unflushed_labels, of_a_first_frame_are_nothing) {
    orva_fd::frame_process channel;
    ASSERT_EQ(channel.start(fakes::whole_picture()), 0);
    chip_camera view(k_width, k_height, 0, 0, 1);
    fd_yuv_frame frame = view.next();
    standin::answer(call::flush, 6, HI_FAILURE);
    fd_result result;
    EXPECT_EQ(channel.set_frame(frame, result), 0);
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(channel.set_frame(frame, result), 0);
    channel.stop();
}

}  // namespace
