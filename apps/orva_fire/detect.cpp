#include "apps/orva_fire/detect.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/annotate.h"
#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/frame_gate.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/progress.h"
#include "apps/orva_fire/snapshot.h"
#include "apps/orva_fire/summary.h"
#include "apps/orva_fire/video_source.h"
#include "apps/orva_fire/video_writer.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const char k_video_name[] = "annotated.mp4";
const char k_events_name[] = "events.jsonl";

// One part of the picture that is looked at, and what is reported in it now.
struct watched_zone {
    std::string name;
    std::unique_ptr<detector_channel> channel;
    std::vector<box> boxes;
};

std::string in_folder(const detect_options& options, const char* name) {
    return options.folder + "/" + name;
}

std::string events_path(const detect_options& options) {
    return options.events.empty() ? in_folder(options, k_events_name) : options.events;
}

// Rejects results that would be written over the video while it is still being read, before any file is opened.
const detect_options& without_overwriting(const detect_options& options) {
    for (const std::string& output : {in_folder(options, k_video_name), events_path(options), options.library_log}) {
        std::error_code error;
        if (fs::equivalent(options.source, output, error) && !error) {
            throw usage_error("'" + output + "' is the video itself; choose another place for the results");
        }
    }
    return options;
}

class detection_run {
public:
    explicit detection_run(const detect_options& options);
    int run();

private:
    void open_outputs(const AVFrame& first);
    void open_zones();

    bool read(source_picture& picture);
    bool passes(const source_picture& picture);
    std::vector<fire_event> analyse(const source_picture& picture);
    void write_out(const source_picture& picture, const std::vector<fire_event>& events);
    void record(const fire_event& event);
    void finish();
    void print_warnings();

    const detect_options m_options;
    run_summary m_summary;
    video_source m_source;
    picture_size m_size;
    moment m_now;
    progress_line m_progress;

    library_output m_library_output;
    detector_session m_session;
    std::vector<watched_zone> m_zones;
    std::vector<box> m_outlines;

    rate_limiter m_limiter;
    repeat_finder m_repeats;
    event_tracker m_tracker{0};

    annotator m_annotator;
    frame_ptr m_painted;  // the last picture with its boxes
    std::unique_ptr<event_log> m_log;
    std::unique_ptr<snapshot_taker> m_snapshots;
    std::unique_ptr<video_writer> m_video;
};

detection_run::detection_run(const detect_options& options)
    : m_options(without_overwriting(options)),
      m_source(options.source),
      m_progress(m_source.duration()),
      m_library_output(options.library_log, options.library_log_limit),
      m_limiter(options.rate) {}

void detection_run::open_zones() {
    if (m_options.regions.empty()) {
        m_zones.push_back({"picture", std::make_unique<detector_channel>(box{0, 0, m_size.width, m_size.height}), {}});
    }
    for (const region& wanted : m_options.regions) {
        const box place = place_region(wanted, m_size);
        const std::string name = "region " + std::to_string(m_zones.size() + 1);
        m_zones.push_back({name, std::make_unique<detector_channel>(place), {}});
        m_outlines.push_back(place);
    }
    for (const watched_zone& zone : m_zones) {
        if (m_options.grade) zone.channel->set_grade(*m_options.grade);
    }
    m_tracker = event_tracker(m_zones.size());
}

void detection_run::open_outputs(const AVFrame& first) {
    const std::string events = events_path(m_options);
    std::error_code error;
    fs::create_directories(m_options.folder, error);
    if (error || !fs::is_directory(m_options.folder)) {
        throw io_error("cannot make the folder '" + m_options.folder + "': " + error.message());
    }
    if (events != "-") {
        m_log = std::make_unique<event_log>(events);
    } else if (m_library_output.own_output() < 0) {
        throw io_error("--events -: standard output is closed");
    } else {
        m_log = std::make_unique<event_log>(m_library_output.own_output(), "standard output");
    }
    m_snapshots = std::make_unique<snapshot_taker>(m_options.folder);
    if (m_options.write_video) {
        encoder_settings settings;
        settings.rate = m_source.nominal_rate();
        m_painted = m_annotator.paint(first, {}, {});
        m_video = std::make_unique<video_writer>(in_folder(m_options, k_video_name), *m_painted, settings);
    }
}

