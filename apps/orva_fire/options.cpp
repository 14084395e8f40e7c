#include "apps/orva_fire/options.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/commands.h"
#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_command.h"
#include "apps/orva_fire/look_options.h"

namespace orva_fire {
namespace {

const char k_purpose[] = "Finds fire in videos and camera pictures; writes an annotated video, events and snapshots.";

const char k_footer[] =
    R"(SOURCE is a video file, a folder of videos or of pictures, pictures by a pattern (frames/%05d.jpg), a camera
(rtsp://USER@HOST/PATH or /dev/video0), or - for standard input. Cameras are looked at until SIGINT or SIGTERM.

Exit codes: 0 nothing reported, 10 fire reported, 2 usage, 3 input or output error (what was found up to there
is written).

Examples:
  orva-fire video.mp4                            results go to orva-fire-out/
  orva-fire video.mp4 -o night --grade 85        more sensitive, results go to night/
  orva-fire video.mp4 --region 50%,0,50%,100%    the right half only, at twice the detail
  orva-fire video.mp4 --events - | jq .          events on standard output, one JSON object a line
  orva-fire detect rtsp://viewer@10.0.0.7/main --password-file gate.password -o gate
  orva-fire detect /dev/video0 --video - | ffplay -
  orva-fire detect --config gate.conf --on-event "/usr/local/bin/alarm --gate 3"
  orva-fire detect --config gate.conf --mqtt mqtts://gate@broker.lan --mqtt-password-file broker.password)";

std::string check_rate(const std::string& text) {
    double rate = 0;
    if (CLI::detail::lexical_cast(text, rate) && rate > 0 && rate <= 1000) return {};
    return "a rate must be above 0 and at most 1000, not '" + text + "'";
}

std::string check_size(const std::string& text) {
    int width = 0, height = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) == 2 && width > 0 && height > 0) return {};
    return "a size is WIDTHxHEIGHT, not '" + text + "'";
}

// Runs a reader of the option's text and hands on what it complains of.
template <typename Reader>
std::string complaint_of(Reader reader, const std::string& text) {
    try {
        (void)reader(text);
        return {};
    } catch (const usage_error& error) {
        return error.what();
    }
}

std::string check_region(const std::string& text) {
    return complaint_of(parse_region, text);
}

std::string check_frames(const std::string& text) {
    return complaint_of(frame_choice::parse, text);
}

std::string check_command(const std::string& text) {
    return complaint_of(split_command, text);
}

// Seconds and hours from a least value to about a year.
CLI::Validator time_from(double least) {
    return CLI::Validator(CLI::Range(least, 3.2e7)).description("");
}

const char k_drill_footer[] =
    R"(The flame is laid into the middle of the first zone, a second after the first picture, and goes out once it has
been reported for a while. Take the options that the camera is looked at with, and another folder for the results.

Exit codes: 0 the drill passed, 2 usage, 3 it failed, or input or output failed.

Examples:
  orva-fire drill --config gate.conf -o drill
  orva-fire drill rtsp://viewer@10.0.0.7/main --password-file gate.password -o drill --on-event alarm)";

const char k_batch_footer[] =
    R"(SOURCE is a video file or a folder, which is searched with all folders in it. The results of gate/1.mp4 lie in
FOLDER/gate/1.mp4. They appear there when they are complete, with a file done.json: what was done before, by the same
version with the same options from a file of the same size and time, is not done again. A task may be killed and
repeated at any moment. orva-fire merge joins the results.

Exit codes: 0 all recordings are done, with or without fire in them; 2 usage, 3 one could not be read to its end.

Examples:
  orva-fire batch recordings -o results                        what is not done yet
  orva-fire batch recordings -o results --shard 3/8            the third of eight machines' shares
  orva-fire batch recordings -o results --plan 8               who would look at what
  orva-fire batch --base recordings -o results recordings/gate/1.mp4
  orva-fire merge results --expect recordings)";

