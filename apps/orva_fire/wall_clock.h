// Moments of the calendar as text, always in UTC.
#ifndef ORVA_APPS_ORVA_FIRE_WALL_CLOCK_H
#define ORVA_APPS_ORVA_FIRE_WALL_CLOCK_H

#include <cstdint>
#include <string>

namespace orva_fire {

// Milliseconds since 1970.
int64_t wall_clock_now();

// As RFC 3339 has it: 2026-11-21T13:48:32.125Z.
std::string rfc3339(int64_t milliseconds);

// For names of files, in which it sorts by time: 20261121T134832Z.
std::string file_time(int64_t milliseconds);

}  // namespace orva_fire

#endif
