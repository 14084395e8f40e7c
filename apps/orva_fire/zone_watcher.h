// Looks at one zone: cuts out its tiles, converts them, passes them to the library's channels, and joins the answers.
#ifndef ORVA_APPS_ORVA_FIRE_ZONE_WATCHER_H
#define ORVA_APPS_ORVA_FIRE_ZONE_WATCHER_H

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "apps/orva_fire/aged_channel.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/nv21.h"
#include "apps/orva_fire/stopwatch.h"
#include "apps/orva_fire/tiling.h"

namespace orva_fire {

struct watch_settings {
    std::optional<int> grade;  // 0 to 100; none: the library's own
    tile_grid tiles;
    double max_age = 0;  // seconds for which evidence is kept; 0: without limit
};

// What a zone reports for one picture.
struct zone_answer {
    std::vector<box> boxes;  // in source pixels, joined where tiles overlap
    bool fresh = false;      // at least one tile's boxes are new, not held from earlier pictures
};

class zone_watcher {
public:
    // parts: the zone's rectangles in source pixels (place_zone). The library must be initialised.
    // Throws usage_error (tile) and io_error. Channels are opened with the first picture.
    zone_watcher(const std::vector<box>& parts, const watch_settings& settings);
    ~zone_watcher();

    // Passes one source picture. seconds: its time, growing from picture to picture; a step of more than k_longest_gap,
    // or one backwards, starts the zone afresh. The watches run while it converts and while it detects.
    // The picture needs no memory of its own: an AVFrame that only points at somebody's planes will do.
    zone_answer observe(const AVFrame& picture, double seconds, stopwatch& converting, stopwatch& detecting);

    // Forgets all evidence, as after a reconnect. The next picture is the first one again.
    void restart() { m_plan.restart(); }

    // Told of each tile's converted picture before it is analysed, with what was done to its channels before.
    // An empty function: nobody.
    using listener = std::function<void(size_t tile, const age_plan::step& step, nv21_picture& picture)>;
    void set_listener(listener told) { m_told = std::move(told); }

    // What is looked at, one box for each tile, in source pixels.
    const std::vector<box>& tiles() const { return m_tiles; }

private:
    struct tile_state;

    std::vector<box> m_tiles;
    std::vector<std::unique_ptr<tile_state>> m_states;
    age_plan m_plan;
    listener m_told;
};

}  // namespace orva_fire

#endif
