// Hears everything that is said at a broker, and can be waited for.
#ifndef ORVA_TESTS_APPS_MQTT_LISTENER_H
#define ORVA_TESTS_APPS_MQTT_LISTENER_H

#include <mosquitto.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace apps_test {

struct heard_message {
    std::string topic, text;
    bool kept = false;  // from before the listener came
};

class mqtt_listener {
public:
    // Returns once the broker sends it everything. While the broker is away it misses nothing. ca_file: for TLS.
    explicit mqtt_listener(int port, const std::string& user = "", const std::string& password = "",
                           const std::string& ca_file = "");
    ~mqtt_listener();
    mqtt_listener(const mqtt_listener&) = delete;
    mqtt_listener& operator=(const mqtt_listener&) = delete;

    // Waits until what was heard satisfies a condition; false if it does not within two minutes.
    using condition = std::function<bool(const std::vector<heard_message>&)>;
    bool wait_for(const condition& satisfied) const;

    // Waits until the newest text of a topic is this.
    bool wait_for(const std::string& topic, const std::string& text) const;

    // Everything so far, and the texts of one topic. Events among them are held against the schema later.
    std::vector<heard_message> heard() const;
    std::vector<std::string> heard(const std::string& topic) const;
    std::string newest(const std::string& topic) const;

    // Says something itself.
    void say(const std::string& topic, const std::string& text, bool kept);

private:
    static void on_connect(mosquitto* client, void* object, int code);
    static void on_subscribe(mosquitto* client, void* object, int number, int count, const int* granted);
    static void on_message(mosquitto* client, void* object, const mosquitto_message* message);

    mosquitto* m_client;
    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    bool m_listening = false;
    std::vector<heard_message> m_heard;
};

}  // namespace apps_test

#endif
