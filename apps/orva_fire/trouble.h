// Notices when the detector cannot see: from the pictures themselves, from their times, and from their absence.
#ifndef ORVA_APPS_ORVA_FIRE_TROUBLE_H
#define ORVA_APPS_ORVA_FIRE_TROUBLE_H

#include <array>
#include <deque>
#include <optional>
#include <vector>

#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {

// The worst first: of several at once, the first is reported.
enum class trouble_reason { absent, frozen, dark, washed_out, no_colour, too_slow };
const int k_trouble_reasons = 6;

// A short name for events, "no_colour", and a sentence for people that says what it means for the detector.
const char* trouble_name(trouble_reason reason);
const char* trouble_sentence(trouble_reason reason);

// Trouble starts, or ends. When the reason changes, the old one ends and the new one starts at one moment.
struct trouble_event {
    bool started = false;
    trouble_reason reason = trouble_reason::absent;
    double seconds = 0;  // when it was noticed, or was over for long enough
    double since = 0;    // when it began; it was not noticed before it had lasted for a while
};

// What a picture looks like as a whole: numbers of a picture scaled to 64 x 36 by area, so that noise averages out.
struct picture_look {
    double bright = 0;   // luma from 0 (black) to 255 (white) that 99 of 100 points stay below or at
    double clipped = 0;  // share of points at luma 250 and more
    double colour = 0;   // distance from grey, in steps of chroma, that 99 of 100 points stay below or at
};

class picture_gauge {
public:
    // Takes any format. Throws io_error if it cannot be converted.
    picture_look measure(const AVFrame& picture);

private:
    scaler m_scaler;
};

// One condition over time. It is raised after it was true without a break for `onset` seconds and dropped after it was
// false without a break for `relief` seconds.
class slow_switch {
public:
    slow_switch(double onset, double relief) : m_onset(onset), m_relief(relief) {}

    void observe(bool condition, double seconds);
    bool raised() const { return m_raised; }
    double since() const { return m_since; }

private:
    double m_onset, m_relief;
    bool m_raised = false;
    double m_since = 0;               // when the condition became true
    std::optional<double> m_changed;  // when the condition last left the switch's state
};

class trouble_watcher {
public:
    trouble_watcher();

    // One picture of the source, before any is left out. seconds: its time, growing. repeated: it only repeats the
    // picture before (repeat_finder). Measures two pictures a second at most.
    std::vector<trouble_event> observe(const AVFrame& picture, double seconds, bool repeated);

    // No picture came up to now. To be called about once a second while a live source is silent; seconds goes on as the
    // pictures' times do. A silence in the times of a file is found by observe itself.
    std::vector<trouble_event> no_picture(double seconds);

    // What is reported now, if anything.
    std::optional<trouble_reason> current() const { return m_current; }

private:
    slow_switch& of(trouble_reason reason) { return m_switches[static_cast<size_t>(reason)]; }
    bool raised(trouble_reason reason) const { return m_switches[static_cast<size_t>(reason)].raised(); }
    void look_at(const AVFrame& picture, double seconds);
    void count(double seconds);
    std::vector<trouble_event> changes(double seconds);

    std::array<slow_switch, k_trouble_reasons> m_switches;
    picture_gauge m_gauge;
    std::optional<double> m_first, m_last, m_measured;
    std::deque<double> m_times;  // of the pictures in the window in which the rate is counted
    std::optional<trouble_reason> m_current;
    double m_current_since = 0;
};

}  // namespace orva_fire

#endif
