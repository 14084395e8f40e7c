#include "apps/orva_fire/options.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const char k_footer[] =
    R"(Exit codes: 0 nothing reported, 10 fire reported, 2 usage, 3 input or output error (what was found up to there
is written).

Examples:
  orva-fire video.mp4                            results go to orva-fire-out/
  orva-fire video.mp4 -o night --grade 85        more sensitive, results go to night/
  orva-fire video.mp4 --region 50%,0,50%,100%    the right half only, at twice the detail
  orva-fire video.mp4 --events - | jq .          events on standard output, one JSON object a line)";

std::string complaint(const CLI::App*, const CLI::Error& error) {
    return std::string("orva-fire: ") + error.what() + "\nRun orva-fire --help for more information.\n";
}

std::string check_region(const std::string& text) {
    try {
        (void)parse_region(text);
        return {};
    } catch (const usage_error& error) {
        return error.what();
    }
}

std::string check_rate(const std::string& text) {
    double rate = 0;
    if (CLI::detail::lexical_cast(text, rate) && rate > 0 && rate <= 1000) return {};
    return "a rate must be above 0 and at most 1000, not '" + text + "'";
}

}  // namespace

command parse_command_line(int argc, const char* const* argv) {
    detect_options options;
    std::vector<std::string> regions;
    bool no_video = false;

    CLI::App app("Finds fire in a video and writes an annotated video, events and snapshots.", "orva-fire");
    app.footer(k_footer);
    app.failure_message(complaint);
    app.set_version_flag("--version", "orva-fire " ORVA_FIRE_VERSION);
    app.add_option("VIDEO", options.video, "video file, in any format that FFmpeg reads")->required();
    app.add_option("-o,--output", options.folder, "folder for the results, made if it is missing")
        ->capture_default_str()
        ->type_name("FOLDER");
    app.add_option("--events", options.events,
                   "file for the events instead of events.jsonl in the folder; - for standard output")
        ->type_name("FILE");
    app.add_option(
           "--region", regions,
           "look in this part of the picture only, X,Y,WIDTH,HEIGHT in pixels or percent; give it several times "
           "for several parts")
        ->type_name("REGION")
        ->allow_extra_args(false)
        ->check(CLI::Validator(check_region, ""));
    app.add_option("--grade", options.grade,
                   "sensitivity, 0 to 100; higher reports after less evidence (default: as 70)")
        ->type_name("GRADE")
        ->check(CLI::Validator(CLI::Range(0, 100)).description(""));
    app.add_option("--fps", options.rate, "pass at most this many pictures a second to the detector, by time stamps")
        ->type_name("RATE")
        ->check(CLI::Validator(check_rate, ""));
    app.add_option("--library-log", options.library_log, "keep the detector's own lines in this file, 16 MiB at most")
        ->type_name("FILE");
    app.add_flag("--no-video", no_video, "write no annotated video, which takes most of the time");

    command result;
    try {
        app.parse(argc, const_cast<char**>(argv));
        if (regions.size() > FD_MAX_CHANNELS)
            throw CLI::ValidationError("--region", "at most 128 regions are possible");
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error, std::cout, std::cerr);
        result.exit_code = status == 0 ? 0 : k_exit_usage;
        return result;
    }
    for (const std::string& text : regions) options.regions.push_back(parse_region(text));
    options.write_video = !no_video;
    result.detect = options;
    return result;
}

}  // namespace orva_fire
