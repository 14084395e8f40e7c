// Buffers from the memory zone: growing, keeping, failing, flushing, releasing.
#include <gtest/gtest.h>

#include <cstring>

#include "backend/hisi_mmz_mem.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/capture.h"
#include "tests/support/log_text.h"
#include "tests/support/rows.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::hisi_mmz_mem;
using standin::call;
using support::outcome;
using support::outcome_of;

class hisi_mmz_mem_test : public fakes::chip_test {};

TEST_F(hisi_mmz_mem_test, a_new_object_holds_nothing_and_its_end_calls_nothing) {
    {
        const hisi_mmz_mem memory;
        EXPECT_EQ(memory.phys_addr(), 0u);
        EXPECT_EQ(memory.virt_addr(), nullptr);
        EXPECT_EQ(memory.size(), 0u);
    }
    EXPECT_EQ(standin::all_calls(), 0);
}

TEST_F(hisi_mmz_mem_test, cached_memory_comes_from_the_cached_allocator) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.alloc_mmz(200, true), 0);
    EXPECT_EQ(standin::calls(call::alloc_cached), 1);
    EXPECT_EQ(standin::calls(call::alloc), 0);
    const standin::record asked = standin::records(call::alloc_cached).at(0);
    EXPECT_EQ(asked.block_name, "User");
    EXPECT_TRUE(asked.default_zone);
    EXPECT_EQ(asked.length, 200u);
    EXPECT_EQ(memory.phys_addr(), asked.phys_addr);
    EXPECT_EQ(memory.virt_addr(), asked.virt_addr);
    EXPECT_EQ(memory.size(), 200u);
    EXPECT_EQ(standin::live_buffers(), 1);
}

TEST_F(hisi_mmz_mem_test, other_memory_comes_from_the_other_allocator) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.alloc_mmz(200, false), 0);
    EXPECT_EQ(standin::calls(call::alloc_cached), 0);
    EXPECT_EQ(standin::calls(call::alloc), 1);
    EXPECT_EQ(standin::records(call::alloc).at(0).block_name, "User");
    EXPECT_TRUE(standin::records(call::alloc).at(0).default_zone);
}

TEST_F(hisi_mmz_mem_test, a_buffer_that_is_large_enough_stays) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    const unsigned int phys_addr = memory.phys_addr();
    void* const virt_addr = memory.virt_addr();
    std::memset(virt_addr, 0x5A, 200);
    for (const unsigned int size : {200u, 199u, 100u, 1u, 0u}) {
        EXPECT_EQ(memory.alloc_mmz(size, false), 0);
        EXPECT_EQ(memory.size(), 200u);
        EXPECT_EQ(memory.phys_addr(), phys_addr);
        EXPECT_EQ(memory.virt_addr(), virt_addr);
    }
    EXPECT_EQ(standin::all_calls(), 1);
    EXPECT_EQ(static_cast<unsigned char*>(virt_addr)[199], 0x5A);
}

TEST_F(hisi_mmz_mem_test, a_larger_request_releases_first_and_then_allocates) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    const unsigned int old_address = memory.phys_addr();
    void* const old_memory = memory.virt_addr();
    EXPECT_EQ(memory.alloc_mmz(300, true), 0);
    const std::vector<standin::record> seen = standin::records();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[1].function, call::free);
    EXPECT_EQ(seen[1].phys_addr, old_address);
    EXPECT_EQ(seen[1].virt_addr, old_memory);
    EXPECT_EQ(seen[2].function, call::alloc_cached);
    EXPECT_EQ(seen[2].length, 300u);
    EXPECT_EQ(memory.size(), 300u);
    EXPECT_EQ(standin::live_buffers(), 1);
}

TEST_F(hisi_mmz_mem_test, a_single_byte_is_a_buffer_that_is_released) {
    {
        hisi_mmz_mem memory;
        ASSERT_EQ(memory.alloc_mmz(1, true), 0);
        EXPECT_EQ(memory.alloc_mmz(300, true), 0);
        EXPECT_EQ(standin::live_buffers(), 1);
        hisi_mmz_mem small;
        ASSERT_EQ(small.alloc_mmz(1, true), 0);
    }
    EXPECT_EQ(standin::live_buffers(), 0);
}

TEST_F(hisi_mmz_mem_test, nothing_of_nothing_is_asked_for) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.alloc_mmz(0, true), 0) << "0 bytes are held already";
    EXPECT_EQ(standin::all_calls(), 0);
}

TEST_F(hisi_mmz_mem_test, a_failing_allocation_gives_4_two_lines_and_an_empty_object) {
    for (const bool cached : {true, false}) {
        for (const unsigned int code : {0xA0028010u, 0xFFFFFFFFu, 1u}) {
            SCOPED_TRACE(testing::Message() << cached << " " << code);
            hisi_mmz_mem memory;
            standin::answer(cached ? call::alloc_cached : call::alloc, 1, static_cast<HI_S32>(code));
            const outcome got = outcome_of([&] { return memory.alloc_mmz(200, cached); });
            EXPECT_EQ(got.status, 4);
            char line[80];
            std::snprintf(line, sizeof line, "HI_MPI_SYS_MmzAlloc failed, ret = %x\n", code);
            EXPECT_EQ(got.text, support::error_line("hisi_mmz_mem", "alloc_mmz", 41) + line);
            EXPECT_EQ(memory.size(), 0u);
            EXPECT_EQ(memory.phys_addr(), 0u) << "what the failing call left there is not a buffer";
            EXPECT_EQ(memory.virt_addr(), nullptr);
            memory.free_mmz();
            EXPECT_EQ(memory.alloc_mmz(200, cached), 0) << "the next request may succeed";
        }
    }
    EXPECT_EQ(standin::calls(call::free), 6) << "of the six that succeeded";
}