// Options that do not change what is found in a recording.
const char* const k_indifferent[] = {
    "SOURCE",    "--source",         "--output",           "--config",           "--list", "--base",
    "--shard",   "--plan",           "--on-event",         "--on-event-timeout", "--mqtt", "--mqtt-password-file",
    "--mqtt-ca", "--mqtt-discovery", "--no-mqtt-discovery"};

// Nor do those that say whom to tell of it.
bool is_indifferent(const std::string& name) {
    const auto same = [&](const char* other) { return name == other; };
    return name.find("mqtt") != std::string::npos ||
           std::any_of(std::begin(k_indifferent), std::end(k_indifferent), same);
}

std::string text_in(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The options of detection on one app, and what they were given.
class detect_options_reader {
public:
    detect_options_reader(CLI::App& app, const char* source_name);
    void add_detect();
    void add_drill();
    void add_batch();
    command read(int argc, const char* const* argv);
    batch_command read_batch(int argc, const char* const* argv);

private:
    void add_source();
    void add_results();
    void add_places();
    void add_commands();
    void add_detector();
    void check() const;
    void check_batch() const;
    detect_options finished() const;
    std::string settings() const;

    CLI::App& m_app;
    const std::string m_source_name;
    detect_options m_options;
    std::vector<std::string> m_regions;
    look_options m_look;
    bool m_no_trouble = false;
    bool m_no_video = false, m_no_events = false, m_no_snapshots = false, m_no_report = false;
    std::string m_explain;
    batch_options m_batch;
    std::string m_shard;
};

detect_options_reader::detect_options_reader(CLI::App& app, const char* source_name)
    : m_app(app), m_source_name(source_name) {}

void detect_options_reader::add_detect() {
    add_source();
    add_config_file(m_app);
    add_detector();
    add_results();
    add_places();
    add_commands();
}

void detect_options_reader::add_batch() {
    m_app.add_option(m_source_name, m_batch.search.sources, "what to look at, see below")->type_name("");
    m_app
        .add_option("--list", m_batch.search.list,
                    "look at the recordings and folders on the lines of this file too; - is standard input")
        ->type_name("FILE");
    m_app
        .add_option("--base", m_batch.search.base,
                    "names of results are the paths below this folder (default: SOURCE, if it is one folder, otherwise "
                    "the current folder)")
        ->type_name("FOLDER");
    m_app
        .add_option("--shard", m_shard,
                    "look at the K-th of N shares only, divided by length; every machine finds the same division")
        ->type_name("K/N")
        ->check(CLI::Validator([](const std::string& text) { return complaint_of(parse_shard, text); }, ""));
    m_app
        .add_option("--plan", m_batch.plan,
                    "look at nothing; print shard, seconds and path of every recording, divided by so many")
        ->type_name("N")
        ->check(CLI::Validator(CLI::Range(1, 100000)).description(""));
    add_config_file(m_app);
    add_detector();
    add_results();
    add_commands();
}

void detect_options_reader::add_source() {
    source_options& source = m_options.source;
    m_app.add_option(m_source_name + ",--source", source.text, "what to look at, see below")->type_name("");
    m_app.add_option("--camera", source.camera, "name of the camera in events (default: made from the source)")
        ->type_name("NAME");
    m_app
        .add_option("--password-file", source.password_file,
                    "the camera's password is the first line of this file; otherwise it is taken from the variable "
                    "ORVA_FIRE_PASSWORD")
        ->type_name("FILE");
    m_app
        .add_option("--timeout", source.patience,
                    "a camera that gives no picture for this long counts as gone and is connected anew")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(time_from(0.1));
    m_app
        .add_option("--retry", source.first_pause,
                    "pause before a lost camera is connected anew; it doubles each time, up to 30 seconds")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(CLI::Validator(CLI::Range(0.01, 30.0)).description(""));
    m_app
        .add_option("--input-rate", source.rate,
                    "pictures a second of single pictures (default: 25), or to ask of /dev/videoN")
        ->type_name("RATE")
        ->check(CLI::Validator(check_rate, ""));
    m_app.add_option("--input-size", source.size, "size of the pictures to ask of /dev/videoN")
        ->type_name("WIDTHxHEIGHT")
        ->check(CLI::Validator(check_size, ""));
    m_app.add_flag("--live", source.live, "standard input comes from a camera: events get the time of day");
}

void detect_options_reader::add_results() {
    m_app.add_option("-o,--output", m_options.folder, "folder for the results, made if it is missing")
        ->capture_default_str()
        ->type_name("FOLDER");
    m_app
        .add_option("--segment", m_options.segment,
                    "begin a new video file after this time; 0 for one file (default: 600 for cameras, 0 otherwise)")
        ->type_name("SECONDS")
        ->check(time_from(0));
    m_app.add_flag("--no-video", m_no_video, "write no annotated video, which takes most of the time");
    m_app.add_flag("--no-events", m_no_events, "write no file of events");
    m_app.add_flag("--no-snapshots", m_no_snapshots, "write no pictures of events");
    m_app.add_flag("--no-report", m_no_report, "write no report.html");
    m_app
        .add_flag(
            "--explain{all}", m_explain,
            "write for these pictures (140,150-160,300-; default: all) what every stage made of them, and why each "
            "box was reported or not, into explain/ in the folder")
        ->type_name("")
        ->check(CLI::Validator(check_frames, ""));
}

void detect_options_reader::add_places() {
    m_app
        .add_option("--events", m_options.events,
                    "file for the events instead of events.jsonl in the folder; - for standard output")
        ->type_name("FILE");
    m_app.add_option("--frames", m_options.frames, "write the boxes of every picture there, one JSON object a line")
        ->type_name("FILE");
    m_app
        .add_option("--video", m_options.video,
                    "file for the annotated video instead of annotated.mp4 in the folder; - for a stream to a player")
        ->type_name("FILE");
    m_app
        .add_option("--keep", m_options.keep_hours,
                    "remove a camera's video files that are older; 0 keeps them all (default: 24)")
        ->type_name("HOURS")
        ->check(time_from(0));
    m_app
        .add_option("--library-log", m_options.library_log,
                    "keep the detector's own lines in this file, 16 MiB at most")
        ->type_name("FILE");
}

void detect_options_reader::add_commands() {
    m_app
        .add_option("--on-event", m_options.on_event,
                    "start this program for every event, with the event as JSON on its standard input")
        ->type_name("COMMAND")
        ->check(CLI::Validator(check_command, ""));
    m_app
        .add_option("--on-event-timeout", m_options.on_event_timeout,
                    "a run of that program which takes longer is ended")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(time_from(0.1));
    add_mqtt_options(m_app, m_options.mqtt);
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
        .add_option("--zones", m_options.zones,
                    "look in the zones of this JSON file: named, each of one or several rectangles, with grades of "
                    "their own")
        ->type_name("FILE");
    m_app.add_flag("--no-trouble", m_no_trouble, "do not say when the detector cannot see");
    add_look_options(m_app, m_look);
}

detect_options detect_options_reader::finished() const {
    detect_options options = m_options;
    for (const std::string& text : m_regions) options.regions.push_back(parse_region(text));
    options.grade = m_look.grade;
    options.rate = m_look.rate;
    options.tiles = parse_tiles(m_look.tiles);
    options.confirm = {m_look.confirm, m_look.cooldown};
    options.max_age = m_look.max_age;
    options.watch_trouble = !m_no_trouble;
    options.write_video = !m_no_video;
    options.write_events = !m_no_events;
    options.write_snapshots = !m_no_snapshots;
    options.write_report = !m_no_report;
    if (!m_explain.empty()) options.explain = frame_choice::parse(m_explain);
    // Taken out of the environment, so that no program started from here has it.
    if (const char* password = std::getenv("ORVA_FIRE_PASSWORD")) options.source.password = password;
    unsetenv("ORVA_FIRE_PASSWORD");
    take_mqtt_password(options.mqtt);
    return options;
}

void detect_options_reader::add_drill() {
    m_options.drill = 60;
    m_app.add_option("--seconds", *m_options.drill, "the drill has failed if the flame is not reported by then")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(time_from(1));
}

// What no single option can know of itself.
void detect_options_reader::check() const {
    if (m_options.source.text.empty()) throw CLI::ValidationError(m_source_name, "name what to look at");
    if (m_regions.size() > FD_MAX_CHANNELS) {
        throw CLI::ValidationError("--region", "at most 128 regions are possible");
    }
    const int to_output = (m_options.events == "-") + (m_options.video == "-") + (m_options.frames == "-");
    if (to_output > 1) {
        throw CLI::ValidationError("-", "only one of --events, --video and --frames can go to standard output");
    }
}

void detect_options_reader::check_batch() const {
    if (m_batch.search.sources.empty() && m_batch.search.list.empty()) {
        throw CLI::ValidationError(m_source_name, "name what to look at");
    }
    if (!m_shard.empty() && m_batch.plan > 0) {
        throw CLI::ValidationError("--plan", "it shows all shards; leave out --shard");
    }
    if (m_regions.size() > FD_MAX_CHANNELS) throw CLI::ValidationError("--region", "at most 128 regions are possible");
}

// What the options say that decide about the results, whether on the command line or in a file.
std::string detect_options_reader::settings() const {
    std::string text;
    for (const CLI::Option* option : m_app.get_options()) {
        const std::string name = option->get_name();
        if (option->count() == 0 || is_indifferent(name)) continue;
        text += name + "\n";
        for (const std::string& value : option->results()) text += "  " + value + "\n";
    }
    return m_options.zones.empty() ? text : text + text_in(m_options.zones);
}

batch_command detect_options_reader::read_batch(int argc, const char* const* argv) {
    batch_command result;
    if (const auto exit_code = read_command_line(m_app, argc, argv, [this] { check_batch(); })) {
        result.exit_code = *exit_code;
        return result;
    }
    result.batch = m_batch;
    result.batch->detect = finished();
    result.batch->search.results = m_options.folder;
    if (!m_shard.empty()) result.batch->shard = parse_shard(m_shard);
    result.batch->settings = digest_of(settings());
    return result;
}

command detect_options_reader::read(int argc, const char* const* argv) {
    command result;
    if (const auto exit_code = read_command_line(m_app, argc, argv, [this] { check(); })) {
        result.exit_code = *exit_code;
    } else {
        result.detect = finished();
    }
    return result;
}

}  // namespace

