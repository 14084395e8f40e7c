#include "apps/orva_fire/report_builder.h"

#include <algorithm>
#include <utility>

#include "apps/orva_fire/picture_file.h"
#include "apps/orva_fire/reasons.h"

namespace orva_fire {
namespace {

// Endless streams end in a page that can still be opened.
const size_t k_most_events = 200;
const size_t k_most_pictured = 24;
const size_t k_most_troubles = 200;
const int k_picture_columns = 480;

}  // namespace

report_builder::report_builder(std::vector<report_zone> zones)
    : m_zones(std::move(zones)), m_open(m_zones.size()), m_timeline(m_zones.size()), m_misses(m_zones.size()) {}

void report_builder::observe(size_t zone, const picture_evidence& seen, const box& area, nv21_picture& picture) {
    report_sample sample;
    sample.motion = 1.0 * seen.changed / std::max(1, seen.size.width * seen.size.height);
    for (const box_evidence& b : seen.boxes) sample.nearness = std::max(sample.nearness, closeness(b));
    m_timeline.add(zone, seen.at.seconds, sample);
    m_misses.observe(zone, seen, area, raised(zone), picture);
}

report_event* report_builder::listed(int id) {
    const auto found = std::find_if(m_events.rbegin(), m_events.rend(), [id](const auto& e) { return e.id == id; });
    return found == m_events.rend() ? nullptr : &*found;
}

void report_builder::add(const fire_event& event, const AVFrame& picture_of_it, const video_place& video) {
    if (event.kind == event_kind::start) {
        ++m_open[event.zone];
        if (m_events.size() == k_most_events) {
            ++m_left_out;
            return;
        }
        report_event made;
        made.id = event.id;
        made.zone = event.zone;
        made.from = event.at.seconds;
        made.video = video.name;
        made.video_start = video.start;
        m_events.push_back(made);
    }
    if (event.kind == event_kind::end) --m_open[event.zone];
    report_event* shown = listed(event.id);
    if (!shown) return;
    shown->to = event.at.seconds;
    shown->largest = event.largest;
    shown->largest_at = event.largest_at.seconds;
    shown->input_ended = event.kind == event_kind::end && event.ended == event_end::input_ended;
    if (static_cast<size_t>(shown - m_events.data()) < k_most_pictured) picture(*shown, event, picture_of_it);
}

void report_builder::picture(report_event& shown, const fire_event& event, const AVFrame& picture) {
    if (event.kind == event_kind::start) shown.start_picture = thumbnail(picture, k_picture_columns);
    if (event.grew) m_largest[event.id] = share_picture(picture);
    const auto largest = m_largest.find(event.id);
    if (event.kind != event_kind::end || largest == m_largest.end()) return;
    shown.largest_picture = thumbnail(*largest->second, k_picture_columns);
    m_largest.erase(largest);
}

void report_builder::start_trouble(const std::string& text, double seconds) {
    end_trouble(seconds);
    m_in_trouble = m_troubles.size() < k_most_troubles;
    if (m_in_trouble) m_troubles.push_back({seconds, seconds, text});
}

void report_builder::end_trouble(double seconds) {
    if (m_in_trouble) m_troubles.back().to = std::max(m_troubles.back().from, seconds);
    m_in_trouble = false;
}

report_data report_builder::finish(report_data about) {
    end_trouble(about.seconds);
    about.step = m_timeline.step();
    for (size_t i = 0; i < m_zones.size(); ++i) {
        m_zones[i].samples = m_timeline.samples(i);
    }
    about.troubles = std::move(m_troubles);
    about.zones = std::move(m_zones);
    about.events = std::move(m_events);
    about.events_left_out = m_left_out;
    about.misses = m_misses.finish();
    return about;
}

}  // namespace orva_fire
