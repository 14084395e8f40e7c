// Channels whose frames qualify and do not qualify in turn, and what such a mix does to the pictures: parts of a frame
// then run on the engine, which sees memory, and parts in software, which sees the processor's copy of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "tests/fakes/channel_pair.h"
#include "tests/fakes/chip_camera.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/log_text.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using fakes::channel_pair;
using fakes::chip_camera;
using fakes::dice;
using fakes::pair_totals;

class mixed_channel : public fakes::chip_test {
protected:
    mixed_channel() { standin::keep_records(false); }
};

// Sizes, strides and addresses of which some qualify for everything, some for nothing, some in part.
std::unique_ptr<chip_camera> some_camera(dice& chance, std::uint32_t seed) {
    static const int sizes[][2] = {{96, 80}, {96, 80}, {96, 80}, {95, 80}, {96, 79}, {62, 60}, {31, 40}, {128, 96}};
    const int(&size)[2] = sizes[chance.below(8)];
    const int aligned = (size[0] + 15) / 16 * 16;
    const int stride = chance.one_in(3) ? aligned + 2 * chance.between(1, 7) : aligned;
    const int shift = chance.one_in(3) ? chance.between(1, 15) : 0;
    return std::make_unique<chip_camera>(size[0], size[1], stride, shift, seed);
}

// The whole picture or a part of it, in per cent: of odd or even size, at any place.
fd_rect some_region(dice& chance) {
    if (chance.one_in(4)) return fakes::whole_picture();
    const int x = chance.below(25);
    const int y = chance.below(15);
    const int width = chance.between(60, 100 - x);
    const int height = chance.between(75, 100 - y);
    const auto part = [](int value) { return static_cast<std::uint16_t>(value); };
    return {part(x), 100, part(y), 100, part(width), 100, part(height), 100};
}

pair_totals play(std::uint32_t seed, int frames) {
    dice chance(seed);
    channel_pair pair(some_region(chance));
    pair.set_sensitive(100);
    std::unique_ptr<chip_camera> view = some_camera(chance, seed);
    for (int frame = 0; frame < frames && !testing::Test::HasFailure(); ++frame) {
        if (chance.one_in(6)) view = some_camera(chance, seed + static_cast<std::uint32_t>(frame));
        EXPECT_EQ(pair.compare(view->next()), "") << "seed " << seed << ", frame " << frame;
    }
    return pair.totals();
}

TEST_F(mixed_channel, agrees_with_its_twin_on_some_frames) {
    const pair_totals totals = play(7, 250);
    std::cout << totals.text() << "\n";
    EXPECT_GT(totals.refused, 0);
    EXPECT_GT(totals.engine_operations, 0);
    EXPECT_GT(totals.software_operations, 0);
    EXPECT_GT(totals.both_ways, 0);
    EXPECT_GT(totals.with_boxes, 0);
}

class mixed_channel_full : public mixed_channel {};

TEST_F(mixed_channel_full, agrees_with_its_twin_on_5000_frames) {
    pair_totals totals;
    for (std::uint32_t seed = 5000; totals.frames < 5000 && !HasFailure(); ++seed) totals.add(play(seed, 250));
    std::cout << totals.text() << "\n";
    EXPECT_GE(totals.frames, 5000);
    EXPECT_GE(totals.with_boxes, 1200);
    EXPECT_GE(totals.refused, 600);
    EXPECT_GE(totals.both_ways, 1300);
    EXPECT_GE(totals.engine_operations, 10000);
    EXPECT_GE(totals.software_operations, 5000);
}

// --- what a mix lets through ------------------------------------------------------------------------------------

// Two cameras on the same still scene: `plain` qualifies, `shifted` does not, by its addresses.
class changing_address : public mixed_channel {
protected:
    changing_address() {
        for (chip_camera* view : {&plain, &shifted}) {
            view->noisy = false;
            view->burning = false;
        }
    }
    unsigned char difference_seen(channel_pair& pair) {
        return static_cast<unsigned char*>(orva_fd::test_access::diff_mem(stage(pair)).virt_addr())[0];
    }
    static orva_fd::pre_process& stage(channel_pair& pair) { return orva_fd::test_access::stage(pair.channel()); }

    chip_camera plain{96, 80, 0, 0, 1};
    chip_camera shifted{96, 80, 0, 4, 1};
};

