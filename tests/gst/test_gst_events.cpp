// When reports start and end, in pictures and in what happens to a stream.
#include <gtest/gtest.h>

#include "tests/gst/harness.h"

namespace gst_test {
namespace {

using orva_fire::box;

// The picture of a fire that can first be reported: the 51st, with 50 that moved before it.
const int k_first_report = 51;

// An element that has seen a fire for 60 pictures and has just told so.
class a_report : public testing::Test {
protected:
    void SetUp() override {
        m_harness.set_caps(m_camera);
        ASSERT_EQ(m_harness.run(m_camera, 0, 60).size(), 1u);
        const std::vector<fire_message> messages = m_harness.messages();
        ASSERT_EQ(messages.size(), 1u);
        ASSERT_EQ(messages[0].event, "start");
        ASSERT_EQ(messages[0].id, 1);
        m_started = messages[0];
    }

    void push_event(GstEvent* event) { ASSERT_TRUE(gst_harness_push_event(m_harness.get(), event)); }

    // What is posted next is the end of the report, and nothing else.
    void expect_end(const char* reason) {
        const std::vector<fire_message> messages = m_harness.messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].event, "end");
        EXPECT_EQ(messages[0].id, 1);
        EXPECT_EQ(messages[0].reason, reason);
    }

    // The fire's pictures, counted from the first of them, bring no report before the 51st, and then one with this
    // number. seen: how many of them have been passed.
    void expect_fresh_report(const camera& source, int first, int id, int seen = 0) {
        EXPECT_TRUE(m_harness.run(source, first + seen, first + k_first_report - 1).empty());
        ASSERT_TRUE(m_harness.messages().empty());
        EXPECT_EQ(m_harness.run(source, first + k_first_report - 1, first + k_first_report).size(), 1u);
        const std::vector<fire_message> messages = m_harness.messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].event, "start");
        EXPECT_EQ(messages[0].id, id);
    }

    camera m_camera{{"NV12", 176, 144, "bt601"}};
    element_harness m_harness;
    fire_message m_started;
};

TEST_F(a_report, starts_with_the_picture_that_first_carries_a_box) {
    element_harness harness;
    harness.set_caps(m_camera);
    for (int i = 0; i < 60; ++i) {
        const buffer_ptr passed = harness.pass(m_camera.picture(i));
        const std::vector<fire_message> messages = harness.messages();
        const std::vector<fire_meta> metas = metas_of(passed.get());
        ASSERT_EQ(messages.size(), i == static_cast<int>(m_started.frame) ? 1u : 0u) << "picture " << i;
        ASSERT_EQ(metas.size(), i < static_cast<int>(m_started.frame) ? 0u : 1u) << "picture " << i;
        if (messages.empty()) continue;
        EXPECT_EQ(messages[0].frame, static_cast<guint64>(i));
        EXPECT_EQ(messages[0].running_time, m_camera.time(i));
        EXPECT_EQ(messages[0].zone, "picture");
        ASSERT_EQ(messages[0].boxes.size(), 1u);
        EXPECT_EQ(messages[0].boxes[0], metas[0].where);
    }
}

TEST_F(a_report, ends_when_the_fire_is_out) {
    m_camera.set_fire(std::nullopt);
    // Pictures of an empty room that differ a little, or they would be taken for repeats of one.
    guint64 frame = 60;
    std::vector<fire_message> messages;
    while (messages.empty() && frame < 120) {
        m_camera.set_fire(box{2, 2, 12 + 12 * (static_cast<int>(frame) % 2), 28});
        m_camera.set_warmth(-200);
        (void)m_harness.run(m_camera, static_cast<int>(frame), static_cast<int>(frame) + 1);
        messages = m_harness.messages();
        ++frame;
    }
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].event, "end");
    EXPECT_EQ(messages[0].reason, "gone");
    EXPECT_EQ(messages[0].frame, frame - 1);
    EXPECT_EQ(messages[0].duration, messages[0].running_time - m_started.running_time);
    EXPECT_EQ(messages[0].boxes.size(), 1u);
}

TEST_F(a_report, stands_while_the_same_picture_is_repeated) {
    for (int i = 60; i < 120; ++i) {
        buffer_ptr repeated = m_camera.picture(59);
        GST_BUFFER_PTS(repeated.get()) = m_camera.time(i);
        const buffer_ptr passed = m_harness.pass(std::move(repeated));
        ASSERT_EQ(metas_of(passed.get()).size(), 1u) << "picture " << i;
    }
    EXPECT_TRUE(m_harness.messages().empty());
}

TEST_F(a_report, ends_with_the_stream) {
    push_event(gst_event_new_eos());
    expect_end("end of stream");
}

TEST_F(a_report, ends_with_a_flush_and_evidence_is_gathered_anew) {
    push_event(gst_event_new_flush_start());
    push_event(gst_event_new_flush_stop(TRUE));
    expect_end("flush");
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    push_event(gst_event_new_segment(&segment));
    expect_fresh_report(m_camera, 0, 2);
}

TEST_F(a_report, ends_with_a_new_stream) {
    push_event(gst_event_new_stream_start("another"));
    expect_end("new stream");
    expect_fresh_report(m_camera, 60, 2);
}

TEST_F(a_report, ends_when_the_pictures_change_their_size) {
    const camera larger({"NV12", 352, 288, "bt601"});
    m_harness.set_caps(larger);
    expect_end("caps changed");
    expect_fresh_report(larger, 60, 2);
}

