#include "apps/orva_fire/mqtt_queue.h"

#include <algorithm>
#include <utility>

namespace orva_fire {

bool mqtt_queue::add(const mqtt_message& message, bool minor) {
    const bool full = m_waiting.size() >= m_limit;
    if (full) ++m_lost;
    if (full && minor) return false;
    if (full) {
        const auto oldest_minor =
            std::find_if(m_waiting.begin(), m_waiting.end(), [](const entry& waiting) { return waiting.minor; });
        m_waiting.erase(oldest_minor != m_waiting.end() ? oldest_minor : m_waiting.begin());
    }
    m_waiting.push_back({message, minor});
    return !full;
}

mqtt_message mqtt_queue::take() {
    mqtt_message message = std::move(m_waiting.front().message);
    m_waiting.pop_front();
    return message;
}

}  // namespace orva_fire
