#include "apps/orva_fire/evaluation.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/clip_player.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/statistics.h"

namespace orva_fire {
namespace {

using json = nlohmann::ordered_json;

// One recording's answers in every way of looking.
class clip_run {
public:
    clip_run(const labelled_clip& clip, const evaluation_settings& settings)
        : m_clip(clip), m_settings(settings), m_confirmations{confirmation(settings.confirm)} {
        for (const double seconds : settings.confirms) {
            m_confirmations.emplace_back(confirm_settings{seconds, settings.confirm.cooldown});
        }
    }

    void look(const source_picture& picture);
    void pass(const source_picture& picture);
    std::vector<clip_score> finish(double seconds);

private:
    void open(picture_size size);

    const labelled_clip& m_clip;
    const evaluation_settings& m_settings;
    std::vector<confirmation> m_confirmations;
    std::unique_ptr<zone_watcher> m_watcher;
    std::unique_ptr<nv21_converter> m_converter;
    std::vector<std::unique_ptr<fresh_channel>> m_channels;
    std::vector<clip_scorer> m_scorers;
    std::vector<std::vector<box>> m_boxes;  // in each way, as they are now
    stopwatch m_watch;
};

void clip_run::open(picture_size size) {
    const box whole{0, 0, size.width, size.height};
    m_watcher = std::make_unique<zone_watcher>(std::vector<box>{whole}, m_settings.watch);
    m_converter = std::make_unique<nv21_converter>(whole);
    for (const int grade : m_settings.grades) {
        m_channels.push_back(std::make_unique<fresh_channel>(m_converter->size()));
        m_channels.back()->set_grade(grade);
    }
    m_scorers.assign(m_confirmations.size() + m_channels.size(), clip_scorer(m_clip, size));
    m_boxes.resize(m_scorers.size());
}

void clip_run::look(const source_picture& picture) {
    const picture_size size{picture.frame->width, picture.frame->height};
    if (!m_watcher) open(size);
    const zone_answer answer = m_watcher->observe(*picture.frame, picture.seconds, m_watch, m_watch);
    auto boxes = m_boxes.begin();
    for (confirmation& each : m_confirmations) *boxes++ = each.observe(picture.seconds, answer);
    if (!m_channels.empty()) {
        nv21_picture& seen = m_converter->convert(*picture.frame);
        for (const std::unique_ptr<fresh_channel>& channel : m_channels) {
            boxes->clear();
            for (const box& b : channel->analyse(seen).boxes) {
                boxes->push_back(to_source(b, seen.size(), {0, 0, size.width, size.height}));
            }
            ++boxes;
        }
    }
    pass(picture);
}

// A picture that was left out shows what the one before showed.
void clip_run::pass(const source_picture& picture) {
    for (size_t i = 0; i < m_scorers.size(); ++i) m_scorers[i].observe(picture.seconds, m_boxes[i]);
}

std::vector<clip_score> clip_run::finish(double seconds) {
    std::vector<clip_score> scores;
    for (clip_scorer& scorer : m_scorers) scores.push_back(scorer.finish(seconds));
    return scores;
}

// --- text ------------------------------------------------------------------------------------------------------------

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
    char text[400];
    va_list values;
    va_start(values, pattern);
    std::vsnprintf(text, sizeof text, pattern, values);
    va_end(values);
    return text;
}

std::string tiles_text(const tile_grid& tiles) {
    if (tiles.automatic) return "automatic tiles";
    if (tiles == tile_grid()) return "whole picture";
    return format("%d x %d tiles", tiles.columns, tiles.rows);
}

std::string settings_text(const evaluation_settings& settings) {
    const std::string grade =
        settings.watch.grade ? "grade " + std::to_string(*settings.watch.grade) : "the library's own grade";
    return tiles_text(settings.watch.tiles) + ", " + grade +
           format(", confirm %g s, cooldown %g s, max-age %g s", settings.confirm.seconds, settings.confirm.cooldown,
                  settings.watch.max_age) +
           (settings.rate > 0 ? format(", %g pictures a second", settings.rate) : "");
}

std::string seconds_text(const std::optional<double>& seconds) {
    return seconds ? format("%.1f s", *seconds) : "-";
}

std::string share_text(int hits, int trials) {
    const interval range = share_interval(hits, trials);
    if (trials == 0) return "-";
    return format("%.0f %% (%.0f to %.0f)", 100.0 * hits / trials, 100 * range.low, 100 * range.high);
}

std::string rate_text(int count, double hours) {
    if (hours <= 0) return "-";
    const interval range = count_interval(count);
    return format("%.1f (%.1f to %.1f)", count / hours, range.low / hours, range.high / hours);
}

std::string total_line(const char* set, const total_score& total) {
    return format("  %-5s %10d %6d %6d  %-18s %8s %9s %7d %8.3f  %s\n", set, total.clips, total.fires, total.found,
                  share_text(total.found, total.fires).c_str(), seconds_text(median(total.delays)).c_str(),
                  seconds_text(quantile(total.delays, 0.9)).c_str(), total.false_alarms, total.quiet_hours,
                  rate_text(total.false_alarms, total.quiet_hours).c_str());
}

const char k_head[] =
    "  set   recordings  fires  found  share (95 %)         median   9 of 10   false    hours  false an hour (95 %)\n";

std::string way_text(const std::vector<clip_evaluation>& clips, size_t way) {
    const total_score tuning = sum_up(clips, way, true, false), test = sum_up(clips, way, false, true);
    std::string text = k_head;
    if (tuning.clips > 0) text += total_line("tune", tuning);
    if (test.clips > 0) text += total_line("test", test);
    if (tuning.clips > 0 && test.clips > 0) text += total_line("both", sum_up(clips, way, true, true));
    return text;
}

std::string details_text(const std::vector<clip_evaluation>& clips) {
    std::string text;
    for (const clip_evaluation& each : clips) {
        if (!each.problem.empty()) text += "  not read: " + each.problem + "\n";
        if (each.scores.empty()) continue;
        for (const fire_score& fire : each.scores[0].fires) {
            if (!fire.found) text += "  missed: " + each.clip.file + format(", fire at %.1f s\n", fire.label.from);
        }
        for (const double at : each.scores[0].false_alarms) {
            text += "  false: " + each.clip.file + format(" at %.1f s\n", at);
        }
    }
    return text;
}

// --- JSON ------------------------------------------------------------------------------------------------------------

json number_or_null(const std::optional<double>& number) {
    return number ? json(*number) : json(nullptr);
}

json score_json(const std::string& way, const clip_score& score) {
    json fires = json::array();
    for (const fire_score& fire : score.fires) {
        fires.push_back({{"from", fire.label.from},
                         {"to", number_or_null(fire.label.to)},
                         {"found", number_or_null(fire.found)},
                         {"delay", number_or_null(fire.delay())}});
    }
    return {{"way", way},
            {"first_report", number_or_null(score.first_report)},
            {"pictures", score.pictures},
            {"reported", score.reported},
            {"burning", score.burning},
            {"burning_reported", score.burning_reported},
            {"fires", fires},
            {"false_alarms", score.false_alarms}};
}

json clip_json(const clip_evaluation& each, const std::vector<std::string>& ways) {
    json results = json::array();
    for (size_t i = 0; i < each.scores.size(); ++i) results.push_back(score_json(ways[i], each.scores[i]));
    const bool read = !each.scores.empty();
    return {{"file", each.clip.file},
            {"set", each.clip.tuning ? "tune" : "test"},
            {"group", each.clip.group},
            {"problem", each.problem},
            {"seconds", read ? each.scores[0].seconds : 0},
            {"quiet_seconds", read ? each.scores[0].quiet_seconds : 0},
            {"results", results}};
}

json interval_json(const interval& range, double scale) {
    return json::array({range.low * scale, range.high * scale});
}

json total_json(const std::string& way, const char* set, const total_score& total) {
    const bool hours = total.quiet_hours > 0;
    return {{"way", way},
            {"set", set},
            {"recordings", total.clips},
            {"fires", total.fires},
            {"found", total.found},
            {"found_share_95", interval_json(share_interval(total.found, total.fires), 1)},
            {"median_delay", number_or_null(median(total.delays))},
            {"nine_of_ten_within", number_or_null(quantile(total.delays, 0.9))},
            {"false_alarms", total.false_alarms},
            {"recordings_with_false_alarms", total.clips_with_false_alarms},
            {"quiet_hours", total.quiet_hours},
            {"false_per_hour_95",
             hours ? interval_json(count_interval(total.false_alarms), 1 / total.quiet_hours) : json(nullptr)}};
}

}  // namespace

