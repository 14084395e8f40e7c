#include "apps/orva_fire/mqtt_options.h"

#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <fstream>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/mqtt_address.h"
#include "apps/orva_fire/password_file.h"

namespace orva_fire {
namespace {

std::string check_address(const std::string& text) {
    try {
        (void)parse_mqtt_address(text);
        return {};
    } catch (const usage_error& error) {
        return error.what();
    }
}

}  // namespace

void add_mqtt_options(CLI::App& app, mqtt_options& options) {
    CLI::Option* address = app.add_option("--mqtt", options.url,
                                          "tell events, trouble and counters to the broker at mqtt://[USER@]HOST[:PORT]"
                                          "[/PREFIX], or mqtts:// with TLS")
                               ->type_name("URL");
    address->check(CLI::Validator(check_address, ""));
    app.add_option(
           "--mqtt-password-file", options.password_file,
           "the password for the broker is the first line of this file; otherwise it is taken from the variable "
           "ORVA_FIRE_MQTT_PASSWORD")
        ->type_name("FILE")
        ->needs(address);
    app.add_option("--mqtt-ca", options.ca_file,
                   "trust a broker by these certificates, PEM (default: those that this system trusts)")
        ->type_name("FILE")
        ->needs(address);
    app.add_option("--mqtt-discovery", options.discovery,
                   "prefix of the topics by which home automation finds the camera")
        ->capture_default_str()
        ->type_name("PREFIX")
        ->check(CLI::Validator(check_topic_prefix, ""))
        ->needs(address);
    app.add_flag("--no-mqtt-discovery", options.no_discovery, "say nothing on those topics")->needs(address);
}

void take_mqtt_password(mqtt_options& options) {
    if (const char* password = std::getenv("ORVA_FIRE_MQTT_PASSWORD")) options.password = password;
    unsetenv("ORVA_FIRE_MQTT_PASSWORD");
}

mqtt_login login_of(const mqtt_options& options) {
    mqtt_login login;
    login.broker = parse_mqtt_address(options.url);
    login.ca_file = options.ca_file;
    login.password = options.password;
    if (!options.password_file.empty()) {
        login.password = read_password_file(options.password_file, "--mqtt-password-file");
    }
    if (!login.ca_file.empty() && !std::ifstream(login.ca_file)) {
        throw io_error("--mqtt-ca: cannot read '" + login.ca_file + "'");
    }
    if (!login.broker.tls && !login.ca_file.empty()) {
        throw usage_error("--mqtt-ca: certificates are looked at with mqtts:// only");
    }
    if (!login.password.empty() && login.broker.user.empty()) {
        throw usage_error("--mqtt: there is a password but no user: write mqtt://USER@HOST");
    }
    return login;
}

}  // namespace orva_fire
