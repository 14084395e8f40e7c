#include "apps/orva_fire/zone_watcher.h"

namespace orva_fire {

age_plan::step age_plan::next(double seconds) {
    step todo;
    const bool gap = m_older && (seconds < m_last || seconds - m_last > k_longest_gap);
    m_last = seconds;
    if (m_older && !gap && m_max_age > 0 && seconds - *m_older >= m_max_age) {
        todo.hand_over = m_younger && seconds - *m_younger < m_max_age;
        m_older = todo.hand_over ? m_younger : std::nullopt;
        m_younger.reset();
    }
    if (!m_older || gap) {
        todo.restart = true;
        m_older = seconds;
        m_younger.reset();
    } else if (m_max_age > 0 && !m_younger && seconds - *m_older >= m_max_age / 2) {
        todo.start_younger = true;
        m_younger = seconds;
    }
    return todo;
}

// A tile's converter serves both of its channels: the conversion costs more than the detection.
struct zone_watcher::tile_state {
    explicit tile_state(const box& where) : converter(where) {}

    nv21_converter converter;
    std::unique_ptr<fresh_channel> older, younger;
};

zone_watcher::zone_watcher(const std::vector<box>& parts, const watch_settings& settings)
    : m_settings(settings), m_plan(settings.max_age) {
    for (const box& part : parts) {
        const std::vector<box> tiles = tile(part, settings.tiles);
        m_tiles.insert(m_tiles.end(), tiles.begin(), tiles.end());
    }
    for (const box& where : m_tiles) m_states.push_back(std::make_unique<tile_state>(where));
}

zone_watcher::~zone_watcher() = default;

std::unique_ptr<fresh_channel> zone_watcher::open_channel(picture_size seen) const {
    auto channel = std::make_unique<fresh_channel>(seen);
    if (m_settings.grade) channel->set_grade(*m_settings.grade);
    return channel;
}

// Old channels are dropped before new ones are opened: there may be no handle to spare.
void zone_watcher::prepare(const age_plan::step& step) {
    for (const auto& state : m_states) {
        if (step.restart) state->older.reset();
        if (step.restart) state->younger.reset();
        if (step.hand_over) state->older = std::move(state->younger);
        const picture_size seen = state->converter.size();
        if (step.restart) state->older = open_channel(seen);
        if (step.start_younger) state->younger = open_channel(seen);
    }
}

zone_answer zone_watcher::observe(const AVFrame& picture, double seconds, stopwatch& converting, stopwatch& detecting) {
    const age_plan::step step = m_plan.next(seconds);
    prepare(step);
    zone_answer answer;
    std::vector<std::vector<box>> lists;
    for (size_t i = 0; i < m_states.size(); ++i) {
        tile_state& state = *m_states[i];
        nv21_picture* seen = nullptr;
        {
            const stopwatch::running timer(converting);
            seen = &state.converter.convert(picture);
        }
        if (m_told) m_told(i, step, *seen);
        const stopwatch::running timer(detecting);
        const channel_answer found = state.older->analyse(*seen);
        if (state.younger) (void)state.younger->analyse(*seen);  // deliberate: it only gathers evidence
        answer.fresh = answer.fresh || found.fresh;
        lists.emplace_back();
        for (const box& b : found.boxes) lists.back().push_back(to_source(b, seen->size(), m_tiles[i]));
    }
    answer.boxes = merge_boxes(lists);
    return answer;
}

}  // namespace orva_fire
