// The options of what is said over MQTT.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_OPTIONS_H
#define ORVA_APPS_ORVA_FIRE_MQTT_OPTIONS_H

#include <string>

#include "apps/orva_fire/mqtt_connection.h"

namespace CLI {
class App;
}

namespace orva_fire {

struct mqtt_options {
    std::string url;  // empty: nothing is said
    std::string password_file;
    std::string password;  // from the environment; never shown
    std::string ca_file;
    std::string discovery = "homeassistant";  // prefix of the topics of discovery
    bool no_discovery = false;
};

// Adds --mqtt and what belongs to it.
void add_mqtt_options(CLI::App& app, mqtt_options& options);

// Takes the password out of the environment, so that no program started from here has it.
void take_mqtt_password(mqtt_options& options);

// How to connect; options.url must not be empty. Throws usage_error and io_error, none of which shows a password.
mqtt_login login_of(const mqtt_options& options);

}  // namespace orva_fire

#endif
