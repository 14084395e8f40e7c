#include "apps/orva_fire/grade_sweep.h"

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/nv21.h"

namespace orva_fire {

// N = (103 - grade) / 6 + 30 rounded down, as the library's header says.
std::vector<grade_step> grade_steps() {
    std::vector<grade_step> steps;
    for (int grade = 0; grade <= 100; ++grade) {
        const int needed = (103 - grade) / 6 + 30;
        if (steps.empty() || steps.back().needed != needed) steps.push_back({grade, grade, needed});
        steps.back().last = grade;
    }
    return steps;
}

struct grade_sweep::tile_state {
    explicit tile_state(const box& where) : converter(where) {
        for (const grade_step& step : grade_steps()) channels.emplace_back(converter.size(), step.first);
    }

    nv21_converter converter;
    std::vector<aged_channel> channels;  // one for each step
};

grade_sweep::grade_sweep(picture_size size, const watch_settings& settings)
    : m_tiles(tile({0, 0, size.width, size.height}, settings.tiles)), m_plan(settings.max_age) {
    const size_t needed = m_tiles.size() * grade_steps().size() * (settings.max_age > 0 ? 2 : 1);
    if (needed > FD_MAX_CHANNELS) {
        throw usage_error("trying all grades needs " + std::to_string(needed) + " channels of the library, which has " +
                          std::to_string(FD_MAX_CHANNELS) + ". Use fewer tiles" +
                          (settings.max_age > 0 ? ", or --max-age 0" : ""));
    }
    for (const box& where : m_tiles) m_states.push_back(std::make_unique<tile_state>(where));
}

grade_sweep::~grade_sweep() = default;

std::vector<zone_answer> grade_sweep::observe(const AVFrame& picture, double seconds) {
    const age_plan::step step = m_plan.next(seconds);
    const size_t steps = grade_steps().size();
    std::vector<zone_answer> answers(steps);
    std::vector<std::vector<std::vector<box>>> lists(steps, std::vector<std::vector<box>>(m_states.size()));
    for (size_t i = 0; i < m_states.size(); ++i) {
        tile_state& state = *m_states[i];
        nv21_picture& seen = state.converter.convert(picture);
        for (size_t k = 0; k < steps; ++k) {
            state.channels[k].prepare(step);
            const channel_answer found = state.channels[k].analyse(seen);
            answers[k].fresh = answers[k].fresh || found.fresh;
            for (const box& b : found.boxes) lists[k][i].push_back(to_source(b, seen.size(), m_tiles[i]));
        }
    }
    for (size_t k = 0; k < steps; ++k) answers[k].boxes = merge_boxes(lists[k]);
    return answers;
}

}  // namespace orva_fire
