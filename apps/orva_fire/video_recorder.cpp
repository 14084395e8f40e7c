#include "apps/orva_fire/video_recorder.h"

#include <cstdio>
#include <filesystem>
#include <regex>

#include "apps/orva_fire/wall_clock.h"

namespace orva_fire {
namespace {

namespace fs = std::filesystem;

const double k_milliseconds_an_hour = 3600e3;

}  // namespace

// annotated.mp4 alone; annotated-0001.mp4 and on in a row; annotated-20261121T134832Z.mp4 and on of a live source.
std::string video_recorder::next_path(const std::optional<int64_t>& wall_milliseconds) {
    ++m_segments;
    if (m_settings.segment <= 0) return m_settings.path;
    const fs::path path(m_settings.path);
    const std::string stem = (path.parent_path() / path.stem()).string(), ending = path.extension().string();
    char number[16];
    std::snprintf(number, sizeof number, "-%04d", m_segments);
    if (!wall_milliseconds) return stem + number + ending;
    const std::string name = stem + "-" + file_time(*wall_milliseconds);
    return fs::exists(name + ending) ? name + number + ending : name + ending;
}

void video_recorder::remove_old(int64_t now) const {
    if (m_settings.keep_hours <= 0) return;
    const fs::path path(m_settings.path);
    const std::string oldest = file_time(now - static_cast<int64_t>(m_settings.keep_hours * k_milliseconds_an_hour));
    const std::regex ours("(.+)-([0-9]{8}T[0-9]{6}Z)(-[0-9]{4,})?");
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(path.parent_path(), error)) {
        std::smatch parts;
        const std::string stem = entry.path().stem().string();
        if (entry.path().extension() != path.extension() || !std::regex_match(stem, parts, ours)) continue;
        if (parts[1] == path.stem().string() && parts[2] < oldest) fs::remove(entry.path(), error);
    }
}

void video_recorder::open(const AVFrame& picture, const std::optional<int64_t>& wall_milliseconds) {
    encoder_settings encoder;
    encoder.rate = m_settings.rate;
    if (m_settings.descriptor >= 0) {
        m_writer = std::make_unique<video_writer>(m_settings.descriptor, "standard output", picture, encoder);
        return;
    }
    if (wall_milliseconds) remove_old(*wall_milliseconds);
    m_file = next_path(wall_milliseconds);
    m_writer = std::make_unique<video_writer>(m_file, picture, encoder);
}

void video_recorder::write(const AVFrame& picture, double seconds, const std::optional<int64_t>& wall_milliseconds) {
    const bool full =
        m_settings.segment > 0 && m_settings.descriptor < 0 && seconds - m_segment_start >= m_settings.segment;
    if (m_writer && full) close();
    if (!m_writer) {
        open(picture, wall_milliseconds);
        m_segment_start = seconds;
    }
    m_writer->write(picture, seconds - m_segment_start);
    ++m_pictures;
}

void video_recorder::close() {
    if (!m_writer) return;
    const std::unique_ptr<video_writer> writer = std::move(m_writer);
    writer->close();
}

}  // namespace orva_fire
