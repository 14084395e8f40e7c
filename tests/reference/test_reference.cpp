#include <gtest/gtest.h>

#include "tests/reference/ref_library.h"

namespace {

TEST(reference_colour, saturation_limit_has_the_telling_rows) {
    EXPECT_EQ(ref::saturation_limit(0), -912260);
    EXPECT_EQ(ref::saturation_limit(3), -889192);
    EXPECT_EQ(ref::saturation_limit(118), -4892);
    EXPECT_EQ(ref::saturation_limit(119), 2796);
    EXPECT_EQ(ref::saturation_limit(150), 241172);
    EXPECT_EQ(ref::saturation_limit(200), 625650);
    EXPECT_EQ(ref::saturation_limit(254), 1040886);
    EXPECT_EQ(ref::saturation_limit(255), 1048576);
}

}  // namespace
