// flame-clip: makes a synthetic clip of a store room in which a fire breaks out, and writes down where it truly is.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "apps/flame_clip/clip.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/ffmpeg.h"

namespace {

// "640x360" into two even numbers.
std::string read_size(const std::string& text, int& width, int& height) {
    char rest = 0;
    const bool two = std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) == 2;
    if (two && width >= 160 && width <= 3840 && height >= 120 && height <= 2160 && width % 2 == 0 && height % 2 == 0) {
        return {};
    }
    return "a size is WIDTHxHEIGHT, even numbers from 160x120 to 3840x2160, not '" + text + "'";
}

}  // namespace

int main(int argc, char** argv) {
    orva_fire::silence_messages();
    flame_clip::clip_settings settings;
    std::string size = "640x360";
    bool no_flame = false;

    CLI::App app("Makes a clip of a store room with people and lamps, in which a fire breaks out.", "flame-clip");
    app.footer(
        "Beside CLIP.mp4 it writes CLIP.truth.jsonl: a line about the clip, then one line for each picture with a "
        "flame.");
    app.add_option("CLIP", settings.output, "the mp4 file to write")->required();
    app.add_option("--seed", settings.scene.seed, "another number gives another clip; the same one the same clip")
        ->capture_default_str();
    app.add_option("--size", size, "picture size")->capture_default_str()->type_name("WIDTHxHEIGHT");
    app.add_option("--fps", settings.rate, "pictures a second")
        ->capture_default_str()
        ->check(CLI::Range(1, 120).description(""));
    app.add_option("--seconds", settings.seconds, "length")
        ->capture_default_str()
        ->check(CLI::Range(0.1, 3600.0).description(""));
    app.add_option("--onset", settings.scene.onset, "seconds until the fire breaks out")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber.description(""));
    app.add_flag("--no-flame", no_flame, "the same scene without the fire");
    try {
        app.parse(argc, argv);
        const std::string complaint = read_size(size, settings.scene.width, settings.scene.height);
        if (!complaint.empty()) throw CLI::ValidationError("--size", complaint);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, std::cout, std::cerr) == 0 ? 0 : orva_fire::k_exit_usage;
    }
    settings.scene.with_flame = !no_flame;
    try {
        flame_clip::make_clip(settings);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "flame-clip: %s\n", error.what());
        return orva_fire::k_exit_io;
    }
    return 0;
}
