#include "tests/apps/mqtt_listener.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

#include "tests/apps/seen_events.h"

namespace apps_test {
namespace {

const auto k_patience = std::chrono::minutes(2);

std::string name() {
    static std::atomic<int> count{0};
    return "listener-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

}  // namespace

mqtt_listener::mqtt_listener(int port, const std::string& user, const std::string& password,
                             const std::string& ca_file) {
    mosquitto_lib_init();
    // Its session outlasts a broken connection: the broker keeps messages for it.
    m_client = mosquitto_new(name().c_str(), false, this);
    mosquitto_connect_callback_set(m_client, on_connect);
    mosquitto_subscribe_callback_set(m_client, on_subscribe);
    mosquitto_message_callback_set(m_client, on_message);
    mosquitto_reconnect_delay_set(m_client, 1, 1, false);
    if (!user.empty()) mosquitto_username_pw_set(m_client, user.c_str(), password.c_str());
    if (!ca_file.empty()) mosquitto_tls_set(m_client, ca_file.c_str(), nullptr, nullptr, nullptr, nullptr);
    if (mosquitto_connect(m_client, "127.0.0.1", port, 60) != MOSQ_ERR_SUCCESS) throw std::runtime_error("no broker");
    mosquitto_loop_start(m_client);
    std::unique_lock<std::mutex> guard(m_lock);
    if (!m_changed.wait_for(guard, k_patience, [this] { return m_listening; })) throw std::runtime_error("unheard");
}

mqtt_listener::~mqtt_listener() {
    mosquitto_disconnect(m_client);
    mosquitto_loop_stop(m_client, false);
    mosquitto_destroy(m_client);
    mosquitto_lib_cleanup();
}

bool mqtt_listener::wait_for(const condition& satisfied) const {
    std::unique_lock<std::mutex> guard(m_lock);
    return m_changed.wait_for(guard, k_patience, [&] { return satisfied(m_heard); });
}

bool mqtt_listener::wait_for(const std::string& topic, const std::string& text) const {
    return wait_for([&](const std::vector<heard_message>& messages) {
        const heard_message* newest = nullptr;
        for (const heard_message& message : messages) {
            if (message.topic == topic) newest = &message;
        }
        return newest && newest->text == text;
    });
}

std::vector<heard_message> mqtt_listener::heard() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_heard;
}

std::vector<std::string> mqtt_listener::heard(const std::string& topic) const {
    std::vector<std::string> texts;
    for (const heard_message& message : heard()) {
        if (message.topic != topic) continue;
        texts.push_back(message.text);
        keep_events(message.text);
    }
    return texts;
}

std::string mqtt_listener::newest(const std::string& topic) const {
    const std::vector<std::string> texts = heard(topic);
    return texts.empty() ? "" : texts.back();
}

void mqtt_listener::say(const std::string& topic, const std::string& text, bool kept) {
    mosquitto_publish(m_client, nullptr, topic.c_str(), static_cast<int>(text.size()), text.data(), 1, kept);
}

void mqtt_listener::on_connect(mosquitto* client, void*, int code) {
    if (code == 0) mosquitto_subscribe(client, nullptr, "#", 1);
}

void mqtt_listener::on_subscribe(mosquitto*, void* object, int, int, const int*) {
    auto& listener = *static_cast<mqtt_listener*>(object);
    const std::lock_guard<std::mutex> guard(listener.m_lock);
    listener.m_listening = true;
    listener.m_changed.notify_all();
}

void mqtt_listener::on_message(mosquitto*, void* object, const mosquitto_message* message) {
    auto& listener = *static_cast<mqtt_listener*>(object);
    const std::lock_guard<std::mutex> guard(listener.m_lock);
    listener.m_heard.push_back(
        {message->topic,
         std::string(static_cast<const char*>(message->payload), static_cast<size_t>(message->payloadlen)),
         message->retain});
    listener.m_changed.notify_all();
}

}  // namespace apps_test
