#include "apps/orva_fire/clip_player.h"

#include <algorithm>
#include <filesystem>

#include "apps/orva_fire/error.h"
#include "apps/orva_fire/frame_gate.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

bool is_recording(const fs::path& path) {
    static const char* const endings[] = {".mp4", ".m4v", ".mov",  ".mkv", ".webm", ".avi", ".ts",
                                          ".mts", ".mpg", ".mpeg", ".wmv", ".flv",  ".asf", ".3gp"};
    std::string ending = path.extension().string();
    for (char& c : ending) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
}

}  // namespace

played_clip play_clip(const std::string& path, double rate, const std::function<void(const source_picture&)>& look,
                      const std::function<void(const source_picture&)>& pass) {
    video_source source(path);
    rate_limiter limiter(rate);
    repeat_finder repeats;
    played_clip played;
    source_picture picture;
    while (source.next(picture)) {
        ++played.pictures;
        played.seconds = picture.seconds + 1 / source.nominal_rate();
        const bool wanted = limiter.passes(picture.seconds) && !repeats.repeats(*picture.frame);
        const auto& call = wanted ? look : pass;
        if (call) call(picture);
    }
    played.problem = source.problem();
    if (played.pictures == 0) {
        throw io_error(played.problem.empty() ? "'" + path + "': no picture could be decoded" : played.problem);
    }
    return played;
}

std::vector<std::string> find_recordings(const std::string& path) {
    if (!fs::is_directory(path)) return {path};
    std::vector<std::string> found;
    std::error_code error;
    for (fs::recursive_directory_iterator at(path, error), end; !error && at != end; at.increment(error)) {
        if (at->is_regular_file() && is_recording(at->path())) found.push_back(at->path().string());
    }
    if (error) throw io_error("cannot read the folder '" + path + "': " + error.message());
    if (found.empty()) throw io_error("there are no recordings in the folder '" + path + "'");
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace orva_fire
