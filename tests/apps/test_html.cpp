// Texts in pages: nothing that comes from outside can become markup, an address or a control.
#include <gtest/gtest.h>

#include "apps/orva_fire/html.h"
#include "tests/support/rows.h"

namespace {

using namespace orva_fire;
using support::row_name;

const std::string k_bad = "\xEF\xBF\xBD";

struct text_row : support::named_row {
    std::string text, written;
};

class text_in_a_page : public testing::TestWithParam<text_row> {};

TEST_P(text_in_a_page, is_written) {
    EXPECT_EQ(html_text(GetParam().text), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    table, text_in_a_page,
    testing::Values(text_row{{"plain letters stay"}, "abc XYZ 019", "abc XYZ 019"},
                    text_row{{"a tag is text"}, "<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
                    text_row{{"both quotes"}, "\"'", "&quot;&#39;"},
                    text_row{{"an ampersand is written out even in what looks written out"}, "&amp;", "&amp;amp;"},
                    text_row{{"line ends and tabs are blanks"}, "a\nb\tc\rd", "a b c d"},
                    text_row{{"control characters"},
                             std::string("a\0b\x1b[31m\x7f", 9),
                             "a" + k_bad + "b" + k_bad + "[31m" + k_bad},
                    text_row{{"later control characters"}, "\xC2\x85", k_bad},
                    text_row{{"two to four bytes stay"},
                             "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x94\xA5",
                             "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x94\xA5"},
                    text_row{{"a lone following byte"}, "a\x80z", "a" + k_bad + "z"},
                    text_row{{"a sequence that is cut"}, "a\xE2\x82", "a" + k_bad + k_bad},
                    text_row{{"a sequence that is interrupted by a tag"}, "\xE2<b", k_bad + "&lt;b"},
                    text_row{{"a tag in more bytes than it takes"}, "\xC0\xBC", k_bad + k_bad},
                    text_row{{"half of a pair"}, "\xED\xA0\x80", k_bad + k_bad + k_bad},
                    text_row{{"beyond the last character"}, "\xF4\x90\x80\x80", k_bad + k_bad + k_bad + k_bad},
                    text_row{{"writing is not turned"}, "a\xE2\x80\xAEgpj.exe", "a" + k_bad + "gpj.exe"},
                    text_row{{"nothing"}, "", ""}),
    row_name());

struct address_row : support::named_row {
    std::string name, address;
};

class name_as_address : public testing::TestWithParam<address_row> {};

TEST_P(name_as_address, is_written) {
    EXPECT_EQ(url_text(GetParam().name), GetParam().address);
}

INSTANTIATE_TEST_SUITE_P(table, name_as_address,
                         testing::Values(address_row{{"a plain name"}, "annotated-001.mp4", "annotated-001.mp4"},
                                         address_row{{"a script"}, "javascript:alert(1)", "javascript%3Aalert%281%29"},
                                         address_row{{"marks of addresses"}, "a?b#c%d", "a%3Fb%23c%25d"},
                                         address_row{{"quotes and tags"}, "\"<>'&", "%22%3C%3E%27%26"},
                                         address_row{{"other letters"}, "\xC3\xA9", "%C3%A9"}),
                         row_name());

TEST(data_uri, pads_as_base64_does) {
    EXPECT_EQ(data_uri("image/jpeg", ""), "data:image/jpeg;base64,");
    EXPECT_EQ(data_uri("image/jpeg", "f"), "data:image/jpeg;base64,Zg==");
    EXPECT_EQ(data_uri("image/jpeg", "fo"), "data:image/jpeg;base64,Zm8=");
    EXPECT_EQ(data_uri("image/jpeg", "foo"), "data:image/jpeg;base64,Zm9v");
    EXPECT_EQ(data_uri("image/jpeg", "\xff\xfe\xfd\xfc"), "data:image/jpeg;base64,//79/A==");
}

TEST(a_page, may_load_nothing_and_run_nothing) {
    const std::string page = page_start("<b>", "data:") + page_end();
    EXPECT_NE(page.find("default-src 'none'; style-src 'unsafe-inline'; img-src data:\""), std::string::npos);
    EXPECT_NE(page.find("<title>&lt;b&gt;</title>"), std::string::npos);
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_EQ(page.find("http://"), std::string::npos);
    EXPECT_EQ(page.find("https://"), std::string::npos);
}

}  // namespace
