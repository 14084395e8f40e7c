#include "apps/orva_fire/detect.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/annotate.h"
#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/drill.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/folder_run.h"
#include "apps/orva_fire/frame_gate.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/open_source.h"
#include "apps/orva_fire/outputs.h"
#include "apps/orva_fire/progress.h"
#include "apps/orva_fire/rate_watch.h"
#include "apps/orva_fire/report_settings.h"
#include "apps/orva_fire/run_observer.h"
#include "apps/orva_fire/stop_signal.h"
#include "apps/orva_fire/summary.h"
#include "apps/orva_fire/trouble.h"
#include "apps/orva_fire/wall_clock.h"
#include "apps/orva_fire/zone_watcher.h"
#include "apps/orva_fire/zones.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const double k_drill_after_report = 2;  // seconds
const size_t k_most_notes = 50;
const int k_default_grade = 70;  // the library's own is that of grades 68 to 73

// One zone of the picture, and what is reported in it now.
struct watched_zone {
    std::string name;
    int grade;
    std::unique_ptr<zone_watcher> watcher;
    std::optional<confirmation> confirmed;
    std::vector<box> boxes;     // what the detector reports
    std::vector<box> reported;  // of these, what belongs to an event
};

// The zones of the file and those of the command line; the whole picture if there are none.
std::vector<zone_spec> wanted_zones(const detect_options& options) {
    std::vector<zone_spec> zones;
    if (!options.zones.empty()) zones = read_zones(options.zones);
    for (size_t i = 0; i < options.regions.size(); ++i) {
        zones.push_back({"region " + std::to_string(i + 1), {options.regions[i]}, std::nullopt, ""});
    }
    check_names(zones);
    const region whole = {{0, true}, {0, true}, {100, true}, {100, true}};
    if (zones.empty()) zones.push_back({"picture", {whole}, std::nullopt, ""});
    return zones;
}

// Rejects results that would be written over the source while it is still being read, before any file is opened.
const detect_options& without_overwriting(const detect_options& options) {
    for (const std::string& output : output_paths(options)) {
        std::error_code error;
        if (fs::equivalent(options.source.text, output, error) && !error) {
            throw usage_error("'" + output + "' is the video itself; choose another place for the results");
        }
    }
    return options;
}

// The source as it is, or with the flame of a drill in it.
std::unique_ptr<picture_source> source_of(const detect_options& options, const std::vector<zone_spec>& zones,
                                          drill_source*& drill) {
    std::unique_ptr<picture_source> source = open_source(options.source);
    if (!options.drill) return source;
    const zone_spec zone = zones.front();
    const tile_grid grid = options.tiles;
    auto burning = std::make_unique<drill_source>(std::move(source), [zone, grid](picture_size size) {
        const std::vector<box> tiles = tile(place_zone(zone, size).front(), grid);
        return place_of_flame(tiles[tiles.size() / 2]);
    });
    drill = burning.get();
    return burning;
}

class detection_run {
public:
    // summary: is filled in as the run goes on; outlives it.
    detection_run(const detect_options& options, run_summary& summary);
    int run();

private:
    void start(const source_picture& first);
    void open_zones();
    void open_observer();

    bool read(source_picture& picture);
    void take(const source_picture& picture);
    void wait(const source_picture& nothing);
    bool repeats(const source_picture& picture);
    bool passes(const source_picture& picture, bool repeated);
    std::vector<fire_event> analyse(const source_picture& picture);
    void restart(std::vector<fire_event>& events);
    void report_trouble(const std::vector<trouble_event>& events);
    void write_out(const source_picture& picture, const std::vector<fire_event>& events, bool passed);
    void write_frame_line(bool passed);
    void record(const fire_event& event);
    void follow_drill(const std::vector<fire_event>& events);
    void finish();
    int conclude();
    void write_report(const std::string& problem);
    int conclude_drill(const std::string& problem);
    void print_warnings();
    void warn(const std::string& text);

    const detect_options m_options;
    const std::vector<zone_spec> m_wanted;
    run_summary& m_summary;
    drill_source* m_drill = nullptr;  // the source, if it is one
    std::unique_ptr<picture_source> m_source;
    bool m_drill_over = false;
    picture_size m_size;
    moment m_now;
    std::optional<int64_t> m_wall;
    progress_line m_progress;

