// Whatever takes messages for MQTT.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_SINK_H
#define ORVA_APPS_ORVA_FIRE_MQTT_SINK_H

#include <cstdint>

#include "apps/orva_fire/mqtt_messages.h"

namespace orva_fire {

class mqtt_sink {
public:
    virtual ~mqtt_sink() = default;

    // To be delivered in this order, once or, if a connection broke, more often. minor: may be lost before others.
    virtual void send(const mqtt_message& message, bool minor) = 0;

    // To be kept by the broker for whoever comes later: the newest text of each topic.
    virtual void keep(const mqtt_message& message) = 0;

    // Messages of send() that will never be delivered, so far.
    virtual int64_t lost() const = 0;
};

}  // namespace orva_fire

#endif
