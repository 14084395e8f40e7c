// Turns the boxes of one picture after the other into events: a report starts, changes and ends. Knows no library, no
// video and no file, only numbers.
#ifndef ORVA_APPS_ORVA_FIRE_EVENT_TRACKER_H
#define ORVA_APPS_ORVA_FIRE_EVENT_TRACKER_H

#include <cstdint>
#include <optional>
#include <vector>

#include "apps/orva_fire/geometry.h"

namespace orva_fire {

enum class event_kind { start, update, end };

// Why a report ended: it is no longer seen; there are no more pictures; there were none for a while.
enum class event_end { gone, input_ended, source_lost };

// The moment of one picture.
struct moment {
    int64_t frame = 0;
    double seconds = 0;
};

struct fire_event {
    event_kind kind = event_kind::start;
    int id = 0;       // one per report, from 1, over all zones
    size_t zone = 0;  // index of the zone that reports
    moment at;
    std::vector<box> boxes;  // in source pixels; at the end those that were reported last
    moment started;
    moment largest_at;
    box largest;                        // the largest box of the report so far
    bool grew = false;                  // this event brought the largest box
    event_end ended = event_end::gone;  // of an end only
};

class event_tracker {
public:
    explicit event_tracker(size_t zones) : m_zones(zones) {}

    // The answer for one picture in one zone. Returns an event if something changed.
    std::optional<fire_event> observe(size_t zone, const moment& at, const std::vector<box>& boxes);

    // Ends what is still reported, in the order of the zones: there are no more pictures, or there was a gap.
    std::vector<fire_event> finish(const moment& at, event_end reason = event_end::input_ended);

    // Reports started so far, and the moment of the first.
    int reports() const { return m_last_id; }
    const std::optional<moment>& first_report() const { return m_first_report; }

private:
    struct zone_state {
        bool open = false;
        fire_event last;
    };

    fire_event start(size_t zone, const moment& at, const std::vector<box>& boxes);
    static fire_event update(zone_state& state, const moment& at, const std::vector<box>& boxes);
    static fire_event end(zone_state& state, const moment& at, event_end reason);

    std::vector<zone_state> m_zones;
    int m_last_id = 0;
    std::optional<moment> m_first_report;
};

}  // namespace orva_fire

#endif
