// What comes out of the element for pictures of every format and size: the same pixels, and boxes around the fire.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <thread>

#include "tests/gst/harness.h"

namespace gst_test {
namespace {

using orva_fire::box;

struct format_row {
    const char* name;
    camera_settings camera;
};

std::ostream& operator<<(std::ostream& out, const format_row& row) {
    return out << row.name;
}

template <typename Row>
std::string test_name(const testing::TestParamInfo<Row>& row) {
    std::string name = row.param.name;
    for (char& c : name) {
        if (c == ' ') c = '_';
    }
    return name;
}

// The part of the first box that lies in the second.
double share_inside(const box& a, const box& b) {
    const int width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const int height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    if (width <= 0 || height <= 0) return 0;
    return static_cast<double>(width) * height / static_cast<double>(area(a));
}

class every_picture : public testing::TestWithParam<format_row> {};

TEST_P(every_picture, is_passed_on_untouched_and_with_a_box_around_its_fire) {
    const camera source(GetParam().camera);
    element_harness harness;
    harness.set_caps(source);
    std::vector<fire_meta> metas;
    for (int i = 0; i < 60; ++i) {
        buffer_ptr picture = source.picture(i);
        const std::vector<guint8> before = bytes_of(picture.get());
        const buffer_ptr passed = harness.pass(std::move(picture));
        ASSERT_TRUE(passed) << "picture " << i;
        ASSERT_EQ(bytes_of(passed.get()), before) << "picture " << i;
        ASSERT_EQ(GST_BUFFER_PTS(passed.get()), source.time(i));
        metas = metas_of(passed.get());
        // Without 50 pictures that moved before it nothing is reported.
        ASSERT_TRUE(i >= 50 || metas.empty()) << "picture " << i;
    }
    ASSERT_EQ(metas.size(), 1u);
    EXPECT_GT(share_inside(metas[0].where, source.middle()), 0.8);
    EXPECT_GT(share_inside(source.middle(), metas[0].where), 0.5);
}

INSTANTIATE_TEST_SUITE_P(of, every_picture,
                         testing::Values(format_row{"full range NV21", {"NV21", 176, 144, "1:4:0:0"}},
                                         format_row{"limited range NV21", {"NV21", 176, 144, "bt601"}},
                                         format_row{"full range NV12", {"NV12", 176, 144, "1:4:0:0"}},
                                         format_row{"limited range NV12", {"NV12", 176, 144, "bt601"}},
                                         format_row{"full range I420", {"I420", 176, 144, "1:4:0:0"}},
                                         format_row{"limited range I420", {"I420", 176, 144, "bt601"}},
                                         format_row{"limited range YUY2", {"YUY2", 176, 144, "bt601"}},
                                         format_row{"full range YUY2", {"YUY2", 176, 144, "1:4:0:0"}},
                                         format_row{"BGRx", {"BGRx", 176, 144, "sRGB"}},
                                         format_row{"HD matrix NV12", {"NV12", 640, 360, "bt709"}},
                                         format_row{"no colorimetry NV12", {"NV12", 352, 288, ""}},
                                         format_row{"odd size NV21", {"NV21", 177, 145, "bt601"}},
                                         format_row{"odd size NV12", {"NV12", 333, 251, "bt601"}},
                                         format_row{"odd size I420", {"I420", 641, 359, "bt601"}},
                                         format_row{"odd size YUY2", {"YUY2", 177, 145, "bt601"}},
                                         format_row{"odd size BGRx", {"BGRx", 177, 145, "sRGB"}},
                                         format_row{"upright NV12", {"NV12", 240, 432, "bt601"}},
                                         format_row{"no frame rate I420", {"I420", 176, 144, "bt601", 0}}),
                         test_name<format_row>);

TEST(a_meta, tells_the_same_box_in_pixels_and_in_shares_of_the_picture) {
    const camera source({"NV12", 352, 288, "bt601"});
    element_harness harness;
    harness.set_caps(source);
    const std::vector<fire_meta> metas = harness.run(source, 0, 60);
    ASSERT_EQ(metas.size(), 1u);
    const fire_meta& fire = metas[0];
    EXPECT_EQ(fire.label, "fire");
    EXPECT_EQ(fire.zone, "picture");
    EXPECT_EQ(fire.id, 1);
    EXPECT_EQ(fire.confidence, 1);
    EXPECT_EQ(fire.xmin, fire.where.x / 352.0);
    EXPECT_EQ(fire.ymin, fire.where.y / 288.0);
    EXPECT_EQ(fire.xmax, (fire.where.x + fire.where.width) / 352.0);
    EXPECT_EQ(fire.ymax, (fire.where.y + fire.where.height) / 288.0);
}

TEST(a_meta, that_another_element_added_before_stays) {
    const camera source({});
    element_harness harness;
    harness.set_caps(source);
    buffer_ptr picture = source.picture(0);
    gst_buffer_add_video_region_of_interest_meta(picture.get(), "person", 1, 2, 3, 4);
    const buffer_ptr passed = harness.pass(std::move(picture));
    ASSERT_TRUE(passed);
    ASSERT_EQ(metas_of(passed.get()).size(), 1u);
    EXPECT_EQ(metas_of(passed.get())[0].where, (box{1, 2, 3, 4}));
}

// Rows that are longer than the picture and planes that lie apart, as decoders give them.
TEST(a_picture, with_a_layout_of_its_own_is_read_by_that_layout) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness;
    harness.set_caps(source);
    std::vector<fire_meta> metas;
    for (int i = 0; i < 60; ++i) {
        const buffer_ptr picture = source.picture(i);
        const gsize luma_offset = 0, chroma_offset = 256 * 150;
        buffer_ptr padded(gst_buffer_new_allocate(nullptr, 256 * 250, nullptr));
        gst_buffer_memset(padded.get(), 0, 255, 256 * 250);
        GST_BUFFER_PTS(padded.get()) = source.time(i);
        gsize offsets[GST_VIDEO_MAX_PLANES] = {luma_offset, chroma_offset};
        gint strides[GST_VIDEO_MAX_PLANES] = {256, 256};
        gst_buffer_add_video_meta_full(padded.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, 176, 144, 2,
                                       offsets, strides);
        GstVideoFrame from, to;
        ASSERT_TRUE(gst_video_frame_map(&from, const_cast<GstVideoInfo*>(&source.info()), picture.get(), GST_MAP_READ));
        ASSERT_TRUE(gst_video_frame_map(&to, const_cast<GstVideoInfo*>(&source.info()), padded.get(), GST_MAP_WRITE));
        gst_video_frame_copy(&to, &from);
        gst_video_frame_unmap(&to);
        gst_video_frame_unmap(&from);
        const buffer_ptr passed = harness.pass(std::move(padded));
        ASSERT_TRUE(passed);
        metas = metas_of(passed.get());
    }
    ASSERT_EQ(metas.size(), 1u);
    EXPECT_GT(share_inside(metas[0].where, source.middle()), 0.8);
}

struct layout_row {
    const char* name;
    gsize offsets[2];
    gint strides[2];
    guint width, height;
    bool fits;
};

std::ostream& operator<<(std::ostream& out, const layout_row& row) {
    return out << row.name;
}

class own_layout : public testing::TestWithParam<layout_row> {};

// A buffer of 256 x 256 bytes with a layout of its own, for NV12 pictures of 176 x 144: an element that reads by such a
// layout must hold it against the memory. The last row of chroma, 71 rows of 256 bytes behind the first and 176 bytes
// long, ends at the last byte if the first begins at 65,536 - 71 * 256 - 176 = 47,184.
TEST_P(own_layout, that_does_not_fit_its_memory_is_an_error) {
    const camera source({"NV12", 176, 144, "bt601"});
    element_harness harness("draw=true");
    harness.set_caps(source);
    buffer_ptr picture(gst_buffer_new_allocate(nullptr, 256 * 256, nullptr));
    gst_buffer_memset(picture.get(), 0, 90, 256 * 256);
    GST_BUFFER_PTS(picture.get()) = 0;
    const layout_row& row = GetParam();
    gsize offsets[GST_VIDEO_MAX_PLANES] = {row.offsets[0], row.offsets[1]};
    gint strides[GST_VIDEO_MAX_PLANES] = {row.strides[0], row.strides[1]};
    gst_buffer_add_video_meta_full(picture.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, row.width,
                                   row.height, 2, offsets, strides);
    const buffer_ptr passed = harness.pass(std::move(picture));
    EXPECT_EQ(passed != nullptr, row.fits);
    const std::vector<std::string> errors = harness.errors();
    ASSERT_EQ(errors.size(), row.fits ? 0u : 1u);
    if (!row.fits) {
        EXPECT_EQ(errors[0], "a picture's layout does not fit its memory");
    }
}

INSTANTIATE_TEST_SUITE_P(
    of, own_layout,
    testing::Values(layout_row{"within its memory", {0, 38400}, {256, 256}, 176, 144, true},
                    layout_row{"to the last byte", {0, 47184}, {256, 256}, 176, 144, true},
                    layout_row{"one byte beyond", {0, 47185}, {256, 256}, 176, 144, false},
                    layout_row{"a larger picture", {0, 40960}, {256, 256}, 240, 160, true},
                    layout_row{"rows that lead upwards", {36608, 38400}, {-256, 256}, 176, 144, true},
                    layout_row{"rows that lead before the memory", {256, 38400}, {-256, 256}, 176, 144, false},
                    layout_row{"rows that are too long", {0, 38400}, {512, 256}, 176, 144, false},
                    layout_row{"rows that overlap", {0, 38400}, {175, 256}, 176, 144, false},
                    layout_row{"rows of no length", {0, 38400}, {0, 0}, 176, 144, false}),
    test_name<layout_row>);

// A page that nobody may touch, directly behind a picture's last byte.
class guarded_memory {
public:
    explicit guarded_memory(gsize size) : m_size(size) {
        const auto page = static_cast<gsize>(sysconf(_SC_PAGESIZE));
        m_pages = (size + page - 1) / page * page;
        m_start = mmap(nullptr, m_pages + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m_start == MAP_FAILED) throw std::bad_alloc();
        mprotect(static_cast<guint8*>(m_start) + m_pages, page, PROT_NONE);
        m_all = m_pages + page;
    }
    ~guarded_memory() { munmap(m_start, m_all); }
    guarded_memory(const guarded_memory&) = delete;
    guarded_memory& operator=(const guarded_memory&) = delete;

