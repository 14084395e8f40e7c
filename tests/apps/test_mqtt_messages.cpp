// What is said over MQTT: addresses, topics, texts, and what is left out when too much waits. No broker is needed.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cctype>
#include <utility>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/mqtt_address.h"
#include "apps/orva_fire/mqtt_options.h"
#include "apps/orva_fire/mqtt_output.h"
#include "apps/orva_fire/mqtt_queue.h"
#include "tests/apps/clip_maker.h"
#include "tests/support/rows.h"

namespace {

using namespace apps_test;
using namespace orva_fire;
using support::row_name;

// --- addresses -------------------------------------------------------------------------------------------------------

struct address_row : support::named_row {
    const char* text;
    bool tls;
    const char* host;
    int port;
    const char* user;
    const char* prefix;
    const char* shown;
};

class address : public testing::TestWithParam<address_row> {};

TEST_P(address, is_taken_apart) {
    const address_row& row = GetParam();
    const mqtt_address parts = parse_mqtt_address(row.text);
    EXPECT_EQ(parts.tls, row.tls);
    EXPECT_EQ(parts.host, row.host);
    EXPECT_EQ(parts.port, row.port);
    EXPECT_EQ(parts.user, row.user);
    EXPECT_EQ(parts.prefix, row.prefix);
    EXPECT_EQ(parts.shown(), row.shown);
}

INSTANTIATE_TEST_SUITE_P(
    table, address,
    testing::Values(
        address_row{{"a host alone"}, "mqtt://broker", false, "broker", 1883, "", "orva-fire", "mqtt://broker:1883"},
        address_row{{"with TLS"}, "mqtts://broker", true, "broker", 8883, "", "orva-fire", "mqtts://broker:8883"},
        address_row{{"everything"},
                    "mqtts://gate@b.lan:1884/site/fire",
                    true,
                    "b.lan",
                    1884,
                    "gate",
                    "site/fire",
                    "mqtts://b.lan:1884"},
        address_row{{"no prefix after the slash"}, "mqtt://b/", false, "b", 1883, "", "orva-fire", "mqtt://b:1883"},
        address_row{
            {"an address of numbers and colons"}, "mqtt://[::1]:5/x", false, "::1", 5, "", "x", "mqtt://[::1]:5"},
        address_row{{"the same without a port"},
                    "mqtts://[fe80::2]",
                    true,
                    "fe80::2",
                    8883,
                    "",
                    "orva-fire",
                    "mqtts://[fe80::2]:8883"},
        address_row{{"a user with coded bytes"},
                    "mqtt://me%40home%3a%zz@b",
                    false,
                    "b",
                    1883,
                    "me@home:%zz",
                    "orva-fire",
                    "mqtt://b:1883"}),
    row_name());

TEST(parse_mqtt_address, refuses_what_is_no_address_and_repeats_no_password) {
    for (const char* text : {"",
                             "broker",
                             "http://b",
                             "mqtt:/b",
                             "mqtt://",
                             "mqtt://@",
                             "mqtt://b:",
                             "mqtt://b:0",
                             "mqtt://b:65536",
                             "mqtt://b:1x",
                             "mqtt://b:-1",
                             "mqtt://me:secret@b",
                             "mqtts://me:@b",
                             "ftp://me:secret@b",
                             "mqtt://b/a+b",
                             "mqtt://b/#",
                             "mqtt://b//a",
                             "mqtt://b/$SYS",
                             "mqtt://b/a/",
                             "mqtt://b/a\nb",
                             "mqtt://[]:5"}) {
        try {
            (void)parse_mqtt_address(text);
            ADD_FAILURE() << text;
        } catch (const usage_error& error) {
            EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos) << error.what();
        }
    }
}

