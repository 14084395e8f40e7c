// Everything that one element does with its pictures, without GStreamer: zones, repeats, confirmation and events.
#ifndef ORVA_GST_FIRE_WATCH_H
#define ORVA_GST_FIRE_WATCH_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/confirmation.h"
#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/frame_gate.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/stopwatch.h"
#include "apps/orva_fire/zone_watcher.h"
#include "apps/orva_fire/zones.h"
#include "gst/picture_copy.h"

namespace orva_gst {

// What the user set.
struct fire_settings {
    std::optional<int> grade;                 // none: the library's own
    std::vector<orva_fire::zone_spec> zones;  // empty: the whole picture, named "picture"
    orva_fire::tile_grid tiles;
    orva_fire::confirm_settings confirm;
    double max_age = 0;   // seconds for which evidence is kept; 0: without limit
    double interval = 0;  // seconds at least from one picture that is looked at to the next; 0: every picture
};

// What a zone shows now. It stays as it is on pictures that are not looked at.
struct zone_state {
    std::string name;
    std::vector<orva_fire::box> boxes;  // in pixels of the picture
    double confidence = 0;              // of a report that stands: the share of `confirm` that is covered, 1 at most
    bool confirmed = false;             // an event is open
    int report = 0;                     // its number; 0 while there is none
};

class fire_watch {
public:
    // size: of the pictures that will come. reports: how many reports there were before, so that numbers go on.
    // The library must be initialised. Throws usage_error if a zone does not fit the picture.
    fire_watch(const fire_settings& settings, orva_fire::picture_size size, int reports);

    // Looks at one picture, which may only point at planes, unless it only repeats the one before or comes too early.
    // `at.seconds` may go back or leap: then what is open ends, and all evidence is dropped. Returns the starts and
    // ends of reports, in the order of the zones. Throws io_error.
    std::vector<orva_fire::fire_event> observe(const AVFrame& picture, const orva_fire::moment& at);

    // Ends what is open and drops all evidence. The next picture is the first one again.
    std::vector<orva_fire::fire_event> restart();

    const std::vector<zone_state>& zones() const { return m_states; }
    orva_fire::picture_size size() const { return m_size; }

    // Number of the last report that was started.
    int reports() const { return m_reports_before + m_tracker.reports(); }

private:
    struct watched_zone {
        std::unique_ptr<orva_fire::zone_watcher> watcher;
        std::unique_ptr<orva_fire::confirmation> confirmation;
    };

    void add_zone(const orva_fire::zone_spec& zone);
    std::optional<orva_fire::fire_event> look(size_t zone, const AVFrame& picture, const orva_fire::moment& at);
    orva_fire::fire_event numbered(orva_fire::fire_event event) const;

    const fire_settings m_settings;
    const orva_fire::picture_size m_size;
    const int m_reports_before;
    std::vector<watched_zone> m_zones;
    std::vector<zone_state> m_states;
    orva_fire::event_tracker m_tracker{0};
    orva_fire::rate_limiter m_limiter;
    orva_fire::repeat_finder m_repeats;
    picture_copier m_copier;
    std::optional<orva_fire::moment> m_last;
    orva_fire::stopwatch m_converting, m_detecting;  // what the modules measure; nobody reads it here
};

}  // namespace orva_gst

#endif
