// Events as JSON Lines: one object a line, written through at once, so that a reader on the other end sees it.
#ifndef ORVA_APPS_ORVA_FIRE_EVENT_LOG_H
#define ORVA_APPS_ORVA_FIRE_EVENT_LOG_H

#include <string>

#include "apps/orva_fire/event_tracker.h"
#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// One event as a line of JSON without the line end. snapshot: file name of the picture taken for it, or empty.
std::string event_line(const fire_event& event, const std::string& zone, picture_size picture,
                       const std::string& snapshot);

class event_log {
public:
    // Creates or empties a file. Throws io_error.
    explicit event_log(const std::string& path);
    // Writes to a descriptor that somebody else owns.
    event_log(int descriptor, const std::string& name);
    ~event_log();
    event_log(const event_log&) = delete;
    event_log& operator=(const event_log&) = delete;

    // Writes one line and its end. Throws io_error.
    void write(const std::string& line);

private:
    std::string m_name;
    int m_descriptor = -1;
    bool m_owned = false;
};

}  // namespace orva_fire

#endif
