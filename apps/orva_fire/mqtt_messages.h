// What is said over MQTT: topics, and texts beside those of events. Knows no broker.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_MESSAGES_H
#define ORVA_APPS_ORVA_FIRE_MQTT_MESSAGES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orva_fire {

struct mqtt_message {
    std::string topic;
    std::string text;
};

// Who speaks, and where it is heard.
struct mqtt_speaker {
    std::string prefix = "orva-fire";         // of all topics
    std::string discovery = "homeassistant";  // of the messages that home automation finds it by; empty: none
    std::string camera;
    std::string version;  // of the program
    std::vector<std::string> zones;
    bool watches_trouble = true;
    bool test = false;  // a drill
};

// A name as one level of a topic: /, +, # and control characters become _, and so does all that is not ASCII if it is
// no UTF-8. A name that was changed gets a number made of the old one, so that two names never become one.
std::string topic_level(const std::string& name);

// A name as home automation wants it in identifiers: letters, digits, - and _ only. Changed names as above.
std::string identifier(const std::string& name);

// PREFIX/CAMERA/LEAF and PREFIX/CAMERA/zone/ZONE.
std::string topic_of(const mqtt_speaker& speaker, const std::string& leaf);
std::string zone_topic(const mqtt_speaker& speaker, const std::string& zone);

// The counters and the state of everything, as JSON.
struct mqtt_state {
    int64_t pictures = 0;
    int events = 0;
    std::optional<int64_t> last_event;  // milliseconds since 1970; live sources only
    std::vector<std::string> burning;   // names of the zones in which fire is reported now
    std::string trouble;                // why the detector cannot see, or empty
    int64_t lost = 0;                   // lines of events that never reached the broker
};
std::string state_text(const mqtt_speaker& speaker, const mqtt_state& state);

// Whether fire is reported in one zone, as JSON.
std::string zone_text(const mqtt_speaker& speaker, const std::string& zone, bool burning);

// By these home automation finds the camera: a device with a sensor of fire for each zone, one of trouble, and the
// counters. An empty text takes back what another run has said.
std::vector<mqtt_message> discovery_messages(const mqtt_speaker& speaker);

}  // namespace orva_fire

#endif
