#include "apps/orva_fire/merge.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/joined_report.h"
#include "apps/orva_fire/joined_results.h"
#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/wall_clock.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const size_t k_most_lines = 20;  // of failed and missing recordings; the report has them all

const char k_footer[] =
    R"(Writes report.html, with a line for each recording that leads to its own report, and events.jsonl with the events of
all, each with its recording in the field source.

Exit codes: 0 nothing reported, 10 fire reported, 2 usage, 3 a recording failed or is missing, or reading or writing
failed.

Examples:
  orva-fire merge results                                      of tasks that share a folder
  orva-fire merge results --expect recordings                  and say which recordings are missing
  orva-fire merge host1/results host2/results -o joined        of hosts with folders of their own)";

std::string output_of(const merge_options& options) {
    if (!options.output.empty()) return options.output;
    if (options.folders.size() == 1) return options.folders[0];
    throw usage_error("say with --output where the joined results of several folders shall go");
}

std::vector<recording> expected_of(const merge_options& options) {
    const bool known = !options.expected.sources.empty() || !options.expected.list.empty();
    if (!known && !options.expected.base.empty()) {
        throw usage_error("--base needs --expect or --list, whose names it is about");
    }
    return known ? find_recordings(options.expected) : std::vector<recording>();
}

// Complete or not there: who looks while this runs sees the file of the time before.
void write_events(joined_results& joined, const std::string& folder) {
    const std::string path = folder + "/events.jsonl", unfinished = path + ".part";
    {
        event_log log(unfinished);
        for (joined_result& result : joined.results) {
            join_events(result, way_between(folder, result.folder), [&](const std::string& line) { log.write(line); });
        }
    }
    std::error_code error;
    fs::rename(unfinished, path, error);
    if (error) throw io_error("cannot write '" + path + "': " + error.message());
}

void print_line(size_t& lines, const std::string& name, const std::string& reason) {
    if (++lines <= k_most_lines) std::fprintf(stderr, "  %s: %s\n", name.c_str(), reason.c_str());
}

void print_outcome(const joined_results& joined, const std::string& folder) {
    std::fprintf(stderr, "orva-fire: %s\n", joined_summary(joined).c_str());
    size_t lines = 0;
    for (const joined_result& result : joined.results) {
        if (!result.problem.empty()) print_line(lines, result.name, result.problem);
    }
    for (const missing_result& missing : joined.missing) print_line(lines, missing.name, missing.reason);
    if (lines > k_most_lines) std::fprintf(stderr, "  and %zu more\n", lines - k_most_lines);
    std::fprintf(stderr, "  written   %s/report.html\n", folder.c_str());
}

int code_of(const joined_results& joined) {
    const auto failed = [](const joined_result& result) { return !result.problem.empty(); };
    const auto burns = [](const joined_result& result) { return result.record.events > 0; };
    const auto& results = joined.results;
    if (!joined.missing.empty() || std::any_of(results.begin(), results.end(), failed)) return k_exit_io;
    return std::any_of(results.begin(), results.end(), burns) ? k_exit_fire : k_exit_nothing;
}

}  // namespace

int run_merge(const merge_options& options) {
    const std::string folder = output_of(options);
    joined_results joined = gather_results(options.folders, expected_of(options));
    if (joined.results.empty() && joined.missing.empty()) {
        throw io_error("'" + options.folders[0] + "'" +
                       (options.folders.size() > 1 ? " and the others hold" : " holds") +
                       " no results of orva-fire batch");
    }
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw io_error("cannot make the folder '" + folder + "': " + error.message());
    write_events(joined, folder);
    const joined_page_setting setting{folder, ORVA_FIRE_VERSION, rfc3339(wall_clock_now())};
    save_bytes(folder + "/report.html", joined_page(joined, setting));
    print_outcome(joined, folder);
    return code_of(joined);
}

int merge_command(int argc, const char* const* argv) {
    merge_options options;
    CLI::App app("Joins the results of many orva-fire batch tasks into one report and one file of events.",
                 "orva-fire merge");
    set_manners(app, k_footer);
    app.add_option("FOLDER", options.folders, "folders with results, searched with all folders in them")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", options.output,
                   "folder for the joined results, made if it is missing (default: the folder, if there is one)")
        ->type_name("FOLDER");
    app.add_option("--expect", options.expected.sources,
                   "this recording, or all in this folder, should be there; may be given several times")
        ->type_name("SOURCE")
        ->allow_extra_args(false);
    app.add_option("--list", options.expected.list, "those on the lines of this file should be there")
        ->type_name("FILE");
    app.add_option("--base", options.expected.base, "where the names of these recordings begin, as given to batch")
        ->type_name("FOLDER");
    if (const std::optional<int> leave = read_command_line(app, argc, argv)) return *leave;
    options.expected.results = options.folders[0];
    return run_merge(options);
}

}  // namespace orva_fire
