// The page that tells what happened in a video: one file that loads nothing, for browsers, phones and printers.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_H
#define ORVA_APPS_ORVA_FIRE_REPORT_H

#include <string>
#include <vector>

#include "apps/orva_fire/report_data.h"

namespace orva_fire {

// runs: one for each source; with several, the page begins with a table of them. Texts may hold anything.
std::string report_page(const std::vector<report_data>& runs);

}  // namespace orva_fire

#endif