std::vector<std::string> evaluated_ways(const evaluation_settings& settings) {
    std::vector<std::string> names{"program"};
    for (const double seconds : settings.confirms) names.push_back(format("confirm %g s", seconds));
    for (const int grade : settings.grades) names.push_back("grade " + std::to_string(grade));
    return names;
}

clip_evaluation evaluate_clip(const labelled_clip& clip, const evaluation_settings& settings) {
    clip_evaluation result;
    result.clip = clip;
    clip_run run(clip, settings);
    try {
        const played_clip played = play_clip(
            clip.path, settings.rate, [&](const source_picture& picture) { run.look(picture); },
            [&](const source_picture& picture) { run.pass(picture); });
        result.problem = played.problem;
        result.scores = run.finish(played.seconds);
    } catch (const io_error& error) {
        result.problem = error.what();
    }
    return result;
}

total_score sum_up(const std::vector<clip_evaluation>& clips, size_t way, bool tuning, bool testing) {
    total_score total;
    for (const clip_evaluation& each : clips) {
        const bool wanted = each.clip.tuning ? tuning : testing;
        if (wanted && way < each.scores.size()) total.add(each.scores[way]);
    }
    return total;
}

std::string evaluation_text(const std::vector<clip_evaluation>& clips, const evaluation_settings& settings) {
    double seconds = 0;
    for (const clip_evaluation& each : clips) seconds += each.scores.empty() ? 0 : each.scores[0].seconds;
    std::string text = format("%zu recordings, %.1f minutes\n", clips.size(), seconds / 60);
    const std::vector<std::string> ways = evaluated_ways(settings);
    for (size_t way = 0; way < ways.size(); ++way) {
        const bool bare = way > settings.confirms.size();
        text += "\n" + ways[way] +
                (way == 0 ? ": " + settings_text(settings)
                 : bare   ? ", the library's bare answers"
                          : "") +
                "\n";
        text += way_text(clips, way);
    }
    const std::string details = details_text(clips);
    return details.empty() ? text : text + "\nprogram:\n" + details;
}

std::string evaluation_json(const std::vector<clip_evaluation>& clips, const evaluation_settings& settings) {
    const std::vector<std::string> ways = evaluated_ways(settings);
    json recordings = json::array(), totals = json::array();
    for (const clip_evaluation& each : clips) recordings.push_back(clip_json(each, ways));
    for (size_t way = 0; way < ways.size(); ++way) {
        totals.push_back(total_json(ways[way], "tune", sum_up(clips, way, true, false)));
        totals.push_back(total_json(ways[way], "test", sum_up(clips, way, false, true)));
        totals.push_back(total_json(ways[way], "both", sum_up(clips, way, true, true)));
    }
    const json whole = {
        {"schema", 1}, {"settings", settings_text(settings)}, {"recordings", recordings}, {"totals", totals}};
    return whole.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace orva_fire
