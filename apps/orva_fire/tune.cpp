#include "apps/orva_fire/tune.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "apps/orva_fire/clip_player.h"
#include "apps/orva_fire/command_line.h"
#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/look_options.h"
#include "apps/orva_fire/statistics.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const int k_usual_needed = 35;

const char k_footer[] =
    "\nEvery grade that makes a difference is tried at once on the same pictures. With --labels, a table as for "
    "orva-fire "
    "eval, the fires are marked and delays and false reports are counted.\n"
    "\nExamples:\n"
    "  orva-fire tune kitchen.mp4 --chart kitchen.svg\n"
    "  orva-fire tune recordings/ --labels recordings/fires.csv --confirm 1\n";

// The answers of one recording while it is played.
class tune_run {
public:
    tune_run(const labelled_clip& clip, const tune_options& options)
        : m_clip(clip), m_options(options), m_reports(grade_steps().size()) {}

    void look(const source_picture& picture);
    void pass(const source_picture& picture);
    void finish(tuned_clip& result);

private:
    void open(picture_size size);

    const labelled_clip& m_clip;
    const tune_options& m_options;
    std::unique_ptr<grade_sweep> m_sweep;
    std::vector<confirmation> m_confirmations;
    std::vector<clip_scorer> m_scorers;
    std::vector<std::vector<box>> m_boxes;
    std::vector<std::vector<time_span>> m_reports;
};

void tune_run::open(picture_size size) {
    m_sweep = std::make_unique<grade_sweep>(size, m_options.watch);
    m_confirmations.assign(m_reports.size(), confirmation(m_options.confirm));
    m_scorers.assign(m_reports.size(), clip_scorer(m_clip, size));
    m_boxes.resize(m_reports.size());
}

void tune_run::look(const source_picture& picture) {
    if (!m_sweep) open({picture.frame->width, picture.frame->height});
    const std::vector<zone_answer> answers = m_sweep->observe(*picture.frame, picture.seconds);
    for (size_t i = 0; i < answers.size(); ++i) {
        const bool open_before = !m_boxes[i].empty();
        m_boxes[i] = m_confirmations[i].observe(picture.seconds, answers[i]);
        if (!open_before && !m_boxes[i].empty()) m_reports[i].push_back({picture.seconds, picture.seconds});
    }
    pass(picture);
}

void tune_run::pass(const source_picture& picture) {
    for (size_t i = 0; i < m_scorers.size(); ++i) {
        m_scorers[i].observe(picture.seconds, m_boxes[i]);
        if (!m_boxes[i].empty()) m_reports[i].back().to = picture.seconds;
    }
}

void tune_run::finish(tuned_clip& result) {
    for (clip_scorer& scorer : m_scorers) result.scores.push_back(scorer.finish(result.seconds));
    result.reports = m_reports;
}

std::string name_of(const grade_step& step) {
    return step.first == step.last ? std::to_string(step.first)
                                   : std::to_string(step.first) + "-" + std::to_string(step.last);
}

// Totals of one step over all recordings.
struct step_total {
    int reports = 0, clips = 0;
    std::vector<double> first_reports;
    total_score score;

    std::optional<double> delay(bool labelled) const { return median(labelled ? score.delays : first_reports); }
};

step_total total_of(const std::vector<tuned_clip>& clips, size_t step) {
    step_total total;
    for (const tuned_clip& each : clips) {
        if (each.scores.empty()) continue;
        total.reports += static_cast<int>(each.reports[step].size());
        total.clips += each.reports[step].empty() ? 0 : 1;
        if (!each.reports[step].empty()) total.first_reports.push_back(each.reports[step].front().from);
        total.score.add(each.scores[step]);
    }
    return total;
}

std::string seconds_text(const std::optional<double>& seconds) {
    char text[32] = "-";
    if (seconds) std::snprintf(text, sizeof text, "%.1f s", *seconds);
    return text;
}

// A recording that has labels gets them; the others are taken to have none, which is said.
std::vector<labelled_clip> clips_of(const tune_options& options) {
    std::vector<labelled_clip> known;
    if (!options.labels.empty()) known = read_labels(options.labels);
    std::vector<labelled_clip> clips;
    for (const std::string& path : find_recordings(options.source)) {
        const auto same = [&](const labelled_clip& clip) {
            std::error_code error;
            return fs::equivalent(clip.path, path, error) && !error;
        };
        const auto found = std::find_if(known.begin(), known.end(), same);
        labelled_clip clip;
        if (found != known.end()) clip = *found;
        clip.file = clip.path = path;
        if (found == known.end() && !options.labels.empty()) {
            std::fprintf(stderr, "orva-fire: warning: '%s' has no line in the labels and is left out\n", path.c_str());
            continue;
        }
        clips.push_back(clip);
    }
    if (clips.empty())
        throw usage_error("'" + options.labels + "' names none of the recordings in '" + options.source + "'");
    return clips;
}

