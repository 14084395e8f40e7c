// How long to wait before a lost connection is tried again.
#ifndef ORVA_APPS_ORVA_FIRE_RECONNECT_H
#define ORVA_APPS_ORVA_FIRE_RECONNECT_H

#include <algorithm>

namespace orva_fire {

// Pauses that double from the first to the longest, and start anew after a success.
class back_off {
public:
    // Seconds, both above 0.
    back_off(double first, double longest) : m_first(first), m_longest(longest), m_next(first) {}

    double next() {
        const double pause = m_next;
        m_next = std::min(m_longest, m_next * 2);
        return pause;
    }
    void succeeded() { m_next = m_first; }

private:
    double m_first, m_longest, m_next;
};

}  // namespace orva_fire

#endif
