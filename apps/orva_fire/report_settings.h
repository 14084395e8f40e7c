// The settings of a run as a report lists them: each under the name of its option.
#ifndef ORVA_APPS_ORVA_FIRE_REPORT_SETTINGS_H
#define ORVA_APPS_ORVA_FIRE_REPORT_SETTINGS_H

#include <string>
#include <utility>
#include <vector>

#include "apps/orva_fire/options.h"

namespace orva_fire {

// What decides about events. No password, and no address: the report has the source in the form that may be shown.
std::vector<std::pair<std::string, std::string>> report_settings(const detect_options& options);

}  // namespace orva_fire

#endif
