#include "gst/fire_watch.h"

#include <algorithm>

namespace orva_gst {

using orva_fire::box;
using orva_fire::fire_event;
using orva_fire::moment;

namespace {

double rate_of(double interval) {
    return interval > 0 ? 1 / interval : 0;
}

orva_fire::zone_spec whole_picture() {
    orva_fire::zone_spec zone;
    zone.name = "picture";
    zone.parts = {orva_fire::parse_region("0,0,100%,100%")};
    return zone;
}

fire_settings with_zones(fire_settings settings) {
    if (settings.zones.empty()) settings.zones = {whole_picture()};
    return settings;
}

}  // namespace

fire_watch::fire_watch(const fire_settings& settings, orva_fire::picture_size size, int reports)
    : m_settings(with_zones(settings)), m_size(size), m_reports_before(reports), m_limiter(rate_of(settings.interval)) {
    (void)count_channels(m_settings.zones, size, m_settings.tiles,
                         m_settings.max_age > 0);  // deliberate: for its errors
    for (const orva_fire::zone_spec& zone : m_settings.zones) add_zone(zone);
    m_tracker = orva_fire::event_tracker(m_zones.size());
}

void fire_watch::add_zone(const orva_fire::zone_spec& zone) {
    orva_fire::watch_settings settings;
    settings.grade = zone.grade ? zone.grade : m_settings.grade;
    settings.tiles = m_settings.tiles;
    settings.max_age = m_settings.max_age;
    m_zones.push_back({std::make_unique<orva_fire::zone_watcher>(place_zone(zone, m_size), settings),
                       std::make_unique<orva_fire::confirmation>(m_settings.confirm)});
    m_states.emplace_back();
    m_states.back().name = zone.name;
}

fire_event fire_watch::numbered(fire_event event) const {
    event.id += m_reports_before;
    return event;
}

std::optional<fire_event> fire_watch::look(size_t zone, const AVFrame& picture, const moment& at) {
    watched_zone& watched = m_zones[zone];
    zone_state& state = m_states[zone];
    const orva_fire::zone_answer answer = watched.watcher->observe(picture, at.seconds, m_converting, m_detecting);
    const std::vector<box> confirmed = watched.confirmation->observe(at.seconds, answer);
    state.boxes = answer.boxes;
    state.confirmed = !confirmed.empty();
    const double needed = m_settings.confirm.seconds;
    state.confidence = state.confirmed || needed <= 0 ? 1 : std::min(1.0, watched.confirmation->covered() / needed);
    const std::optional<fire_event> event = m_tracker.observe(zone, at, confirmed);
    if (event) state.report = event->kind == orva_fire::event_kind::end ? 0 : event->id + m_reports_before;
    return event;
}

std::vector<fire_event> fire_watch::observe(const AVFrame& picture, const moment& at) {
    std::vector<fire_event> events;
    const bool gap =
        m_last && (at.seconds < m_last->seconds || at.seconds - m_last->seconds > orva_fire::k_longest_gap);
    if (gap) events = restart();
    m_last = at;
    if (!m_limiter.passes(at.seconds)) return events;
    const AVFrame& copy = m_copier.copy(picture);
    if (m_repeats.repeats(copy)) return events;
    for (size_t zone = 0; zone < m_zones.size(); ++zone) {
        const std::optional<fire_event> event = look(zone, copy, at);
        if (event && event->kind != orva_fire::event_kind::update) events.push_back(numbered(*event));
    }
    return events;
}

std::vector<fire_event> fire_watch::restart() {
    std::vector<fire_event> events;
    for (const fire_event& event : m_tracker.finish(m_last.value_or(moment()))) events.push_back(numbered(event));
    for (watched_zone& zone : m_zones) {
        zone.watcher->restart();
        zone.confirmation = std::make_unique<orva_fire::confirmation>(m_settings.confirm);
    }
    for (zone_state& state : m_states) {
        const std::string name = state.name;
        state = zone_state();
        state.name = name;
    }
    m_limiter = orva_fire::rate_limiter(rate_of(m_settings.interval));
    m_repeats = orva_fire::repeat_finder();
    m_last.reset();
    return events;
}

}  // namespace orva_gst
