#include "apps/orva_fire/event_tracker.h"

namespace orva_fire {

std::optional<fire_event> event_tracker::observe(size_t zone, const moment& at, const std::vector<box>& boxes) {
    zone_state& state = m_zones.at(zone);
    if (!state.open) {
        if (boxes.empty()) return std::nullopt;
        return start(zone, at, boxes);
    }
    if (boxes.empty()) return end(state, at, event_end::gone);
    if (boxes == state.last.boxes) return std::nullopt;
    return update(state, at, boxes);
}

fire_event event_tracker::start(size_t zone, const moment& at, const std::vector<box>& boxes) {
    fire_event event;
    event.kind = event_kind::start;
    event.id = ++m_last_id;
    event.zone = zone;
    event.at = event.started = event.largest_at = at;
    event.boxes = boxes;
    event.largest = largest_box(boxes);
    event.grew = true;
    if (!m_first_report) m_first_report = at;
    m_zones[zone] = {true, event};
    return event;
}

fire_event event_tracker::update(zone_state& state, const moment& at, const std::vector<box>& boxes) {
    fire_event& event = state.last;
    const box largest = largest_box(boxes);
    event.kind = event_kind::update;
    event.at = at;
    event.boxes = boxes;
    event.grew = area(largest) > area(event.largest);
    if (event.grew) {
        event.largest = largest;
        event.largest_at = at;
    }
    return event;
}

fire_event event_tracker::end(zone_state& state, const moment& at, event_end reason) {
    fire_event event = state.last;
    event.kind = event_kind::end;
    event.at = at;
    event.grew = false;
    event.ended = reason;
    state = zone_state();
    return event;
}

std::vector<fire_event> event_tracker::finish(const moment& at, event_end reason) {
    std::vector<fire_event> events;
    for (zone_state& state : m_zones) {
        if (state.open) events.push_back(end(state, at, reason));
    }
    return events;
}

}  // namespace orva_fire
