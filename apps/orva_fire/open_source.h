// From what the user wrote as a source to the pictures.
#ifndef ORVA_APPS_ORVA_FIRE_OPEN_SOURCE_H
#define ORVA_APPS_ORVA_FIRE_OPEN_SOURCE_H

#include <memory>
#include <string>
#include <vector>

#include "apps/orva_fire/picture_source.h"

namespace orva_fire {

struct source_options {
    std::string text;           // file, folder, pattern of pictures, address, device, or - for standard input
    std::string camera;         // name for events; empty: one is made from the text
    std::string password_file;  // its first line is the camera's password
    std::string password;       // from the environment
    std::string size;           // of a device's pictures, WIDTHxHEIGHT; empty: its own choice
    double rate = 0;            // pictures a second of single pictures and devices; 0: 25, or the device's choice
    double patience = 10;       // seconds without a picture after which a camera counts as gone
    double first_pause = 1;     // seconds until it is tried again
    bool live = false;          // a pipe comes from a camera
};

// Throws usage_error and io_error, which never repeat a password.
std::unique_ptr<picture_source> open_source(const source_options& options);

// True for names that end as those of videos do.
bool is_video_name(const std::string& name);

// The videos in a folder, sorted, if the text is a folder that holds some; nothing otherwise.
std::vector<std::string> videos_in_folder(const std::string& text);

// A name for the camera: the one given; or the host of an address, the name of a file without ending, of a device,
// "pipe".
std::string camera_name(const source_options& options);

// The source as it may be shown.
std::string shown_source(const source_options& options);

}  // namespace orva_fire

#endif