void write_chart(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw io_error("cannot write '" + path + "'");
}

}  // namespace

tuned_clip tune_clip(const labelled_clip& clip, const tune_options& options) {
    tuned_clip result;
    result.clip = clip;
    tune_run run(clip, options);
    try {
        const played_clip played = play_clip(
            clip.path, options.rate, [&](const source_picture& picture) { run.look(picture); },
            [&](const source_picture& picture) { run.pass(picture); });
        result.seconds = played.seconds;
        result.problem = played.problem;
        run.finish(result);
    } catch (const io_error& error) {
        result.problem = error.what();
    }
    return result;
}

std::string tune_text(const std::vector<tuned_clip>& clips, bool labelled) {
    double seconds = 0;
    for (const tuned_clip& each : clips) seconds += each.seconds;
    char line[200];
    std::snprintf(line, sizeof line,
                  "%zu recordings, %.1f minutes\n\n  grade   of 50  reports  in recordings  first (median)%s\n",
                  clips.size(), seconds / 60, labelled ? "   fires  found  delay (median)  false" : "");
    std::string text = line;
    const std::vector<grade_step> steps = grade_steps();
    for (size_t i = 0; i < steps.size(); ++i) {
        const step_total total = total_of(clips, i);
        std::snprintf(line, sizeof line, "%c %-7s %5d %8d %14d %15s", steps[i].needed == k_usual_needed ? '*' : ' ',
                      name_of(steps[i]).c_str(), steps[i].needed, total.reports, total.clips,
                      seconds_text(total.delay(false)).c_str());
        text += line;
        if (labelled) {
            std::snprintf(line, sizeof line, " %7d %6d %15s %6d", total.score.fires, total.score.found,
                          seconds_text(total.delay(true)).c_str(), total.score.false_alarms);
            text += line;
        }
        text += "\n";
    }
    return text + "\n* what the library takes by itself\n";
}

tune_chart tune_chart_of(const std::vector<tuned_clip>& clips, bool labelled) {
    tune_chart chart;
    chart.labelled = labelled;
    for (const tuned_clip& each : clips) {
        if (each.scores.empty()) continue;
        chart_clip drawn;
        drawn.name = each.clip.file;
        drawn.seconds = each.seconds;
        drawn.reports = each.reports;
        for (const labelled_fire& fire : each.clip.fires) {
            drawn.fires.push_back(
                {std::min(fire.from, each.seconds), std::min(fire.to.value_or(each.seconds), each.seconds)});
        }
        chart.clips.push_back(drawn);
    }
    const std::vector<grade_step> steps = grade_steps();
    for (size_t i = 0; i < steps.size(); ++i) {
        const step_total total = total_of(clips, i);
        chart.steps.push_back({name_of(steps[i]), steps[i].needed == k_usual_needed,
                               labelled ? total.score.false_alarms : total.reports, total.delay(labelled)});
    }
    return chart;
}

int run_tune(const tune_options& options) {
    const std::vector<labelled_clip> clips = clips_of(options);
    const bool labelled = !options.labels.empty();
    library_output output("", k_library_log_limit);
    const detector_session session;
    std::vector<tuned_clip> results;
    bool whole = true;
    for (const labelled_clip& clip : clips) {
        std::fprintf(stderr, "orva-fire: %zu of %zu, %s\n", results.size() + 1, clips.size(), clip.file.c_str());
        results.push_back(tune_clip(clip, options));
        const std::string& problem = results.back().problem;
        if (!problem.empty()) std::fprintf(stderr, "orva-fire: %s\n", problem.c_str());
        whole = whole && problem.empty();
    }
    if (output.own_output() < 0) throw io_error("standard output is closed");
    const std::string table = tune_text(results, labelled);
    event_log(output.own_output(), "standard output").write(table.substr(0, table.size() - 1));
    if (!options.chart.empty()) write_chart(options.chart, draw_tune_chart(tune_chart_of(results, labelled)));
    return whole ? 0 : k_exit_io;
}

int tune_command(int argc, const char* const* argv) {
    tune_options options;
    CLI::App app("shows what each sensitivity would report in recordings", "orva-fire tune");
    set_manners(app, k_footer);
    app.add_option("source", options.source, "a recording, or a folder with recordings")
        ->required()
        ->type_name("SOURCE");
    app.add_option("--labels", options.labels, "table of recordings and their fires, as for orva-fire eval")
        ->type_name("FILE");
    app.add_option("--chart", options.chart, "draw it into this file (SVG)")->type_name("FILE");
    look_options look;
    add_look_options(app, look, false);
    if (const std::optional<int> leave = read_command_line(app, argc, argv)) return *leave;
    options.watch = watch_settings_of(look);
    options.confirm = {look.confirm, look.cooldown};
    options.rate = look.rate;
    return run_tune(options);
}

}  // namespace orva_fire