TEST_F(hisi_mmz_mem_test, a_failing_growth_has_released_the_old_buffer) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    standin::answer(call::alloc_cached, 1, HI_FAILURE);
    EXPECT_EQ(outcome_of([&] { return memory.alloc_mmz(300, true); }).status, 4);
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(standin::live_buffers(), 0);
    EXPECT_EQ(memory.alloc_mmz(100, true), 0);
    EXPECT_EQ(memory.size(), 100u);
}

struct flush_row : support::named_row {
    unsigned int asked;
    unsigned int flushed;
};
class flush_lengths : public fakes::chip_test, public testing::WithParamInterface<flush_row> {};

TEST_P(flush_lengths, are_limited_to_what_is_held) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    EXPECT_EQ(memory.flush_mmz(GetParam().asked), 0);
    const std::vector<standin::record> flushes = standin::records(call::flush);
    ASSERT_EQ(flushes.size(), 1u);
    EXPECT_EQ(flushes[0].length, GetParam().flushed);
    EXPECT_EQ(flushes[0].phys_addr, memory.phys_addr());
    EXPECT_EQ(flushes[0].virt_addr, memory.virt_addr());
}
INSTANTIATE_TEST_SUITE_P(mmz, flush_lengths,
                         testing::Values(flush_row{{"0 is the whole buffer"}, 0, 200},
                                         flush_row{{"one byte is one byte"}, 1, 1},
                                         flush_row{{"one below the size is kept"}, 199, 199},
                                         flush_row{{"the size is kept"}, 200, 200},
                                         flush_row{{"one above the size is the whole buffer"}, 201, 200},
                                         flush_row{{"the largest number is the whole buffer"}, 0xFFFFFFFFu, 200}),
                         support::row_name());

TEST_F(hisi_mmz_mem_test, flushing_nothing_calls_nothing) {
    hisi_mmz_mem memory;
    EXPECT_EQ(memory.flush_mmz(0), 0);
    EXPECT_EQ(memory.flush_mmz(100), 0);
    EXPECT_EQ(standin::all_calls(), 0);
}

TEST_F(hisi_mmz_mem_test, a_failing_flush_gives_4_and_keeps_the_buffer) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    standin::answer(call::flush, 1, static_cast<HI_S32>(0xA0028003u));
    const outcome got = outcome_of([&] { return memory.flush_mmz(0); });
    EXPECT_EQ(got.status, 4);
    EXPECT_EQ(got.text, support::error_line("hisi_mmz_mem", "flush_mmz", 66) +
                            "HI_MPI_SYS_MmzFlushCache failed, ret = a0028003\n");
    EXPECT_EQ(memory.size(), 200u);
    EXPECT_EQ(memory.flush_mmz(0), 0);
}

TEST_F(hisi_mmz_mem_test, releasing_empties_the_object_and_the_second_time_calls_nothing) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    memory.free_mmz();
    EXPECT_EQ(memory.phys_addr(), 0u);
    EXPECT_EQ(memory.virt_addr(), nullptr);
    EXPECT_EQ(memory.size(), 0u);
    memory.free_mmz();
    EXPECT_EQ(standin::calls(call::free), 1);
}

TEST_F(hisi_mmz_mem_test, a_failing_release_is_ignored) {
    hisi_mmz_mem memory;
    ASSERT_EQ(memory.alloc_mmz(200, true), 0);
    standin::answer(call::free, 1, HI_FAILURE);
    EXPECT_EQ(support::output_of([&] { memory.free_mmz(); }), "");
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(memory.phys_addr(), 0u);
}

TEST_F(hisi_mmz_mem_test, without_a_virtual_address_nothing_is_called_and_the_physical_one_stays) {
    hisi_mmz_mem memory;
    orva_fd::test_access::hold(memory, 0x1230, nullptr, 200);
    memory.free_mmz();
    EXPECT_EQ(memory.phys_addr(), 0x1230u);
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(standin::all_calls(), 0);
}

TEST_F(hisi_mmz_mem_test, without_a_physical_address_nothing_is_called_and_the_virtual_one_stays) {
    hisi_mmz_mem memory;
    orva_fd::test_access::hold(memory, 0, &memory, 200);
    memory.free_mmz();
    EXPECT_EQ(memory.virt_addr(), &memory);
    EXPECT_EQ(memory.size(), 0u);
    EXPECT_EQ(standin::all_calls(), 0);
}

TEST_F(hisi_mmz_mem_test, the_end_of_an_object_releases_its_buffer) {
    {
        hisi_mmz_mem memory;
        ASSERT_EQ(memory.alloc_mmz(200, true), 0);
        EXPECT_EQ(standin::live_buffers(), 1);
    }
    EXPECT_EQ(standin::live_buffers(), 0);
    EXPECT_EQ(standin::calls(call::free), 1);
}

TEST_F(hisi_mmz_mem_test, the_size_decides_at_the_end_whether_a_buffer_is_held) {
    {
        hisi_mmz_mem memory;
        orva_fd::test_access::hold(memory, 0x1230, &memory, 0);
    }
    EXPECT_EQ(standin::all_calls(), 0);
}

}  // namespace
