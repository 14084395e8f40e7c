// The evidence of one zone: channels that explain beside those that detect, started, dropped and fed alike.
#ifndef ORVA_APPS_ORVA_FIRE_ZONE_EVIDENCE_H
#define ORVA_APPS_ORVA_FIRE_ZONE_EVIDENCE_H

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "apps/orva_fire/evidence.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/stages.h"
#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

class zone_evidence {
public:
    // What was seen in one tile of the zone. The stages can be made while the call lasts.
    struct view {
        size_t tile;
        box area;  // of the tile, in source pixels
        nv21_picture& picture;
        const picture_evidence& seen;
        stage_maker& stages;  // one of make and pass has to be called
    };
    using listener = std::function<void(const view&)>;

    // watcher: outlives this. told: called for each tile of each picture that the watcher observes. log: where the
    // library's lines go, from which those of the channels here are kept away; outlives this.
    zone_evidence(zone_watcher& watcher, const std::optional<int>& grade, const library_output& log, listener told);
    ~zone_evidence();
    zone_evidence(const zone_evidence&) = delete;
    zone_evidence& operator=(const zone_evidence&) = delete;

    // The moment of the picture that the watcher observes next.
    void set_moment(const moment& at) { m_at = at; }

private:
    struct tile_state {
        std::unique_ptr<evidence_channel> older, younger;
        stage_maker stages;
    };

    void look(size_t tile, const age_plan::step& step, nv21_picture& picture);
    std::unique_ptr<evidence_channel> open_channel() const;

    zone_watcher& m_watcher;
    const std::optional<int> m_grade;
    const library_output& m_log;
    const listener m_told;
    std::vector<tile_state> m_tiles;
    moment m_at;
};

}  // namespace orva_fire

#endif
