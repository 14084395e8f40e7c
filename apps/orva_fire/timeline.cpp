#include "apps/orva_fire/timeline.h"

#include <algorithm>

namespace orva_fire {
namespace {

const double k_most_steps = 600;

void raise(report_sample& held, const report_sample& sample) {
    held.motion = std::max(held.motion, sample.motion);
    held.nearness = std::max(held.nearness, sample.nearness);
}

}  // namespace

void timeline::add(size_t zone, double seconds, const report_sample& sample) {
    while (seconds / m_step >= k_most_steps) widen();
    const auto at = static_cast<size_t>(seconds / m_step);
    std::vector<report_sample>& samples = m_zones[zone];
    if (samples.size() <= at) samples.resize(at + 1);
    raise(samples[at], sample);
}

void timeline::widen() {
    m_step *= 2;
    for (std::vector<report_sample>& samples : m_zones) {
        for (size_t i = 0; i < samples.size(); ++i) {
            const report_sample held = samples[i];
            samples[i] = report_sample();
            raise(samples[i / 2], held);
        }
        samples.resize((samples.size() + 1) / 2);
    }
}

}  // namespace orva_fire
