#include "apps/orva_fire/aged_channel.h"

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

std::unique_ptr<fresh_channel> aged_channel::open() const {
    auto channel = std::make_unique<fresh_channel>(m_seen);
    if (m_grade) channel->set_grade(*m_grade);
    return channel;
}

// Old channels are dropped before new ones are opened: there may be no handle to spare.
void aged_channel::prepare(const age_plan::step& step) {
    if (step.restart) m_older.reset();
    if (step.restart) m_younger.reset();
    if (step.hand_over) m_older = std::move(m_younger);
    if (step.restart) m_older = open();
    if (step.start_younger) m_younger = open();
}

channel_answer aged_channel::analyse(nv21_picture& picture) {
    const channel_answer answer = m_older->analyse(picture);
    if (m_younger) (void)m_younger->analyse(picture);  // deliberate: it only gathers evidence
    return answer;
}

}  // namespace orva_fire
