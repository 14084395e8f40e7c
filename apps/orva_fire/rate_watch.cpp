#include "apps/orva_fire/rate_watch.h"

#include <cstdio>

namespace orva_fire {
namespace {

const double k_watched_seconds = 5;
const int k_pictures_of_a_report = 50;

}  // namespace

std::string low_rate_warning(double rate) {
    char text[256];
    std::snprintf(text, sizeof text,
                  "the detector gets %.1f pictures a second; it is made for 10 to 30. A report needs %d pictures with "
                  "moving fire colour, so it comes %.0f s after the fire at the earliest, not 2 to 5 s",
                  rate, k_pictures_of_a_report, k_pictures_of_a_report / rate);
    return text;
}

std::string rate_watch::observe(double seconds) {
    if (m_done) return {};
    if (!m_started) m_first = seconds;
    m_started = true;
    const double watched = seconds - m_first;
    if (watched < k_watched_seconds) {
        ++m_count;
        return {};
    }
    m_done = true;
    const double rate = m_count / watched;
    // Rounding of time stamps must not make 10 look like less.
    return rate < k_lowest_good_rate * 0.97 ? low_rate_warning(rate) : std::string();
}

}  // namespace orva_fire
