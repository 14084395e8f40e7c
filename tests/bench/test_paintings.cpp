// The painted scenes hold what their names say, and survive being written and read.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "bench/painting.h"
#include "bench/search.h"
#define ORVA_PLAIN_NAMESPACE plain_o2
#include "bench/plain/plain.h"

namespace {

const std::size_t k_bytes = FD_MAX_FRAME_WIDTH * FD_MAX_FRAME_HEIGHT;

struct image {
    explicit image(std::size_t planes = 1) : bytes(planes * k_bytes), view() {
        view.width = FD_MAX_FRAME_WIDTH;
        view.height = FD_MAX_FRAME_HEIGHT;
        for (std::size_t plane = 0; plane < planes; ++plane) {
            view.virt_addr[plane] = bytes.data() + plane * k_bytes;
            view.stride[plane] = view.width;
        }
    }
    std::vector<unsigned char> bytes;
    fd_yuv_frame view;
};

// Components of the mask that a channel makes of frame `number` after the one before it.
std::vector<plain_o2::component> components_of(const bench::scene& s, std::size_t number) {
    plain_o2::fill_tables();
    const fd_yuv_frame before = s.frame(number + 1);
    const fd_yuv_frame now = s.frame(number);
    image work;
    image mask;
    image rgb(3);
    plain_o2::difference(&now, &before, &work.view);
    plain_o2::threshold(&work.view, &work.view, plain_o2::otsu(&work.view, 20, 35));
    plain_o2::dilate(&work.view, &mask.view);
    plain_o2::convert(&now, &rgb.view);
    plain_o2::colour_filter(&mask.view, &rgb.view, &now);
    plain_o2::dilate(&mask.view, &work.view);
    std::vector<plain_o2::component> components;
    plain_o2::label(&work.view, components);
    return components;
}

bench::painting named(const std::string& name) {
    for (const bench::painting& p : bench::constructed_paintings()) {
        if (p.name == name) return p;
    }
    ADD_FAILURE() << "no painting is called " << name;
    return bench::painting();
}

struct count_row {
    const char* name;
    const char* painting;
    std::size_t components;
    std::size_t unmerged;  // that are left after merging; 0: not looked at
};

void PrintTo(const count_row& row, std::ostream* out) {
    *out << row.name;
}

// Counted from the strokes: 87 columns times 71 rows of specks, 59 times 48 blocks, and so on.
const count_row k_counts[] = {
    {"specks", "specks", 87 * 71, 0},
    // Pixels with x = 4 y modulo 15, x in 1..349 and y in 1..286: dilation passes over the other columns and rows.
    {"densest_specks", "densest specks", 6655, 0},
    {"grid_of_4_x_4", "grid of 4 x 4", 59 * 48, 0},
    {"grid_of_6_x_6", "grid of 6 x 6", 44 * 36, 0},
    {"comb_is_one", "comb", 1, 1},
    {"spiral_is_one", "spiral", 1, 1},
    {"everything_burns_is_one", "everything burns", 1, 1},
    {"nested_frames", "nested frames", 4, 4},
    {"isolated_boxes_stay", "as many as stay unmerged", 8 * 6 + 7 * 6, 8 * 6 + 7 * 6},
    {"isolated_specks_stay", "as many specks as stay unmerged", 8 * 7 + 8 * 6, 8 * 7 + 8 * 6},
};

class painted_components : public testing::TestWithParam<count_row> {};

TEST_P(painted_components, are_as_many_as_the_strokes_say) {
    const bench::scene s = bench::paint(named(GetParam().painting), bench::k_full_width, bench::k_full_height);
    for (std::size_t turn = 0; turn < 2; ++turn) {
        std::vector<plain_o2::component> list = components_of(s, turn);
        EXPECT_EQ(list.size(), GetParam().components) << "turn " << turn;
        if (GetParam().unmerged == 0) continue;
        image mask;
        const fd_yuv_frame frame = s.frame(turn);
        std::vector<plain_o2::component> candidates;
        plain_o2::find_candidates(&frame, &mask.view, list, candidates);
        EXPECT_EQ(list.size(), GetParam().unmerged) << "turn " << turn;
    }
}

INSTANTIATE_TEST_SUITE_P(, painted_components, testing::ValuesIn(k_counts),
                         [](const testing::TestParamInfo<count_row>& row) { return std::string(row.param.name); });

// Dilation leaves the outermost rows and columns alone, so the first ones of the grid are smaller.
TEST(paintings, specks_are_3_x_3) {
    const bench::scene s = bench::paint(named("specks"), bench::k_full_width, bench::k_full_height);
    for (const plain_o2::component& c : components_of(s, 0)) {
        if (c.left == 1 || c.top == 1) continue;
        ASSERT_EQ(c.area, 9);
        ASSERT_EQ(c.right - c.left, 2);
        ASSERT_EQ(c.bottom - c.top, 2);
    }
}

TEST(paintings, are_read_as_they_were_written) {
    bench::random_source random(1);
    for (int i = 0; i < 200; ++i) {
        bench::painting p = bench::random_painting(random);
        p = bench::changed_painting(p, random);
        const std::string text = bench::to_text(p);
        EXPECT_EQ(bench::to_text(bench::parse(text)), text);
    }
}

TEST(paintings, have_names_of_their_own) {
    std::vector<std::string> names;
    for (const std::vector<bench::painting>& group : {bench::constructed_paintings(), bench::found_paintings()}) {
        for (const bench::painting& p : group) names.push_back(p.name);
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

// Any painting is a legal scene: strokes outside the picture are cut, not written.
TEST(paintings, drawn_at_random_stay_inside_the_picture) {
    bench::random_source random(7);
    bench::painting p = bench::random_painting(random);
    for (int i = 0; i < 300; ++i) {
        if (i % 20 == 0) p = bench::random_painting(random);
        p = bench::changed_painting(p, random);
        const bench::scene s = bench::paint(p, 64, 48);
        ASSERT_EQ(s.frames.size(), 2u);
    }
}

}  // namespace
