#include "apps/orva_fire/check.h"

#include <stdlib.h>
#include <time.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <thread>

#include "ORVA_FireDetection.h"
#include "apps/flame_clip/scene.h"
#include "apps/orva_fire/colour.h"
#include "apps/orva_fire/detector.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/look_options.h"
#include "apps/orva_fire/scaler.h"
#include "apps/orva_fire/video_source.h"
#include "apps/orva_fire/video_writer.h"
#include "apps/orva_fire/zone_watcher.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const int k_width = 640, k_height = 360, k_pictures = 125;
const int k_large_pictures = 50;
const double k_rate = 25, k_onset = 0.4;
// A picture of 4 megapixels is sixteen of the scene's pictures side by side: as rich in detail as a real one.
const int k_copies = 4;

class work_folder {
public:
    work_folder() {
        std::string name = (fs::temp_directory_path() / "orva-fire-check-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw io_error("cannot make a folder in '" + fs::temp_directory_path().string() + "'");
        m_path = name;
    }
    ~work_folder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    work_folder(const work_folder&) = delete;
    work_folder& operator=(const work_folder&) = delete;

    std::string file(const char* name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

double processor_seconds() {
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

frame_ptr coded_picture(int width, int height) {
    frame_ptr picture = new_picture(AV_PIX_FMT_YUV420P, width, height);
    picture->color_range = AVCOL_RANGE_MPEG;
    picture->colorspace = AVCOL_SPC_SMPTE170M;
    return picture;
}

uint8_t to_byte(float value) {
    return static_cast<uint8_t>(std::min(std::max(value, 0.0f), 1.0f) * 255 + 0.5f);
}

frame_ptr picture_of(const flame_clip::canvas& painted, scaler& convert) {
    const frame_ptr rgb = new_picture(AV_PIX_FMT_RGB24, painted.width(), painted.height());
    for (int y = 0; y < painted.height(); ++y) {
        uint8_t* row = rgb->data[0] + static_cast<ptrdiff_t>(y) * rgb->linesize[0];
        for (int x = 0; x < painted.width(); ++x) {
            const flame_clip::rgb& pixel = painted.at(x, y);
            row[3 * x] = to_byte(pixel.r);
            row[3 * x + 1] = to_byte(pixel.g);
            row[3 * x + 2] = to_byte(pixel.b);
        }
    }
    frame_ptr picture = coded_picture(painted.width(), painted.height());
    convert.convert(*rgb, colour_of(*picture), {picture->width, picture->height}, picture->data, picture->linesize);
    return picture;
}

frame_ptr repeated(const AVFrame& picture) {
    frame_ptr large = coded_picture(k_copies * picture.width, k_copies * picture.height);
    for (int plane = 0; plane < 3; ++plane) {
        const int width = plane == 0 ? picture.width : picture.width / 2;
        const int height = plane == 0 ? picture.height : picture.height / 2;
        for (int y = 0; y < k_copies * height; ++y) {
            const uint8_t* from = picture.data[plane] + static_cast<ptrdiff_t>(y % height) * picture.linesize[plane];
            uint8_t* to = large->data[plane] + static_cast<ptrdiff_t>(y) * large->linesize[plane];
            for (int i = 0; i < k_copies; ++i) std::copy(from, from + width, to + i * width);
        }
    }
    return large;
}

// Both clips from one painting of the scene. Returns the box around every flame painted.
flame_clip::pixel_box make_clips(const std::string& small, const std::string& large) {
    flame_clip::scene_settings settings;
    settings.width = k_width;
    settings.height = k_height;
    settings.onset = k_onset;
    flame_clip::scene scene(settings);
    scaler convert;
    std::unique_ptr<video_writer> small_writer, large_writer;
    int left = k_width, top = k_height, right = 0, bottom = 0;
    for (int i = 0; i < k_pictures; ++i) {
        std::optional<flame_clip::pixel_box> flame;
        const frame_ptr picture = picture_of(scene.paint(i / k_rate, i, flame), convert);
        if (flame) {
            left = std::min(left, flame->x);
            top = std::min(top, flame->y);
            right = std::max(right, flame->x + flame->width);
            bottom = std::max(bottom, flame->y + flame->height);
        }
        if (!small_writer) small_writer = std::make_unique<video_writer>(small, *picture, encoder_settings());
        small_writer->write(*picture, i / k_rate);
        if (i >= k_large_pictures) continue;
        const frame_ptr copies = repeated(*picture);
        if (!large_writer) large_writer = std::make_unique<video_writer>(large, *copies, encoder_settings());
        large_writer->write(*copies, i / k_rate);
    }
    small_writer->close();
    large_writer->close();
    return {left, top, right - left, bottom - top};
}

struct clip_answer {
    camera_load load;
    picture_size size;
    std::optional<int64_t> first_report;
    box first_box;
};

// A clip with the options that detect has if none are given, with the decoding.
clip_answer look_at(const std::string& clip) {
    clip_answer answer;
    const double start = processor_seconds();
    video_source source(clip);
    std::unique_ptr<zone_watcher> watcher;
    stopwatch converting, detecting;
    source_picture picture;
    while (source.next(picture)) {
        answer.size = {picture.frame->width, picture.frame->height};
        if (!watcher) {
            watcher = std::make_unique<zone_watcher>(std::vector<box>{{0, 0, answer.size.width, answer.size.height}},
                                                     watch_settings_of(look_options()));
        }
        const zone_answer seen = watcher->observe(*picture.frame, picture.seconds, converting, detecting);
        ++answer.load.pictures;
        if (seen.boxes.empty() || answer.first_report) continue;
        answer.first_report = picture.index;
        answer.first_box = largest_box(seen.boxes);
    }
    answer.load.processor_seconds = processor_seconds() - start;
    return answer;
}

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0 || line.rfind("Model", 0) == 0) return line.substr(line.find(": ") + 2);
    }
    return "unknown";
}

// What the row functions were compiled for.
const char* vector_instructions() {
#if defined(__AVX2__)
    return "AVX2";
#elif defined(__SSE2__)
    return "SSE2";
#elif defined(__ARM_NEON)
    return "NEON";
#else
    return "no vector instructions";
#endif
}

void print_versions(int processors) {
    std::printf("orva-fire  " ORVA_FIRE_VERSION ", library %d.%d.%d, FFmpeg %s\n", ORVA_FD_VERSION_MAJOR,
                ORVA_FD_VERSION_MINOR, ORVA_FD_VERSION_PATCH, av_version_info());
    std::printf("processor  %s, %d at once\n", processor_name().c_str(), processors);
    std::printf("detection  on the processor, row functions compiled for %s\n", vector_instructions());
}

void print_cameras(const clip_answer& answer, int processors) {
    const double milliseconds = 1000 * answer.load.processor_seconds / static_cast<double>(answer.load.pictures);
    std::printf("cameras    %4d of %d x %d at %g pictures a second, H.264: %.2f ms of one processor a picture\n",
                cameras_sustained(answer.load, processors, k_rate), answer.size.width, answer.size.height, k_rate,
                milliseconds);
}

bool is_inside(const box& found, const flame_clip::pixel_box& truth) {
    const int x = found.x + found.width / 2, y = found.y + found.height / 2;
    return x >= truth.x && x < truth.x + truth.width && y >= truth.y && y < truth.y + truth.height;
}

}  // namespace

