// The long comparison of library and twin: named scenes under several seeds, random scenes, and calls out of order,
// until every branch of the rules and every line that the six functions can print has been seen.
#include <gtest/gtest.h>

#include <iostream>

#include "tests/pipeline/twin_runner.h"

namespace {

const long k_least_frames = 20000;
const long k_least_frames_with_boxes = 3000;
const std::uint64_t k_seed = 20260101;

// Calls that a careful host never makes, in an order that reaches the lines of each.
void call_out_of_order(scenes::twin_runner& both) {
    const fd_rect whole = scenes::whole_picture();
    scenes::frame_block block;
    block.shape({64, 48, 64});
    both.un_init();
    both.start_without_handle(whole);
    both.stop(0);
    both.set_grade(0, 50);
    both.set_frame(0, block.view());
    both.init();
    both.init();
    both.start_without_handle(whole);
    for (const fd_rect& bad : {fd_rect{0, 0, 0, 1, 1, 1, 1, 1}, fd_rect{1, 100, 0, 100, 100, 100, 100, 100},
                               fd_rect{0, 100, 1, 100, 100, 100, 100, 100}, fd_rect{0, 100, 0, 100, 0, 100, 50, 100},
                               fd_rect{40000, 50000, 0, 1, 1, 5, 1, 1}}) {
        both.start(bad);
    }
    for (const int handle : {-1, 0, 5, 127, 128}) {
        both.set_frame(handle, block.view());
        both.set_grade(handle, 50);
        both.stop(handle);
    }
    for (int i = 0; i < 129; ++i) both.start(whole);
    both.stop(5);
    both.start(whole);
    both.set_grade(5, 101);
    both.un_init();
    both.un_init();
}

void expect_everything_seen(ref::log_book& book) {
    for (int i = 0; i < static_cast<int>(ref::branch::count_of_branches); ++i) {
        const ref::branch branch = static_cast<ref::branch>(i);
        if (ref::reachable_through_interface(branch)) {
            EXPECT_GT(book.hits(branch), 0) << ref::name_of(branch);
        }
        std::cout << "  " << ref::name_of(branch) << ": " << book.hits(branch) << '\n';
    }
    for (const std::string& key : ref::reachable_line_keys()) EXPECT_GT(book.lines(key), 0) << key;
}

// What a run saw; kept beyond the runner, which holds standard output while it lives.
struct tally {
    std::string difference;
    long frames;
    long frames_with_boxes;
    std::uint64_t last_seed;
    ref::log_book book;
};

tally run() {
    scenes::twin_runner both;
    std::uint64_t seed = k_seed;
    call_out_of_order(both);
    for (int round = 0; round < 2; ++round) {
        for (const scenes::settings& scene : scenes::named_scenes()) both.play(scene, ++seed);
    }
    while (both.difference().empty() &&
           (both.frames() < k_least_frames || both.frames_with_boxes() < k_least_frames_with_boxes)) {
        ++seed;
        both.play(scenes::random_scene(seed), seed);
    }
    return {both.difference(), both.frames(), both.frames_with_boxes(), seed, both.book()};
}

TEST(many_frames, are_the_same_to_library_and_twin) {
    tally seen = run();
    ASSERT_EQ(seen.difference, "");
    std::cout << seen.frames << " frames compared, " << seen.frames_with_boxes << " with boxes, seeds " << k_seed + 1
              << " to " << seen.last_seed << '\n';
    expect_everything_seen(seen.book);
}

}  // namespace