    library_output m_library_output;
    detector_session m_session;
    std::vector<watched_zone> m_zones;
    std::vector<std::string> m_zone_names;
    std::vector<box> m_outlines;

    rate_limiter m_limiter;
    repeat_finder m_still;    // compares with the picture before
    repeat_finder m_repeats;  // with the one that was passed last, if --fps leaves some out
    rate_watch m_rate_watch;
    trouble_watcher m_trouble;
    event_tracker m_tracker{0};

    annotator m_annotator;
    frame_ptr m_painted;  // the last picture with its boxes
    std::unique_ptr<outputs> m_outputs;
    std::unique_ptr<run_observer> m_observer;  // none if nothing is to be reported or explained
    std::vector<std::string> m_notes;          // the first warnings, for the report
};

detection_run::detection_run(const detect_options& options, run_summary& summary)
    : m_options(without_overwriting(options)),
      m_wanted(wanted_zones(options)),
      m_summary(summary),
      m_source(source_of(options, m_wanted, m_drill)),
      m_progress(m_source->duration()),
      m_library_output(options.library_log, options.library_log_limit),
      m_limiter(options.rate) {}

void detection_run::open_zones() {
    (void)count_channels(m_wanted, m_size, m_options.tiles, m_options.max_age > 0);
    for (const zone_spec& wanted : m_wanted) {
        const std::vector<box> parts = place_zone(wanted, m_size);
        watch_settings settings;
        settings.grade = wanted.grade ? wanted.grade : m_options.grade;
        settings.tiles = m_options.tiles;
        settings.max_age = m_options.max_age;
        m_zones.push_back({wanted.name,
                           settings.grade.value_or(k_default_grade),
                           std::make_unique<zone_watcher>(parts, settings),
                           confirmation(m_options.confirm),
                           {},
                           {}});
        m_zone_names.push_back(wanted.name);
        const bool whole = parts.size() == 1 && parts[0] == box{0, 0, m_size.width, m_size.height};
        if (!whole) m_outlines.insert(m_outlines.end(), parts.begin(), parts.end());
    }
    m_tracker = event_tracker(m_zones.size());
}

void detection_run::open_observer() {
    if (!m_options.write_report && !m_options.explain) return;
    std::vector<observed_zone> zones;
    for (const watched_zone& zone : m_zones) zones.push_back({zone.name, zone.watcher.get(), zone.grade});
    observer_settings settings;
    settings.folder = m_options.folder;
    settings.source = camera_name(m_options.source);
    settings.explain = m_options.explain;
    settings.report = m_options.write_report;
    settings.test = m_options.drill.has_value();
    m_observer = std::make_unique<run_observer>(settings, zones, m_size, m_library_output);
}

void detection_run::start(const source_picture& first) {
    m_size = {first.frame->width, first.frame->height};
    open_zones();
    output_setting setting;
    setting.camera = camera_name(m_options.source);
    setting.live = m_source->live();
    setting.test = m_options.drill.has_value();
    setting.rate = m_source->nominal_rate();
    setting.size = m_size;
    setting.zones = m_zone_names;
    setting.own_output = m_library_output.own_output();
    setting.wall_milliseconds = first.wall_milliseconds;
    m_outputs = std::make_unique<outputs>(m_options, setting);
    open_observer();
}

bool detection_run::read(source_picture& picture) {
    const stopwatch::running timer(m_summary.decode);
    return !stop_wanted() && m_source->next(picture);
}

bool detection_run::repeats(const source_picture& picture) {
    const stopwatch::running timer(m_summary.convert);
    return m_still.repeats(*picture.frame);
}

bool detection_run::passes(const source_picture& picture, bool repeated) {
    if (!m_limiter.passes(picture.seconds)) {
        ++m_summary.thinned;
        return false;
    }
    if (m_options.rate > 0) {
        // What the detector was given last may be further back than the picture before.
        const stopwatch::running timer(m_summary.convert);
        repeated = m_repeats.repeats(*picture.frame);
    }
    if (repeated) ++m_summary.repeated;
    return !repeated;
}

