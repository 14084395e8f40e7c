// An application that uses the library itself beside the element. Each test needs a process of its own.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/nv21.h"
#include "tests/gst/harness.h"

namespace gst_test {
namespace {

using orva_fire::box;

const int k_pictures = 100;

// A channel that the application opened.
class host_channel {
public:
    host_channel() : m_picture({176, 144}) {
        EXPECT_EQ(ORVA_FireDetection_Start(&m_handle, {0, 1, 0, 1, 1, 1, 1, 1}), FD_OK);
    }
    ~host_channel() { EXPECT_EQ(ORVA_FireDetection_Stop(m_handle), FD_OK); }
    host_channel(const host_channel&) = delete;
    host_channel& operator=(const host_channel&) = delete;

    // source: NV21 of full range, which is what the library wants.
    std::vector<box> look(GstBuffer* source) {
        gst_buffer_extract(source, 0, m_picture.luma(), 176 * 144 * 3 / 2);
        fd_result result = {};
        EXPECT_EQ(ORVA_FireDetection_SetFrame(m_handle, m_picture.view(), &result), FD_OK);
        std::vector<box> boxes;
        for (int i = 0; i < result.count; ++i) {
            boxes.push_back({result.rects[i].x, result.rects[i].y, result.rects[i].width, result.rects[i].height});
        }
        return boxes;
    }

private:
    orva_fire::nv21_picture m_picture;
    int m_handle = -1;
};

// Both see the same pictures, and both report the same.
void look_together(host_channel& channel) {
    const camera source({});
    element_harness harness;
    harness.set_caps(source);
    size_t reported = 0;
    for (int i = 0; i < k_pictures; ++i) {
        const std::vector<box> boxes = channel.look(source.picture(i).get());
        const buffer_ptr passed = harness.pass(source.picture(i));
        ASSERT_TRUE(passed);
        const std::vector<fire_meta> metas = metas_of(passed.get());
        ASSERT_EQ(metas.size(), boxes.size()) << "picture " << i;
        for (size_t k = 0; k < boxes.size(); ++k) EXPECT_EQ(metas[k].where, boxes[k]) << "picture " << i;
        reported += boxes.size();
    }
    EXPECT_EQ(reported, 50u);
}

struct stat standard_output() {
    struct stat status = {};
    EXPECT_EQ(fstat(1, &status), 0);
    return status;
}

TEST(a_host, that_initialised_the_library_first_keeps_it) {
    const struct stat output = standard_output();
    ASSERT_EQ(ORVA_FireDetection_Init(), FD_OK);
    {
        host_channel channel;
        look_together(channel);
        // The element is gone, the host's channel is not: it still reports.
        const camera source({});
        EXPECT_EQ(channel.look(source.picture(k_pictures).get()).size(), 1u);
    }
    EXPECT_EQ(ORVA_FireDetection_UnInit(), FD_OK);
    EXPECT_EQ(standard_output().st_ino, output.st_ino);
    EXPECT_EQ(standard_output().st_dev, output.st_dev);
}

TEST(a_host, that_comes_after_an_element_finds_the_library_initialised) {
    const struct stat output = standard_output();
    {
        const camera source({});
        element_harness harness;
        harness.set_caps(source);
        EXPECT_EQ(harness.run(source, 0, 60).size(), 1u);
    }
    EXPECT_EQ(ORVA_FireDetection_Init(), FD_ALREADY_INITIALISED);
    {
        host_channel channel;
        look_together(channel);
    }
    EXPECT_EQ(standard_output().st_ino, output.st_ino);
    EXPECT_EQ(standard_output().st_dev, output.st_dev);
}

}  // namespace
}  // namespace gst_test
