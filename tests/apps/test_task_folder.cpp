// What a task leaves: complete results in their place, or nothing that looks like them.
#include "apps/orva_fire/task_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/error.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;
namespace fs = std::filesystem;

class task : public testing::Test {
protected:
    std::string place() const { return m_folder.file("out/gate.mp4"); }

    std::vector<std::string> left() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.file("out"))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void publish(const std::string& text) {
        task_folder folder(place());
        write_file(folder.path() + "/result", text);
        folder.publish();
    }

    // What a task leaves that was killed: the system has taken its locks away.
    std::string abandon(const std::string& name, bool with_lock) {
        const std::string path = m_folder.file("out/" + name);
        fs::create_directories(path + "/more");
        if (with_lock) write_file(path + "/lock", "");
        return path;
    }

    using list = std::vector<std::string>;
    temporary_folder m_folder;
};

TEST_F(task, shows_its_results_when_they_are_complete) {
    task_folder folder(place());
    write_file(folder.path() + "/result", "whole");
    EXPECT_FALSE(fs::exists(place()));
    folder.publish();
    EXPECT_EQ(left(), (list{"gate.mp4"}));
    EXPECT_EQ(read_file(place() + "/result"), "whole");
    EXPECT_FALSE(fs::exists(place() + "/lock"));
}

TEST_F(task, leaves_nothing_if_it_fails) {
    { const task_folder folder(place()); }
    EXPECT_EQ(left(), list());
}

TEST_F(task, replaces_earlier_results_altogether) {
    publish("first");
    write_file(place() + "/of the first only", "");
    publish("second");
    EXPECT_EQ(left(), (list{"gate.mp4"}));
    EXPECT_EQ(read_file(place() + "/result"), "second");
    EXPECT_FALSE(fs::exists(place() + "/of the first only"));
}

TEST_F(task, clears_away_what_a_killed_one_has_left) {
    abandon(".gate.mp4.part.abcdef", true);
    abandon(".gate.mp4.old.ghijkl", false);
    publish("whole");
    EXPECT_EQ(left(), (list{"gate.mp4"}));
}

TEST_F(task, leaves_alone_what_belongs_to_others) {
    const list others{".gate.mp4.part.abcdef", ".gate.mp4.part.toolong", ".gate.mp4x.part.abcdef",
                      "gate.mp4.part.abcdef"};
    abandon(others[0], false);  // another task has published it all but for the last step
    for (size_t i = 1; i < others.size(); ++i) abandon(others[i], true);
    { const task_folder folder(place()); }
    EXPECT_EQ(left(), others);
}

TEST_F(task, leaves_alone_one_that_is_at_work_on_the_same_recording) {
    task_folder slow(place());
    write_file(slow.path() + "/result", "slow");
    publish("quick");
    ASSERT_TRUE(fs::exists(slow.path() + "/result"));
    slow.publish();
    EXPECT_EQ(left(), (list{"gate.mp4"}));
    EXPECT_EQ(read_file(place() + "/result"), "slow");
}

TEST_F(task, takes_names_as_long_as_the_file_system_does) {
    const std::string name = std::string(251, 'n') + ".mp4";
    task_folder folder(m_folder.file("out/" + name));
    folder.publish();
    EXPECT_EQ(left(), (list{name}));
}

TEST_F(task, says_which_folder_it_cannot_make) {
    write_file(m_folder.file("file"), "");
    try {
        const task_folder folder(m_folder.file("file/gate.mp4"));
        FAIL() << "made a folder in a file";
    } catch (const io_error& error) {
        EXPECT_NE(std::string(error.what()).find(m_folder.file("file")), std::string::npos) << error.what();
    }
}

TEST_F(task, leaves_the_recording_alone_when_results_are_to_lie_beside_it) {
    write_file(m_folder.file("gate.mp4"), "pictures");
    EXPECT_THROW(task_folder(m_folder.file("gate.mp4")), io_error);
    EXPECT_EQ(read_file(m_folder.file("gate.mp4")), "pictures");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.path()), fs::directory_iterator()), 1);
}

