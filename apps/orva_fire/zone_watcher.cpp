#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

// A tile's converter serves both channels behind `channel`: the conversion costs more than the detection.
struct zone_watcher::tile_state {
    tile_state(const box& where, std::optional<int> grade) : converter(where), channel(converter.size(), grade) {}

    nv21_converter converter;
    aged_channel channel;
};

zone_watcher::zone_watcher(const std::vector<box>& parts, const watch_settings& settings) : m_plan(settings.max_age) {
    for (const box& part : parts) {
        const std::vector<box> tiles = tile(part, settings.tiles);
        m_tiles.insert(m_tiles.end(), tiles.begin(), tiles.end());
    }
    for (const box& where : m_tiles) m_states.push_back(std::make_unique<tile_state>(where, settings.grade));
}

zone_watcher::~zone_watcher() = default;

zone_answer zone_watcher::observe(const AVFrame& picture, double seconds, stopwatch& converting, stopwatch& detecting) {
    const age_plan::step step = m_plan.next(seconds);
    zone_answer answer;
    std::vector<std::vector<box>> lists;
    for (const auto& state : m_states) state->channel.prepare(step);
    for (size_t i = 0; i < m_states.size(); ++i) {
        tile_state& state = *m_states[i];
        nv21_picture* seen = nullptr;
        {
            const stopwatch::running timer(converting);
            seen = &state.converter.convert(picture);
        }
        if (m_told) m_told(i, step, *seen);
        const stopwatch::running timer(detecting);
        const channel_answer found = state.channel.analyse(*seen);
        answer.fresh = answer.fresh || found.fresh;
        lists.emplace_back();
        for (const box& b : found.boxes) lists.back().push_back(to_source(b, seen->size(), m_tiles[i]));
    }
    answer.boxes = merge_boxes(lists);
    return answer;
}

}  // namespace orva_fire