int cameras_sustained(const camera_load& load, int processors, double rate) {
    if (load.pictures <= 0 || load.processor_seconds <= 0) return 0;
    const double a_picture = load.processor_seconds / static_cast<double>(load.pictures);
    return static_cast<int>(std::floor(processors / (a_picture * rate)));
}

int run_check() {
    const int processors = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    print_versions(processors);
    std::fflush(stdout);
    silence_messages();
    const work_folder folder;
    const std::string small = folder.file("small.mp4"), large = folder.file("large.mp4");
    const flame_clip::pixel_box truth = make_clips(small, large);
    clip_answer near, far;
    {
        const library_output own("");
        const detector_session session;
        near = look_at(small);
        far = look_at(large);
    }
    const bool found = near.first_report && is_inside(near.first_box, truth);
    if (found) {
        std::printf("self-test  passed: the built-in fire was reported in picture %lld, %.1f s after it began\n",
                    static_cast<long long>(*near.first_report),
                    static_cast<double>(*near.first_report) / k_rate - k_onset);
    } else {
        std::printf("self-test  FAILED: the built-in fire was not reported where it burns\n");
    }
    print_cameras(near, processors);
    print_cameras(far, processors);
    std::printf("           with the options that detect has by default, decoding included, without annotated video\n");
    std::fflush(stdout);
    return found ? k_exit_nothing : k_exit_io;
}

}  // namespace orva_fire
