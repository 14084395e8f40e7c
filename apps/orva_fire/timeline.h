// A course over time in a fixed amount of memory: when the steps run out, they become twice as long.
#ifndef ORVA_APPS_ORVA_FIRE_TIMELINE_H
#define ORVA_APPS_ORVA_FIRE_TIMELINE_H

#include <vector>

#include "apps/orva_fire/report_data.h"

namespace orva_fire {

// The courses of several zones, all with the same steps.
class timeline {
public:
    explicit timeline(size_t zones) : m_zones(zones) {}

    // The larger of each value and what the step holds already. seconds: not negative.
    void add(size_t zone, double seconds, const report_sample& sample);

    double step() const { return m_step; }
    const std::vector<report_sample>& samples(size_t zone) const { return m_zones[zone]; }

private:
    void widen();

    double m_step = 0.125;
    std::vector<std::vector<report_sample>> m_zones;
};

}  // namespace orva_fire

#endif
