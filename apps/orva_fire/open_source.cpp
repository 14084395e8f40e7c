#include "apps/orva_fire/open_source.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/image_source.h"
#include "apps/orva_fire/input_address.h"
#include "apps/orva_fire/live_source.h"
#include "apps/orva_fire/password_file.h"
#include "apps/orva_fire/pipe_input.h"
#include "apps/orva_fire/video_source.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const char k_device_start[] = "/dev/video";
const double k_image_rate = 25;

bool is_there(const std::string& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool is_folder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

template <typename Wanted>
std::vector<std::string> files_in(const std::string& folder, Wanted wanted) {
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::error_code ignored;
        if (entry.is_regular_file(ignored) && wanted(entry.path().filename().string())) {
            files.push_back(entry.path().string());
        }
    }
    if (error) throw io_error("cannot read the folder '" + folder + "': " + error.message());
    sort_naturally(files);
    return files;
}

std::string password_of(const source_options& options) {
    if (options.password_file.empty()) return options.password;
    return read_password_file(options.password_file, "--password-file");
}

live_settings live_settings_of(const source_options& options) {
    live_settings settings;
    settings.patience = options.patience;
    settings.first_pause = options.first_pause;
    return settings;
}

std::unique_ptr<picture_source> open_pipe(const source_options& options) {
    input_address address = pipe_address(STDIN_FILENO, "standard input");
    if (!options.live) return std::make_unique<video_source>(address);
    address.live = true;
    live_settings settings = live_settings_of(options);
    settings.reconnects = false;
    return std::make_unique<live_source>(address, settings);
}

std::unique_ptr<picture_source> open_images(const source_options& options, std::vector<std::string> files) {
    const double rate = options.rate > 0 ? options.rate : k_image_rate;
    return std::make_unique<image_source>(std::move(files), options.text, rate);
}

std::unique_ptr<picture_source> open_folder(const source_options& options) {
    std::vector<std::string> images = files_in(options.text, is_image_name);
    if (images.empty()) {
        throw io_error("the folder '" + options.text +
                       "' holds no videos and no pictures, by the endings of their names");
    }
    return open_images(options, std::move(images));
}

bool is_device(const std::string& text) {
    return text.rfind(k_device_start, 0) == 0;
}

bool is_remote(const std::string& text) {
    return is_address(text) && !is_there(text);
}

}  // namespace

bool is_video_name(const std::string& name) {
    static const std::set<std::string> k_endings = {
        ".mp4", ".m4v", ".mkv", ".mov", ".avi", ".ts",  ".mts",  ".m2ts", ".mpg",  ".mpeg",  ".webm", ".flv",
        ".wmv", ".3gp", ".asf", ".ogv", ".264", ".265", ".h264", ".h265", ".hevc", ".mjpeg", ".mjpg", ".dav"};
    std::string ending = fs::path(name).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return k_endings.count(ending) > 0;
}

std::unique_ptr<picture_source> open_source(const source_options& options) {
    const std::string& text = options.text;
    if (text == "-") return open_pipe(options);
    if (is_remote(text)) {
        return std::make_unique<live_source>(camera_address(text, password_of(options), options.patience),
                                             live_settings_of(options));
    }
    if (is_device(text)) {
        return std::make_unique<live_source>(device_address(text, options.size, options.rate),
                                             live_settings_of(options));
    }
    if (is_folder(text)) return open_folder(options);
    if (!is_there(text)) {
        std::vector<std::string> images = images_of_pattern(text);
        if (!images.empty()) return open_images(options, std::move(images));
    }
    return std::make_unique<video_source>(text);
}

std::vector<std::string> videos_in_folder(const std::string& text) {
    return is_folder(text) ? files_in(text, is_video_name) : std::vector<std::string>();
}

std::string shown_source(const source_options& options) {
    const std::string& text = options.text;
    if (text == "-") return "standard input";
    if (!is_remote(text)) return "'" + text + "'";
    const size_t start = text.find("://") + 3;
    const size_t at = text.rfind('@', text.find('/', start));
    return text.substr(0, start) + (at != std::string::npos && at >= start ? text.substr(at + 1) : text.substr(start));
}

std::string camera_name(const source_options& options) {
    if (!options.camera.empty()) return options.camera;
    if (options.text == "-") return "pipe";
    if (is_remote(options.text)) {
        const std::string shown = shown_source(options);
        const size_t start = shown.find("://") + 3;
        return shown.substr(start, shown.find_first_of(":/", start) - start);
    }
    fs::path path = options.text;
    if (!path.has_filename()) path = path.parent_path();
    return is_folder(options.text) ? path.filename().string() : path.stem().string();
}

}  // namespace orva_fire
