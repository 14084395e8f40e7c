// Events as JSON Lines: one object a line, written through at once, so that a reader on the other end sees it.
#ifndef ORVA_APPS_ORVA_FIRE_EVENT_LOG_H
#define ORVA_APPS_ORVA_FIRE_EVENT_LOG_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/geometry.h"
#include "apps/orva_fire/trouble.h"

namespace orva_fire {

// What an event does not know of itself.
struct event_context {
    std::string camera;
    std::string zone;
    int grade = 0;                             // that the zone looks with
    picture_size picture;                      // of the source
    std::string snapshot;                      // file name of the picture taken for it, or empty
    std::optional<int64_t> wall_milliseconds;  // since 1970; live sources only
    bool test = false;                         // of a drill
};

// One event as a line of JSON without the line end.
std::string event_line(const fire_event& event, const event_context& context);

// The start or end of a time in which the detector cannot see, as a line of JSON. Of the context only camera, wall
// clock and test are read.
std::string trouble_line(const trouble_event& event, int64_t frame, const event_context& context);

// One picture's boxes as a line of JSON. zones: a name for each list of boxes. passed: the detector saw the picture.
std::string frame_line(const moment& at, const std::vector<std::string>& zones,
                       const std::vector<std::vector<box>>& boxes, bool passed);

class event_log {
public:
    // Creates a file; empties one that is there, or adds to it, on a line of its own. Throws io_error.
    explicit event_log(const std::string& path, bool append = false);
    // Writes to a descriptor that somebody else owns.
    event_log(int descriptor, const std::string& name);
    ~event_log();
    event_log(const event_log&) = delete;
    event_log& operator=(const event_log&) = delete;

    // Writes one line and its end. Throws io_error; the file then ends with the line before.
    void write(const std::string& line);

private:
    [[noreturn]] void fail(off_t start) const;

    std::string m_name;
    int m_descriptor = -1;
    bool m_owned = false;
};

}  // namespace orva_fire

#endif
