// Lines that wait until they can be sent; a bounded number of them.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_QUEUE_H
#define ORVA_APPS_ORVA_FIRE_MQTT_QUEUE_H

#include <cstdint>
#include <deque>

#include "apps/orva_fire/mqtt_messages.h"

namespace orva_fire {

class mqtt_queue {
public:
    explicit mqtt_queue(size_t limit) : m_limit(limit) {}

    // Adds a message at the end. If the queue is full, one is lost: the new one if it is minor, else the oldest minor
    // one, else the oldest. False if one was lost.
    bool add(const mqtt_message& message, bool minor);

    // Puts one that was taken back in front of all others, also beyond the limit.
    void put_back(const mqtt_message& message) { m_waiting.push_front({message, false}); }

    bool empty() const { return m_waiting.empty(); }
    size_t size() const { return m_waiting.size(); }

    // The oldest, which leaves the queue. It must not be empty.
    mqtt_message take();

    int64_t lost() const { return m_lost; }

private:
    struct entry {
        mqtt_message message;
        bool minor;
    };

    const size_t m_limit;
    std::deque<entry> m_waiting;
    int64_t m_lost = 0;
};

}  // namespace orva_fire

#endif
