// Which pictures are explained.
#include <gtest/gtest.h>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/frame_choice.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

struct choice_row : support::named_row {
    std::string text;
    std::string chosen;  // of the pictures 0 to 9, 'x' for those that are
};

class a_choice : public testing::TestWithParam<choice_row> {};

TEST_P(a_choice, holds) {
    const frame_choice choice = frame_choice::parse(GetParam().text);
    std::string chosen;
    for (int i = 0; i < 10; ++i) chosen += choice.holds(i) ? 'x' : '.';
    EXPECT_EQ(chosen, GetParam().chosen);
}

INSTANTIATE_TEST_SUITE_P(table, a_choice,
                         testing::Values(choice_row{{"nothing said is everything"}, "", "xxxxxxxxxx"},
                                         choice_row{{"all"}, "all", "xxxxxxxxxx"},
                                         choice_row{{"one"}, "3", "...x......"},
                                         choice_row{{"a stretch with both ends"}, "3-5", "...xxx...."},
                                         choice_row{{"an open stretch"}, "7-", ".......xxx"},
                                         choice_row{{"several in any order"}, "8,0,2-3", "x.xx....x."},
                                         choice_row{{"a stretch of one"}, "4-4", "....x....."}),
                         row_name());

TEST(a_choice, of_another_form_is_refused_with_the_part) {
    for (const char* text : {"x", "-3", "5-3", "3,", ",3", "3--4", "1.5", "3-4-5", "1234567890123456", " 3"}) {
        EXPECT_THROW(frame_choice::parse(text), usage_error) << text;
    }
    try {
        frame_choice::parse("1,5-3");
        FAIL();
    } catch (const usage_error& error) {
        EXPECT_NE(std::string(error.what()).find("'5-3'"), std::string::npos) << error.what();
    }
}

}  // namespace
