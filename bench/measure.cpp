#include "bench/measure.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace bench {

namespace {

struct seat {
    contender* who;
    const scene* what;
    int handle;
    std::size_t frame;
};

void play_one(seat& s) {
    fd_result result;
    s.who->play(s.handle, s.what->frame(s.frame++), &result);
}

void play_turn(seat& s, const plan& p, timing* times) {
    const std::int64_t begun = now_ns();
    for (int i = 0; i < p.settle && static_cast<double>(now_ns() - begun) < p.limit_ns; ++i) play_one(s);
    std::vector<double> turn;
    for (int i = 0; i < p.timed; ++i) {
        const std::int64_t before = spent_ns();
        play_one(s);
        turn.push_back(spent_since_ns(before));
        if (static_cast<double>(now_ns() - begun) > p.limit_ns) break;
    }
    times->frames_ns.insert(times->frames_ns.end(), turn.begin(), turn.end());
    times->block_medians_ns.push_back(median(turn));
}

double cost_of_a_look() {
    std::vector<double> costs;
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t before = spent_ns();
        costs.push_back(static_cast<double>(spent_ns() - before));
    }
    return median(costs);
}

}  // namespace

std::int64_t now_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::int64_t spent_ns() {
    timespec spent;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &spent);
    return static_cast<std::int64_t>(spent.tv_sec) * 1000000000 + spent.tv_nsec;
}

double spent_since_ns(std::int64_t before) {
    static const double own_cost = cost_of_a_look();
    return static_cast<double>(spent_ns() - before) - own_cost;
}

FILE* silence_standard_output() {
    std::fflush(stdout);
    const int own = dup(STDOUT_FILENO);
    const int sink = open("/dev/null", O_WRONLY);
    if (own < 0 || sink < 0 || dup2(sink, STDOUT_FILENO) < 0) {
        std::fprintf(stderr, "standard output cannot be turned away\n");
        std::exit(1);
    }
    close(sink);
    FILE* stream = fdopen(own, "w");
    setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    return stream;
}

double quantile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    const std::size_t last = values.size() - 1;
    const std::size_t index = std::min(last, static_cast<std::size_t>(share * static_cast<double>(values.size())));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index), values.end());
    return values[index];
}

std::vector<timing> measure(const std::vector<contender*>& contenders, const scene& s, const plan& p) {
    std::vector<part> parts;
    for (contender* who : contenders) parts.push_back({who, &s});
    return measure(parts, p);
}

std::vector<timing> measure(const std::vector<part>& parts, const plan& p) {
    std::vector<seat> seats;
    for (const part& one : parts) seats.push_back({one.who, one.what, one.who->open(), 0});
    std::vector<timing> times(parts.size());
    for (seat& one : seats) {
        const std::int64_t begun = now_ns();
        for (int i = 0; i < p.warm_up && static_cast<double>(now_ns() - begun) < p.limit_ns; ++i) play_one(one);
    }
    for (int block = 0; block < p.blocks; ++block) {
        for (std::size_t i = 0; i < seats.size(); ++i) play_turn(seats[i], p, &times[i]);
    }
    for (seat& one : seats) one.who->close(one.handle);
    return times;
}

spread ratio(const timing& slow, const timing& fast) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < std::min(slow.block_medians_ns.size(), fast.block_medians_ns.size()); ++i)
        ratios.push_back(slow.block_medians_ns[i] / fast.block_medians_ns[i]);
    return {quantile(ratios, 0.25), quantile(ratios, 0.5), quantile(ratios, 0.75)};
}

}  // namespace bench
