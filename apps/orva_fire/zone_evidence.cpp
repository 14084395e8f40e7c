#include "apps/orva_fire/zone_evidence.h"

#include <utility>

namespace orva_fire {

zone_evidence::zone_evidence(zone_watcher& watcher, const std::optional<int>& grade, const library_output& log,
                             listener told)
    : m_watcher(watcher), m_grade(grade), m_log(log), m_told(std::move(told)), m_tiles(watcher.tiles().size()) {
    m_watcher.set_listener(
        [this](size_t tile, const age_plan::step& step, nv21_picture& picture) { look(tile, step, picture); });
}

zone_evidence::~zone_evidence() {
    m_watcher.set_listener(nullptr);
}

std::unique_ptr<evidence_channel> zone_evidence::open_channel() const {
    auto channel = std::make_unique<evidence_channel>();
    if (m_grade) channel->set_grade(*m_grade);
    return channel;
}

void zone_evidence::look(size_t tile, const age_plan::step& step, nv21_picture& picture) {
    tile_state& state = m_tiles[tile];
    const library_output::pause quiet(m_log);
    if (step.restart) {
        state.older = open_channel();
        state.younger.reset();
        state.stages.restart();
    }
    // The one that takes over has seen the same picture before this one, so the stages go on.
    if (step.hand_over) state.older = std::move(state.younger);
    if (step.start_younger) state.younger = open_channel();
    const picture_evidence& seen = state.older->look(picture, m_at);
    if (state.younger) (void)state.younger->look(picture, m_at);  // deliberate: it only gathers evidence
    m_told({tile, m_watcher.tiles()[tile], picture, seen, state.stages});
}

}  // namespace orva_fire
