// The mutex that knows whether it exists: every operation with and without one, and what it prints.
#include "manager/Mutex.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/capture.h"
#include "tests/support/test_access.h"

namespace {

using orva_fd::CAutoMutex;
using orva_fd::CMutex;
using orva_fd::test_access;
using support::outcome;
using support::outcome_of;
using support::output_of;

// Whether somebody holds it. Asked on the thread that may hold it: a plain mutex answers EBUSY then too.
bool is_held(CMutex& mutex) {
    const int code = pthread_mutex_trylock(&test_access::native(mutex));
    if (code == 0) pthread_mutex_unlock(&test_access::native(mutex));
    return code == EBUSY;
}

TEST(CMutex, does_not_exist_at_first) {
    CMutex mutex;
    EXPECT_FALSE(test_access::created(mutex));
}

TEST(CMutex, is_created_once) {
    CMutex mutex;
    const outcome first = outcome_of([&] { return mutex.Create(); });
    EXPECT_TRUE(first.status);
    EXPECT_EQ(first.text, "");
    EXPECT_TRUE(test_access::created(mutex));
    const outcome second = outcome_of([&] { return mutex.Create(); });
    EXPECT_FALSE(second.status);
    EXPECT_EQ(second.text, "[Fire Detection: Mutex: Create] 37 entered \n");
    EXPECT_TRUE(test_access::created(mutex));
    EXPECT_TRUE(mutex.Close());
}

TEST(CMutex, locks_and_unlocks_in_silence) {
    CMutex mutex;
    ASSERT_TRUE(mutex.Create());
    const outcome waited = outcome_of([&] { return mutex.Wait(); });
    EXPECT_TRUE(waited.status);
    EXPECT_EQ(waited.text, "");
    EXPECT_TRUE(is_held(mutex));
    const outcome released = outcome_of([&] { return mutex.Release(); });
    EXPECT_EQ(released.status, 0);
    EXPECT_EQ(released.text, "");
    EXPECT_FALSE(is_held(mutex));
    EXPECT_TRUE(mutex.Close());
}

TEST(CMutex, waits_without_a_mutex_with_a_warning) {
    CMutex mutex;
    EXPECT_EQ(output_of([&] { mutex.Wait(); }), "WARN.[Fire Detection: Mutex::Wait : 79] \nmutex not create\n");
}

TEST(CMutex, releases_without_a_mutex_with_a_warning_and_2) {
    CMutex mutex;
    const outcome got = outcome_of([&] { return mutex.Release(); });
    EXPECT_EQ(got.status, 2);
    EXPECT_EQ(got.text, "WARN.[Fire Detection: Mutex::Release : 115] \nmutex not create\n");
}

TEST(CMutex, is_closed_once_and_may_be_created_again) {
    CMutex mutex;
    ASSERT_TRUE(mutex.Create());
    const outcome first = outcome_of([&] { return mutex.Close(); });
    EXPECT_TRUE(first.status);
    EXPECT_EQ(first.text, "");
    EXPECT_FALSE(test_access::created(mutex));
    const outcome second = outcome_of([&] { return mutex.Close(); });
    EXPECT_FALSE(second.status);
    EXPECT_EQ(second.text, "[Fire Detection: Mutex: Close] 59 entered \n");
    EXPECT_TRUE(mutex.Create());
    EXPECT_TRUE(mutex.Close());
}

TEST(CAutoMutex, holds_for_a_scope) {
    CMutex mutex;
    ASSERT_TRUE(mutex.Create());
    {
        CAutoMutex lock(&mutex);
        EXPECT_TRUE(is_held(mutex));
    }
    EXPECT_FALSE(is_held(mutex));
    EXPECT_TRUE(mutex.Close());
}

TEST(CAutoMutex, with_null_prints_a_line_and_locks_nothing) {
    EXPECT_EQ(output_of([] { CAutoMutex lock(nullptr); }), "[Fire Detection: Mutex: CAutoMutex] 148 entered \n");
}

TEST(CAutoMutex, without_a_mutex_warns_twice) {
    CMutex mutex;
    EXPECT_EQ(output_of([&] { CAutoMutex lock(&mutex); }),
              "WARN.[Fire Detection: Mutex::Wait : 79] \nmutex not create\n"
              "WARN.[Fire Detection: Mutex::Release : 115] \nmutex not create\n");
}

}  // namespace
