#include "apps/orva_fire/outputs.h"

#include <exception>
#include <filesystem>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/wall_clock.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const char k_video_name[] = "annotated.mp4";
const char k_events_name[] = "events.jsonl";
const double k_live_segment = 600;
const double k_live_keep_hours = 24;

std::string in_folder(const detect_options& options, const char* name) {
    return options.folder + "/" + name;
}

std::string video_path(const detect_options& options) {
    return options.video.empty() ? in_folder(options, k_video_name) : options.video;
}

std::string events_path(const detect_options& options) {
    return options.events.empty() ? in_folder(options, k_events_name) : options.events;
}

bool uses_folder(const detect_options& options) {
    return (options.write_video && options.video.empty()) || (options.write_events && options.events.empty()) ||
           options.write_snapshots || options.write_report || options.explain;
}

void make_folder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder)) {
        throw io_error("cannot make the folder '" + folder + "': " + error.message());
    }
}

}  // namespace

std::vector<std::string> output_paths(const detect_options& options) {
    std::vector<std::string> paths;
    if (options.write_video) paths.push_back(video_path(options));
    if (options.write_events) paths.push_back(events_path(options));
    for (const std::string& path : {options.frames, options.library_log}) paths.push_back(path);
    return paths;
}

outputs::outputs(const detect_options& options, const output_setting& setting)
    : m_setting(setting), m_folder(options.folder) {
    if (uses_folder(options)) make_folder(options.folder);
    // What a live source has written before is evidence of other days; a file's results are simply made anew.
    if (options.write_events) {
        m_events = open_log(events_path(options), "--events", setting.live);
    }
    if (!options.frames.empty()) m_frames = open_log(options.frames, "--frames", setting.live);
    if (options.write_snapshots) {
        const std::string run = setting.live ? file_time(setting.wall_milliseconds.value_or(wall_clock_now())) : "";
        m_snapshots = std::make_unique<snapshot_taker>(options.folder, run);
    }
    if (options.write_video) open_video(options);
    if (!options.on_event.empty()) open_command(options);
    if (!options.mqtt.url.empty()) open_mqtt(options);
}

// What was told before a disk was full still reaches the broker.
outputs::~outputs() {
    if (m_broker) m_broker->finish();
}

std::unique_ptr<event_log> outputs::open_log(const std::string& path, const char* option, bool append) const {
    if (path != "-") return std::make_unique<event_log>(path, append);
    if (m_setting.own_output < 0) throw io_error(std::string(option) + " -: standard output is closed");
    return std::make_unique<event_log>(m_setting.own_output, "standard output");
}

void outputs::open_video(const detect_options& options) {
    recorder_settings settings;
    settings.path = video_path(options);
    settings.rate = m_setting.rate;
    settings.segment = options.segment.value_or(m_setting.live ? k_live_segment : 0);
    settings.keep_hours = m_setting.live ? options.keep_hours.value_or(k_live_keep_hours) : 0;
    if (settings.path == "-") {
        if (m_setting.own_output < 0) throw io_error("--video -: standard output is closed");
        settings.descriptor = m_setting.own_output;
    }
    m_video = std::make_unique<video_recorder>(settings);
}

void outputs::open_command(const detect_options& options) {
    std::error_code error;
    const std::string folder = fs::absolute(options.folder, error).string();
    m_command = std::make_unique<event_command>(split_command(options.on_event), options.on_event_timeout,
                                                std::vector<std::string>{"ORVA_FIRE_FOLDER=" + folder});
}

void outputs::open_mqtt(const detect_options& options) {
    mqtt_speaker speaker;
    mqtt_settings settings;
    settings.login = login_of(options.mqtt);
    speaker.prefix = settings.login.broker.prefix;
    speaker.discovery = options.mqtt.no_discovery ? "" : options.mqtt.discovery;
    speaker.camera = m_setting.camera;
    speaker.version = ORVA_FIRE_VERSION;
    speaker.zones = m_setting.zones;
    speaker.watches_trouble = options.watch_trouble;
    speaker.test = m_setting.test;
    settings.availability = topic_of(speaker, "availability");
    m_broker = std::make_unique<mqtt_client>(settings);
    m_mqtt = std::make_unique<mqtt_output>(speaker, *m_broker);
}

event_context outputs::context_at(const std::optional<int64_t>& wall_milliseconds) const {
    event_context context;
    context.camera = m_setting.camera;
    context.picture = m_setting.size;
    context.wall_milliseconds = wall_milliseconds;
    context.test = m_setting.test;
    return context;
}

void outputs::write_line(const std::string& line, bool may_be_left_out) {
    if (m_events) m_events->write(line);
    if (m_command) m_command->send(line, may_be_left_out);
    ++m_lines;
}

void outputs::record(const fire_event& event, const std::string& zone, int grade, const frame_ptr& picture,
                     const std::optional<int64_t>& wall_milliseconds) {
    event_context context = context_at(wall_milliseconds);
    context.zone = zone;
    context.grade = grade;
    std::exception_ptr lost;
    try {
        if (m_snapshots) context.snapshot = m_snapshots->take(event, picture);
    } catch (const io_error&) {
        lost = std::current_exception();
    }
    if (!context.snapshot.empty()) ++m_pictures;
    // The event itself is told, whatever became of its picture.
    const std::string line = event_line(event, context);
    if (m_mqtt) m_mqtt->tell(event, line, wall_milliseconds);
    write_line(line, event.kind == event_kind::update);
    if (lost) std::rethrow_exception(lost);
}

void outputs::record(const trouble_event& event, const moment& at, const std::optional<int64_t>& wall_milliseconds) {
    const std::string line = trouble_line(event, at.frame, context_at(wall_milliseconds));
    if (m_mqtt) m_mqtt->tell(event, line);
    write_line(line, false);
}

void outputs::write_picture(const AVFrame& picture, double seconds, const std::optional<int64_t>& wall_milliseconds) {
    m_video->write(picture, seconds, wall_milliseconds);
}

video_place outputs::shown_in() const {
    if (!m_video || m_video->file().empty()) return {};
    std::error_code error;
    const fs::path name = fs::relative(m_video->file(), m_folder, error);
    return {error ? "" : name.string(), m_video->file_start()};
}

void outputs::finish() {
    if (m_video) m_video->close();
    if (m_command) m_command->finish();
    if (!m_mqtt) return;
    m_mqtt->finish();
    m_broker->finish();
}

std::vector<std::string> outputs::take_warnings() {
    std::vector<std::string> warnings;
    if (m_command) warnings = m_command->take_warnings();
    if (!m_broker) return warnings;
    for (const std::string& warning : m_broker->take_warnings()) warnings.push_back(warning);
    return warnings;
}

bool outputs::all_delivered() const {
    return (!m_command || m_command->delivered() == m_lines) && (!m_broker || m_broker->delivered() == m_lines);
}

std::vector<std::string> outputs::account() const {
    std::vector<std::string> lines;
    if (m_events) lines.push_back("events    " + std::to_string(m_lines) + " lines");
    if (m_snapshots) lines.push_back("snapshots " + std::to_string(m_pictures) + " pictures");
    if (m_video) lines.push_back("video     " + std::to_string(m_video->pictures()) + " pictures");
    if (m_command) {
        lines.push_back("command   " + std::to_string(m_command->delivered()) + " of " + std::to_string(m_lines) +
                        " runs ended well");
    }
    if (m_broker) {
        lines.push_back("mqtt      " + std::to_string(m_broker->delivered()) + " of " + std::to_string(m_lines) +
                        " lines confirmed");
    }
    return lines;
}

}  // namespace orva_fire
