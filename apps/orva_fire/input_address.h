// How one stream of pictures is opened: what the FFmpeg libraries are told, and what the user is told about it.
#ifndef ORVA_APPS_ORVA_FIRE_INPUT_ADDRESS_H
#define ORVA_APPS_ORVA_FIRE_INPUT_ADDRESS_H

#include <functional>
#include <map>
#include <string>

#include "apps/orva_fire/ffmpeg.h"

namespace orva_fire {

struct input_address {
    std::string name;    // for messages; never holds a password
    std::string url;     // for the libraries; may hold one and is never shown
    std::string format;  // name of the demuxer; empty: found out from the content
    std::map<std::string, std::string> options;
    std::function<void(AVFormatContext& input)> prepare;  // called before the input is opened; may be empty
    bool live = false;                                    // decode without delay, expect no end
};

// A file in the file system. Throws io_error if it cannot hold a video: missing, a folder, empty.
input_address file_address(const std::string& path);

// A camera at rtsp:// or rtsps://, over TCP. user and password: as they are; the address itself must hold none of them
// but may hold a user. seconds: how long to wait for an answer.
// Throws usage_error that does not repeat a password.
input_address camera_address(const std::string& address, const std::string& password, double seconds);

// A camera at a video device. size: "WIDTHxHEIGHT" or empty, rate: pictures a second or 0, both for the device's
// choice. Throws io_error if there is no such device.
input_address device_address(const std::string& path, const std::string& size, double rate);

// True for text of the form scheme://rest.
bool is_address(const std::string& text);

// Bytes that have a meaning in addresses as %XX.
std::string percent_coded(const std::string& text);

}  // namespace orva_fire

#endif
