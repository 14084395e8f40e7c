// The frames that are drawn around boxes, in every format.
#include <gtest/gtest.h>

#include "gst/draw.h"
#include "tests/apps/pictures.h"
#include "tests/gst/harness.h"

namespace gst_test {
namespace {

using orva_fire::box;

struct format_row {
    const char* format;
    const char* colorimetry;
};

const format_row k_formats[] = {
    {"NV21", "1:4:0:0"}, {"NV12", "bt601"}, {"I420", "bt709"}, {"YUY2", "bt601"}, {"BGRx", "sRGB"}};

// The colour that a viewer sees at a place.
apps_test::colour seen_at(const AVFrame& picture, bool full_range, int x, int y) {
    const auto value = [&](int component) {
        return static_cast<double>(apps_test::component(picture, x, y, component));
    };
    if (picture.format == AV_PIX_FMT_BGR0) return {value(0), value(1), value(2)};
    return apps_test::to_rgb({value(0), value(1), value(2)}, full_range, picture.colorspace);
}

bool near(const apps_test::colour& a, const apps_test::colour& b) {
    const double k_rounding = 8;  // of three numbers, two of them in limited range
    return std::abs(a.red - b.red) < k_rounding && std::abs(a.green - b.green) < k_rounding &&
           std::abs(a.blue - b.blue) < k_rounding;
}

// Lines at 144 rows: 2 pixels dark, 2 coloured, 2 dark, from the box outwards.
TEST(a_drawn_box, has_a_coloured_line_with_dark_edges_and_an_untouched_inside) {
    const apps_test::colour room{60, 60, 60}, red{255, 32, 32}, yellow{255, 224, 32}, black{0, 0, 0};
    for (const format_row& row : k_formats) {
        for (const bool confirmed : {true, false}) {
            SCOPED_TRACE(std::string(row.format) + (confirmed ? " confirmed" : " not confirmed"));
            camera source({row.format, 176, 144, row.colorimetry});
            source.set_fire(std::nullopt);
            const buffer_ptr buffer = source.picture(0);
            GstVideoFrame frame;
            ASSERT_TRUE(gst_video_frame_map(&frame, const_cast<GstVideoInfo*>(&source.info()), buffer.get(),
                                            GST_MAP_READWRITE));
            orva_gst::draw_boxes(frame, source.colour(), {{{40, 40, 60, 50}, confirmed}});
            const orva_fire::frame_ptr view = orva_gst::view_of(frame, source.colour());
            const bool full = source.colour().range == AVCOL_RANGE_JPEG;
            const auto at = [&](int x, int y) { return seen_at(*view, full, x, y); };
            const apps_test::colour line = confirmed ? red : yellow;
            EXPECT_TRUE(near(at(70, 70), room));
            EXPECT_TRUE(near(at(40, 40), room));
            EXPECT_TRUE(near(at(99, 89), room));
            for (const int from : {39, 100}) EXPECT_TRUE(near(at(from, 60), black)) << from;
            for (const int from : {37, 36, 102, 103}) EXPECT_TRUE(near(at(from, 60), line)) << from;
            for (const int from : {35, 34, 104, 105}) EXPECT_TRUE(near(at(from, 60), black)) << from;
            for (const int from : {33, 106}) EXPECT_TRUE(near(at(from, 60), room)) << from;
            for (const int from : {37, 36, 92, 93}) EXPECT_TRUE(near(at(60, from), line)) << from;
            for (const int from : {33, 96}) EXPECT_TRUE(near(at(60, from), room)) << from;
            gst_video_frame_unmap(&frame);
        }
    }
}

TEST(a_drawn_box, is_cut_off_at_the_edges_of_odd_pictures) {
    for (const format_row& row : k_formats) {
        SCOPED_TRACE(row.format);
        camera source({row.format, 33, 21, row.colorimetry});
        source.set_fire(std::nullopt);
        const buffer_ptr buffer = source.picture(0);
        GstVideoFrame frame;
        ASSERT_TRUE(
            gst_video_frame_map(&frame, const_cast<GstVideoInfo*>(&source.info()), buffer.get(), GST_MAP_READWRITE));
        orva_gst::draw_boxes(frame, source.colour(),
                             {{{0, 0, 33, 21}, true}, {{30, 18, 3, 3}, true}, {{-9, -9, 4, 4}, true}});
        gst_video_frame_unmap(&frame);
    }
}

// The pixels of each picture that carries a box, with and without drawing.
TEST(drawing, changes_pixels_only_if_asked_and_only_with_a_box) {
    const camera source({"NV12", 176, 144, "bt601"});
    for (const bool draw : {false, true}) {
        element_harness harness(draw ? "draw=true" : "");
        harness.set_caps(source);
        for (int i = 0; i < 60; ++i) {
            const buffer_ptr passed = harness.pass(source.picture(i));
            ASSERT_TRUE(passed);
            const bool changed = bytes_of(passed.get()) != bytes_of(source.picture(i).get());
            EXPECT_EQ(changed, draw && !metas_of(passed.get()).empty()) << "picture " << i;
        }
    }
}

TEST(drawing, leaves_a_picture_alone_that_somebody_else_holds_too) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness("draw=true");
    harness.set_caps(source);
    (void)harness.run(source, 0, 60);
    buffer_ptr picture = source.picture(60);
    const buffer_ptr held(gst_buffer_ref(picture.get()));
    const std::vector<guint8> before = bytes_of(held.get());
    const buffer_ptr passed = harness.pass(std::move(picture));
    ASSERT_TRUE(passed);
    EXPECT_FALSE(metas_of(passed.get()).empty());
    EXPECT_TRUE(metas_of(held.get()).empty());
    EXPECT_EQ(bytes_of(held.get()), before);
    EXPECT_NE(bytes_of(passed.get()), before);
}

// Without drawing, a shared picture gets its metas on a new buffer around the same memory: no pixel is copied.
TEST(metas, cost_no_copy_of_a_picture_that_somebody_else_holds_too) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness;
    harness.set_caps(source);
    buffer_ptr picture = source.picture(0);
    const buffer_ptr held(gst_buffer_ref(picture.get()));
    const buffer_ptr passed = harness.pass(std::move(picture));
    ASSERT_TRUE(passed);
    EXPECT_EQ(gst_buffer_peek_memory(passed.get(), 0), gst_buffer_peek_memory(held.get(), 0));
}

}  // namespace
}  // namespace gst_test
