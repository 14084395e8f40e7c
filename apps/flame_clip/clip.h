// Turns a scene into an mp4 file and the true boxes beside it.
#ifndef ORVA_APPS_FLAME_CLIP_CLIP_H
#define ORVA_APPS_FLAME_CLIP_CLIP_H

#include <string>

#include "apps/flame_clip/scene.h"

namespace flame_clip {

struct clip_settings {
    scene_settings scene;
    std::string output = "flame.mp4";
    double rate = 25;
    double seconds = 14;
};

// Name of the file with the true boxes that belongs to a clip: "fire.mp4" has "fire.truth.jsonl".
std::string truth_name(const std::string& clip);

// Writes both files. The first line of the truth describes the clip, each following line one picture with a flame.
// Throws orva_fire::io_error.
void make_clip(const clip_settings& settings);

}  // namespace flame_clip

#endif
