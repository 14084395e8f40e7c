// The row functions, each against the rule that it states, at every width around a vector's length.
#include "imgproc/rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "imgproc/common.h"
#include "tests/support/random.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fd;

using bytes = std::vector<unsigned char>;

std::vector<int> all_widths() {
    std::vector<int> widths;
    for (int width = 0; width <= 70; ++width) widths.push_back(width);
    widths.insert(widths.end(), {95, 96, 97, 127, 128, 129, 239, 240, 241, 255, 256, 257, 319, 320, 351, 352});
    return widths;
}

// Beyond the widest row, for functions that take any width.
std::vector<int> wide_widths() {
    std::vector<int> widths = all_widths();
    widths.insert(widths.end(), {353, 479, 480, 481, 700, 701, 702, 703, 704, 1049, 1050, 1051, 1052, 1053, 1920});
    return widths;
}

// Rows of exactly their width, so that the sanitizer sees a byte too many.
bytes noise(support::random_source& random, int width) {
    bytes row(static_cast<std::size_t>(width));
    random.fill(row.data(), row.size());
    return row;
}

int distance(unsigned char a, unsigned char b) {
    return std::abs(a - b);
}

class rows : public testing::Test {
protected:
    support::random_source m_random;
};

TEST_F(rows, abs_diff_row_follows_its_rule_in_place_too) {
    for (const int width : all_widths()) {
        const bytes a = noise(m_random, width), b = noise(m_random, width);
        bytes wanted(a.size());
        for (std::size_t x = 0; x < a.size(); ++x) wanted[x] = static_cast<unsigned char>(distance(a[x], b[x]));
        bytes out(a.size(), 77), first = a, second = b;
        abs_diff_row(a.data(), b.data(), out.data(), width);
        EXPECT_EQ(out, wanted) << width << ", seed " << m_random.seed();
        abs_diff_row(first.data(), b.data(), first.data(), width);
        EXPECT_EQ(first, wanted) << width;
        abs_diff_row(a.data(), second.data(), second.data(), width);
        EXPECT_EQ(second, wanted) << width;
    }
}

