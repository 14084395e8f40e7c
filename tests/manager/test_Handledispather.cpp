// The table of handles: the lowest free one, its range, and its life with and without a lock.
#include "manager/Handledispather.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/capture.h"
#include "tests/support/log_text.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::CHandleDispather;
using orva_fd::test_access;
using support::both_without_mutex;
using support::outcome;
using support::outcome_of;
using support::output_of;

int busy_count(CHandleDispather& handles) {
    return static_cast<int>(std::count(test_access::busy(handles), test_access::busy(handles) + 1000, 1));
}

class CHandleDispather_open : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_handles.Init(128)); }
    void TearDown() override { m_handles.Close(); }

    int create() {
        int h = -1;
        EXPECT_EQ(m_handles.CreateHandle(h), 0);
        return h;
    }

    CHandleDispather m_handles;
};

TEST(CHandleDispather_new, has_1000_free_handles_and_no_lock) {
    CHandleDispather handles;
    EXPECT_EQ(test_access::handle_num(handles), 1000);
    EXPECT_EQ(busy_count(handles), 0);
    EXPECT_FALSE(test_access::created(test_access::mutex(handles)));
}

TEST(CHandleDispather_new, clears_the_flags_below_num_when_it_opens) {
    CHandleDispather handles;
    std::fill_n(test_access::busy(handles), 1000, static_cast<unsigned char>(1));
    const outcome got = outcome_of([&] { return handles.Init(128); });
    EXPECT_TRUE(got.status);
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(test_access::handle_num(handles), 128);
    EXPECT_EQ(busy_count(handles), 1000 - 128);
    EXPECT_EQ(test_access::busy(handles)[127], 0);
    EXPECT_EQ(test_access::busy(handles)[128], 1);
    handles.Close();
}

TEST_F(CHandleDispather_open, fails_to_open_twice_keeps_its_flags_and_takes_the_number) {
    EXPECT_EQ(create(), 0);
    const outcome got = outcome_of([&] { return m_handles.Init(50); });
    EXPECT_FALSE(got.status);
    EXPECT_EQ(got.text,
              "[Fire Detection: Mutex: Create] 37 entered \n"
              "INFO.[Fire Detection: Handledispather::Init: 44] \nCreateMutex failed \n");
    EXPECT_EQ(test_access::handle_num(m_handles), 50);
    EXPECT_TRUE(m_handles.IsHandleBusy(0));
}

TEST_F(CHandleDispather_open, gives_the_lowest_free_handle) {
    for (int wanted = 0; wanted < 10; ++wanted) EXPECT_EQ(create(), wanted);
    EXPECT_TRUE(m_handles.DestroyHandle(7));
    EXPECT_TRUE(m_handles.DestroyHandle(3));
    EXPECT_EQ(create(), 3);
    EXPECT_EQ(create(), 7);
    EXPECT_EQ(create(), 10);
}

TEST_F(CHandleDispather_open, gives_128_and_then_8) {
    for (int wanted = 0; wanted < 128; ++wanted) EXPECT_EQ(create(), wanted);
    int h = 55;
    const outcome got = outcome_of([&] { return m_handles.CreateHandle(h); });
    EXPECT_EQ(got.status, 8);
    EXPECT_EQ(got.text, "[Fire Detection: Handledispather: CreateHandle] 86 entered \n");
    EXPECT_EQ(h, 55);
    EXPECT_EQ(test_access::busy(m_handles)[128], 0);
}

TEST_F(CHandleDispather_open, knows_the_busy_from_the_free) {
    create();
    EXPECT_EQ(output_of([&] {
                  m_handles.IsHandleBusy(0);
                  m_handles.IsHandleBusy(1);
                  m_handles.IsHandleBusy(127);
              }),
              "");
    EXPECT_TRUE(m_handles.IsHandleBusy(0));
    EXPECT_FALSE(m_handles.IsHandleBusy(1));
    EXPECT_FALSE(m_handles.IsHandleBusy(127));
}

TEST_F(CHandleDispather_open, takes_no_flag_but_1_for_busy) {
    test_access::busy(m_handles)[4] = 2;
    EXPECT_FALSE(m_handles.IsHandleBusy(4));
    // and gives only those away whose flag is 0
    for (const int wanted : {0, 1, 2, 3, 5}) EXPECT_EQ(create(), wanted);
}

class out_of_range : public testing::TestWithParam<int> {};

TEST_P(out_of_range, is_never_busy_and_not_freed) {
    CHandleDispather handles;
    ASSERT_TRUE(handles.Init(128));
    std::fill_n(test_access::busy(handles), 1000, static_cast<unsigned char>(1));
    bool busy = true;
    EXPECT_EQ(output_of([&] { busy = handles.IsHandleBusy(GetParam()); }),
              "[Fire Detection: Handledispather: IsHandleBusy] 109 entered \n");
    EXPECT_FALSE(busy);
    EXPECT_EQ(output_of([&] { handles.DestroyHandle(GetParam()); }),
              "[Fire Detection: Handledispather: DestroyHandle] 97 entered \n");
    EXPECT_EQ(busy_count(handles), 1000);
    handles.Close();
}

INSTANTIATE_TEST_SUITE_P(handles, out_of_range, testing::Values(-1, 128, 129, 999, 1000, 2147483647, -2147483647 - 1));

TEST_F(CHandleDispather_open, frees_in_silence) {
    create();
    EXPECT_EQ(output_of([&] { m_handles.DestroyHandle(0); }), "");
    EXPECT_EQ(output_of([&] { m_handles.DestroyHandle(127); }), "");
    EXPECT_EQ(busy_count(m_handles), 0);
}

TEST_F(CHandleDispather_open, close_frees_all_and_closes_the_lock) {
    create();
    create();
    EXPECT_EQ(output_of([&] { m_handles.Close(); }), "");
    EXPECT_EQ(busy_count(m_handles), 0);
    EXPECT_FALSE(test_access::created(test_access::mutex(m_handles)));
    EXPECT_EQ(output_of([&] { m_handles.Close(); }), "[Fire Detection: Mutex: Close] 59 entered \n");
    ASSERT_TRUE(m_handles.Init(128));  // for the tear-down
}

TEST(CHandleDispather_closed, works_on_with_warnings) {
    CHandleDispather handles;
    int h = -1;
    EXPECT_EQ(output_of([&] { handles.CreateHandle(h); }), both_without_mutex());
    EXPECT_EQ(h, 0);
    EXPECT_EQ(output_of([&] { handles.IsHandleBusy(0); }), both_without_mutex());
    EXPECT_EQ(output_of([&] { handles.DestroyHandle(0); }), both_without_mutex());
    EXPECT_EQ(busy_count(handles), 0);
}

// The line about the full table is printed while the lock is held.
TEST(CHandleDispather_closed, tells_that_it_is_full_between_the_warnings) {
    CHandleDispather handles;
    std::fill_n(test_access::busy(handles), 1000, static_cast<unsigned char>(1));
    int h = -1;
    EXPECT_EQ(output_of([&] { handles.CreateHandle(h); }),
              support::wait_without_mutex() + "[Fire Detection: Handledispather: CreateHandle] 86 entered \n" +
                  support::release_without_mutex());
}

}  // namespace
