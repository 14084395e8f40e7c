#include "apps/orva_fire/input_address.h"

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "apps/orva_fire/error.h"

extern "C" {
#include <libavdevice/avdevice.h>
}

namespace orva_fire {
namespace {

const size_t k_longest_password = 100;  // the libraries hold user and password in 128 bytes

std::string number_text(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

struct address_parts {
    std::string scheme, user, place;
};

// Splits SCHEME://USER@PLACE. A password in it would stay in the list of processes and in the shell's history.
address_parts split_address(const std::string& address) {
    address_parts parts;
    const size_t colon = address.find("://");
    parts.scheme = address.substr(0, colon);
    parts.place = address.substr(colon + 3);
    const size_t slash = parts.place.find('/');
    const size_t at = parts.place.rfind('@', slash);
    if (at == std::string::npos) return parts;
    parts.user = parts.place.substr(0, at);
    parts.place = parts.place.substr(at + 1);
    if (parts.user.find(':') != std::string::npos) {
        throw usage_error("the address " + parts.scheme + "://...@" + parts.place +
                          " holds a password, which everybody on this machine could read; write " + parts.scheme +
                          "://USER@" + parts.place +
                          " and give the password with --password-file or in the variable "
                          "ORVA_FIRE_PASSWORD");
    }
    return parts;
}

}  // namespace

input_address file_address(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) throw io_error("'" + path + "' does not exist");
    if (std::filesystem::is_directory(status)) throw io_error("'" + path + "' is a folder; give a video file");
    if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(path, error) == 0 && !error) {
        throw io_error("'" + path + "' is empty");
    }
    input_address address;
    address.name = "'" + path + "'";
    address.url = file_url(path);
    return address;
}

bool is_address(const std::string& text) {
    const size_t colon = text.find("://");
    return colon != std::string::npos && colon > 0 &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+.-") == colon;
}

std::string percent_coded(const std::string& text) {
    std::string coded;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.') {
            coded += c;
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
            coded += hex;
        }
    }
    return coded;
}

input_address camera_address(const std::string& address, const std::string& password, double seconds) {
    const address_parts parts = split_address(address);
    if (parts.scheme != "rtsp" && parts.scheme != "rtsps") {
        throw usage_error("'" + parts.scheme + "://" + parts.place +
                          "': cameras are read at rtsp:// and rtsps:// addresses");
    }
    if (password.size() > k_longest_password) throw usage_error("the password is longer than 100 bytes");
    if (parts.user.empty() && !password.empty()) {
        throw usage_error("there is a password but no user: write " + parts.scheme + "://USER@" + parts.place);
    }
    input_address result;
    result.name = parts.scheme + "://" + parts.place;
    result.url = parts.scheme + "://";
    if (!parts.user.empty()) result.url += parts.user + (password.empty() ? "" : ":" + percent_coded(password)) + "@";
    result.url += parts.place;
    result.format = "rtsp";
    result.options = {{"rtsp_transport", "tcp"},
                      {"timeout", std::to_string(std::llround(seconds * 1e6))},
                      {"allowed_media_types", "video"},
                      {"analyzeduration", "2000000"},
                      // Three pictures tell the rate well enough; more would only delay the first look.
                      {"fpsprobesize", "3"}};
    result.live = true;
    return result;
}

input_address device_address(const std::string& path, const std::string& size, double rate) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        throw io_error("there is no camera at '" + path + "': " + std::strerror(errno) +
                       "; ls /dev/video* shows which there are");
    }
    if (!S_ISCHR(status.st_mode)) throw io_error("'" + path + "' is no device");
    avdevice_register_all();
    input_address address;
    address.name = "'" + path + "'";
    address.url = path;
    address.format = "video4linux2";
    if (!size.empty()) address.options["video_size"] = size;
    if (rate > 0) address.options["framerate"] = number_text(rate);
    // So that a camera that gives nothing can be waited for without being stuck in it.
    address.prepare = [](AVFormatContext& input) { input.flags |= AVFMT_FLAG_NONBLOCK; };
    address.live = true;
    return address;
}

}  // namespace orva_fire
