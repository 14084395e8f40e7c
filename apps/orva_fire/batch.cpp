#include "apps/orva_fire/batch.h"

#include <cstdio>

#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/stop_signal.h"
#include "apps/orva_fire/summary.h"
#include "apps/orva_fire/task_folder.h"
#include "apps/orva_fire/wall_clock.h"
#include "apps/orva_fire/zones.h"

namespace orva_fire {
namespace {

enum class outcome { done_before, done, failed };

std::vector<int64_t> lengths_of(const std::vector<recording>& recordings) {
    std::vector<int64_t> lengths;
    for (const recording& each : recordings) lengths.push_back(recording_length(each.path));
    return lengths;
}

// All recordings are divided whether they are done or not: what is done grows while other machines work.
std::vector<recording> share_of(const std::vector<recording>& recordings, const shard_choice& choice) {
    if (choice.count == 1) return recordings;
    const std::vector<int> shards = divide(lengths_of(recordings), choice.count);
    std::vector<recording> share;
    for (size_t i = 0; i < recordings.size(); ++i) {
        if (shards[i] == choice.number) share.push_back(recordings[i]);
    }
    return share;
}

void print_plan(const std::vector<recording>& recordings, int shards) {
    const std::vector<int64_t> lengths = lengths_of(recordings);
    const std::vector<int> chosen = divide(lengths, shards);
    for (size_t i = 0; i < recordings.size(); ++i) {
        std::printf("%d\t%.3f\t%s\n", chosen[i], static_cast<double>(lengths[i]) / 1e6, recordings[i].path.c_str());
    }
}

done_record record_of(const recording& wanted, const file_state& state, const std::string& settings) {
    done_record record;
    record.name = wanted.name;
    record.source = state;
    record.settings = settings;
    record.version = ORVA_FIRE_VERSION;
    return record;
}

void note_summary(done_record& record, const run_summary& summary) {
    record.frames = summary.frames;
    record.seconds = summary.video_seconds;
    record.events = summary.reports;
    if (summary.first_report) record.first = summary.first_report->seconds;
    record.took = summary.whole.seconds();
    record.finished = rfc3339(wall_clock_now());
}

// Empty, or why the recording was not read to its end.
std::string look_at(const detect_options& options, run_summary& summary) {
    try {
        (void)run_detect(options, &summary);
    } catch (const io_error& error) {
        return error.what();
    } catch (const usage_error& error) {
        return error.what();  // a region may lie outside of one recording's pictures only
    }
    return {};
}

std::string place_of(const recording& wanted, const batch_options& options) {
    return options.detect.folder + "/" + wanted.name;
}

outcome run_task(const recording& wanted, const batch_options& options) {
    const std::string place = place_of(wanted, options);
    const file_state state = state_of(wanted.path);
    const std::optional<done_record> before = read_done(place);
    if (before && is_done(*before, state, options.settings)) return outcome::done_before;

    task_folder folder(place);
    detect_options one = options.detect;
    one.source.text = wanted.path;
    one.folder = folder.path();
    one.shown_folder = place;
    run_summary summary;
    done_record record = record_of(wanted, state, options.settings);
    record.error = state.size < 0 ? "cannot read '" + wanted.path + "': no such file" : look_at(one, summary);
    // Nothing is kept of a recording that was left before its end because somebody wanted so.
    if (!record.error.empty() && stop_wanted()) throw io_error(record.error);
    if (record.error.empty() && state_of(wanted.path) != state) {
        record.error = "'" + wanted.path + "' changed while it was looked at";
    }
    note_summary(record, summary);
    write_done(folder.path(), record);
    folder.publish();
    if (!record.failed()) return outcome::done;
    std::fprintf(stderr, "orva-fire: %s\n", record.error.c_str());
    return outcome::failed;
}

outcome run_task_or_fail(const recording& wanted, const batch_options& options) {
    try {
        return run_task(wanted, options);
    } catch (const io_error& error) {
        if (stop_wanted()) throw;
        std::fprintf(stderr, "orva-fire: %s\n", error.what());
        return outcome::failed;
    }
}

}  // namespace

int run_batch(const batch_options& options) {
    const std::vector<recording> all = find_recordings(options.search);
    if (all.empty()) throw io_error("there are no recordings, by the endings of their names, in what was named");
    if (options.plan > 0) {
        print_plan(all, options.plan);
        return k_exit_nothing;
    }
    if (!options.detect.zones.empty()) (void)read_zones(options.detect.zones);  // a fault ends all, not each
    const std::vector<recording> share = share_of(all, options.shard);
    size_t count = 0, before = 0, failed = 0;
    for (const recording& each : share) {
        if (stop_wanted()) throw io_error("stopped by a signal before the last recording");
        std::fprintf(stderr, "orva-fire: '%s' (%zu of %zu)\n", each.name.c_str(), ++count, share.size());
        const outcome result = run_task_or_fail(each, options);
        before += result == outcome::done_before;
        failed += result == outcome::failed;
    }
    std::fprintf(stderr, "orva-fire: shard %d of %d: %zu done, %zu done before, %zu failed\n", options.shard.number,
                 options.shard.count, share.size() - before - failed, before, failed);
    return failed > 0 ? k_exit_io : k_exit_nothing;
}

}  // namespace orva_fire
