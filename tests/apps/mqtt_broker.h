// A real MQTT broker on this machine, mosquitto, that can be stopped and started at will.
#ifndef ORVA_TESTS_APPS_MQTT_BROKER_H
#define ORVA_TESTS_APPS_MQTT_BROKER_H

#include <sys/types.h>

#include <string>

#include "tests/apps/clip_maker.h"

namespace apps_test {

class mqtt_broker {
public:
    // more: further lines of its configuration. Listens on a free port, keeps its memory in a folder of its own.
    explicit mqtt_broker(const std::string& more = "allow_anonymous true");
    ~mqtt_broker();
    mqtt_broker(const mqtt_broker&) = delete;
    mqtt_broker& operator=(const mqtt_broker&) = delete;

    int port() const { return m_port; }
    // mqtt://127.0.0.1:PORT, with `user@` and `/prefix` if they are given.
    std::string address(const std::string& user = "", const std::string& prefix = "") const;

    // Sessions, waiting messages and kept ones outlast the stop.
    void stop();
    void start();

    // It takes what is sent and answers nothing, until it is killed.
    void freeze();
    void crash();

private:
    bool start_at(int port);

    const temporary_folder m_folder;
    const std::string m_more;
    int m_port = 0;
    pid_t m_process = -1;
    int m_log = -1;
};

}  // namespace apps_test

#endif
