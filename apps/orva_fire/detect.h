// The whole way from a source to annotated video, events and snapshots.
#ifndef ORVA_APPS_ORVA_FIRE_DETECT_H
#define ORVA_APPS_ORVA_FIRE_DETECT_H

#include "apps/orva_fire/options.h"
#include "apps/orva_fire/summary.h"

namespace orva_fire {

// Runs to the end of the input, or until a signal asks to stop, and prints warnings and a summary on standard error.
// Returns the exit code. Throws usage_error and io_error; what was found up to there is written. A folder of videos is
// a run for each of them, with results in folders of their own; the code is that of the worst.
// summary: of the run, even if it ends with an exception; nullptr if nobody wants it. Left alone for a folder.
int run_detect(const detect_options& options, run_summary* summary = nullptr);

}  // namespace orva_fire

#endif
