#include "tests/apps/example_clips.h"

#include "apps/orva_fire/video_source.h"

namespace apps_test {

void paint_patch(int index, AVFrame& picture, const colour& drawn) {
    const int size = 24 + 8 * (index * 7 % 5);
    paint(picture, picture.width * 5 / 8 - size / 2, picture.height / 2 - size / 2, size, size, drawn);
}

std::string burning_clip(const temporary_folder& folder, const std::string& name, int pictures) {
    clip_recipe recipe;
    recipe.path = folder.file(name);
    if (std::filesystem::path(name).extension() != ".mkv") recipe.codec = "libx264";
    recipe.times = steady(pictures, 25);
    recipe.paint = [](int index, AVFrame& picture) {
        paint(picture, 0, 0, picture.width, picture.height, {30, 30, 30});
        paint_patch(index, picture);
    };
    make_clip(recipe);
    return recipe.path;
}

int pictures_in(const std::string& path) {
    orva_fire::video_source video(path);
    orva_fire::source_picture picture;
    int count = 0;
    while (video.next(picture)) ++count;
    return count;
}

}  // namespace apps_test
