#include "apps/orva_fire/scoring.h"

#include <algorithm>
#include <limits>

namespace orva_fire {

std::optional<double> fire_score::delay() const {
    if (!found) return std::nullopt;
    return std::max(0.0, *found - label.from);
}

bool clip_scorer::noted::hits(double seconds, const std::vector<box>& boxes) const {
    if (seconds < from - k_label_slack || seconds > to + k_label_slack) return false;
    return std::any_of(boxes.begin(), boxes.end(), [&](const box& b) { return share_a_pixel(b, where); });
}

clip_scorer::clip_scorer(const labelled_clip& clip, picture_size size) {
    for (const labelled_fire& fire : clip.fires) {
        m_noted.push_back(
            {fire.from, fire.to.value_or(std::numeric_limits<double>::infinity()), place_label(fire, size)});
        m_score.fires.push_back({fire, std::nullopt});
    }
}

void clip_scorer::observe(double seconds, const std::vector<box>& boxes) {
    ++m_score.pictures;
    const bool burns = std::any_of(m_noted.begin(), m_noted.end(),
                                   [&](const noted& n) { return n.from <= seconds && seconds <= n.to; });
    m_score.burning += burns ? 1 : 0;
    const bool started = !m_open && !boxes.empty();
    m_open = !boxes.empty();
    if (boxes.empty()) return;

    ++m_score.reported;
    m_score.burning_reported += burns ? 1 : 0;
    if (!m_score.first_report) m_score.first_report = seconds;
    bool hit = false;
    for (size_t i = 0; i < m_noted.size(); ++i) {
        if (!m_noted[i].hits(seconds, boxes)) continue;
        hit = true;
        if (!m_score.fires[i].found) m_score.fires[i].found = seconds;
    }
    if (started && !hit) m_score.false_alarms.push_back(seconds);
}

// The length without the noted fires and their slack, each second counted once.
double clip_scorer::quiet_time(double end) const {
    std::vector<noted> fires = m_noted;
    std::sort(fires.begin(), fires.end(), [](const noted& a, const noted& b) { return a.from < b.from; });
    double quiet = 0, reached = 0;
    for (const noted& fire : fires) {
        quiet += std::max(0.0, std::min(fire.from - k_label_slack, end) - reached);
        reached = std::max(reached, fire.to + k_label_slack);
    }
    return quiet + std::max(0.0, end - reached);
}

clip_score clip_scorer::finish(double end) {
    m_score.seconds = end;
    m_score.quiet_seconds = quiet_time(end);
    return m_score;
}

void total_score::add(const clip_score& score) {
    ++clips;
    clips_with_false_alarms += score.false_alarms.empty() ? 0 : 1;
    false_alarms += static_cast<int>(score.false_alarms.size());
    quiet_hours += score.quiet_seconds / 3600;
    for (const fire_score& fire : score.fires) {
        ++fires;
        if (!fire.found) continue;
        ++found;
        delays.push_back(*fire.delay());
    }
}

}  // namespace orva_fire
