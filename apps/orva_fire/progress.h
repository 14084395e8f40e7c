// The line on a terminal that says how far the work is. On anything else than a terminal nothing is shown.
#ifndef ORVA_APPS_ORVA_FIRE_PROGRESS_H
#define ORVA_APPS_ORVA_FIRE_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace orva_fire {

// The text of the line. done and total in seconds of video; total 0 if it is unknown. elapsed in seconds.
std::string progress_text(int64_t frames, double done, double total, double elapsed);

class progress_line {
public:
    // total: length of the video in seconds, 0 if unknown.
    explicit progress_line(double total);
    ~progress_line() { clear(); }
    progress_line(const progress_line&) = delete;
    progress_line& operator=(const progress_line&) = delete;

    // Shows the line anew, a few times a second at most.
    void show(int64_t frames, double done);

    // Takes the line away, before something else is printed.
    void clear();

private:
    using clock = std::chrono::steady_clock;

    const bool m_terminal;
    const double m_total;
    const clock::time_point m_start;
    clock::time_point m_shown;
    bool m_visible = false;
};

}  // namespace orva_fire

#endif