bool detection_run::read(source_picture& picture) {
    const stopwatch::running timer(m_summary.decode);
    return m_source.next(picture);
}

bool detection_run::passes(const source_picture& picture) {
    if (!m_limiter.passes(picture.seconds)) {
        ++m_summary.thinned;
        return false;
    }
    const stopwatch::running timer(m_summary.convert);
    if (!m_repeats.repeats(*picture.frame)) return true;
    ++m_summary.repeated;
    return false;
}

std::vector<fire_event> detection_run::analyse(const source_picture& picture) {
    std::vector<fire_event> events;
    for (size_t i = 0; i < m_zones.size(); ++i) {
        watched_zone& zone = m_zones[i];
        zone.boxes = zone.channel->analyse(*picture.frame, m_summary.convert, m_summary.detect);
        if (auto event = m_tracker.observe(i, m_now, zone.boxes)) events.push_back(*event);
    }
    m_library_output.check_limit();
    return events;
}

void detection_run::record(const fire_event& event) {
    const std::string snapshot = m_snapshots->take(event, m_painted);
    m_log->write(event_line(event, m_zones[event.zone].name, m_size, snapshot));
}

void detection_run::write_out(const source_picture& picture, const std::vector<fire_event>& events) {
    const stopwatch::running timer(m_summary.output);
    if (m_video || !events.empty()) {
        std::vector<box> boxes;
        for (const watched_zone& zone : m_zones) boxes.insert(boxes.end(), zone.boxes.begin(), zone.boxes.end());
        m_painted = m_annotator.paint(*picture.frame, m_outlines, boxes);
    }
    for (const fire_event& event : events) record(event);
    if (m_video) m_video->write(*m_painted, picture.seconds);
}

void detection_run::finish() {
    m_progress.clear();
    for (const fire_event& event : m_tracker.finish(m_now)) record(event);
    if (m_video) {
        const stopwatch::running timer(m_summary.output);
        m_video->close();
    }
}

void detection_run::print_warnings() {
    for (const std::string& warning : m_source.take_warnings()) {
        m_progress.clear();
        std::fprintf(stderr, "orva-fire: warning: %s\n", warning.c_str());
    }
}

int detection_run::run() {
    {
        const stopwatch::running timer(m_summary.whole);
        source_picture picture;
        while (read(picture)) {
            print_warnings();
            m_now = {picture.index, picture.seconds};
            if (picture.index == 0) {
                m_size = {picture.frame->width, picture.frame->height};
                open_zones();
                open_outputs(*picture.frame);
            }
            ++m_summary.frames;
            const std::vector<fire_event> events = passes(picture) ? analyse(picture) : std::vector<fire_event>();
            write_out(picture, events);
            m_progress.show(m_summary.frames, picture.seconds);
        }
        finish();
    }
    const std::string problem = m_source.problem();
    if (m_summary.frames == 0) {
        throw io_error(problem.empty() ? "'" + m_options.source + "': no picture could be decoded"
                                       : problem + "; no picture could be decoded");
    }
    m_summary.video_seconds = m_now.seconds + 1 / m_source.nominal_rate();
    m_summary.reports = m_tracker.reports();
    m_summary.first_report = m_tracker.first_report();
    std::fprintf(stderr, "orva-fire: %s", summary_text(m_summary).c_str());
    std::fprintf(stderr, "  written   %s\n", m_options.folder.c_str());
    if (!problem.empty()) throw io_error(problem + "; what was found up to there is written");
    return m_tracker.reports() > 0 ? k_exit_fire : k_exit_nothing;
}

}  // namespace

int run_detect(const detect_options& options) {
    return detection_run(options).run();
}

}  // namespace orva_fire
