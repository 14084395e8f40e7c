#include <gtest/gtest.h>

#include "tests/gst/harness.h"

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    gst_test::start_gstreamer();
    return RUN_ALL_TESTS();
}
