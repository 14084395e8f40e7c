// The words on the terminal: the line of progress and the closing summary.
#include <gtest/gtest.h>

#include "apps/orva_fire/progress.h"
#include "apps/orva_fire/summary.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

struct progress_row : support::named_row {
    int64_t frames;
    double done, total, elapsed;
    const char* wanted;
};

class progress : public testing::TestWithParam<progress_row> {};

TEST_P(progress, reads_so) {
    const progress_row& row = GetParam();
    EXPECT_EQ(progress_text(row.frames, row.done, row.total, row.elapsed), row.wanted);
}

INSTANTIATE_TEST_SUITE_P(
    table, progress,
    testing::Values(
        progress_row{{"half way"}, 250, 10, 20, 5, "[##########..........]  50 %  250 frames, 50 frames/s, 0:05 left"},
        progress_row{{"at the beginning"}, 0, 0, 20, 0, "[....................]   0 %  0 frames, 0 frames/s"},
        progress_row{
            {"at the end"}, 500, 20, 20, 10, "[####################] 100 %  500 frames, 50 frames/s, 0:00 left"},
        progress_row{{"beyond the stated length"},
                     600,
                     24,
                     20,
                     10,
                     "[####################] 100 %  600 frames, 60 frames/s, 0:00 left"},
        progress_row{
            {"hours left"}, 100, 10, 36010, 2, "[....................]   0 %  100 frames, 50 frames/s, 2:00:00 left"},
        progress_row{{"just before the end is not 100"},
                     100,
                     19.99,
                     20,
                     2,
                     "[####################]  99 %  100 frames, 50 frames/s, 0:00 left"},
        progress_row{{"a length that nobody knows"}, 100, 4, 0, 2, "100 frames, 50 frames/s"}),
    row_name());

TEST(summary, counts_what_was_passed_and_left_out) {
    run_summary run;
    run.frames = 100;
    run.repeated = 20;
    run.thinned = 30;
    run.video_seconds = 4;
    const std::string text = summary_text(run);
    EXPECT_NE(text.find("100 frames, 4.00 s of video"), std::string::npos) << text;
    EXPECT_NE(text.find("50 frames passed, 20 repeated and 30 beyond the rate left out"), std::string::npos) << text;
    EXPECT_NE(text.find("events    none\n"), std::string::npos) << text;
    for (const char* word : {"decode", "convert", "detect"}) EXPECT_NE(text.find(word), std::string::npos) << text;
}

TEST(summary, names_the_first_report) {
    run_summary run;
    run.reports = 2;
    run.first_report = moment{145, 5.8};
    EXPECT_NE(summary_text(run).find("events    2, the first at 5.80 s (frame 145)\n"), std::string::npos);
}

}  // namespace