// A shifted frame runs its difference and colour in software, everything else on the engine: its copies and the mask's
// steps need no aligned frame.
TEST_F(changing_address, a_shifted_frame_is_part_software_part_engine) {
    channel_pair pair(fakes::whole_picture());
    EXPECT_EQ(pair.compare(plain.next()), "");
    const pair_totals before = pair.totals();
    EXPECT_EQ(pair.compare(shifted.next()), "");
    const pair_totals after = pair.totals();
    EXPECT_EQ(after.software_operations - before.software_operations, 2);
    EXPECT_EQ(after.engine_operations - before.engine_operations, 6);
    EXPECT_EQ(pair.last_text(), support::repeated(support::entered("hisi_ive_func", "check_ive_support", 39), 2));
}

// The luma that a frame leaves for the next is copied by the engine, into memory. Nothing flushes it, so software that
// takes the next difference finds the processor's old copy there: the last difference instead of the last picture. The
// still scene then appears as its own brightness, everywhere.
TEST_F(changing_address, software_after_the_engine_takes_the_difference_against_an_old_picture) {
    channel_pair pair(fakes::whole_picture());
    for (int frame = 0; frame < 3; ++frame) EXPECT_EQ(pair.compare(plain.next()), "");
    EXPECT_EQ(difference_seen(pair), 0) << "a still scene has no difference";
    EXPECT_EQ(pair.compare(shifted.next()), "");
    EXPECT_EQ(difference_seen(pair), 50) << "the scene's own luma: its difference to what the processor still held";
}

// The way back is clean: the difference of the next frame is taken by the engine from memory, where the copy went.
TEST_F(changing_address, the_engine_after_software_sees_the_picture_again) {
    channel_pair pair(fakes::whole_picture());
    for (int frame = 0; frame < 3; ++frame) EXPECT_EQ(pair.compare(plain.next()), "");
    EXPECT_EQ(pair.compare(shifted.next()), "");
    EXPECT_EQ(pair.compare(plain.next()), "");
    EXPECT_EQ(difference_seen(pair), 0);
}

// Every frame shifted: what software finds is never the last picture but the last difference d, so the next one is
// |luma - d|. A still scene flashes, in every second frame.
TEST_F(changing_address, frames_that_are_always_shifted_take_the_difference_against_the_last_difference) {
    channel_pair pair(fakes::whole_picture());
    for (int frame = 0; frame < 10; ++frame) {
        EXPECT_EQ(pair.compare(shifted.next()), "");
        EXPECT_EQ(difference_seen(pair), frame % 2 == 0 ? 50 : 0) << "frame " << frame;
    }
}

// A stride of no whole 16s keeps the copy of the luma in software as well, next to the difference that needs it.
TEST_F(mixed_channel, frames_with_an_odd_stride_keep_the_last_picture_where_software_finds_it) {
    channel_pair pair(fakes::whole_picture());
    chip_camera view(96, 80, 104, 0, 1);
    view.noisy = false;
    view.burning = false;
    for (int frame = 0; frame < 6; ++frame) {
        EXPECT_EQ(pair.compare(view.next()), "");
        const auto* seen = static_cast<unsigned char*>(
            orva_fd::test_access::diff_mem(orva_fd::test_access::stage(pair.channel())).virt_addr());
        EXPECT_EQ(seen[0], 50) << "the luma, for the next frame";
    }
}

// Back from such frames the difference is wrong once: software left the last picture in the processor's copy of the
// buffer, the engine takes the difference in memory, and the flush then writes the left picture over it.
TEST_F(mixed_channel, the_first_frame_on_the_engine_after_odd_strides_sees_the_last_picture_as_its_difference) {
    channel_pair pair(fakes::whole_picture());
    chip_camera odd(96, 80, 104, 0, 1);
    chip_camera plain(96, 80, 0, 0, 1);
    for (chip_camera* view : {&odd, &plain}) {
        view->noisy = false;
        view->burning = false;
    }
    const auto seen = [&] {
        return static_cast<unsigned char*>(
            orva_fd::test_access::diff_mem(orva_fd::test_access::stage(pair.channel())).virt_addr())[0];
    };
    for (int frame = 0; frame < 3; ++frame) EXPECT_EQ(pair.compare(odd.next()), "");
    EXPECT_EQ(pair.compare(plain.next()), "");
    EXPECT_EQ(seen(), 50);
    EXPECT_EQ(pair.compare(plain.next()), "");
    EXPECT_EQ(seen(), 0) << "from then on it is right";
}

