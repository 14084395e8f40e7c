// Library and twin side by side, a scene each.
#include <gtest/gtest.h>

#include "tests/pipeline/twin_runner.h"

namespace {

class named_scene : public testing::TestWithParam<scenes::settings> {};

// The runner holds standard output while it lives, so it is gone before anything is said.
std::string difference_in(const scenes::settings& scene) {
    scenes::twin_runner both;
    both.play(scene, 1);
    return both.difference();
}

TEST_P(named_scene, looks_the_same_to_library_and_twin) {
    EXPECT_EQ(difference_in(GetParam()), "");
}

std::string row_name(const testing::TestParamInfo<scenes::settings>& row) {
    std::string name = row.param.name;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(scenes, named_scene, testing::ValuesIn(scenes::named_scenes()), row_name);

}  // namespace
