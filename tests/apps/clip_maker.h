// Makes small video files of every kind that the programs must read.
#ifndef ORVA_TESTS_APPS_CLIP_MAKER_H
#define ORVA_TESTS_APPS_CLIP_MAKER_H

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/flame_clip/scene.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/geometry.h"

namespace apps_test {

// A folder of its own for each test, gone with it.
class temporary_folder {
public:
    temporary_folder();
    ~temporary_folder();
    temporary_folder(const temporary_folder&) = delete;
    temporary_folder& operator=(const temporary_folder&) = delete;

    std::string file(const std::string& name) const { return (m_path / name).string(); }
    std::string path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

struct clip_recipe {
    std::string path;            // the extension picks the container
    const char* codec = "ffv1";  // lossless, for many formats
    AVPixelFormat format = AV_PIX_FMT_YUV420P;
    int width = 320, height = 240;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    int turn = 0;  // degrees clockwise by which a player must turn the pictures
    bool interlaced = false;
    bool index_first = false;
    int rate = 25;
    std::vector<double> times;  // of the pictures, in seconds
    std::function<void(int index, AVFrame& picture)> paint;
};

// Throws std::runtime_error if the libraries refuse.
void make_clip(const clip_recipe& recipe);

// Moments of `count` pictures at a steady rate.
std::vector<double> steady(int count, double rate);

// The pictures of a short synthetic fire, painted into any format, and where it burns.
class fire_pictures {
public:
    fire_pictures(int width, int height, double onset);

    // Paints the picture of one moment.
    void paint(double seconds, int index, AVFrame& picture);

    // The box around every flame painted so far.
    const std::optional<flame_clip::pixel_box>& truth() const { return m_truth; }

private:
    flame_clip::scene m_scene;
    std::optional<flame_clip::pixel_box> m_truth;
};

std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& bytes);

}  // namespace apps_test

#endif
