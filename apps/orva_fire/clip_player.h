// Plays one recording from its beginning to its end, as detection gets it, for programs that only want the answers.
#ifndef ORVA_APPS_ORVA_FIRE_CLIP_PLAYER_H
#define ORVA_APPS_ORVA_FIRE_CLIP_PLAYER_H

#include <functional>
#include <string>

#include "apps/orva_fire/video_source.h"

namespace orva_fire {

struct played_clip {
    double seconds = 0;    // length, with the time of the last picture
    int64_t pictures = 0;  // read
    std::string problem;   // empty if the file was read whole
};

// Calls `look` for every picture that is neither thinned out by the rate (pictures a second, 0 for all) nor a repeat of
// the one before, and `pass` for all others, in their order. Either may be empty.
// Throws io_error if the file cannot be opened or holds no picture.
played_clip play_clip(const std::string& path, double rate, const std::function<void(const source_picture&)>& look,
                      const std::function<void(const source_picture&)>& pass = nullptr);

// The recordings of a folder by name, those in its folders too; or the path itself if it is a file. Throws io_error if
// there is nothing.
std::vector<std::string> find_recordings(const std::string& path);

}  // namespace orva_fire

#endif
