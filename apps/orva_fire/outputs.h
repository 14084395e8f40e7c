// Everything that a run writes, each part only if it is wanted.
#ifndef ORVA_APPS_ORVA_FIRE_OUTPUTS_H
#define ORVA_APPS_ORVA_FIRE_OUTPUTS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/event_command.h"
#include "apps/orva_fire/event_log.h"
#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/mqtt_client.h"
#include "apps/orva_fire/mqtt_output.h"
#include "apps/orva_fire/options.h"
#include "apps/orva_fire/report_builder.h"
#include "apps/orva_fire/snapshot.h"
#include "apps/orva_fire/video_recorder.h"

namespace orva_fire {

// What is the same for every picture of a run.
struct output_setting {
    std::string camera;
    bool live = false;
    bool test = false;  // all events are those of a drill
    double rate = 25;
    picture_size size;
    std::vector<std::string> zones;
    int own_output = -1;                       // the descriptor of standard output, or -1
    std::optional<int64_t> wall_milliseconds;  // of the first picture of a live source
};

class outputs {
public:
    // Throws usage_error and io_error.
    outputs(const detect_options& options, const output_setting& setting);
    ~outputs();
    outputs(const outputs&) = delete;
    outputs& operator=(const outputs&) = delete;

    // True if a picture with its boxes is wanted although nothing happens in it.
    bool wants_every_picture() const { return m_video != nullptr; }

    // One event; picture: painted, of the same moment. zone, grade: those of the event.
    void record(const fire_event& event, const std::string& zone, int grade, const frame_ptr& picture,
                const std::optional<int64_t>& wall_milliseconds);

    // The detector cannot see, or sees again.
    void record(const trouble_event& event, const moment& at, const std::optional<int64_t>& wall_milliseconds);

    // One picture of the annotated video.
    void write_picture(const AVFrame& picture, double seconds, const std::optional<int64_t>& wall_milliseconds);

    // Where the annotated video shows the last picture that was written to it, as seen from the folder.
    video_place shown_in() const;

    // One line of --frames, if it is wanted.
    bool wants_frames() const { return m_frames != nullptr; }
    void write_frame(const std::string& line) { m_frames->write(line); }

    // One picture was seen.
    void count_picture() {
        if (m_mqtt) m_mqtt->count_picture();
    }

    // Closes the files, and waits for the commands and the broker for a while.
    void finish();

    std::vector<std::string> take_warnings();

    // True if every run of the command ended well and the broker has confirmed every line, as far as there are such.
    // After finish().
    bool all_delivered() const;

    // What was written, one line for each output, as "name  text".
    std::vector<std::string> account() const;

private:
    event_context context_at(const std::optional<int64_t>& wall_milliseconds) const;
    void write_line(const std::string& line, bool may_be_left_out);
    void open_mqtt(const detect_options& options);
    std::unique_ptr<event_log> open_log(const std::string& path, const char* option, bool append) const;
    void open_video(const detect_options& options);
    void open_command(const detect_options& options);

    const output_setting m_setting;
    const std::string m_folder;
    std::unique_ptr<event_log> m_events, m_frames;
    std::unique_ptr<snapshot_taker> m_snapshots;
    std::unique_ptr<video_recorder> m_video;
    std::unique_ptr<event_command> m_command;
    std::unique_ptr<mqtt_client> m_broker;
    std::unique_ptr<mqtt_output> m_mqtt;  // speaks to the broker
    int m_lines = 0;
    int m_pictures = 0;
};

// Where results go, as paths; for checks that none of them is the source itself. "-" is left out.
std::vector<std::string> output_paths(const detect_options& options);

}  // namespace orva_fire

#endif
