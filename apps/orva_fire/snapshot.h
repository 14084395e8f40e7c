// Single pictures as JPEG files, and the book-keeping of which to take for an event.
#ifndef ORVA_APPS_ORVA_FIRE_SNAPSHOT_H
#define ORVA_APPS_ORVA_FIRE_SNAPSHOT_H

#include <map>
#include <string>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/ffmpeg.h"
#include "apps/orva_fire/scaler.h"

namespace orva_fire {

class jpeg_writer {
public:
    // Throws io_error that names the file.
    void write(const std::string& path, const AVFrame& picture);

private:
    scaler m_scaler;
};

// Takes two pictures of every event: one at its start, and at its end the one in which a box was largest. It keeps one
// picture in memory for each open event.
class snapshot_taker {
public:
    // run: stands in the names of a run whose pictures are kept beside those of others. Without it the pictures of an
    // earlier run without one are removed from the folder.
    explicit snapshot_taker(const std::string& folder, const std::string& run = "");

    // picture: painted. Returns the name of the file written for this event, or an empty text.
    std::string take(const fire_event& event, const frame_ptr& picture);

private:
    std::string file_name(int id, const char* which) const;

    const std::string m_folder;
    const std::string m_run;
    jpeg_writer m_writer;
    std::map<int, frame_ptr> m_largest;  // by event id
};

}  // namespace orva_fire

#endif
