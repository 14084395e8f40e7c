// The detector's lines stay away from standard output.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/library_output.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/capture.h"

namespace {

using namespace orva_fire;

TEST(library_output, discards_what_the_library_prints_and_keeps_the_own_output) {
    const std::string text = support::output_of([] {
        std::printf("before\n");
        {
            const library_output output("");
            std::printf("a line of the library\n");
            EXPECT_EQ(write(output.own_output(), "own\n", 4), 4);
        }
        std::printf("after\n");
    });
    EXPECT_EQ(text, "before\nown\nafter\n");
}

TEST(library_output, keeps_the_lines_in_a_file) {
    const apps_test::temporary_folder folder;
    const std::string text = support::output_of([&] {
        library_output output(folder.file("log"));
        std::printf("one\n");
        output.check_limit();
        std::printf("two\n");
    });
    EXPECT_EQ(text, "");
    EXPECT_EQ(apps_test::read_file(folder.file("log")), "one\ntwo\n");
}

TEST(library_output, ends_the_file_at_its_limit) {
    const apps_test::temporary_folder folder;
    support::output_of([&] {
        library_output output(folder.file("log"), 10);
        for (int i = 0; i < 1000; ++i) {
            std::printf("123456\n");
            std::fflush(stdout);
            output.check_limit();
        }
    });
    EXPECT_EQ(apps_test::read_file(folder.file("log")),
              "123456\n123456\n(the log ends here: it has reached its limit of 10 bytes)\n");
}

TEST(library_output, leaves_out_what_is_printed_in_a_pause) {
    const apps_test::temporary_folder folder;
    const std::string text = support::output_of([&] {
        const library_output kept(folder.file("log"));
        std::printf("one\n");
        {
            const library_output::pause quiet(kept);
            std::printf("two\n");
        }
        std::printf("three\n");
    });
    EXPECT_EQ(text, "");
    EXPECT_EQ(apps_test::read_file(folder.file("log")), "one\nthree\n");
}

TEST(library_output, is_as_it_was_after_a_pause_without_a_log) {
    const std::string text = support::output_of([] {
        {
            const library_output output("");
            const library_output::pause quiet(output);
            std::printf("a line of the library\n");
        }
        std::printf("after\n");
    });
    EXPECT_EQ(text, "after\n");
}

TEST(library_output, names_a_log_that_cannot_be_made) {
    const apps_test::temporary_folder folder;
    std::string said;
    const std::string text = support::output_of([&] {
        try {
            const library_output output(folder.file("no/log"));
        } catch (const io_error& error) {
            said = error.what();
        }
        std::printf("still there\n");
    });
    EXPECT_NE(said.find("no/log"), std::string::npos);
    EXPECT_EQ(text, "still there\n");
}

}  // namespace
