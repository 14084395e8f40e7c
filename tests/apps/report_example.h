// Reports with everything in them, for tests of the page.
#ifndef ORVA_TESTS_APPS_REPORT_EXAMPLE_H
#define ORVA_TESTS_APPS_REPORT_EXAMPLE_H

#include <string>

#include "apps/orva_fire/report_data.h"

namespace apps_test {

// A minute with two events, a drill, three misses and trouble in two zones. name: stands wherever a text may come from
// outside.
orva_fire::report_data example_report(const std::string& name);

// Marks up, breaks out of quotes, controls, other scripts, bytes that are no text; long.
std::string hostile_name();

}  // namespace apps_test

#endif
