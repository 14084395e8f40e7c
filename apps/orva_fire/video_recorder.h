// The annotated video as one file, as a row of files, or as a stream for a player.
#ifndef ORVA_APPS_ORVA_FIRE_VIDEO_RECORDER_H
#define ORVA_APPS_ORVA_FIRE_VIDEO_RECORDER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "apps/orva_fire/video_writer.h"

namespace orva_fire {

struct recorder_settings {
    std::string path;       // of the one file, or of the first of a row; its stem names the others
    int descriptor = -1;    // at least 0: a stream is written there instead
    double rate = 25;       // pictures a second, a hint
    double segment = 0;     // seconds after which a new file begins; 0: never
    double keep_hours = 0;  // files of a live source that began longer ago are removed; 0: none
};

class video_recorder {
public:
    explicit video_recorder(const recorder_settings& settings) : m_settings(settings) {}

    // Adds one picture; the first decides about size and colour. wall_milliseconds: of live sources.
    // Throws io_error that names the file.
    void write(const AVFrame& picture, double seconds, const std::optional<int64_t>& wall_milliseconds);

    // Finishes the last file.
    void close();

    int64_t pictures() const { return m_pictures; }

    // The file that is being written, empty for a stream, and the second of the source at which it began.
    const std::string& file() const { return m_file; }
    double file_start() const { return m_segment_start; }

private:
    std::string next_path(const std::optional<int64_t>& wall_milliseconds);
    void open(const AVFrame& picture, const std::optional<int64_t>& wall_milliseconds);
    void remove_old(int64_t now) const;

    const recorder_settings m_settings;
    std::unique_ptr<video_writer> m_writer;
    std::string m_file;
    double m_segment_start = 0;
    int m_segments = 0;
    int64_t m_pictures = 0;
};

}  // namespace orva_fire

#endif
