#include "apps/flame_clip/clip.h"

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/scaler.h"
#include "apps/orva_fire/video_writer.h"

namespace flame_clip {
namespace {

using json = nlohmann::ordered_json;
using namespace orva_fire;

uint8_t to_byte(float value) {
    return static_cast<uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255 + 0.5f);
}

void copy_bytes(const canvas& from, AVFrame& to) {
    for (int y = 0; y < from.height(); ++y) {
        uint8_t* row = to.data[0] + static_cast<ptrdiff_t>(y) * to.linesize[0];
        for (int x = 0; x < from.width(); ++x) {
            const rgb& pixel = from.at(x, y);
            row[3 * x] = to_byte(pixel.r);
            row[3 * x + 1] = to_byte(pixel.g);
            row[3 * x + 2] = to_byte(pixel.b);
        }
    }
}

// What the clip's numbers mean: limited range and BT.601, as small cameras write.
picture_colour clip_colour() {
    picture_colour colour;
    colour.format = AV_PIX_FMT_YUV420P;
    return colour;
}

frame_ptr new_coded_picture(int width, int height) {
    frame_ptr picture = new_picture(AV_PIX_FMT_YUV420P, width, height);
    picture->color_range = AVCOL_RANGE_MPEG;
    picture->colorspace = AVCOL_SPC_SMPTE170M;
    picture->color_primaries = AVCOL_PRI_SMPTE170M;
    picture->color_trc = AVCOL_TRC_SMPTE170M;
    return picture;
}

std::string description(const clip_settings& settings) {
    json line = {{"schema", 1},
                 {"seed", settings.scene.seed},
                 {"width", settings.scene.width},
                 {"height", settings.scene.height},
                 {"fps", settings.rate},
                 {"seconds", settings.seconds}};
    line["onset"] = settings.scene.with_flame ? json(settings.scene.onset) : json(nullptr);
    return line.dump();
}

std::string truth_line(int frame, double seconds, const pixel_box& box) {
    const json entry = {{"x", box.x}, {"y", box.y}, {"width", box.width}, {"height", box.height}};
    const json line = {{"frame", frame}, {"seconds", std::round(seconds * 1000) / 1000}, {"boxes", {entry}}};
    return line.dump();
}

}  // namespace

std::string truth_name(const std::string& clip) {
    return std::filesystem::path(clip).replace_extension(".truth.jsonl").string();
}

void make_clip(const clip_settings& settings) {
    scene painter(settings.scene);
    const int width = settings.scene.width, height = settings.scene.height;
    const frame_ptr raw = new_picture(AV_PIX_FMT_RGB24, width, height);
    scaler converter;
    encoder_settings encoding;
    encoding.preset = "veryfast";
    encoding.quality = 21;
    encoding.rate = settings.rate;
    video_writer video(settings.output, *new_coded_picture(width, height), encoding);
    event_log truth(truth_name(settings.output));
    truth.write(description(settings));
    const int frames = static_cast<int>(std::lround(settings.seconds * settings.rate));
    for (int i = 0; i < frames; ++i) {
        const double seconds = i / settings.rate;
        std::optional<pixel_box> box;
        copy_bytes(painter.paint(seconds, i, box), *raw);
        const frame_ptr coded = new_coded_picture(width, height);
        converter.convert(*raw, clip_colour(), {width, height}, coded->data, coded->linesize);
        video.write(*coded, seconds);
        if (box) truth.write(truth_line(i, seconds, *box));
    }
    video.close();
}

}  // namespace flame_clip