command parse_command_line(int argc, const char* const* argv) {
    CLI::App app(k_purpose, "orva-fire");
    set_manners(app, k_footer + ("\n\nCommands, each with its own --help:\n" + list_of_commands()));
    detect_options_reader reader(app, "VIDEO");
    reader.add_detect();
    return reader.read(argc, argv);
}

command parse_detect(int argc, const char* const* argv) {
    CLI::App app(k_purpose, "orva-fire detect");
    set_manners(app, k_footer);
    detect_options_reader reader(app, "SOURCE");
    reader.add_detect();
    return reader.read(argc, argv);
}

command parse_drill(int argc, const char* const* argv) {
    CLI::App app(
        "Fire drill: lays a synthetic flame over the pictures of a source and follows the event, which is marked as a "
        "test, through every output.",
        "orva-fire drill");
    set_manners(app, k_drill_footer);
    detect_options_reader reader(app, "SOURCE");
    reader.add_detect();
    reader.add_drill();
    return reader.read(argc, argv);
}

batch_command parse_batch(int argc, const char* const* argv) {
    CLI::App app(
        "Looks for fire in recordings in bulk: each is a task that may be killed, repeated and shared among "
        "machines.",
        "orva-fire batch");
    set_manners(app, k_batch_footer);
    detect_options_reader reader(app, "SOURCE");
    reader.add_batch();
    return reader.read_batch(argc, argv);
}

}  // namespace orva_fire