TEST_F(a_report, goes_on_when_only_the_format_changes) {
    const camera packed({"YUY2", 176, 144, "bt601"});
    m_harness.set_caps(packed);
    EXPECT_EQ(m_harness.run(packed, 60, 80).size(), 1u);
    EXPECT_TRUE(m_harness.messages().empty());
}

TEST_F(a_report, ends_at_a_gap_of_more_than_five_seconds) {
    const int after = 59 + 5 * 25 + 1;
    EXPECT_TRUE(m_harness.run(m_camera, after, after + 1).empty());
    expect_end("gap");
    expect_fresh_report(m_camera, after, 2, 1);
}

TEST_F(a_report, goes_on_over_a_gap_of_five_seconds) {
    EXPECT_EQ(m_harness.run(m_camera, 59 + 5 * 25, 59 + 5 * 25 + 1).size(), 1u);
    EXPECT_TRUE(m_harness.messages().empty());
}

TEST_F(a_report, ends_when_time_goes_back) {
    EXPECT_TRUE(m_harness.run(m_camera, 10, 11).empty());
    expect_end("gap");
}

// A camera on a poor line loses packets all the time. If each loss cost the evidence, it would never report anything.
TEST_F(a_report, goes_on_over_a_discontinuity_without_a_gap) {
    for (int i = 60; i < 80; ++i) {
        buffer_ptr picture = m_camera.picture(i);
        GST_BUFFER_FLAG_SET(picture.get(), GST_BUFFER_FLAG_DISCONT);
        const buffer_ptr passed = m_harness.pass(std::move(picture));
        ASSERT_EQ(metas_of(passed.get()).size(), 1u);
        EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(passed.get(), GST_BUFFER_FLAG_DISCONT));
    }
    EXPECT_TRUE(m_harness.messages().empty());
}

TEST_F(a_report, ends_with_a_discontinuity_over_a_gap) {
    buffer_ptr picture = m_camera.picture(60 + 10 * 25);
    GST_BUFFER_FLAG_SET(picture.get(), GST_BUFFER_FLAG_DISCONT);
    const buffer_ptr passed = m_harness.pass(std::move(picture));
    EXPECT_TRUE(metas_of(passed.get()).empty());
    expect_end("gap");
}

TEST_F(a_report, ends_when_the_element_is_stopped) {
    gst_element_set_state(m_harness.element(), GST_STATE_READY);
    expect_end("stopped");
}

TEST_F(a_report, ends_when_what_is_looked_for_changes) {
    g_object_set(m_harness.element(), "grade", 100, nullptr);
    EXPECT_TRUE(m_harness.run(m_camera, 60, 61).empty());
    expect_end("settings changed");
}

TEST_F(a_report, goes_on_when_drawing_is_switched_on) {
    g_object_set(m_harness.element(), "draw", TRUE, nullptr);
    EXPECT_EQ(m_harness.run(m_camera, 60, 61).size(), 1u);
    EXPECT_TRUE(m_harness.messages().empty());
}

TEST(pictures, without_time_stamps_come_at_the_rate_of_their_caps) {
    const camera source({"NV12", 176, 144, "bt601", 10});
    element_harness harness;
    harness.set_caps(source);
    for (int i = 0; i < 60; ++i) {
        buffer_ptr picture = source.picture(i);
        GST_BUFFER_PTS(picture.get()) = GST_CLOCK_TIME_NONE;
        ASSERT_TRUE(harness.pass(std::move(picture)));
    }
    gst_harness_push_event(harness.get(), gst_event_new_eos());
    const std::vector<fire_message> messages = harness.messages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].running_time, GST_CLOCK_TIME_NONE);
    EXPECT_EQ(messages[1].duration, (59 - messages[0].frame) * GST_SECOND / 10);
}

// At 25 pictures a second, 25 of them cover a second. While the library sees the fire it renews its answer with every
// 7th picture, so after the first at 50 that is at 57, 64, 71 and 78.
TEST(a_confirmed_report, starts_with_the_first_renewed_answer_once_its_time_is_covered) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness("confirm=1");
    harness.set_caps(source);
    for (int i = 0; i < 90; ++i) {
        const buffer_ptr passed = harness.pass(source.picture(i));
        const std::vector<fire_meta> metas = metas_of(passed.get());
        ASSERT_EQ(metas.size(), i < 50 ? 0u : 1u) << "picture " << i;
        ASSERT_EQ(harness.messages().size(), i == 78 ? 1u : 0u) << "picture " << i;
        if (metas.empty()) continue;
        ASSERT_EQ(metas[0].id, i < 78 ? 0 : 1) << "picture " << i;
        ASSERT_NEAR(metas[0].confidence, std::min(1.0, (i - 49) / 25.0), 1e-6) << "picture " << i;
    }
}

TEST(an_interval, leaves_pictures_out_that_carry_the_last_boxes) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness("interval=0.08");
    harness.set_caps(source);
    int start = -1;
    for (int i = 0; i < 140; ++i) {
        const buffer_ptr passed = harness.pass(source.picture(i));
        if (!harness.messages().empty()) start = i;
        ASSERT_EQ(metas_of(passed.get()).size(), start < 0 ? 0u : 1u) << "picture " << i;
    }
    // Every second picture is looked at, so the 51st of those is the 101st of all.
    EXPECT_EQ(start, 100);
}

}  // namespace
}  // namespace gst_test