std::vector<fire_event> detection_run::analyse(const source_picture& picture) {
    std::vector<fire_event> events;
    if (picture.after_gap) restart(events);
    if (m_observer) m_observer->set_moment(m_now);
    for (size_t i = 0; i < m_zones.size(); ++i) {
        watched_zone& zone = m_zones[i];
        const zone_answer answer =
            zone.watcher->observe(*picture.frame, picture.seconds, m_summary.convert, m_summary.detect);
        zone.boxes = answer.boxes;
        zone.reported = zone.confirmed->observe(picture.seconds, answer);
        if (auto event = m_tracker.observe(i, m_now, zone.reported)) events.push_back(*event);
    }
    m_library_output.check_limit();
    return events;
}

// Nobody knows what was to be seen in the gap: what was reported before ends, and evidence is gathered anew.
void detection_run::restart(std::vector<fire_event>& events) {
    events = m_tracker.finish(m_now, event_end::source_lost);
    for (watched_zone& zone : m_zones) {
        zone.watcher->restart();
        zone.confirmed.emplace(m_options.confirm);
    }
}

void detection_run::report_trouble(const std::vector<trouble_event>& events) {
    for (const trouble_event& event : events) {
        m_outputs->record(event, m_now, m_wall);
        if (m_observer && event.started) m_observer->start_trouble(trouble_sentence(event.reason), event.since);
        if (m_observer && !event.started) m_observer->end_trouble(event.seconds);
        warn(std::string(event.started ? "" : "over: ") + trouble_sentence(event.reason));
    }
}

void detection_run::record(const fire_event& event) {
    const watched_zone& zone = m_zones[event.zone];
    m_outputs->record(event, zone.name, zone.grade, m_painted, m_wall);
    if (m_observer) m_observer->add(event, *m_painted, m_outputs->shown_in());
}

void detection_run::write_frame_line(bool passed) {
    std::vector<std::vector<box>> boxes;
    for (const watched_zone& zone : m_zones) boxes.push_back(zone.boxes);
    m_outputs->write_frame(frame_line(m_now, m_zone_names, boxes, passed));
}

void detection_run::write_out(const source_picture& picture, const std::vector<fire_event>& events, bool passed) {
    const stopwatch::running timer(m_summary.output);
    if (m_outputs->wants_every_picture() || !events.empty()) {
        std::vector<box> boxes;
        for (const watched_zone& zone : m_zones) boxes.insert(boxes.end(), zone.reported.begin(), zone.reported.end());
        m_painted = m_annotator.paint(*picture.frame, m_outlines, boxes);
    }
    if (m_outputs->wants_every_picture()) m_outputs->write_picture(*m_painted, picture.seconds, m_wall);
    for (const fire_event& event : events) record(event);
    if (m_outputs->wants_frames()) write_frame_line(passed);
}

void detection_run::finish() {
    m_progress.clear();
    if (!m_outputs) return;
    const stopwatch::running timer(m_summary.output);
    for (const fire_event& event : m_tracker.finish(m_now)) record(event);
    m_outputs->finish();
}

void detection_run::warn(const std::string& text) {
    m_progress.clear();
    std::fprintf(stderr, "orva-fire: warning: %s\n", text.c_str());
    if (m_notes.size() < k_most_notes) m_notes.push_back(text);
}

void detection_run::print_warnings() {
    for (const std::string& warning : m_source->take_warnings()) warn(warning);
    if (!m_outputs) return;
    for (const std::string& warning : m_outputs->take_warnings()) warn(warning);
}

// A live source is silent.
void detection_run::wait(const source_picture& nothing) {
    if (!m_outputs || !m_options.watch_trouble) return;
    m_now = {nothing.index, nothing.seconds};
    m_wall = nothing.wall_milliseconds;
    report_trouble(m_trouble.no_picture(nothing.seconds));
}

// One picture through everything.
void detection_run::take(const source_picture& picture) {
    m_now = {picture.index, picture.seconds};
    m_wall = picture.wall_milliseconds;
    if (!m_outputs) start(picture);
    ++m_summary.frames;
    m_outputs->count_picture();
    const bool repeated = repeats(picture);
    if (m_options.watch_trouble) report_trouble(m_trouble.observe(*picture.frame, picture.seconds, repeated));
    const bool passed = passes(picture, repeated);
    if (passed) {
        const std::string slow = m_rate_watch.observe(picture.seconds);
        if (!slow.empty()) warn(slow);
    }
    const std::vector<fire_event> events = passed ? analyse(picture) : std::vector<fire_event>();
    write_out(picture, events, passed);
    if (m_drill) follow_drill(events);
    m_progress.show(m_summary.frames, picture.seconds);
}

