#include "apps/orva_fire/mqtt_address.h"

#include <cctype>
#include <cstdlib>

#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

const int k_port = 1883, k_tls_port = 8883;
const size_t k_longest_prefix = 200;

// Cuts what stands before a separator off the front of a text; the text without one is left as it is.
bool cut_front(std::string& text, const std::string& separator, std::string& front) {
    const size_t at = text.find(separator);
    if (at == std::string::npos) return false;
    front = text.substr(0, at);
    text.erase(0, at + separator.size());
    return true;
}

std::string without_percent(const std::string& coded) {
    std::string text;
    for (size_t i = 0; i < coded.size(); ++i) {
        const bool code = coded[i] == '%' && i + 2 < coded.size() &&
                          std::isxdigit(static_cast<unsigned char>(coded[i + 1])) &&
                          std::isxdigit(static_cast<unsigned char>(coded[i + 2]));
        if (code) {
            text += static_cast<char>(std::strtol(coded.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            text += coded[i];
        }
    }
    return text;
}

int read_port(const std::string& text, const std::string& place) {
    const bool digits = !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == std::string::npos;
    const int port = digits ? std::atoi(text.c_str()) : 0;
    if (port < 1 || port > 65535) throw usage_error("'" + place + "': a port is a number from 1 to 65535");
    return port;
}

// HOST, HOST:PORT or [HOST]:PORT, in which the host may hold colons.
void read_place(const std::string& place, mqtt_address& address) {
    const size_t bracket = place.find(']');
    const bool bracketed = !place.empty() && place[0] == '[' && bracket != std::string::npos;
    const size_t colon = place.find(':', bracketed ? bracket : 0);
    address.host = bracketed ? place.substr(1, bracket - 1) : place.substr(0, colon);
    if (address.host.empty()) throw usage_error("the address of the broker names no host: write mqtt://HOST");
    if (colon != std::string::npos) address.port = read_port(place.substr(colon + 1), place);
}

}  // namespace

std::string mqtt_address::shown() const {
    const bool brackets = host.find(':') != std::string::npos;
    return (tls ? "mqtts://" : "mqtt://") + (brackets ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::string check_topic_prefix(const std::string& prefix) {
    if (prefix.empty() || prefix.size() > k_longest_prefix) return "topics begin with 1 to 200 bytes of text";
    if (prefix.front() == '/' || prefix.back() == '/' || prefix.front() == '$') {
        return "topics begin neither with / nor with $, and what is put in front of them does not end with /";
    }
    for (const char c : prefix) {
        if (c == '+' || c == '#' || static_cast<unsigned char>(c) < 32 || c == 127) {
            return "topics hold no +, no # and no control characters";
        }
    }
    return {};
}

mqtt_address parse_mqtt_address(const std::string& text) {
    mqtt_address address;
    std::string rest = text, scheme, login, place;
    const bool known = cut_front(rest, "://", scheme) && (scheme == "mqtt" || scheme == "mqtts");
    // The text is not repeated: whatever it is, it may hold a password.
    if (!known) throw usage_error("a broker's address is mqtt://[USER@]HOST[:PORT][/PREFIX] or mqtts://...");
    address.tls = scheme == "mqtts";
    address.port = address.tls ? k_tls_port : k_port;
    if (cut_front(rest, "@", login)) {
        if (login.find(':') != std::string::npos) {
            throw usage_error(
                "the address of the broker holds a password, which everybody on this machine could read; write " +
                scheme +
                "://USER@HOST and give the password with --mqtt-password-file or in the variable "
                "ORVA_FIRE_MQTT_PASSWORD");
        }
        address.user = without_percent(login);
    }
    if (cut_front(rest, "/", place)) {
        if (!rest.empty()) address.prefix = rest;
    } else {
        place = rest;
    }
    read_place(place, address);
    const std::string complaint = check_topic_prefix(address.prefix);
    if (!complaint.empty()) throw usage_error("'" + address.prefix + "': " + complaint);
    return address;
}

}  // namespace orva_fire
