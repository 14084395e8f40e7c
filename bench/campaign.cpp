#include "bench/campaign.h"

#include <thread>

#include "bench/floor.h"

namespace bench {

namespace {

const std::size_t k_own_frames = 3;  // of each cold channel

// Frames of a channel's own: copies, so that no two channels share a cache line.
std::vector<scene> own_frames(const scene& s, int channels) {
    std::vector<scene> copies(static_cast<std::size_t>(channels));
    for (std::size_t c = 0; c < copies.size(); ++c) {
        for (std::size_t i = 0; i < k_own_frames; ++i) copies[c].frames.push_back(s.frames[(c + i) % s.frames.size()]);
    }
    return copies;
}

void play_rounds(contender& who, const std::vector<int>& handles, const std::vector<scene>& frames, std::size_t first,
                 std::size_t end, int rounds, std::vector<double>* times) {
    fd_result result;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t c = first; c < end; ++c) {
            const fd_yuv_frame frame = frames[c].frame(static_cast<std::size_t>(round));
            const std::int64_t before = spent_ns();
            who.play(handles[c], frame, &result);
            if (times != nullptr) times->push_back(spent_since_ns(before));
        }
    }
}

std::vector<int> open_channels(contender& who, int channels) {
    std::vector<int> handles;
    for (int i = 0; i < channels; ++i) handles.push_back(who.open());
    return handles;
}

void close_channels(contender& who, const std::vector<int>& handles) {
    for (int handle : handles) who.close(handle);
}

unsigned char volatile sink;  // keeps the floor's reads alive

std::int64_t last_mark;
std::vector<double>* stage_times;

void mark_stage(stage ended) {
    const std::int64_t now = now_ns();
    stage_times[ended].push_back(static_cast<double>(now - last_mark));
    last_mark = now_ns();
}

}  // namespace

percentiles percentiles_of(const std::vector<double>& values) {
    double sum = 0;
    for (double value : values) sum += value;
    const double count = values.empty() ? 1.0 : static_cast<double>(values.size());
    return {sum / count, quantile(values, 0.5), quantile(values, 0.99), quantile(values, 0.999)};
}

std::vector<double> play_cold(contender& who, const scene& s, int channels, int warm_rounds, int rounds) {
    const std::vector<scene> frames = own_frames(s, channels);
    const std::vector<int> handles = open_channels(who, channels);
    std::vector<double> times;
    play_rounds(who, handles, frames, 0, handles.size(), warm_rounds, nullptr);
    play_rounds(who, handles, frames, 0, handles.size(), rounds, &times);
    close_channels(who, handles);
    return times;
}

double floor_warm_ns(const scene& s) {
    std::vector<unsigned char> previous(static_cast<std::size_t>(s.pixels()));
    std::vector<double> times;
    for (std::size_t i = 0; i < 400; ++i) {
        const fd_yuv_frame frame = s.frame(i);
        const std::int64_t before = spent_ns();
        sink = touch_frame(frame, previous.data());
        times.push_back(spent_since_ns(before));
    }
    return median(times);
}

double floor_cold_ns(const scene& s, int channels) {
    const std::vector<scene> frames = own_frames(s, channels);
    std::vector<std::vector<unsigned char>> previous(frames.size(),
                                                     std::vector<unsigned char>(static_cast<std::size_t>(s.pixels())));
    std::vector<double> times;
    for (std::size_t round = 0; round < 20; ++round) {
        for (std::size_t c = 0; c < frames.size(); ++c) {
            const fd_yuv_frame frame = frames[c].frame(round);
            const std::int64_t before = spent_ns();
            sink = touch_frame(frame, previous[c].data());
            times.push_back(spent_since_ns(before));
        }
    }
    return median(times);
}

thread_gain two_threads(contender& who, const scene& s, int channels, int attempts) {
    const std::vector<scene> frames = own_frames(s, channels);
    const std::vector<int> handles = open_channels(who, channels);
    const std::size_t half = handles.size() / 2;
    const int rounds = 20;
    play_rounds(who, handles, frames, 0, handles.size(), 52, nullptr);
    thread_gain gain;
    for (int i = 0; i < attempts; ++i) {
        std::vector<double> alone;
        std::vector<double> together[2];
        const std::int64_t begun = now_ns();
        play_rounds(who, handles, frames, 0, handles.size(), rounds, &alone);
        const std::int64_t halfway = now_ns();
        std::thread other([&] { play_rounds(who, handles, frames, half, handles.size(), rounds, &together[1]); });
        play_rounds(who, handles, frames, 0, half, rounds, &together[0]);
        other.join();
        gain.by_wall_clock.push_back(static_cast<double>(halfway - begun) / static_cast<double>(now_ns() - halfway));
        together[0].insert(together[0].end(), together[1].begin(), together[1].end());
        gain.by_processor_time.push_back(2 * percentiles_of(alone).mean / percentiles_of(together[0]).mean);
    }
    close_channels(who, handles);
    return gain;
}

weighed_frame weigh(const part& frame, const part& against) {
    const plan p = {54, 5, 2, 5, 1e9};
    const std::vector<timing> times = measure({frame, against}, p);
    return {median(times[0].frames_ns), ratio(times[0], times[1]).mid};
}

std::vector<double> time_open(contender& who, int times) {
    std::vector<double> result;
    for (int i = 0; i < times; ++i) {
        const std::int64_t before = now_ns();
        const int handle = who.open();
        result.push_back(static_cast<double>(now_ns() - before));
        who.close(handle);
    }
    return result;
}

std::vector<double> time_init(const six_functions& functions, int times) {
    std::vector<double> result;
    for (int i = 0; i < times; ++i) {
        functions.uninit();
        const std::int64_t before = now_ns();
        functions.init();
        result.push_back(static_cast<double>(now_ns() - before));
    }
    return result;
}

std::vector<double> time_stages(contender& who, const scene& s, int frames) {
    std::vector<std::vector<double>> times(k_stage_count);
    if (!who.watch_stages(nullptr)) return std::vector<double>();
    const int handle = who.open();
    fd_result result;
    for (int i = 0; i < 60 + frames; ++i) {
        if (i == 60) {
            stage_times = times.data();
            who.watch_stages(mark_stage);
        }
        last_mark = now_ns();
        who.play(handle, s.frame(static_cast<std::size_t>(i)), &result);
    }
    who.watch_stages(nullptr);
    who.close(handle);
    std::vector<double> medians;
    for (const std::vector<double>& one : times) medians.push_back(one.empty() ? -1.0 : median(one));
    return medians;
}

}  // namespace bench