std::string complaint_about(const mqtt_options& options) {
    try {
        (void)login_of(options);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

TEST(mqtt_login, takes_the_password_from_the_file_before_the_environment) {
    const temporary_folder folder;
    write_file(folder.file("password"), "from the file\r\nnot this\n");
    setenv("ORVA_FIRE_MQTT_PASSWORD", "from outside", 1);
    mqtt_options options;
    options.url = "mqtt://me@b";
    take_mqtt_password(options);
    EXPECT_EQ(getenv("ORVA_FIRE_MQTT_PASSWORD"), nullptr);
    EXPECT_EQ(login_of(options).password, "from outside");
    options.password_file = folder.file("password");
    EXPECT_EQ(login_of(options).password, "from the file");
}

TEST(mqtt_login, names_what_does_not_fit) {
    const temporary_folder folder;
    mqtt_options options;
    options.url = "mqtt://b";
    options.password = "secret";
    EXPECT_EQ(complaint_about(options), "--mqtt: there is a password but no user: write mqtt://USER@HOST");
    options.password.clear();
    options.password_file = folder.file("none");
    EXPECT_EQ(complaint_about(options), "--mqtt-password-file: cannot read a line from '" + folder.file("none") + "'");
    options.password_file.clear();
    options.ca_file = folder.file("none");
    EXPECT_EQ(complaint_about(options), "--mqtt-ca: cannot read '" + folder.file("none") + "'");
    write_file(folder.file("ca"), "");
    options.ca_file = folder.file("ca");
    EXPECT_EQ(complaint_about(options), "--mqtt-ca: certificates are looked at with mqtts:// only");
    options.url = "mqtts://b";
    EXPECT_EQ(complaint_about(options), "");
}

// --- names -----------------------------------------------------------------------------------------------------------

// The numbers are FNV-1a of 32 bits of the name before it was changed, worked out elsewhere.
TEST(topic_level, keeps_what_a_topic_may_hold_and_numbers_what_it_changes) {
    EXPECT_EQ(topic_level("10.0.0.7"), "10.0.0.7");
    EXPECT_EQ(topic_level("Tür 3"), "Tür 3");
    EXPECT_EQ(topic_level("a/b"), "a_b-3a8e75c1");
    EXPECT_EQ(topic_level("a+b").substr(0, 4), "a_b-");
    EXPECT_EQ(topic_level("a#").substr(0, 3), "a_-");
    EXPECT_EQ(topic_level("a\n").substr(0, 3), "a_-");
    EXPECT_EQ(topic_level("\xff").substr(0, 2), "_-");
    EXPECT_EQ(topic_level(""), "-811c9dc5");
    EXPECT_NE(topic_level("a/b"), topic_level("a+b"));
}

TEST(identifier, holds_letters_digits_and_dashes_only) {
    EXPECT_EQ(identifier("front_door-2"), "front_door-2");
    EXPECT_EQ(identifier("a.b").substr(0, 4), "a_b-");
    EXPECT_EQ(identifier("Tür").substr(0, 5), "T__r-");
    EXPECT_NE(identifier("a.b"), identifier("a b"));
}

// --- texts -----------------------------------------------------------------------------------------------------------

mqtt_speaker gate() {
    mqtt_speaker speaker;
    speaker.camera = "gate";
    speaker.version = "1.2.3";
    speaker.zones = {"stove", "a/b"};
    return speaker;
}

TEST(mqtt_text, of_the_state_is_this) {
    mqtt_state state;
    state.pictures = 1500;
    EXPECT_EQ(state_text(gate(), state),
              R"({"schema":1,"camera":"gate","pictures":1500,"events":0,"last_event":null,"fire":[],"trouble":null,)"
              R"("lost":0})");
    state.events = 2;
    state.last_event = 1795268912125;  // 2026-11-21 at 13:48:32 and an eighth
    state.burning = {"stove"};
    state.trouble = "dark";
    state.lost = 3;
    mqtt_speaker drill = gate();
    drill.test = true;
    EXPECT_EQ(state_text(drill, state),
              R"({"schema":1,"test":true,"camera":"gate","pictures":1500,"events":2,)"
              R"("last_event":"2026-11-21T13:48:32.125Z","fire":["stove"],"trouble":"dark","lost":3})");
}

TEST(mqtt_text, of_a_zone_is_this) {
    EXPECT_EQ(zone_text(gate(), "stove", true), R"({"schema":1,"camera":"gate","zone":"stove","fire":"ON"})");
    mqtt_speaker drill = gate();
    drill.test = true;
    EXPECT_EQ(zone_text(drill, "a\"b", false),
              R"({"schema":1,"test":true,"camera":"gate","zone":"a\"b","fire":"OFF"})");
}

const char k_device[] =
    R"("availability_topic":"orva-fire/gate/availability","device":{"identifiers":["orva-fire-gate"],"name":"gate",)"
    R"("model":"orva-fire","sw_version":"1.2.3"},"origin":{"name":"orva-fire","sw_version":"1.2.3"},)";

TEST(mqtt_discovery, tells_of_each_zone_of_trouble_and_of_the_counters) {
    const auto messages = discovery_messages(gate());
    ASSERT_EQ(messages.size(), 7u);
    EXPECT_EQ(messages[0].topic, "homeassistant/binary_sensor/orva-fire-gate/fire-stove/config");
    EXPECT_EQ(messages[0].text,
              std::string(R"({"name":"Fire stove","unique_id":"orva-fire-gate-fire-stove",)") + k_device +
                  R"("device_class":"safety","state_topic":"orva-fire/gate/zone/stove",)"
                  R"("value_template":"{{ value_json.fire }}","json_attributes_topic":"orva-fire/gate/zone/stove"})");
    EXPECT_EQ(messages[1].topic, "homeassistant/binary_sensor/orva-fire-gate/fire-a_b-3a8e75c1/config");
    EXPECT_NE(messages[1].text.find(R"("state_topic":"orva-fire/gate/zone/a_b-3a8e75c1")"), std::string::npos);
    EXPECT_EQ(messages[2].topic, "homeassistant/binary_sensor/orva-fire-gate/trouble/config");
    EXPECT_EQ(messages[2].text, std::string(R"({"name":"Trouble","unique_id":"orva-fire-gate-trouble",)") + k_device +
                                    R"("device_class":"problem","state_topic":"orva-fire/gate/state",)"
                                    R"("value_template":"{{ 'ON' if value_json.trouble else 'OFF' }}",)"
                                    R"("json_attributes_topic":"orva-fire/gate/state",)"
                                    R"("json_attributes_template":"{{ {'reason': value_json.trouble} | tojson }}"})");
    const char* const fields[] = {"pictures", "events", "lost"};
    const char* const names[] = {"Pictures seen", "Events", "Lines lost"};
    for (size_t i = 0; i < 3; ++i) {
        const std::string field = fields[i];
        EXPECT_EQ(messages[3 + i].topic, "homeassistant/sensor/orva-fire-gate/" + field + "/config");
        EXPECT_EQ(messages[3 + i].text,
                  std::string(R"({"name":")") + names[i] + R"(","unique_id":"orva-fire-gate-)" + field + R"(",)" +
                      k_device + R"("state_topic":"orva-fire/gate/state","value_template":"{{ value_json.)" + field +
                      R"( }}","state_class":"total_increasing",)" + R"("entity_category":"diagnostic"})");
    }
    EXPECT_EQ(messages[6].topic, "homeassistant/sensor/orva-fire-gate/last_event/config");
    EXPECT_EQ(messages[6].text,
              std::string(R"({"name":"Last event","unique_id":"orva-fire-gate-last_event",)") + k_device +
                  R"("state_topic":"orva-fire/gate/state","value_template":"{{ value_json.last_event }}",)"
                  R"("device_class":"timestamp"})");
}

TEST(mqtt_discovery, takes_back_the_sensor_of_trouble_when_nobody_watches_for_it) {
    mqtt_speaker speaker = gate();
    speaker.watches_trouble = false;
    EXPECT_EQ(discovery_messages(speaker)[2].topic, "homeassistant/binary_sensor/orva-fire-gate/trouble/config");
    EXPECT_EQ(discovery_messages(speaker)[2].text, "");
}

TEST(mqtt_discovery, says_nothing_where_it_is_not_wanted) {
    mqtt_speaker speaker = gate();
    speaker.discovery.clear();
    EXPECT_TRUE(discovery_messages(speaker).empty());
}

// --- the run ---------------------------------------------------------------------------------------------------------

// Writes down what it is given.
class recorder : public mqtt_sink {
public:
    void send(const mqtt_message& message, bool minor) override {
        notes.push_back((minor ? "minor " : "send ") + message.topic + " " + message.text);
    }
    void keep(const mqtt_message& message) override { notes.push_back("keep " + message.topic + " " + message.text); }
    int64_t lost() const override { return 0; }

    std::vector<std::string> take() { return std::exchange(notes, {}); }

    std::vector<std::string> notes;
};

mqtt_speaker quiet_gate() {
    mqtt_speaker speaker = gate();
    speaker.discovery.clear();
    return speaker;
}

std::string kept_state(const std::string& rest) {
    return R"(keep orva-fire/gate/state {"schema":1,"camera":"gate",)" + rest + R"(,"lost":0})";
}

TEST(mqtt_output, begins_with_what_is_true_now) {
    recorder sink;
    const mqtt_output output(quiet_gate(), sink);
    EXPECT_EQ(sink.take(),
              (std::vector<std::string>{
                  R"(keep orva-fire/gate/zone/stove {"schema":1,"camera":"gate","zone":"stove","fire":"OFF"})",
                  R"(keep orva-fire/gate/zone/a_b-3a8e75c1 {"schema":1,"camera":"gate","zone":"a/b","fire":"OFF"})",
                  kept_state(R"("pictures":0,"events":0,"last_event":null,"fire":[],"trouble":null)")}));
}

TEST(mqtt_output, tells_an_event_its_zone_and_the_state) {
    recorder sink;
    mqtt_output output(quiet_gate(), sink);
    sink.take();
    fire_event event;
    event.zone = 0;
    output.count_picture();
    output.tell(event, "{start}", 1795268912125);
    EXPECT_EQ(sink.take(),
              (std::vector<std::string>{
                  "send orva-fire/gate/event {start}",
                  R"(keep orva-fire/gate/zone/stove {"schema":1,"camera":"gate","zone":"stove","fire":"ON"})",
                  kept_state(R"("pictures":1,"events":1,"last_event":"2026-11-21T13:48:32.125Z","fire":["stove"],)"
                             R"("trouble":null)")}));
    event.kind = event_kind::update;
    output.tell(event, "{update}", 1795268913125);
    EXPECT_EQ(sink.take(), (std::vector<std::string>{"minor orva-fire/gate/event {update}"}));
    event.kind = event_kind::end;
    output.tell(event, "{end}", 1795268914125);
    EXPECT_EQ(sink.take(),
              (std::vector<std::string>{
                  "send orva-fire/gate/event {end}",
                  R"(keep orva-fire/gate/zone/stove {"schema":1,"camera":"gate","zone":"stove","fire":"OFF"})",
                  kept_state(R"("pictures":1,"events":1,"last_event":"2026-11-21T13:48:32.125Z","fire":[],)"
                             R"("trouble":null)")}));
}

TEST(mqtt_output, tells_trouble_and_its_end) {
    recorder sink;
    mqtt_output output(quiet_gate(), sink);
    sink.take();
    trouble_event event;
    event.started = true;
    event.reason = trouble_reason::washed_out;
    output.tell(event, "{trouble}");
    event.started = false;
    output.tell(event, "{over}");
    EXPECT_EQ(sink.take(),
              (std::vector<std::string>{
                  "send orva-fire/gate/trouble {trouble}",
                  kept_state(R"("pictures":0,"events":0,"last_event":null,"fire":[],"trouble":"washed_out")"),
                  "send orva-fire/gate/trouble {over}",
                  kept_state(R"("pictures":0,"events":0,"last_event":null,"fire":[],"trouble":null)")}));
}

TEST(mqtt_output, tells_how_many_pictures_were_seen_twice_a_minute_and_at_the_end) {
    recorder sink;
    mqtt_output output(quiet_gate(), sink);
    sink.take();
    const auto begin = mqtt_output::clock::time_point();
    for (int second = 0; second < 95; ++second) output.count_picture(begin + std::chrono::seconds(second));
    const auto notes = sink.take();
    ASSERT_EQ(notes.size(), 3u);
    EXPECT_NE(notes[0].find("\"pictures\":31,"), std::string::npos);
    EXPECT_NE(notes[1].find("\"pictures\":61,"), std::string::npos);
    EXPECT_NE(notes[2].find("\"pictures\":91,"), std::string::npos);
    output.finish();
    ASSERT_EQ(sink.notes.size(), 1u);
    EXPECT_NE(sink.notes[0].find("\"pictures\":95,"), std::string::npos);
}

// --- the queue -------------------------------------------------------------------------------------------------------

std::string contents(mqtt_queue& queue) {
    std::string texts;
    while (!queue.empty()) texts += queue.take().text;
    return texts;
}

TEST(mqtt_queue, gives_back_in_order) {
    mqtt_queue queue(4);
    for (const char* text : {"a", "b", "c"}) EXPECT_TRUE(queue.add({"t", text}, false));
    queue.put_back({"t", "z"});
    EXPECT_EQ(queue.size(), 4u);
    EXPECT_EQ(contents(queue), "zabc");
    EXPECT_EQ(queue.lost(), 0);
}

TEST(mqtt_queue, loses_minor_messages_first_when_it_is_full) {
    mqtt_queue queue(4);
    for (const char* text : {"A", "b", "C", "d"}) EXPECT_TRUE(queue.add({"t", text}, std::islower(*text)));
    EXPECT_FALSE(queue.add({"t", "e"}, true)) << "the new one is minor";
    EXPECT_FALSE(queue.add({"t", "F"}, false)) << "b goes";
    EXPECT_FALSE(queue.add({"t", "G"}, false)) << "d goes";
    EXPECT_FALSE(queue.add({"t", "H"}, false)) << "A goes, the oldest";
    EXPECT_EQ(queue.lost(), 4);
    EXPECT_EQ(contents(queue), "CFGH");
}

}  // namespace