struct unfinished_row : support::named_row {
    const char* folder;
    const char* place;
};

class hidden_folder : public testing::TestWithParam<unfinished_row> {};

TEST_P(hidden_folder, tells_of_an_unfinished_task) {
    EXPECT_EQ(unfinished_name(GetParam().folder), GetParam().place);
}

INSTANTIATE_TEST_SUITE_P(table, hidden_folder,
                         testing::Values(unfinished_row{{"one of a task"}, ".gate.mp4.part.x7Qa2k", "gate.mp4"},
                                         unfinished_row{
                                             {"a name like that of one"}, ".a.part.b.part.x7Qa2k", "a.part.b"},
                                         unfinished_row{{"another hidden folder"}, ".git", ""},
                                         unfinished_row{{"results that are put away"}, ".gate.mp4.old.x7Qa2k", ""},
                                         unfinished_row{{"one that is not hidden"}, "gate.mp4.part.x7Qa2k", ""},
                                         unfinished_row{{"one without a name"}, ".part.x7Qa2k", ""}),
                         row_name());

// --- the record ------------------------------------------------------------------------------------------------------

done_record good_record() {
    done_record record;
    record.name = "gate.mp4";
    record.source = {1000, 1732200000123456789};
    record.settings = "settings";
    record.version = ORVA_FIRE_VERSION;
    record.events = 2;
    record.finished = "2026-11-21T13:48:32.125Z";
    return record;
}

struct done_row : support::named_row {
    void (*change)(done_record& record);
    bool done;
};

class recording_is_done : public testing::TestWithParam<done_row> {};

TEST_P(recording_is_done, only_if_nothing_has_changed) {
    done_record record = good_record();
    GetParam().change(record);
    const temporary_folder folder;
    write_done(folder.path(), record);
    const auto read = read_done(folder.path());
    ASSERT_TRUE(read);
    EXPECT_EQ(is_done(*read, good_record().source, "settings"), GetParam().done);
}

INSTANTIATE_TEST_SUITE_P(
    table, recording_is_done,
    testing::Values(
        done_row{{"nothing has changed"}, [](done_record&) {}, true},
        done_row{{"the file has grown"}, [](done_record& r) { r.source.size = 999; }, false},
        done_row{{"the file was written a nanosecond later"}, [](done_record& r) { --r.source.modified; }, false},
        done_row{{"the options were others"}, [](done_record& r) { r.settings = "others"; }, false},
        done_row{{"the version was another"}, [](done_record& r) { r.version = "0.9.9"; }, false},
        done_row{{"it had failed"}, [](done_record& r) { r.error = "cut short"; }, false}),
    row_name());

TEST(record, of_a_file_that_is_gone_is_never_done) {
    done_record record = good_record();
    record.source = {};
    EXPECT_FALSE(is_done(record, file_state(), "settings"));
}

TEST(record, that_cannot_be_understood_is_none) {
    const temporary_folder folder;
    const std::string path = folder.file(k_done_name);
    EXPECT_FALSE(read_done(folder.path())) << "there is none";
    write_done(folder.path(), good_record());
    const std::string text = read_file(path);
    ASSERT_TRUE(read_done(folder.path()));
    write_file(path, text.substr(0, text.size() / 2));
    EXPECT_FALSE(read_done(folder.path())) << "cut in the middle";
    write_file(path, "");
    EXPECT_FALSE(read_done(folder.path())) << "empty";
    write_file(path, "[]");
    EXPECT_FALSE(read_done(folder.path())) << "of another form";
    std::string newer = text;
    newer.replace(newer.find("\"schema\": 1"), 11, "\"schema\": 2");
    write_file(path, newer);
    EXPECT_FALSE(read_done(folder.path())) << "of a later form";
}

TEST(digest, is_the_one_of_the_published_examples) {
    EXPECT_EQ(digest_of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest_of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

}  // namespace
