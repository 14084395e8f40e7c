// The row functions, each against the rule that it states, at every width around a vector's length.
#include "imgproc/rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "imgproc/common.h"
#include "tests/support/random.h"

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

TEST_F(rows, abs_diff_row_and_motion_row_follow_their_rules_in_place_too) {
    for (const int width : all_widths()) {
        const bytes a = noise(m_random, width), b = noise(m_random, width);
        const int threshold = m_random.below(256);
        bytes wanted_difference(a.size()), wanted_motion(a.size());
        for (std::size_t x = 0; x < a.size(); ++x) {
            wanted_difference[x] = static_cast<unsigned char>(distance(a[x], b[x]));
            wanted_motion[x] = distance(a[x], b[x]) > threshold ? 255 : 0;
        }
        bytes out(a.size(), 77), first = a, second = b;
        abs_diff_row(a.data(), b.data(), out.data(), width);
        EXPECT_EQ(out, wanted_difference) << width << ", seed " << m_random.seed();
        motion_row(a.data(), b.data(), out.data(), width, threshold);
        EXPECT_EQ(out, wanted_motion) << width << ", above " << threshold << ", seed " << m_random.seed();
        abs_diff_row(first.data(), b.data(), first.data(), width);
        EXPECT_EQ(first, wanted_difference) << width;
        abs_diff_row(a.data(), second.data(), second.data(), width);
        EXPECT_EQ(second, wanted_difference) << width;
    }
}

TEST_F(rows, threshold_row_and_motion_row_take_every_threshold) {
    bytes values(256), zeros(256, 0), out(256), moved(256);
    for (int i = 0; i < 256; ++i) values[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
    for (int threshold = 0; threshold < 256; ++threshold) {
        threshold_row(values.data(), out.data(), 256, threshold);
        motion_row(values.data(), zeros.data(), moved.data(), 256, threshold);
        for (int i = 0; i < 256; ++i) {
            ASSERT_EQ(out[static_cast<std::size_t>(i)], i > threshold ? 255 : 0) << i << " above " << threshold;
            ASSERT_EQ(moved[static_cast<std::size_t>(i)], i > threshold ? 255 : 0) << i << " above " << threshold;
        }
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
        capped_sums wanted = {}, got = {}, counted = {};
        wanted.all = got.all = counted.all = 5;
        for (int i = 0; i < k_caps; ++i) wanted.held[i] = got.held[i] = counted.held[i] = static_cast<uint32_t>(i);
        for (const unsigned char byte : stack) {
            wanted.all += byte;
            for (int i = 0; i < k_caps; ++i) wanted.held[i] += static_cast<uint32_t>(std::min<int>(byte, i + 1));
        }
        add_capped_sums(stack.data(), &got);
        add_capped_sums_counted(stack.data(), &counted);
        for (const capped_sums* sums : {&got, &counted}) {
            ASSERT_EQ(sums->all, wanted.all) << "round " << round << ", seed " << m_random.seed();
            for (int i = 0; i < k_caps; ++i)
                ASSERT_EQ(sums->held[i], wanted.held[i]) << "cap " << i + 1 << ", seed " << m_random.seed();
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
        if (width < 4) continue;
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

}  // namespace