// The flame goes out once it was reported for a while; the drill is over when that event has ended, or took too long.
void detection_run::follow_drill(const std::vector<fire_event>& events) {
    for (const fire_event& event : events) m_drill_over |= event.kind == event_kind::end;
    const std::optional<moment>& first = m_tracker.first_report();
    if (first && m_now.seconds - first->seconds >= k_drill_after_report) m_drill->extinguish();
    const double limit = *m_options.drill + (first ? k_drill_after_report + m_options.confirm.cooldown : 0);
    m_drill_over |= m_now.seconds > limit + k_drill_onset;
}

int detection_run::run() {
    {
        const stopwatch::running timer(m_summary.whole);
        source_picture picture;
        while (!m_drill_over && read(picture)) {
            print_warnings();
            if (picture.frame) {
                take(picture);
            } else {
                wait(picture);
            }
        }
        print_warnings();
        finish();
        print_warnings();
    }
    return conclude();
}

int detection_run::conclude() {
    std::string problem = m_source->problem();
    const std::string shown = shown_source(m_options.source);
    if (stop_wanted() && !m_source->live()) problem = shown + ": stopped by a signal before the end";
    if (m_summary.frames == 0) {
        throw io_error(problem.empty() ? shown + ": no picture could be decoded"
                                       : problem + "; no picture could be decoded");
    }
    m_summary.video_seconds = m_now.seconds + 1 / m_source->nominal_rate();
    m_summary.dropped = m_source->dropped();
    m_summary.reports = m_tracker.reports();
    m_summary.first_report = m_tracker.first_report();
    write_report(problem);
    std::fprintf(stderr, "orva-fire: %s", summary_text(m_summary).c_str());
    std::fprintf(stderr, "  written   %s\n",
                 (m_options.shown_folder.empty() ? m_options.folder : m_options.shown_folder).c_str());
    if (m_drill) return conclude_drill(problem);
    if (!problem.empty()) throw io_error(problem + "; what was found up to there is written");
    return m_tracker.reports() > 0 ? k_exit_fire : k_exit_nothing;
}

void detection_run::write_report(const std::string& problem) {
    if (!m_observer) return;
    report_data about;
    about.made_at = rfc3339(wall_clock_now());
    about.version = ORVA_FIRE_VERSION;
    about.rate = m_source->nominal_rate();
    about.seconds = m_summary.video_seconds;
    about.frames = m_summary.frames;
    about.passed = m_summary.passed();
    about.repeated = m_summary.repeated;
    about.thinned = m_summary.thinned;
    about.notes = m_notes;
    if (!problem.empty()) about.notes.push_back(problem);
    about.settings = report_settings(m_options);
    m_observer->finish(std::move(about));
}

int detection_run::conclude_drill(const std::string& problem) {
    for (const std::string& line : m_outputs->account()) std::fprintf(stderr, "  %s\n", line.c_str());
    const std::optional<moment>& first = m_tracker.first_report();
    if (!first) {
        throw io_error("the drill failed: the flame was not reported" +
                       (problem.empty() ? "; see --library-log for what the detector made of it" : "; " + problem));
    }
    if (!m_outputs->all_delivered()) throw io_error("the drill failed: not every event was delivered");
    std::fprintf(stderr, "orva-fire: the drill passed: the flame was reported %.1f s after it began\n",
                 first->seconds - k_drill_onset);
    return k_exit_nothing;
}

}  // namespace

int run_detect(const detect_options& options, run_summary* summary) {
    const std::vector<std::string> videos = videos_in_folder(options.source.text);
    if (!options.mqtt.url.empty()) (void)login_of(options.mqtt);  // complains before a camera is waited for
    if (options.drill && !videos.empty()) throw usage_error("a drill needs one source, not a folder of videos");
    if (!videos.empty()) return run_folder(options, videos);
    run_summary own;
    return detection_run(options, summary ? *summary : own).run();
}

}  // namespace orva_fire
