// Where an MQTT broker is, as it stands on the command line.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_ADDRESS_H
#define ORVA_APPS_ORVA_FIRE_MQTT_ADDRESS_H

#include <string>

namespace orva_fire {

struct mqtt_address {
    bool tls = false;
    std::string host;
    int port = 0;
    std::string user;                  // empty: the broker wants none
    std::string prefix = "orva-fire";  // topics begin with it

    // For messages: no user, no prefix.
    std::string shown() const;
};

// Reads mqtt://[USER@]HOST[:PORT][/PREFIX] or mqtts://..., USER with %XX where it holds bytes that have a meaning
// there, HOST also as [::1]. Throws usage_error, which does not repeat a password that stands in the address.
mqtt_address parse_mqtt_address(const std::string& text);

// Complains about a text that topics cannot begin with; empty if there is nothing to complain about.
std::string check_topic_prefix(const std::string& prefix);

}  // namespace orva_fire

#endif
