// A clock that adds up the time of one kind of work.
#ifndef ORVA_APPS_ORVA_FIRE_STOPWATCH_H
#define ORVA_APPS_ORVA_FIRE_STOPWATCH_H

#include <chrono>

namespace orva_fire {

class stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(m_total).count(); }

    // Runs the watch from its construction to its end.
    class running {
    public:
        explicit running(stopwatch& watch) : m_watch(watch), m_start(clock::now()) {}
        ~running() { m_watch.m_total += clock::now() - m_start; }
        running(const running&) = delete;
        running& operator=(const running&) = delete;

    private:
        using clock = std::chrono::steady_clock;
        stopwatch& m_watch;
        clock::time_point m_start;
    };

private:
    std::chrono::steady_clock::duration m_total{};
};

}  // namespace orva_fire

#endif
