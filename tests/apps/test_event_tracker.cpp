// From boxes to events: start, update, end, numbers and the largest box.
#include <gtest/gtest.h>

#include "apps/orva_fire/event_tracker.h"

namespace {

using namespace orva_fire;

const box k_small{10, 10, 20, 20}, k_large{12, 8, 30, 40}, k_elsewhere{200, 100, 5, 5};

TEST(event_tracker, says_nothing_while_nothing_is_reported) {
    event_tracker tracker(1);
    for (int i = 0; i < 100; ++i) EXPECT_FALSE(tracker.observe(0, {i, i / 25.0}, {}));
    EXPECT_TRUE(tracker.finish({99, 3.96}).empty());
    EXPECT_EQ(tracker.reports(), 0);
    EXPECT_FALSE(tracker.first_report());
}

TEST(event_tracker, starts_a_report_with_its_first_boxes) {
    event_tracker tracker(1);
    const auto event = tracker.observe(0, {50, 2.0}, {k_elsewhere, k_small});
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, event_kind::start);
    EXPECT_EQ(event->id, 1);
    EXPECT_EQ(event->at.frame, 50);
    EXPECT_EQ(event->at.seconds, 2.0);
    EXPECT_EQ(event->boxes, (std::vector<box>{k_elsewhere, k_small}));
    EXPECT_EQ(event->largest, k_small);
    EXPECT_TRUE(event->grew);
    EXPECT_EQ(tracker.reports(), 1);
    EXPECT_EQ(tracker.first_report()->frame, 50);
}

TEST(event_tracker, is_silent_while_the_boxes_stay) {
    event_tracker tracker(1);
    EXPECT_TRUE(tracker.observe(0, {50, 2.0}, {k_small}));
    EXPECT_FALSE(tracker.observe(0, {51, 2.04}, {k_small}));
    EXPECT_FALSE(tracker.observe(0, {52, 2.08}, {k_small}));
}

TEST(event_tracker, updates_when_the_boxes_change) {
    event_tracker tracker(1);
    tracker.observe(0, {50, 2.0}, {k_small});
    const auto grown = tracker.observe(0, {57, 2.28}, {k_large});
    ASSERT_TRUE(grown);
    EXPECT_EQ(grown->kind, event_kind::update);
    EXPECT_EQ(grown->id, 1);
    EXPECT_EQ(grown->started.frame, 50);
    EXPECT_TRUE(grown->grew);
    EXPECT_EQ(grown->largest, k_large);
    EXPECT_EQ(grown->largest_at.frame, 57);

    const auto shrunk = tracker.observe(0, {64, 2.56}, {k_small});
    ASSERT_TRUE(shrunk);
    EXPECT_FALSE(shrunk->grew);
    EXPECT_EQ(shrunk->largest, k_large);
    EXPECT_EQ(shrunk->largest_at.frame, 57);
}

TEST(event_tracker, does_not_take_an_equally_large_box_for_a_larger_one) {
    event_tracker tracker(1);
    tracker.observe(0, {50, 2.0}, {k_small});
    const auto moved = tracker.observe(0, {57, 2.28}, {{11, 10, 20, 20}});
    ASSERT_TRUE(moved);
    EXPECT_FALSE(moved->grew);
    EXPECT_EQ(moved->largest, k_small);
}

TEST(event_tracker, ends_a_report_with_what_was_reported_last) {
    event_tracker tracker(1);
    tracker.observe(0, {50, 2.0}, {k_small});
    tracker.observe(0, {57, 2.28}, {k_large, k_small});
    const auto event = tracker.observe(0, {73, 2.92}, {});
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, event_kind::end);
    EXPECT_EQ(event->id, 1);
    EXPECT_EQ(event->at.frame, 73);
    EXPECT_EQ(event->started.frame, 50);
    EXPECT_EQ(event->boxes, (std::vector<box>{k_large, k_small}));
    EXPECT_FALSE(event->grew);
    EXPECT_EQ(event->ended, event_end::gone);
    EXPECT_FALSE(tracker.observe(0, {74, 2.96}, {}));
}

TEST(event_tracker, numbers_reports_over_all_zones) {
    event_tracker tracker(2);
    EXPECT_EQ(tracker.observe(1, {10, 0.4}, {k_small})->id, 1);
    EXPECT_EQ(tracker.observe(0, {20, 0.8}, {k_large})->id, 2);
    EXPECT_EQ(tracker.observe(1, {30, 1.2}, {})->id, 1);
    const auto again = tracker.observe(1, {40, 1.6}, {k_small});
    EXPECT_EQ(again->id, 3);
    EXPECT_EQ(again->zone, 1u);
    EXPECT_EQ(again->largest, k_small) << "a new report knows nothing of the old one";
    EXPECT_EQ(tracker.reports(), 3);
    EXPECT_EQ(tracker.first_report()->frame, 10);
}

TEST(event_tracker, ends_what_is_open_when_the_input_ends) {
    event_tracker tracker(3);
    tracker.observe(2, {10, 0.4}, {k_small});
    tracker.observe(0, {20, 0.8}, {k_large});
    const auto events = tracker.finish({99, 3.96});
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].zone, 0u);
    EXPECT_EQ(events[1].zone, 2u);
    for (const fire_event& event : events) {
        EXPECT_EQ(event.kind, event_kind::end);
        EXPECT_EQ(event.ended, event_end::input_ended);
        EXPECT_EQ(event.at.frame, 99);
    }
    EXPECT_TRUE(tracker.finish({99, 3.96}).empty());
}

}  // namespace
