// When a zone's reports become an event: enough fresh ones in a sliding window, and one event until they stay away.
#ifndef ORVA_APPS_ORVA_FIRE_CONFIRMATION_H
#define ORVA_APPS_ORVA_FIRE_CONFIRMATION_H

#include <deque>
#include <optional>
#include <vector>

#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

struct confirm_settings {
    double seconds = 0;  // time that fresh reports must cover; 0: the first report is an event
    double cooldown =
        0;  // an event ends once nothing was reported for so long; 0: with the first picture without boxes
};

// The window is this many times the seconds that must be covered: a small flame is found again in every second or third
// look only, and a window as long as the seconds would never be full. On half of the recordings of docs/detection.md,
// factors from 3 on found more fires than shorter ones, and longer ones let in more false reports for nothing.
const double k_window_factor = 4;

// Half a second is the most that lost no fire of that half, and it left 4 of 6 false reports; see docs/detection.md.
const double k_default_confirm = 0.5;
const double k_default_cooldown = 10;

// One zone's reports over time. A fresh report covers its own picture and the six after it, in which the library
// repeats it without looking, so a fire that is found again as soon as that is possible covers all the time. Pictures
// that only hold a report for longer than that cover nothing: the library looked and found no fire. A picture stands
// for the time since the one before it, a second at most.
//
// The cooldown delays the end of an event and never its start: a fire that comes back in time continues the event, and
// one that comes back later is a new event that has to be confirmed anew.
class confirmation {
public:
    explicit confirmation(const confirm_settings& settings) : m_settings(settings) {}

    // The answer for one picture. seconds: its time, not smaller than the last. Returns what belongs to the open event:
    // the boxes that are reported, or were reported last; an empty list while there is no event. To be handed on to an
    // event_tracker as it is.
    std::vector<box> observe(double seconds, const zone_answer& answer);

    // Forgets what was covered, as the zone does after a gap or a reconnect. An open event stays open for its cooldown.
    void restart();

    // Seconds of the window that are covered at the moment.
    double covered() const { return m_covered; }

private:
    struct stretch {
        double end, length;
    };

    void cover(double seconds, bool fresh);
    void follow(double seconds, const zone_answer& answer);

    confirm_settings m_settings;
    std::deque<stretch> m_stretches;  // covered pictures in the window
    double m_covered = 0;
    int m_frozen_left = 0;  // pictures that the last fresh report still covers
    std::optional<double> m_last;
    bool m_open = false;
    double m_reported = 0;  // when the open event had boxes last
    std::vector<box> m_boxes;
};

}  // namespace orva_fire

#endif
