// A folder of videos: a run for each of them.
#ifndef ORVA_APPS_ORVA_FIRE_FOLDER_RUN_H
#define ORVA_APPS_ORVA_FIRE_FOLDER_RUN_H

#include <string>
#include <vector>

#include "apps/orva_fire/options.h"

namespace orva_fire {

// videos: paths. The results of each go into a folder of its own in the folder of the options, named like the video.
// A video that cannot be read is named, and the others are looked at all the same. Returns 3 if there was one,
// otherwise 10 if there was fire in any. Throws usage_error for options that name one file for all results.
int run_folder(const detect_options& options, const std::vector<std::string>& videos);

}  // namespace orva_fire

#endif
