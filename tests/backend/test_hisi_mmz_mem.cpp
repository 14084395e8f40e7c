// The buffer owner in ordinary memory: when it obtains, keeps, grows and frees.
#include "backend/hisi_mmz_mem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "backend/memory_zone.h"
#include "tests/support/capture.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::hisi_mmz_mem;
using orva_fd::test_access;
using support::outcome;
using support::outcome_of;

unsigned char* bytes_of(const hisi_mmz_mem& memory) {
    return static_cast<unsigned char*>(memory.virt_addr());
}

bool all_zero(const hisi_mmz_mem& memory) {
    return std::all_of(bytes_of(memory), bytes_of(memory) + memory.size(),
                       [](unsigned char byte) { return byte == 0; });
}

TEST(hisi_mmz_mem, starts_empty) {
    const hisi_mmz_mem memory;
    EXPECT_EQ(memory.phys_addr(), 0u);
    EXPECT_EQ(memory.virt_addr(), nullptr);
    EXPECT_EQ(memory.size(), 0u);
}

class alloc_mmz : public testing::TestWithParam<bool> {};

TEST_P(alloc_mmz, obtains_zeroed_memory_without_physical_address) {
    hisi_mmz_mem memory;
    const outcome got = outcome_of([&] { return memory.alloc_mmz(3052, GetParam()); });
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(memory.phys_addr(), 0u);
    ASSERT_NE(memory.virt_addr(), nullptr);
    EXPECT_EQ(memory.size(), 3052u);
    EXPECT_TRUE(all_zero(memory));
    std::memset(memory.virt_addr(), 255, 3052);  // all of it may be written
}

INSTANTIATE_TEST_SUITE_P(cached_and_not, alloc_mmz, testing::Bool());

struct growth_row : support::named_row {
    unsigned held;
    unsigned asked;
    bool kept;
    unsigned wanted_size;
};

class alloc_mmz_again : public testing::TestWithParam<growth_row> {};

TEST_P(alloc_mmz_again, keeps_what_is_large_enough) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(GetParam().held, true), 0);
    void* const before = memory.virt_addr();
    std::memset(before, 7, GetParam().held);
    EXPECT_EQ(memory.alloc_mmz(GetParam().asked, true), 0);
    EXPECT_EQ(memory.size(), GetParam().wanted_size);
    if (GetParam().kept) {
        EXPECT_EQ(memory.virt_addr(), before);
        EXPECT_EQ(bytes_of(memory)[GetParam().held - 1], 7);
    } else {
        EXPECT_TRUE(all_zero(memory)) << "nothing is copied";
    }
}

INSTANTIATE_TEST_SUITE_P(table, alloc_mmz_again,
                         testing::Values(growth_row{{"100 while 200 are held"}, 200, 100, true, 200},
                                         growth_row{{"200 while 200 are held"}, 200, 200, true, 200},
                                         growth_row{{"201 while 200 are held"}, 200, 201, false, 201},
                                         growth_row{{"300 while 200 are held"}, 200, 300, false, 300},
                                         growth_row{{"0 while 200 are held"}, 200, 0, true, 200}),
                         support::row_name());

TEST(hisi_mmz_mem, asked_for_nothing_while_empty_stays_empty) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.alloc_mmz(0, true), 0);
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(memory.virt_addr(), nullptr);
}

TEST(hisi_mmz_mem, flushes_without_a_word) {
    hisi_mmz_mem memory;
    for (const unsigned size : {0u, 1u, 4000000000u}) {
        const outcome empty = outcome_of([&] { return memory.flush_mmz(size); });
        EXPECT_EQ(empty.status, 0) << "empty, " << size;
        EXPECT_EQ(empty.text, "");
    }
    ASSERT_EQ(memory.alloc_mmz(100, true), 0);
    std::memset(memory.virt_addr(), 7, 100);
    for (const unsigned size : {0u, 1u, 100u, 101u, 4000000000u}) {
        const outcome holding = outcome_of([&] { return memory.flush_mmz(size); });
        EXPECT_EQ(holding.status, 0) << "holding, " << size;
        EXPECT_EQ(holding.text, "");
        EXPECT_EQ(bytes_of(memory)[99], 7);
    }
}

TEST(hisi_mmz_mem, freed_is_empty_and_may_obtain_again) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(100, true), 0);
    memory.free_mmz();
    EXPECT_EQ(memory.phys_addr(), 0u);
    EXPECT_EQ(memory.virt_addr(), nullptr);
    EXPECT_EQ(memory.size(), 0u);
    memory.free_mmz();
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(memory.alloc_mmz(50, false), 0);
    EXPECT_EQ(memory.size(), 50u);
    EXPECT_TRUE(all_zero(memory));
}

TEST(hisi_mmz_mem, freed_without_virtual_address_keeps_the_physical_one) {
    hisi_mmz_mem memory;
    test_access::hold(memory, 0x1000, nullptr, 200);
    memory.free_mmz();
    EXPECT_EQ(memory.phys_addr(), 0x1000u);
    EXPECT_EQ(memory.virt_addr(), nullptr);
    EXPECT_EQ(memory.size(), 0u);
}

// The leak checker of the sanitizer build watches these two.
TEST(hisi_mmz_mem, frees_what_it_holds_when_it_dies) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.alloc_mmz(1000, true), 0);
}

TEST(hisi_mmz_mem, calls_nothing_when_it_dies_empty) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.size(), 0u);
}

TEST(memory_zone, gives_zeroed_memory_at_physical_address_0) {
    unsigned phys_addr = 77;
    void* virt_addr = nullptr;
    ASSERT_EQ(orva_fd::zone_alloc(&phys_addr, &virt_addr, 64, true), 0);
    EXPECT_EQ(phys_addr, 0u);
    ASSERT_NE(virt_addr, nullptr);
    const std::vector<unsigned char> zeros(64, 0);
    EXPECT_EQ(std::memcmp(virt_addr, zeros.data(), 64), 0);
    EXPECT_EQ(orva_fd::zone_flush(phys_addr, virt_addr, 64), 0);
    orva_fd::zone_free(phys_addr, virt_addr);
}

}  // namespace
