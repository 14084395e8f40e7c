// Reports in a real browser: it finds nothing to complain of, and hostile texts stay texts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>

#include "apps/orva_fire/html.h"
#include "apps/orva_fire/joined_report.h"
#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/report.h"
#include "apps/orva_fire/video_source.h"
#include "tests/apps/clip_maker.h"
#include "tests/apps/report_example.h"
#include "tests/apps/run_program.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

bool has_browser() {
    return std::system("command -v chromium > /dev/null 2>&1") == 0;
}

class in_a_browser : public testing::Test {
protected:
    void SetUp() override {
        if (!has_browser()) GTEST_SKIP() << "the browser (Debian package chromium) is not installed";
    }

    // Opens a page; returns what the browser says, with the page's elements as standard output if `options` ask for it.
    program_result open(const std::string& page, std::vector<std::string> options) {
        save_bytes(m_folder.file("page.html"), page);
        std::vector<std::string> command{"/usr/bin/env",
                                         "chromium",
                                         "--headless",
                                         "--no-sandbox",
                                         "--disable-gpu",
                                         "--disable-dev-shm-usage",
                                         "--no-first-run",
                                         "--disable-background-networking",
                                         "--hide-scrollbars",
                                         "--enable-logging=stderr",
                                         "--user-data-dir=" + m_folder.file("profile")};
        command.insert(command.end(), options.begin(), options.end());
        command.push_back("file://" + m_folder.file("page.html"));
        return run_program(command);
    }

    // What pages write to their console, one line each; complaints about blocked parts among them.
    static std::vector<std::string> console_of(const program_result& result) {
        std::vector<std::string> lines;
        const std::regex line("[^\n]*CONSOLE[^\n]*");
        for (std::sregex_iterator i(result.errors.begin(), result.errors.end(), line), end; i != end; ++i) {
            lines.push_back(i->str());
        }
        return lines;
    }

    // Names of all elements, in their order.
    static std::vector<std::string> elements_of(const std::string& dom) {
        std::vector<std::string> names;
        const std::regex tag("<([a-zA-Z/][^\\s>]*)");
        for (std::sregex_iterator i(dom.begin(), dom.end(), tag), end; i != end; ++i) names.push_back((*i)[1]);
        return names;
    }

    const temporary_folder m_folder;
};

TEST_F(in_a_browser, a_script_would_be_heard) {
    const auto result = open("<!DOCTYPE html><script>console.log('heard')</script>", {"--dump-dom"});
    ASSERT_EQ(result.exit_code, 0) << result.errors;
    ASSERT_EQ(console_of(result).size(), 1u) << result.errors;
}

TEST_F(in_a_browser, a_blocked_script_would_be_heard_too) {
    const auto result = open(page_start("page", "data:") + "<script>1</script>" + page_end(), {"--dump-dom"});
    EXPECT_FALSE(console_of(result).empty()) << result.errors;
}

TEST_F(in_a_browser, a_report_of_hostile_names_has_no_console_message_and_no_element_more) {
    const auto harmless = open(report_page({example_report("yard.mp4")}), {"--dump-dom"});
    const auto hostile = open(report_page({example_report(hostile_name())}), {"--dump-dom"});
    ASSERT_EQ(harmless.exit_code, 0) << harmless.errors;
    ASSERT_EQ(hostile.exit_code, 0) << hostile.errors;
    EXPECT_EQ(console_of(harmless), std::vector<std::string>());
    EXPECT_EQ(console_of(hostile), std::vector<std::string>());
    EXPECT_EQ(elements_of(hostile.output), elements_of(harmless.output));
    EXPECT_EQ(hostile.output.find("<script"), std::string::npos);
}

// Results of many recordings whose names are the same.
joined_results joined_example(const std::string& name, const std::string& folder) {
    joined_result result;
    result.name = result.problem = name;
    result.folder = folder + "/" + url_text(name);
    result.record.seconds = 60;
    result.record.events = 1;
    result.has_report = result.has_video = true;
    joined_event event;
    event.zone = name;
    event.to = 12;
    result.events = {event};
    return {{result}, {{name, name}}, {name}};
}

TEST_F(in_a_browser, a_joined_report_of_hostile_names_has_no_console_message_and_no_element_more) {
    const auto page = [&](const std::string& name) {
        return joined_page(joined_example(name, m_folder.path()), {m_folder.path(), name, name});
    };
    const auto harmless = open(page("yard.mp4"), {"--dump-dom"});
    const auto hostile = open(page(hostile_name()), {"--dump-dom"});
    ASSERT_EQ(harmless.exit_code, 0) << harmless.errors;
    ASSERT_EQ(hostile.exit_code, 0) << hostile.errors;
    EXPECT_EQ(console_of(hostile), std::vector<std::string>());
    EXPECT_NE(harmless.output.find("<td data-l=\"recording\">yard.mp4</td>"), std::string::npos);
    EXPECT_EQ(elements_of(hostile.output), elements_of(harmless.output));
}

// Wide and light, narrow and dark: drawn, and not all of one colour.
TEST_F(in_a_browser, a_report_is_drawn_in_every_width_and_scheme) {
    const std::string page = report_page({example_report("yard.mp4"), example_report(hostile_name())});
    double light = 0, dark = 0;
    for (const bool narrow : {false, true}) {
        const std::string shot = m_folder.file(narrow ? "narrow.png" : "wide.png");
        const auto result = open(
            page, {"--screenshot=" + shot, narrow ? "--window-size=500,900" : "--window-size=1280,900",
                   narrow ? "--blink-settings=preferredColorScheme=0" : "--blink-settings=preferredColorScheme=1"});
        ASSERT_EQ(result.exit_code, 0) << result.errors;
        EXPECT_EQ(console_of(result), std::vector<std::string>());
        video_source source(shot);
        source_picture picture;
        ASSERT_TRUE(source.next(picture));
        EXPECT_EQ(picture.frame->width, narrow ? 500 : 1280);
        // The corner is the page's own colour.
        (narrow ? dark : light) = picture.frame->data[0][0];
    }
    EXPECT_GT(light, 200);
    EXPECT_LT(dark, 60);
}

TEST_F(in_a_browser, a_report_can_be_printed) {
    const auto result =
        open(report_page({example_report("yard.mp4")}), {"--print-to-pdf=" + m_folder.file("page.pdf")});
    ASSERT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(read_file(m_folder.file("page.pdf")).substr(0, 5), "%PDF-");
}

}  // namespace
