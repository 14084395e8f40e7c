#include "apps/orva_fire/mqtt_messages.h"

#include <mosquitto.h>

#include <cctype>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/wall_clock.h"

namespace orva_fire {
namespace {

using json = nlohmann::ordered_json;

const int k_schema_version = 1;

std::string text_of(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

// FNV-1a with 32 bits, as eight digits.
std::string number_of(const std::string& name) {
    uint32_t sum = 2166136261u;
    for (const char c : name) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619u;
    char text[16];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(sum));
    return text;
}

template <typename Allowed>
std::string with_allowed(const std::string& name, Allowed allowed) {
    std::string text = name;
    for (char& c : text) {
        if (!allowed(static_cast<unsigned char>(c))) c = '_';
    }
    return text == name && !name.empty() ? name : text + "-" + number_of(name);
}

json texts_of(const std::vector<std::string>& texts) {
    json list = json::array();
    for (const std::string& text : texts) list.push_back(text);
    return list;
}

// One entity of the device in home automation's terms.
class entity {
public:
    // kind: binary_sensor or sensor. id: its own part of the identifier.
    entity(const mqtt_speaker& speaker, const std::string& kind, const std::string& id, const std::string& name) {
        const std::string device = "orva-fire-" + identifier(speaker.camera);
        m_message.topic = speaker.discovery + "/" + kind + "/" + device + "/" + id + "/config";
        m_config["name"] = name;
        m_config["unique_id"] = device + "-" + id;
        m_config["availability_topic"] = topic_of(speaker, "availability");
        m_config["device"] = {{"identifiers", {device}},
                              {"name", speaker.camera},
                              {"model", "orva-fire"},
                              {"sw_version", speaker.version}};
        m_config["origin"] = {{"name", "orva-fire"}, {"sw_version", speaker.version}};
    }

    entity& set(const char* key, const std::string& value) {
        m_config[key] = value;
        return *this;
    }

    mqtt_message message() const { return {m_message.topic, text_of(m_config)}; }
    mqtt_message taken_back() const { return m_message; }

private:
    mqtt_message m_message;
    json m_config;
};

mqtt_message fire_in(const mqtt_speaker& speaker, const std::string& zone) {
    const std::string topic = zone_topic(speaker, zone);
    // There is no class for fire; this one shows "unsafe" while it is on.
    return entity(speaker, "binary_sensor", "fire-" + identifier(zone), "Fire " + zone)
        .set("device_class", "safety")
        .set("state_topic", topic)
        .set("value_template", "{{ value_json.fire }}")
        .set("json_attributes_topic", topic)
        .message();
}

mqtt_message trouble(const mqtt_speaker& speaker) {
    entity sensor(speaker, "binary_sensor", "trouble", "Trouble");
    if (!speaker.watches_trouble) return sensor.taken_back();
    return sensor.set("device_class", "problem")
        .set("state_topic", topic_of(speaker, "state"))
        .set("value_template", "{{ 'ON' if value_json.trouble else 'OFF' }}")
        .set("json_attributes_topic", topic_of(speaker, "state"))
        .set("json_attributes_template", "{{ {'reason': value_json.trouble} | tojson }}")
        .message();
}

mqtt_message counter(const mqtt_speaker& speaker, const char* field, const char* name) {
    return entity(speaker, "sensor", field, name)
        .set("state_topic", topic_of(speaker, "state"))
        .set("value_template", std::string("{{ value_json.") + field + " }}")
        .set("state_class", "total_increasing")
        .set("entity_category", "diagnostic")
        .message();
}

mqtt_message last_event(const mqtt_speaker& speaker) {
    return entity(speaker, "sensor", "last_event", "Last event")
        .set("state_topic", topic_of(speaker, "state"))
        .set("value_template", "{{ value_json.last_event }}")
        .set("device_class", "timestamp")
        .message();
}

}  // namespace

std::string topic_level(const std::string& name) {
    const bool utf8 = mosquitto_validate_utf8(name.data(), static_cast<int>(name.size())) == MOSQ_ERR_SUCCESS;
    return with_allowed(name, [utf8](unsigned char c) {
        return c >= 128 ? utf8 : c >= 32 && c != 127 && c != '/' && c != '+' && c != '#';
    });
}

std::string identifier(const std::string& name) {
    return with_allowed(name, [](unsigned char c) { return c < 128 && (std::isalnum(c) || c == '-' || c == '_'); });
}

std::string topic_of(const mqtt_speaker& speaker, const std::string& leaf) {
    return speaker.prefix + "/" + topic_level(speaker.camera) + "/" + leaf;
}

std::string zone_topic(const mqtt_speaker& speaker, const std::string& zone) {
    return topic_of(speaker, "zone/" + topic_level(zone));
}

std::string state_text(const mqtt_speaker& speaker, const mqtt_state& state) {
    json text = {{"schema", k_schema_version}};
    if (speaker.test) text["test"] = true;
    text["camera"] = speaker.camera;
    text["pictures"] = state.pictures;
    text["events"] = state.events;
    text["last_event"] = state.last_event ? json(rfc3339(*state.last_event)) : json();
    text["fire"] = texts_of(state.burning);
    text["trouble"] = state.trouble.empty() ? json() : json(state.trouble);
    text["lost"] = state.lost;
    return text_of(text);
}

std::string zone_text(const mqtt_speaker& speaker, const std::string& zone, bool burning) {
    json text = {{"schema", k_schema_version}};
    if (speaker.test) text["test"] = true;
    text["camera"] = speaker.camera;
    text["zone"] = zone;
    text["fire"] = burning ? "ON" : "OFF";
    return text_of(text);
}

std::vector<mqtt_message> discovery_messages(const mqtt_speaker& speaker) {
    std::vector<mqtt_message> messages;
    if (speaker.discovery.empty()) return messages;
    for (const std::string& zone : speaker.zones) messages.push_back(fire_in(speaker, zone));
    messages.push_back(trouble(speaker));
    messages.push_back(counter(speaker, "pictures", "Pictures seen"));
    messages.push_back(counter(speaker, "events", "Events"));
    messages.push_back(counter(speaker, "lost", "Lines lost"));
    messages.push_back(last_event(speaker));
    return messages;
}

}  // namespace orva_fire