    // A buffer of the last bytes, read-only, that lives no longer than this object.
    buffer_ptr buffer() const {
        return buffer_ptr(
            gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, data(), m_size, 0, m_size, nullptr, nullptr));
    }
    guint8* data() const { return static_cast<guint8*>(m_start) + m_pages - m_size; }

private:
    const gsize m_size;
    gsize m_pages = 0, m_all = 0;
    void* m_start;
};

class edge_of_memory : public testing::TestWithParam<format_row> {};

TEST_P(edge_of_memory, is_never_read_beyond) {
    const camera source(GetParam().camera);
    const guarded_memory memory(source.info().size);
    element_harness harness;
    harness.set_caps(source);
    for (int i = 0; i < 3; ++i) {
        gst_buffer_extract(source.picture(i).get(), 0, memory.data(), source.info().size);
        buffer_ptr picture = memory.buffer();
        GST_BUFFER_PTS(picture.get()) = source.time(i);
        ASSERT_TRUE(harness.pass(std::move(picture)));
    }
}

INSTANTIATE_TEST_SUITE_P(of, edge_of_memory,
                         testing::Values(format_row{"the smallest NV21", {"NV21", 16, 16, "bt601"}},
                                         format_row{"the smallest I420", {"I420", 16, 16, "bt601"}},
                                         format_row{"a narrow NV12", {"NV12", 17, 301, "bt601"}},
                                         format_row{"a low NV21", {"NV21", 301, 17, "bt601"}},
                                         format_row{"an odd NV21", {"NV21", 1001, 333, "bt601"}},
                                         format_row{"an odd NV12", {"NV12", 333, 251, "1:4:0:0"}},
                                         format_row{"an odd I420", {"I420", 641, 359, "bt601"}},
                                         format_row{"an odd YUY2", {"YUY2", 641, 359, "bt601"}},
                                         format_row{"an odd BGRx", {"BGRx", 641, 359, "sRGB"}},
                                         format_row{"an even NV12", {"NV12", 1280, 720, "bt709"}},
                                         format_row{"an even YUY2", {"YUY2", 640, 480, "bt601"}},
                                         format_row{"an even BGRx", {"BGRx", 640, 480, "sRGB"}}),
                         test_name<format_row>);

TEST(eight_elements, in_eight_threads_report_what_one_reports) {
    const auto watch = [](std::vector<fire_meta>& metas) {
        const camera source({"NV12", 176, 144, "bt601"});
        element_harness harness;
        harness.set_caps(source);
        metas = harness.run(source, 0, 70);
    };
    std::vector<fire_meta> alone;
    watch(alone);
    ASSERT_EQ(alone.size(), 1u);

    std::vector<std::vector<fire_meta>> together(8);
    std::vector<std::thread> threads;
    for (std::vector<fire_meta>& metas : together) threads.emplace_back(watch, std::ref(metas));
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<fire_meta>& metas : together) {
        ASSERT_EQ(metas.size(), 1u);
        EXPECT_EQ(metas[0].where, alone[0].where);
        EXPECT_EQ(metas[0].id, 1);
    }
}

}  // namespace
}  // namespace gst_test