TEST_F(rows, threshold_row_takes_every_threshold) {
    bytes values(256), out(256);
    for (int i = 0; i < 256; ++i) values[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
    for (int threshold = 0; threshold < 256; ++threshold) {
        threshold_row(values.data(), out.data(), 256, threshold);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(out[static_cast<std::size_t>(i)], i > threshold ? 255 : 0) << i << " above " << threshold;
    }
}

#if ORVA_HAS_VECTORS
TEST_F(rows, motion_row_follows_its_rule_with_every_threshold) {
    for (int threshold = 0; threshold < 256; ++threshold) {
        const int width = all_widths()[static_cast<std::size_t>(threshold) % all_widths().size()];
        const bytes a = noise(m_random, width), b = noise(m_random, width);
        bytes wanted(a.size()), out(a.size(), 77);
        for (std::size_t x = 0; x < a.size(); ++x) wanted[x] = distance(a[x], b[x]) > threshold ? 255 : 0;
        motion_row(a.data(), b.data(), out.data(), width, threshold);
        EXPECT_EQ(out, wanted) << width << ", above " << threshold << ", seed " << m_random.seed();
    }
    bytes values(256), zeros(256, 0), moved(256);
    for (int i = 0; i < 256; ++i) values[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
    for (int threshold = 0; threshold < 256; ++threshold) {
        motion_row(values.data(), zeros.data(), moved.data(), 256, threshold);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(moved[static_cast<std::size_t>(i)], i > threshold ? 255 : 0) << i << " above " << threshold;
    }
}

TEST_F(rows, measure_motion_row_gives_sum_and_largest) {
    for (const int width : all_widths()) {
        for (const int content : {0, 1, 2}) {
            bytes a = noise(m_random, width), b = noise(m_random, width);
            if (content == 1)
                std::fill(a.begin(), a.end(), static_cast<unsigned char>(255)),
                    std::fill(b.begin(), b.end(), static_cast<unsigned char>(0));
            if (content == 2) a = b;
            uint32_t sum = 0;
            int largest = 0;
            for (std::size_t x = 0; x < a.size(); ++x) {
                sum += static_cast<uint32_t>(distance(a[x], b[x]));
                largest = std::max(largest, distance(a[x], b[x]));
            }
            const row_motion got = measure_motion_row(a.data(), b.data(), width);
            EXPECT_EQ(got.sum, sum) << width << ", seed " << m_random.seed();
            EXPECT_EQ(got.largest, largest) << width << ", seed " << m_random.seed();
        }
    }
}

TEST_F(rows, excess_row_follows_its_rule_in_place_too) {
    for (const int width : all_widths()) {
        const bytes a = noise(m_random, width), b = noise(m_random, width);
        const int limit = m_random.below(256);
        bytes wanted(a.size()), out(a.size(), 77), first = a;
        for (std::size_t x = 0; x < a.size(); ++x)
            wanted[x] = static_cast<unsigned char>(std::max(0, distance(a[x], b[x]) - limit));
        excess_row(a.data(), b.data(), out.data(), width, limit);
        EXPECT_EQ(out, wanted) << width << ", above " << limit << ", seed " << m_random.seed();
        excess_row(first.data(), b.data(), first.data(), width, limit);
        EXPECT_EQ(first, wanted) << width << ", above " << limit << ", seed " << m_random.seed();
    }
}

// Full stacks of 255 and of 16 too, in which a column's sum is the largest that a byte holds.
TEST_F(rows, add_capped_sums_adds_what_each_cap_holds) {
    for (int round = 0; round < 40; ++round) {
        bytes stack = noise(m_random, k_stack_rows * k_widest_row);
        if (round % 4 == 1)
            for (unsigned char& byte : stack) byte = static_cast<unsigned char>(byte % 20);
        if (round == 2) std::fill(stack.begin(), stack.end(), static_cast<unsigned char>(255));
        if (round == 3) std::fill(stack.begin(), stack.end(), static_cast<unsigned char>(k_caps));
        capped_sums wanted = {}, got = {};
        wanted.all = got.all = 5;
        for (int i = 0; i < k_caps; ++i) wanted.held[i] = got.held[i] = static_cast<uint32_t>(i);
        for (const unsigned char byte : stack) {
            wanted.all += byte;
            for (int i = 0; i < k_caps; ++i) wanted.held[i] += static_cast<uint32_t>(std::min<int>(byte, i + 1));
        }
        add_capped_sums(stack.data(), &got);
        ASSERT_EQ(got.all, wanted.all) << "round " << round << ", seed " << m_random.seed();
        for (int i = 0; i < k_caps; ++i)
            ASSERT_EQ(got.held[i], wanted.held[i]) << "cap " << i + 1 << ", seed " << m_random.seed();
    }
}
#else
// Rows with no, a few and many differences above the limit, bytes that carry in sums beside ones that do not.
TEST_F(rows, replace_row_keeps_luma_and_differences_and_counts_them) {
    for (const int width : all_widths()) {
        for (const int kind : {0, 1, 2, 3, 4, 5}) {
            const int limit = kind < 3 ? 20 : m_random.below(128);
            const bytes luma = noise(m_random, width);
            bytes before = noise(m_random, width), distances(luma.size(), 77), wanted(luma.size());
            for (std::size_t x = 0; kind % 3 != 2 && x < luma.size(); ++x) {
                const int step = m_random.below(15) == 0 ? kind % 3 * (limit + 1) : m_random.between(0, limit);
                before[x] = static_cast<unsigned char>(luma[x] < 128 ? luma[x] + step : luma[x] - step);
            }
            if (kind == 5) std::fill(before.begin(), before.end(), static_cast<unsigned char>(0));
            difference_counts got = {}, wanted_counts = {};
            got.sum = wanted_counts.sum = 3;
            bool any = false;
            for (std::size_t x = 0; x < luma.size(); ++x) {
                const int step = distance(luma[x], before[x]);
                wanted[x] = static_cast<unsigned char>(step);
                wanted_counts.sum += static_cast<uint32_t>(step);
                ++wanted_counts.of[step];
                any = any || step > limit;
            }
            EXPECT_EQ(replace_row(luma.data(), before.data(), distances.data(), width, limit, &got), any) << width;
            ASSERT_EQ(before, luma) << width << ", seed " << m_random.seed();
            ASSERT_EQ(distances, wanted) << width << ", seed " << m_random.seed();
            ASSERT_EQ(got.sum, wanted_counts.sum) << width << ", seed " << m_random.seed();
            for (int value = limit + 1; value < 256; ++value)
                ASSERT_EQ(got.of[value], wanted_counts.of[value]) << value << ", seed " << m_random.seed();
        }
    }
}

// All pairs of bytes, each with every neighbour of the words before and behind.
TEST_F(rows, replace_row_knows_every_difference) {
    bytes luma(256), before(256), distances(256);
    for (int a = 0; a < 256; ++a) {
        for (int i = 0; i < 256; ++i) {
            luma[static_cast<std::size_t>(i)] = static_cast<unsigned char>(a);
            before[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i * 71);
        }
        const bytes old = before;
        difference_counts counts = {};
        replace_row(luma.data(), before.data(), distances.data(), 256, 20, &counts);
        for (std::size_t i = 0; i < 256; ++i)
            ASSERT_EQ(distances[i], distance(luma[i], old[i])) << a << ", " << +old[i];
    }
}

// A row of the largest differences: its sum is the largest that halves of a word hold.
TEST_F(rows, replace_row_sums_the_widest_row) {
    const bytes luma(352, 255);
    bytes before(352, 0), distances(352);
    difference_counts counts = {};
    EXPECT_TRUE(replace_row(luma.data(), before.data(), distances.data(), 352, 20, &counts));
    EXPECT_EQ(counts.sum, 89760u);
    EXPECT_EQ(counts.of[255], 352u);
}
#endif

TEST_F(rows, sum_row_is_right_up_to_its_largest_values) {
    for (const int width : wide_widths()) {
        const bytes some = noise(m_random, width), full(some.size(), 255);
        for (const bytes* row : {&some, &full}) {
            uint32_t sum = 0;
            for (const unsigned char byte : *row) sum += byte;
            EXPECT_EQ(sum_row(row->data(), width), sum) << width;
        }
    }
}

TEST_F(rows, add_bright_row_adds_to_its_counts) {
    for (const int width : wide_widths()) {
        const bytes some = noise(m_random, width), mask = noise(m_random, width), full(some.size(), 255);
        bright_counts got = {1, 2, 3}, wanted = {1, 2, 3};
        for (const bytes* luma : {&some, &full}) {
            for (const bytes* set : {&mask, &full}) {
                add_bright_row(luma->data(), set->data(), width, 128, &got);
                for (std::size_t x = 0; x < luma->size(); ++x) {
                    if ((*luma)[x] > 128) {
                        ++wanted.bright;
                        wanted.bright_sum += (*luma)[x];
                    }
                    wanted.fire += (*set)[x] & 1;
                }
                ASSERT_EQ(got.bright, wanted.bright) << width << ", seed " << m_random.seed();
                ASSERT_EQ(got.bright_sum, wanted.bright_sum) << width << ", seed " << m_random.seed();
                ASSERT_EQ(got.fire, wanted.fire) << width << ", seed " << m_random.seed();
            }
        }
    }
}

TEST_F(rows, bits_row_sets_a_bit_for_each_byte_that_is_not_zero) {
    for (int width = 0; width <= k_widest_bits; ++width) {
        bytes row = noise(m_random, width);
        for (unsigned char& byte : row) byte = m_random.below(3) == 0 ? byte : static_cast<unsigned char>(0);
        uint64_t bits[k_bit_words];
        std::fill(bits, bits + k_bit_words, ~uint64_t(0));
        bits_row(row.data(), width, bits);
        for (int x = 0; x < k_widest_bits; ++x) {
            const bool wanted = x < width && row[static_cast<std::size_t>(x)] != 0;
            ASSERT_EQ((bits[x / 64] >> x % 64 & 1) != 0, wanted)
                << "column " << x << " of " << width << ", seed " << m_random.seed();
        }
    }
}

// Every byte alone, and between neighbours that carry.
TEST_F(rows, bits_row_knows_every_byte) {
    for (int value = 0; value < 256; ++value) {
        bytes row(8, static_cast<unsigned char>(0));
        row[3] = static_cast<unsigned char>(value);
        uint64_t bits[k_bit_words];
        bits_row(row.data(), 8, bits);
        EXPECT_EQ(bits[0], value != 0 ? 8u : 0u) << value;
        row[2] = row[4] = 255;
        bits_row(row.data(), 8, bits);
        EXPECT_EQ(bits[0], value != 0 ? 28u : 20u) << value;
    }
}

TEST_F(rows, dilate_row_and_erode_row_leave_the_first_and_the_last_two_columns) {
    for (const int width : wide_widths()) {
        for (const int share : {2, 10, 300}) {
            bytes three[3];
            for (bytes& row : three) {
                row = noise(m_random, width);
                // Lowest bits that are rarely set, so that each of the nine decides alone somewhere.
                for (unsigned char& byte : row)
                    byte = static_cast<unsigned char>(m_random.below(share) == 0 ? byte | 1 : byte & 254);
            }
            bytes dilated(three[0].size(), 77), eroded(three[0].size(), 77), wanted_dilated = dilated,
                                                                             wanted_eroded = eroded;
            bytes inverted[3];
            for (int r = 0; r < 3; ++r) {
                for (const unsigned char byte : three[r]) inverted[r].push_back(static_cast<unsigned char>(~byte));
            }
            for (std::size_t x = 1; x + 2 < three[0].size(); ++x) {
                bool any = false, all = true;
                for (int r = 0; r < 3; ++r) {
                    for (std::size_t near = x - 1; near <= x + 1; ++near) {
                        any = any || (three[r][near] & 1) != 0;
                        all = all && (inverted[r][near] & 1) != 0;
                    }
                }
                wanted_dilated[x] = any ? 255 : three[1][x];
                wanted_eroded[x] = all ? inverted[1][x] : 0;
            }
            dilate_row(three[0].data(), three[1].data(), three[2].data(), dilated.data(), width);
            erode_row(inverted[0].data(), inverted[1].data(), inverted[2].data(), eroded.data(), width);
            ASSERT_EQ(dilated, wanted_dilated) << width << ", seed " << m_random.seed();
            ASSERT_EQ(eroded, wanted_eroded) << width << ", seed " << m_random.seed();
        }
    }
}

// A byte of 1 alone, in each column of each row: nothing else is there to wake the words around it.
TEST_F(rows, dilate_row_sees_a_single_bit) {
    const int width = 40;
    for (int r = 0; r < 3; ++r) {
        for (int set = 0; set < width; ++set) {
            bytes three[3] = {bytes(width, 0), bytes(width, 0), bytes(width, 0)}, dilated(width, 77);
            three[r][static_cast<std::size_t>(set)] = 1;
            dilate_row(three[0].data(), three[1].data(), three[2].data(), dilated.data(), width);
            for (int x = 1; x < width - 2; ++x)
                ASSERT_EQ(dilated[static_cast<std::size_t>(x)], std::abs(x - set) <= 1 ? 255 : 0) << set << ", " << x;
        }
    }
}

// --- rows that do not begin at whole words --------------------------------------------------------------------------

// A row that begins some bytes behind a multiple of eight, between bytes that nobody may write.
class placed_row {
public:
    placed_row(support::random_source& random, int width, int offset)
        : m_bytes(static_cast<std::size_t>(width) + 24, 99), m_first(8 + offset), m_width(width) {
        random.fill(data(), static_cast<std::size_t>(width));
    }
    unsigned char* data() { return m_bytes.data() + m_first; }
    bytes content() const { return bytes(m_bytes.begin() + m_first, m_bytes.begin() + m_first + m_width); }
    bool is_fenced() const {
        const auto is_fence = [](unsigned char byte) { return byte == 99; };
        return std::all_of(m_bytes.begin(), m_bytes.begin() + m_first, is_fence) &&
               std::all_of(m_bytes.begin() + m_first + m_width, m_bytes.end(), is_fence);
    }

private:
    bytes m_bytes;
    int m_first;
    int m_width;
};

struct place_row : support::named_row {
    int offsets[4];
};

class misplaced_rows : public testing::TestWithParam<place_row> {
protected:
    placed_row row(int which, int width) { return placed_row(m_random, width, GetParam().offsets[which]); }

    support::random_source m_random;
};

TEST_P(misplaced_rows, are_thresholded) {
    for (const int width : all_widths()) {
        placed_row src = row(0, width), dst = row(1, width);
        bytes wanted = src.content();
        const int threshold = m_random.below(256);
        for (unsigned char& byte : wanted) byte = byte > threshold ? 255 : 0;
        threshold_row(src.data(), dst.data(), width, threshold);
        ASSERT_EQ(dst.content(), wanted) << width << ", seed " << m_random.seed();
        ASSERT_TRUE(dst.is_fenced()) << width;
    }
}

TEST_P(misplaced_rows, are_summed_and_their_bright_pixels_counted) {
    for (const int width : wide_widths()) {
        placed_row luma = row(0, width), mask = row(1, width);
        const int limit = m_random.below(256);
        uint32_t sum = 0;
        bright_counts got = {1, 2, 3}, wanted = got;
        const bytes pixels = luma.content(), set = mask.content();
        for (std::size_t x = 0; x < pixels.size(); ++x) {
            sum += pixels[x];
            wanted.bright += pixels[x] > limit ? 1 : 0;
            wanted.bright_sum += pixels[x] > limit ? pixels[x] : 0;
            wanted.fire += set[x] & 1;
        }
        ASSERT_EQ(sum_row(luma.data(), width), sum) << width << ", seed " << m_random.seed();
        add_bright_row(luma.data(), mask.data(), width, limit, &got);
        ASSERT_EQ(got.bright, wanted.bright) << width << ", above " << limit << ", seed " << m_random.seed();
        ASSERT_EQ(got.bright_sum, wanted.bright_sum) << width << ", above " << limit << ", seed " << m_random.seed();
        ASSERT_EQ(got.fire, wanted.fire) << width << ", seed " << m_random.seed();
    }
}

TEST_P(misplaced_rows, become_bits) {
    for (const int width : all_widths()) {
        placed_row src = row(0, width);
        for (int x = 0; x < width; ++x) src.data()[x] = m_random.below(3) == 0 ? src.data()[x] : 0;
        uint64_t bits[k_bit_words];
        bits_row(src.data(), width, bits);
        for (int x = 0; x < k_widest_bits; ++x) {
            ASSERT_EQ(bits[x / 64] >> x % 64 & 1, x < width && src.data()[x] != 0 ? 1u : 0u)
                << "column " << x << " of " << width << ", seed " << m_random.seed();
        }
    }
}

// Stretches of set and of clear pixels too, as masks have them.
TEST_P(misplaced_rows, are_dilated) {
    for (const int width : wide_widths()) {
        if (width < 4) continue;
        for (const int stretch : {1, 3, 30}) {
            placed_row three[3] = {row(0, width), row(1, width), row(2, width)}, dst = row(3, width);
            for (placed_row& one : three) {
                for (int x = 0, left = 0, value = 0; x < width; ++x, --left) {
                    if (left <= 0) value = m_random.below(3) == 0 ? 255 : 0, left = m_random.between(1, stretch);
                    one.data()[x] = static_cast<unsigned char>(value);
                }
            }
            bytes wanted = dst.content();
            for (int x = 1; x < width - 2; ++x) {
                int bits = 0;
                for (placed_row& one : three) bits |= one.data()[x - 1] | one.data()[x] | one.data()[x + 1];
                wanted[static_cast<std::size_t>(x)] = static_cast<unsigned char>(bits);
            }
            dilate_row(three[0].data(), three[1].data(), three[2].data(), dst.data(), width);
            ASSERT_EQ(dst.content(), wanted) << width << ", seed " << m_random.seed();
            ASSERT_TRUE(dst.is_fenced()) << width;
        }
    }
}

#if !ORVA_HAS_VECTORS
TEST_P(misplaced_rows, are_replaced) {
    for (const int width : all_widths()) {
        placed_row luma = row(0, width), before = row(1, width), distances = row(2, width);
        bytes wanted(luma.content().size());
        difference_counts counts = {}, wanted_counts = {};
        for (int x = 0; x < width; ++x) {
            const int step = distance(luma.data()[x], before.data()[x]);
            wanted[static_cast<std::size_t>(x)] = static_cast<unsigned char>(step);
            wanted_counts.sum += static_cast<uint32_t>(step);
            ++wanted_counts.of[step];
        }
        const bool any = std::any_of(wanted.begin(), wanted.end(), [](unsigned char byte) { return byte > 20; });
        EXPECT_EQ(replace_row(luma.data(), before.data(), distances.data(), width, 20, &counts), any) << width;
        ASSERT_EQ(before.content(), luma.content()) << width << ", seed " << m_random.seed();
        ASSERT_EQ(distances.content(), wanted) << width << ", seed " << m_random.seed();
        ASSERT_TRUE(before.is_fenced() && distances.is_fenced()) << width;
        ASSERT_EQ(counts.sum, wanted_counts.sum) << width << ", seed " << m_random.seed();
        for (int value = 21; value < 256; ++value) ASSERT_EQ(counts.of[value], wanted_counts.of[value]) << value;
    }
}
#endif

INSTANTIATE_TEST_SUITE_P(
    table, misplaced_rows,
    testing::Values(place_row{{"all at a word"}, {0, 0, 0, 0}}, place_row{{"all a byte behind"}, {1, 1, 1, 1}},
                    place_row{{"all two bytes behind"}, {2, 2, 2, 2}},
                    place_row{{"all three bytes behind"}, {3, 3, 3, 3}}, place_row{{"at other words"}, {4, 0, 0, 4}},
                    place_row{{"the first aside"}, {1, 0, 0, 0}}, place_row{{"the second aside"}, {0, 3, 0, 0}},
                    place_row{{"the third aside"}, {0, 0, 2, 0}}, place_row{{"the last aside"}, {2, 2, 2, 1}}),
    support::row_name());

}  // namespace
