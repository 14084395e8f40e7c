// One connection to an MQTT broker, by libmosquitto. A lost one is not mended: make another. For one thread at a time.
#ifndef ORVA_APPS_ORVA_FIRE_MQTT_CONNECTION_H
#define ORVA_APPS_ORVA_FIRE_MQTT_CONNECTION_H

#include <mosquitto.h>

#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/mqtt_address.h"
#include "apps/orva_fire/mqtt_messages.h"

namespace orva_fire {

struct mqtt_login {
    mqtt_address broker;
    std::string password;  // never shown
    std::string ca_file;   // PEM; empty: the authorities that this system trusts
};

class mqtt_connection {
public:
    // will: the broker says it, retained, once the connection breaks; what others say there is told by overruled().
    mqtt_connection(const mqtt_login& login, const mqtt_message& will);
    // Without close(), the broker says the will.
    ~mqtt_connection();
    mqtt_connection(const mqtt_connection&) = delete;
    mqtt_connection& operator=(const mqtt_connection&) = delete;

    // Begins to connect. Names are looked up here, which may take a while.
    // False if that failed at once; see problem().
    bool open();

    // Reads and writes, for about so long. False once the connection is lost or was not granted; see problem().
    bool run(int milliseconds);

    // True from the broker's consent to the end of the connection.
    bool ready() const { return m_ready; }

    // Sends a message that the broker shall confirm. Returns its number, or -1 if it is one that cannot be sent at all;
    // a connection that breaks meanwhile is told by run(). Only while ready().
    int publish(const mqtt_message& message, bool retained);

    // Numbers of messages that the broker has confirmed since the last call.
    std::vector<int> take_confirmed();

    // True if the text of the will was said since the last call, in place of what this client has said.
    bool take_overruled();

    // Says goodbye, so that the broker does not speak the will. Runs until the goodbye is written.
    void close();

    // Why it failed; holds no password.
    const std::string& problem() const { return m_problem; }

private:
    struct library {
        library() { mosquitto_lib_init(); }
        ~library() { mosquitto_lib_cleanup(); }
    };
    using handle = std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)>;

    void set_up(const mqtt_login& login);
    void use_tls(const std::string& ca_file);
    void listen();
    bool fail(int code);

    static void on_connect(mosquitto* client, void* object, int code);
    static void on_publish(mosquitto* client, void* object, int number);
    static void on_message(mosquitto* client, void* object, const mosquitto_message* message);
    static void on_log(mosquitto* client, void* object, int level, const char* text);

    const library m_library;
    const mqtt_address m_broker;
    const mqtt_message m_will;
    handle m_client;
    bool m_ready = false;
    bool m_overruled = false;
    int m_refusal = 0;        // the broker's code
    std::string m_complaint;  // the first that the library has logged
    std::string m_problem;
    std::vector<int> m_confirmed;
};

}  // namespace orva_fire

#endif
