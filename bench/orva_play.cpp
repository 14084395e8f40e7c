// orva-play: plays one scene through a library or the plain text and prints nothing, to be run under a profiler, an
// instruction counter or a cache simulator.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "bench/contenders.h"
#include "bench/measure.h"
#include "bench/painting.h"
#include "bench/plain/plain.h"
#include "bench/scenes.h"

namespace {

struct options {
    std::string library;  // empty: the plain text
    std::string scene = "quiet";
    int frames = 60;
    bool list = false;
};

std::vector<bench::scene> all_scenes() {
    std::vector<bench::scene> scenes = {bench::quiet_scene(bench::k_full_width, bench::k_full_height),
                                        bench::busy_scene(bench::k_full_width, bench::k_full_height, 60)};
    for (const std::vector<bench::painting>& group : {bench::constructed_paintings(), bench::found_paintings()}) {
        for (const bench::painting& p : group)
            scenes.push_back(bench::paint(p, bench::k_full_width, bench::k_full_height));
    }
    return scenes;
}

bool read_options(int argc, char** argv, options* o) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const bool has_value = i + 1 < argc;
        if (word == "--list") {
            o->list = true;
        } else if (word == "--library" && has_value) {
            o->library = argv[++i];
        } else if (word == "--scene" && has_value) {
            o->scene = argv[++i];
        } else if (word == "--frames" && has_value) {
            o->frames = std::atoi(argv[++i]);
        } else if (word != "--plain") {
            return false;
        }
    }
    return true;
}

void play(bench::contender& who, const bench::scene& s, int frames) {
    const int handle = who.open();
    fd_result result;
    for (int i = 0; i < frames; ++i) who.play(handle, s.frame(static_cast<std::size_t>(i)), &result);
    who.close(handle);
}

}  // namespace

int main(int argc, char** argv) {
    options o;
    if (!read_options(argc, argv, &o)) {
        std::fprintf(stderr, "usage: orva-play [--library PATH | --plain] [--scene NAME] [--frames N] | --list\n");
        return 2;
    }
    for (const bench::scene& s : all_scenes()) {
        if (o.list) std::printf("%s\n", s.name.c_str());
        if (o.list || s.name != o.scene) continue;
        bench::silence_standard_output();
        const bench::six_functions functions = o.library.empty() ? plain_o2::functions : bench::load_library(o.library);
        play(*bench::make_contender("player", functions), s, o.frames);
        return 0;
    }
    if (o.list) return 0;
    std::fprintf(stderr, "no scene is called '%s'\n", o.scene.c_str());
    return 2;
}
