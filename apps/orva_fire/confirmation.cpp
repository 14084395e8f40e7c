#include "apps/orva_fire/confirmation.h"

#include <algorithm>

namespace orva_fire {
namespace {

const double k_longest_picture = 1;

// Sums of time stamps miss whole numbers by rounding; a microsecond is no reason to wait for another picture.
const double k_rounding = 1e-6;

}  // namespace

void confirmation::restart() {
    m_stretches.clear();
    m_covered = 0;
    m_frozen_left = 0;
    m_last.reset();
}

void confirmation::cover(double seconds, bool fresh) {
    const double length = m_last ? std::clamp(seconds - *m_last, 0.0, k_longest_picture) : 0;
    m_last = seconds;
    const bool covered = fresh || m_frozen_left > 0;
    if (covered) m_stretches.push_back({seconds, length});
    m_frozen_left = fresh ? k_frozen_pictures : std::max(0, m_frozen_left - 1);

    const double begin = seconds - k_window_factor * m_settings.seconds;
    while (!m_stretches.empty() && m_stretches.front().end <= begin + k_rounding) m_stretches.pop_front();
    // Added up anew each time: a running sum would drift over months.
    m_covered = 0;
    for (const stretch& s : m_stretches) m_covered += s.length;
}

void confirmation::follow(double seconds, const zone_answer& answer) {
    if (!answer.boxes.empty()) {
        const bool enough = m_covered >= m_settings.seconds - k_rounding;
        if (!m_open && !(answer.fresh && enough)) return;
        m_open = true;
        m_reported = seconds;
        m_boxes = answer.boxes;
    } else if (m_open && seconds - m_reported >= m_settings.cooldown - k_rounding) {
        m_open = false;
        m_boxes.clear();
    }
}

std::vector<box> confirmation::observe(double seconds, const zone_answer& answer) {
    cover(seconds, answer.fresh);
    follow(seconds, answer);
    return m_boxes;
}

}  // namespace orva_fire
