// The client against a real broker that comes and goes, and against one that does not answer.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "apps/orva_fire/mqtt_client.h"
#include "tests/apps/mqtt_broker.h"
#include "tests/apps/mqtt_listener.h"

namespace {

using namespace apps_test;
using namespace orva_fire;

mqtt_settings settings_for(const std::string& address) {
    mqtt_settings settings;
    settings.login.broker = parse_mqtt_address(address);
    settings.availability = "f/gate/availability";
    settings.first_pause = settings.longest_pause = 0.02;
    settings.farewell = 60;
    return settings;
}

// Waits until the client warns of something with these words; all warnings up to there.
std::string warned(mqtt_client& client, const std::string& words) {
    std::string said;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (said.find(words) == std::string::npos && std::chrono::steady_clock::now() < limit) {
        for (const std::string& warning : client.take_warnings()) said += warning + "\n";
        std::this_thread::yield();
    }
    return said;
}

TEST(mqtt_client, is_online_until_it_says_goodbye) {
    mqtt_broker broker;
    const mqtt_listener listener(broker.port());
    mqtt_client client(settings_for(broker.address()));
    client.keep({"f/gate/state", "{}"});
    client.send({"f/gate/event", "one"}, false);
    EXPECT_TRUE(listener.wait_for("f/gate/availability", "online"));
    for (int i = 0; i < 50; ++i) client.send({"f/gate/event", std::to_string(i)}, true);
    client.finish();
    EXPECT_EQ(client.delivered(), 51);
    EXPECT_EQ(client.lost(), 0);
    EXPECT_TRUE(client.take_warnings().empty());
    EXPECT_TRUE(listener.wait_for("f/gate/availability", "offline"));
    std::vector<std::string> expected = {"one"};
    for (int i = 0; i < 50; ++i) expected.push_back(std::to_string(i));
    EXPECT_EQ(listener.heard("f/gate/event"), expected);
    EXPECT_EQ(listener.heard().back().topic, "f/gate/availability") << "the goodbye is the last word";
    const mqtt_listener late(broker.port());
    EXPECT_TRUE(late.wait_for("f/gate/availability", "offline"));
    EXPECT_TRUE(late.wait_for("f/gate/state", "{}"));
    EXPECT_TRUE(late.heard("f/gate/event").empty()) << "events are not kept";
}

TEST(mqtt_client, sends_what_waited_while_the_broker_was_away_and_counts_what_was_lost) {
    mqtt_broker broker;
    const mqtt_listener listener(broker.port());
    mqtt_settings settings = settings_for(broker.address());
    settings.queue_limit = 5;
    mqtt_client client(settings);
    client.keep({"f/gate/state", "calm"});
    EXPECT_TRUE(listener.wait_for("f/gate/state", "calm"));
    broker.stop();
    const std::string away = warned(client, "no connection");
    EXPECT_NE(away.find(broker.address()), std::string::npos) << away;
    for (const char* text : {"A", "b", "C", "d", "E"}) client.send({"f/gate/event", text}, std::islower(*text));
    client.send({"f/gate/event", "f"}, true);
    client.send({"f/gate/event", "G"}, false);
    client.keep({"f/gate/state", "fire"});
    client.keep({"f/gate/state", "calm again"});
    EXPECT_EQ(client.lost(), 2);
    EXPECT_NE(warned(client, "lost").find("5 lines wait for " + broker.address()), std::string::npos);
    broker.start();
    EXPECT_NE(warned(client, "connected").find("5 lines waited, 2 were lost so far"), std::string::npos);
    client.finish();
    EXPECT_TRUE(listener.wait_for("f/gate/event", "G"));
    EXPECT_TRUE(listener.wait_for("f/gate/availability", "offline"));
    EXPECT_EQ(listener.heard("f/gate/event"), (std::vector<std::string>{"A", "C", "d", "E", "G"}));
    EXPECT_EQ(listener.newest("f/gate/state"), "calm again");
    EXPECT_EQ(client.delivered(), 5);
    EXPECT_EQ(client.lost(), 2);
}

TEST(mqtt_client, sends_again_what_was_not_confirmed) {
    mqtt_broker broker;
    mqtt_settings settings = settings_for(broker.address());
    settings.queue_limit = 1;
    mqtt_client client(settings);
    {
        const mqtt_listener listener(broker.port());
        EXPECT_TRUE(listener.wait_for("f/gate/availability", "online"));
    }
    broker.freeze();
    client.send({"f/gate/event", "start"}, false);
    // Once the queue has room again, the start is on its way.
    int64_t before = 0;
    do {
        before = client.lost();
        client.send({"f/gate/event", "update"}, true);
    } while (client.lost() > before);
    broker.crash();
    broker.start();
    client.finish();
    EXPECT_EQ(client.delivered(), 2);
    EXPECT_EQ(client.lost(), before);
}

TEST(mqtt_client, gives_up_at_the_end_and_counts_the_rest_as_lost) {
    std::string address;
    {
        const mqtt_broker broker;
        address = broker.address();
    }
    mqtt_client client(settings_for(address));
    client.send({"f/gate/event", "one"}, false);
    client.send({"f/gate/event", "two"}, false);
    (void)warned(client, "Connection refused");
    client.finish();
    EXPECT_EQ(client.lost(), 2);
    EXPECT_EQ(client.delivered(), 0);
    const auto warnings = client.take_warnings();
    ASSERT_EQ(warnings.size(), 1u) << "the same complaint is not repeated";
    EXPECT_EQ(warnings[0], "--mqtt: 2 lines of events did not reach " + address);
}

TEST(mqtt_client, is_offline_when_it_vanishes_without_a_word) {
    const mqtt_broker broker;
    const mqtt_listener listener(broker.port());
    {
        const mqtt_client client(settings_for(broker.address()));
        EXPECT_TRUE(listener.wait_for("f/gate/availability", "online"));
    }
    EXPECT_TRUE(listener.wait_for("f/gate/availability", "offline"));
}

TEST(mqtt_client, contradicts_whoever_says_that_it_is_offline) {
    const mqtt_broker broker;
    mqtt_listener listener(broker.port());
    const mqtt_client client(settings_for(broker.address()));
    EXPECT_TRUE(listener.wait_for("f/gate/availability", "online"));
    for (const size_t times : {2u, 3u}) {
        listener.say("f/gate/availability", "offline", true);
        EXPECT_TRUE(listener.wait_for([times](const std::vector<heard_message>& messages) {
            return static_cast<size_t>(
                       std::count_if(messages.begin(), messages.end(),
                                     [](const heard_message& message) { return message.text == "online"; })) == times;
        }));
    }
}

// Accepts connections, as the system does for it, and never says a word.
class silent_server {
public:
    silent_server() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        socklen_t length = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const general = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_socket, general, length) != 0 || listen(m_socket, 5) != 0) throw std::runtime_error("no port");
        (void)getsockname(m_socket, general, &length);
        m_port = ntohs(address.sin_port);
    }
    ~silent_server() { close(m_socket); }
    silent_server(const silent_server&) = delete;
    silent_server& operator=(const silent_server&) = delete;

    int port() const { return m_port; }

private:
    int m_socket, m_port;
};

TEST(mqtt_client, does_not_wait_for_ever_for_a_broker_that_does_not_answer) {
    const silent_server server;
    mqtt_settings settings = settings_for("mqtt://127.0.0.1:" + std::to_string(server.port()));
    settings.patience = 0.1;
    settings.farewell = 0.2;
    mqtt_client client(settings);
    client.send({"f/gate/event", "one"}, false);
    EXPECT_NE(warned(client, "no connection").find("no answer"), std::string::npos);
    client.finish();
    EXPECT_EQ(client.lost(), 1);
}

}  // namespace
