// Notices a source that gives the detector too few pictures a second.
#ifndef ORVA_APPS_ORVA_FIRE_RATE_WATCH_H
#define ORVA_APPS_ORVA_FIRE_RATE_WATCH_H

#include <string>

namespace orva_fire {

// Below this many pictures a second a fire takes noticeably longer to be confirmed.
const double k_lowest_good_rate = 10;

// What a rate means for the confirmation of a fire, as a sentence.
std::string low_rate_warning(double rate);

// Counts the pictures that are passed to the detector over the first seconds.
class rate_watch {
public:
    // seconds: of a picture that was passed. Returns a warning once, or an empty text.
    std::string observe(double seconds);

private:
    bool m_started = false, m_done = false;
    double m_first = 0;
    int m_count = 0;
};

}  // namespace orva_fire

#endif
