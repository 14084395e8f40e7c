#include "apps/orva_fire/folder_run.h"

#include <cstdio>
#include <filesystem>

#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/stop_signal.h"

namespace orva_fire {
namespace {

void refuse_single_files(const detect_options& options) {
    const auto refuse = [](const std::string& value, const char* option) {
        if (value.empty() || value == "-") return;
        throw usage_error(std::string(option) +
                          " names one file, but the source is a folder of videos; leave it out, and "
                          "each video's results go into a folder of their own");
    };
    refuse(options.events, "--events");
    refuse(options.frames, "--frames");
    refuse(options.video, "--video");
    refuse(options.library_log, "--library-log");
}

}  // namespace

int run_folder(const detect_options& options, const std::vector<std::string>& videos) {
    refuse_single_files(options);
    size_t failed = 0, burning = 0, done = 0;
    for (const std::string& video : videos) {
        if (stop_wanted()) break;
        detect_options one = options;
        one.source.text = video;
        one.folder = options.folder + "/" + std::filesystem::path(video).filename().string();
        std::fprintf(stderr, "orva-fire: '%s' (%zu of %zu)\n", video.c_str(), ++done, videos.size());
        try {
            if (run_detect(one) == k_exit_fire) ++burning;
        } catch (const io_error& error) {
            std::fprintf(stderr, "orva-fire: %s\n", error.what());
            ++failed;
        }
    }
    std::fprintf(stderr, "orva-fire: %zu of %zu videos, %zu with fire reported, %zu with errors\n", done, videos.size(),
                 burning, failed);
    if (stop_wanted() && done < videos.size()) throw io_error("stopped by a signal before the last video");
    if (failed > 0) return k_exit_io;
    return burning > 0 ? k_exit_fire : k_exit_nothing;
}

}  // namespace orva_fire
