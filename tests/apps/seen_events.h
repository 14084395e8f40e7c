// Keeps every event that the programs write in tests, so that all of them can be held against the schema at the end.
#ifndef ORVA_TESTS_APPS_SEEN_EVENTS_H
#define ORVA_TESTS_APPS_SEEN_EVENTS_H

#include <string>

namespace apps_test {

// Appends the lines to this process's file in the folder that ORVA_SEEN_EVENTS names, if it does; lines that are no
// events are left out.
void keep_events(const std::string& lines);

}  // namespace apps_test

#endif
