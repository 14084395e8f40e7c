// What came near a report without being one: the moments that a user asks about.
#ifndef ORVA_APPS_ORVA_FIRE_NEAR_MISSES_H
#define ORVA_APPS_ORVA_FIRE_NEAR_MISSES_H

#include <optional>
#include <vector>

#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/nv21.h"
#include "apps/orva_fire/report_data.h"

namespace orva_fire {

// Boxes of a zone that follow each other within two seconds are one miss, shown at its nearest moment. What leads up
// to an event or follows one belongs to that and is no miss. Keeps a small picture for each miss, and few misses.
class miss_finder {
public:
    explicit miss_finder(size_t zones);

    // What one channel of a zone saw. area: the part of the source that its pictures show; raised: an event of the zone
    // is open. Called for each picture in the order of time.
    void observe(size_t zone, const picture_evidence& seen, const box& area, bool raised, nv21_picture& picture);

    // There are no more pictures: the misses, the nearest first.
    std::vector<report_miss> finish();

private:
    struct episode {
        report_miss miss;
        frame_ptr picture;
    };
    struct zone_state {
        std::optional<episode> open;
        double last_raised = -1e9;
    };

    void close(zone_state& state);
    void keep(episode&& closed);

    std::vector<zone_state> m_zones;
    std::vector<episode> m_kept;  // the nearest first
};

}  // namespace orva_fire

#endif
