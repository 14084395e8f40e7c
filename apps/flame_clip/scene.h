// The whole clip, picture by picture: the still room, people who walk through it, lamps, and from the onset on a flame.
#ifndef ORVA_APPS_FLAME_CLIP_SCENE_H
#define ORVA_APPS_FLAME_CLIP_SCENE_H

#include <cstdint>
#include <optional>

#include "apps/flame_clip/canvas.h"
#include "apps/flame_clip/flame.h"
#include "apps/flame_clip/noise.h"

namespace flame_clip {

struct scene_settings {
    uint32_t seed = 7;
    int width = 640;
    int height = 360;
    double onset = 4;  // seconds until the flame begins
    bool with_flame = true;
};

class scene {
public:
    explicit scene(const scene_settings& settings);

    // The picture at a moment, and the box around the visible flame in it, if there is one.
    // index: of the picture; it picks the camera's grain.
    const canvas& paint(double seconds, int index, std::optional<pixel_box>& truth);

private:
    void paint_lamps(float time);
    void paint_people(float time);
    void light_room(float strength);
    void paint_smoke(float age);
    void add_grain(int index);

    const scene_settings m_settings;
    const noise m_noise;
    const canvas m_backdrop;
    const flame m_flame;
    canvas m_picture;
};

}  // namespace flame_clip

#endif
