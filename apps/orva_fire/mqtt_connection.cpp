#include "apps/orva_fire/mqtt_connection.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

namespace orva_fire {
namespace {

const int k_keep_alive = 30;    // seconds after which a silent broker is asked whether it is there
const int k_at_least_once = 1;  // the broker confirms every message

// Different for every run: a broker throws out a client whose name comes twice.
std::string client_name() {
    std::random_device source;
    char text[32];
    std::snprintf(text, sizeof text, "orva-fire-%08x%04x", source(), source() & 0xffff);
    return text;
}

int length_of(const std::string& text) {
    return static_cast<int>(text.size());
}

// The library's words in those of this program.
std::string plain(std::string text) {
    while (!text.empty() && (text.back() == '.' || text.back() == '\n')) text.pop_back();
    if (text.rfind("OpenSSL Error", 0) == 0) text = "TLS: " + text.substr(text.rfind(':') + 1);
    if (text.find("certificate verify failed") != std::string::npos) text += " (--mqtt-ca names what to trust)";
    return text;
}

mqtt_connection& self(void* object) {
    return *static_cast<mqtt_connection*>(object);
}

const char* refusal(int code) {
    switch (code) {
        case 4:
        case 5:
            return "the broker does not accept the user or the password";
        default:
            return mosquitto_connack_string(code);
    }
}

// Other codes tell of a connection that breaks just now, which run() notices.
bool is_fault_of_message(int code) {
    return code == MOSQ_ERR_INVAL || code == MOSQ_ERR_NOMEM || code == MOSQ_ERR_PAYLOAD_SIZE ||
           code == MOSQ_ERR_MALFORMED_UTF8 || code == MOSQ_ERR_OVERSIZE_PACKET;
}

}  // namespace

mqtt_connection::mqtt_connection(const mqtt_login& login, const mqtt_message& will)
    : m_broker(login.broker),
      m_will(will),
      m_client(mosquitto_new(client_name().c_str(), true, this), mosquitto_destroy) {
    if (m_client) set_up(login);
}

mqtt_connection::~mqtt_connection() = default;

void mqtt_connection::set_up(const mqtt_login& login) {
    mosquitto* client = m_client.get();
    mosquitto_connect_callback_set(client, on_connect);
    mosquitto_publish_callback_set(client, on_publish);
    mosquitto_message_callback_set(client, on_message);
    mosquitto_log_callback_set(client, on_log);
    const char* password = login.password.empty() ? nullptr : login.password.c_str();
    if (!m_broker.user.empty()) mosquitto_username_pw_set(client, m_broker.user.c_str(), password);
    mosquitto_will_set(client, m_will.topic.c_str(), length_of(m_will.text), m_will.text.c_str(), k_at_least_once,
                       true);
    if (m_broker.tls) use_tls(login.ca_file);
}

void mqtt_connection::use_tls(const std::string& ca_file) {
    mosquitto* client = m_client.get();
    if (ca_file.empty()) {
        mosquitto_int_option(client, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    } else if (mosquitto_tls_set(client, ca_file.c_str(), nullptr, nullptr, nullptr, nullptr) != MOSQ_ERR_SUCCESS) {
        m_complaint = "cannot read '" + ca_file + "'";
    }
    mosquitto_tls_opts_set(client, 1, nullptr, nullptr);
}

bool mqtt_connection::open() {
    if (!m_client) return fail(MOSQ_ERR_NOMEM);
    // Without the certificates there would be no TLS.
    if (!m_complaint.empty()) return fail(MOSQ_ERR_TLS);
    errno = 0;
    const int code = mosquitto_connect_async(m_client.get(), m_broker.host.c_str(), m_broker.port, k_keep_alive);
    return code == MOSQ_ERR_SUCCESS || fail(code);
}

bool mqtt_connection::run(int milliseconds) {
    errno = 0;
    const int code = mosquitto_loop(m_client.get(), milliseconds, 1);
    return code == MOSQ_ERR_SUCCESS || fail(code);
}

// Puts into words what went wrong; the most telling of what there is.
bool mqtt_connection::fail(int code) {
    const int number = errno;
    m_ready = false;
    if (m_refusal != 0) {
        m_problem = refusal(m_refusal);
    } else if (!m_complaint.empty()) {
        m_problem = plain(m_complaint);
    } else if (code == MOSQ_ERR_ERRNO && number != 0) {
        m_problem = std::strerror(number);
    } else {
        m_problem = code == MOSQ_ERR_EAI ? "its name cannot be looked up" : plain(mosquitto_strerror(code));
    }
    return false;
}

int mqtt_connection::publish(const mqtt_message& message, bool retained) {
    int number = 0;
    const int code = mosquitto_publish(m_client.get(), &number, message.topic.c_str(), length_of(message.text),
                                       message.text.data(), k_at_least_once, retained);
    return is_fault_of_message(code) ? -1 : number;
}

std::vector<int> mqtt_connection::take_confirmed() {
    return std::exchange(m_confirmed, {});
}

bool mqtt_connection::take_overruled() {
    return std::exchange(m_overruled, false);
}

void mqtt_connection::close() {
    if (mosquitto_disconnect(m_client.get()) != MOSQ_ERR_SUCCESS) return;
    m_ready = false;
    // The library reports the end of the connection as soon as the goodbye is out.
    for (int turns = 0; turns < 100 && mosquitto_loop(m_client.get(), 10, 1) == MOSQ_ERR_SUCCESS; ++turns) {
    }
}

// Where its own will would be heard.
void mqtt_connection::listen() {
    mosquitto_subscribe(m_client.get(), nullptr, m_will.topic.c_str(), k_at_least_once);
}

void mqtt_connection::on_connect(mosquitto*, void* object, int code) {
    self(object).m_refusal = code;
    self(object).m_ready = code == 0;
    if (code == 0) self(object).listen();
}

void mqtt_connection::on_publish(mosquitto*, void* object, int number) {
    self(object).m_confirmed.push_back(number);
}

void mqtt_connection::on_message(mosquitto*, void* object, const mosquitto_message* message) {
    const std::string text(static_cast<const char*>(message->payload), static_cast<size_t>(message->payloadlen));
    // What was kept from before this client came is no news.
    if (!message->retain && text == self(object).m_will.text) self(object).m_overruled = true;
}

void mqtt_connection::on_log(mosquitto*, void* object, int level, const char* text) {
    if (level == MOSQ_LOG_ERR && self(object).m_complaint.empty()) self(object).m_complaint = text;
}

}  // namespace orva_fire