// An odd region on an odd stride is software's, but for one step: the copy of the finished mask has no size or address
// to object to and goes to the engine, which finds in memory what was flushed last: the difference. The mask's picture
// then holds differences; the components, found by software in its own copy, are right.
TEST_F(mixed_channel, an_odd_region_gets_the_difference_for_its_mask) {
    channel_pair pair(fakes::whole_picture());
    chip_camera view(95, 79, 104, 0, 1);
    view.noisy = false;
    view.burning = false;
    EXPECT_EQ(pair.compare(view.next()), "");
    orva_fd::pre_process& stage = orva_fd::test_access::stage(pair.channel());
    EXPECT_EQ(stage.get_fg_img()->virt_addr[0][0], 50) << "the first picture's difference to nothing: its luma";
    EXPECT_EQ(pair.compare(view.next()), "");
    EXPECT_EQ(stage.get_fg_img()->virt_addr[0][0], 0) << "a still scene's difference";
    EXPECT_EQ(pair.totals().engine_operations, 2) << "one copy a frame";
}

// --- small windows ----------------------------------------------------------------------------------------------

struct small_row : support::named_row {
    int width;
    int height;
    int stride;  // 0: the width rounded up to a multiple of 16
    int code;
};

class small_window : public mixed_channel, public testing::WithParamInterface<small_row> {};

TEST_P(small_window, gives_the_same_code_on_every_frame) {
    const small_row& row = GetParam();
    channel_pair pair(fakes::whole_picture());
    chip_camera view(row.width, row.height, row.stride, 0, 9);
    for (int frame = 0; frame < 5; ++frame) {
        EXPECT_EQ(pair.compare(view.next()), "");
        EXPECT_EQ(pair.last_code(), row.code) << "frame " << frame;
    }
}

INSTANTIATE_TEST_SUITE_P(
    ive, small_window,
    testing::Values(
        small_row{{"64 x 64 is processed"}, 64, 64, 0, 0}, small_row{{"62 x 64 fails with 4"}, 62, 64, 0, 4},
        small_row{{"64 x 62 fails with 4"}, 64, 62, 0, 4}, small_row{{"16 x 16 fails with 4"}, 16, 16, 0, 4},
        small_row{{"62 x 62 fails with 4 with an odd stride too, as the working images qualify"}, 62, 62, 72, 4},
        small_row{{"61 x 61 with a stride of no whole 16s is processed in software"}, 61, 61, 72, 0},
        small_row{{"31 x 41 with such a stride too, though the copy of its mask is refused"}, 31, 41, 40, 0},
        small_row{{"2 x 2 fails with 4"}, 2, 2, 0, 4}),
    support::row_name());

// The copy of the mask has no size to object to, so it goes to the engine, which copies no fewer than 32 columns. The
// mask's picture then stays what the colour filter left: before the second dilation, which the components come from.
TEST_F(mixed_channel, an_odd_region_below_32_columns_keeps_the_mask_of_the_colour_filter) {
    channel_pair pair(fakes::whole_picture());
    chip_camera view(31, 41, 40, 0, 9);
    view.noisy = false;
    const std::string refused = support::error_line("hisi_ive_func", "do_ive_dma", 211) +
                                "HI_MPI_IVE_DMA failed, ret = a01d8003\n" +
                                support::entered("hisi_ive_func", "do_dma", 171);
    for (int frame = 0; frame < 3; ++frame) {
        EXPECT_EQ(pair.compare(view.next()), "");
        EXPECT_EQ(pair.last_code(), 0);
        EXPECT_NE(pair.last_text().find(refused), std::string::npos) << pair.last_text();
    }
    EXPECT_EQ(pair.totals().engine_operations, 3) << "one copy a frame";
    orva_fd::pre_process& stage = orva_fd::test_access::stage(pair.channel());
    const auto set = [](const unsigned char* plane) {
        int count = 0;
        for (int y = 0; y < 41; ++y)
            count += static_cast<int>(31 - std::count(plane + 352 * y, plane + 352 * y + 31, 0));
        return count;
    };
    const int filtered = set(stage.get_fg_img()->virt_addr[0]);
    EXPECT_GT(filtered, 0);
    EXPECT_LT(filtered, 31 * 41);
}

// A region of 61 x 61 on a stride of whole 16s is widened to an even size first, and fails.
TEST_F(mixed_channel, an_odd_region_is_widened_to_an_even_one_and_fails_if_it_is_small) {
    channel_pair pair({0, 96, 0, 80, 61, 96, 61, 80});
    chip_camera view(96, 80, 0, 0, 10);
    EXPECT_EQ(pair.compare(view.next()), "");
    EXPECT_EQ(pair.last_code(), 4);
}

}  // namespace
