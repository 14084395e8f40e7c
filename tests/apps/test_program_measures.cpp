// tune and eval as programs: tables on standard output, files, and what cannot be done.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/apps/clip_maker.h"
#include "tests/apps/run_program.h"

namespace {

using namespace apps_test;

TEST(measuring_programs, print_tables_and_write_files) {
    temporary_folder folder;
    clip_recipe recipe;
    recipe.path = folder.file("still.mkv");
    recipe.width = 64;
    recipe.height = 48;
    recipe.times = steady(10, 25);
    recipe.paint = [](int, AVFrame&) {};
    make_clip(recipe);
    write_file(folder.file("labels.csv"), "file,from,to\nstill.mkv,,\n");

    const program_result eval = run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("labels.csv"), "--bare-grade", "0",
                                             "--json", folder.file("results.json")});
    EXPECT_EQ(eval.exit_code, 0) << eval.errors;
    EXPECT_NE(eval.output.find("grade 0, the library's bare answers"), std::string::npos) << eval.output;
    EXPECT_EQ(nlohmann::json::parse(read_file(folder.file("results.json")))["recordings"][0]["file"], "still.mkv");

    const program_result bare = run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("labels.csv"), "--json", "-"});
    EXPECT_EQ(nlohmann::json::parse(bare.output)["schema"], 1);

    const program_result tune = run_program({ORVA_FIRE_PROGRAM, "tune", folder.path(), "--labels",
                                             folder.file("labels.csv"), "--chart", folder.file("chart.svg")});
    EXPECT_EQ(tune.exit_code, 0) << tune.errors;
    EXPECT_NE(tune.output.find("* 68-73"), std::string::npos) << tune.output;
    EXPECT_NE(read_file(folder.file("chart.svg")).find("</svg>"), std::string::npos);
}

TEST(measuring_programs, refuse_what_cannot_be_done) {
    temporary_folder folder;
    write_file(folder.file("bad.csv"), "file,from\n");
    write_file(folder.file("missing.csv"), "file,from,to\nmissing.mp4,,\n");
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "eval"}).exit_code, 2);
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("bad.csv")}).exit_code, 2);
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("none.csv")}).exit_code, 3);
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("missing.csv")}).exit_code, 3);
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "eval", folder.file("missing.csv"), "--tiles", "0x1"}).exit_code, 2);
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "tune", folder.path()}).exit_code, 3) << "no recordings in it";
    EXPECT_EQ(run_program({ORVA_FIRE_PROGRAM, "tune", folder.file("none.mp4"), "--confirm", "-1"}).exit_code, 2);
}

}  // namespace
