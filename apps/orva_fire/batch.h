// orva-fire batch SOURCE...: recordings in bulk, each a task that may be killed, repeated and shared among machines.
#ifndef ORVA_APPS_ORVA_FIRE_BATCH_H
#define ORVA_APPS_ORVA_FIRE_BATCH_H

#include <string>
#include <vector>

#include "apps/orva_fire/options.h"
#include "apps/orva_fire/recordings.h"
#include "apps/orva_fire/shards.h"

namespace orva_fire {

// The results of each recording lie in a folder of the recording's name in the folder of the options; see done_record.h
// for when it counts as done, and task_folder.h for what a killed task leaves. A recording that cannot be read is
// named, and the others are looked at all the same; it is tried again the next time.
// Returns 0 if all recordings of the shard are done, with or without fire in them: schedulers take every other code
// for a failure. 3 if one could not be read to its end. Throws usage_error, and io_error if a signal asked to stop.
int run_batch(const batch_options& options);

}  // namespace orva_fire

#endif
