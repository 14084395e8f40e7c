#include "apps/orva_fire/options.h"

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/commands.h"
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

// The options of detection on one app, and what they were given.
class detect_options_reader {
public:
    detect_options_reader(CLI::App& app, const char* source_name);
    command read(int argc, const char* const* argv);

private:
    void add_places();
    void add_detector();
    detect_options finished() const;

    CLI::App& m_app;
    const std::string m_source_name;
    detect_options m_options;
    std::vector<std::string> m_regions;
    bool m_no_video = false;
};

detect_options_reader::detect_options_reader(CLI::App& app, const char* source_name)
    : m_app(app), m_source_name(source_name) {
    app.add_option(m_source_name + ",--source", m_options.source, "video file, in any format that FFmpeg reads");
    add_config_file(app);
    add_places();
    add_detector();
}

void detect_options_reader::add_places() {
    m_app.add_option("-o,--output", m_options.folder, "folder for the results, made if it is missing")
        ->capture_default_str()
        ->type_name("FOLDER");
    m_app
        .add_option("--events", m_options.events,
                    "file for the events instead of events.jsonl in the folder; - for standard output")
        ->type_name("FILE");
    m_app
        .add_option("--library-log", m_options.library_log,
                    "keep the detector's own lines in this file, 16 MiB at most")
        ->type_name("FILE");
    m_app.add_flag("--no-video", m_no_video, "write no annotated video, which takes most of the time");
}

void detect_options_reader::add_detector() {
    m_app
        .add_option("--region", m_regions,
                    "look in this part of the picture only, X,Y,WIDTH,HEIGHT in pixels or percent; give it several "
                    "times for several parts")
        ->type_name("REGION")
        ->allow_extra_args(false)
        ->check(CLI::Validator(check_region, ""));
    m_app
        .add_option("--grade", m_options.grade,
                    "sensitivity, 0 to 100; higher reports after less evidence (default: as 70)")
        ->type_name("GRADE")
        ->check(CLI::Validator(CLI::Range(0, 100)).description(""));
    m_app
        .add_option("--fps", m_options.rate, "pass at most this many pictures a second to the detector, by time stamps")
        ->type_name("RATE")
        ->check(CLI::Validator(check_rate, ""));
}

detect_options detect_options_reader::finished() const {
    detect_options options = m_options;
    for (const std::string& text : m_regions) options.regions.push_back(parse_region(text));
    options.write_video = !m_no_video;
    return options;
}

command detect_options_reader::read(int argc, const char* const* argv) {
    const auto check = [this] {
        if (m_options.source.empty()) throw CLI::ValidationError(m_source_name, "name the video to look at");
        if (m_regions.size() > FD_MAX_CHANNELS)
            throw CLI::ValidationError("--region", "at most 128 regions are possible");
    };
    command result;
    if (const auto exit_code = read_command_line(m_app, argc, argv, check)) {
        result.exit_code = *exit_code;
    } else {
        result.detect = finished();
    }
    return result;
}

}  // namespace

command parse_command_line(int argc, const char* const* argv) {
    CLI::App app("Finds fire in a video and writes an annotated video, events and snapshots.", "orva-fire");
    set_manners(app, k_footer + ("\n\nCommands, each with its own --help:\n" + list_of_commands()));
    return detect_options_reader(app, "VIDEO").read(argc, argv);
}

command parse_detect(int argc, const char* const* argv) {
    CLI::App app("Finds fire in a video and writes an annotated video, events and snapshots.", "orva-fire detect");
    set_manners(app, k_footer);
    return detect_options_reader(app, "SOURCE").read(argc, argv);
}

}  // namespace orva_fire
