// Gathers what many tasks have left, from the folders that they left it in.
#ifndef ORVA_APPS_ORVA_FIRE_JOINED_RESULTS_H
#define ORVA_APPS_ORVA_FIRE_JOINED_RESULTS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/orva_fire/done_record.h"
#include "apps/orva_fire/recordings.h"

namespace orva_fire {

// An event of fire, from its start to its end; seconds of its recording.
struct joined_event {
    int id = 0;
    std::string zone;
    double from = 0;
    double to = 0;
    bool input_ended = false;
    bool test = false;
    std::string snapshot;  // file in the folder of the recording's results, or empty
};

// What one task has left.
struct joined_result {
    std::string name;    // of the recording
    std::string folder;  // with the results
    done_record record;
    std::string problem;  // why the recording was not read to its end, or why these results cannot be; or empty
    std::vector<joined_event> events;
    double trouble = 0;  // seconds in which the camera could not see
    bool has_report = false, has_video = false;
};

// A recording without results that can be relied on.
struct missing_result {
    std::string name;
    std::string reason;
};

struct joined_results {
    std::vector<joined_result> results;   // by name
    std::vector<missing_result> missing;  // by name
    std::vector<std::string> notes;
};

// Searches folders, and all folders in them, for results. Of two results for one recording the one that was read to
// its end counts, of two such ones that which was finished last. expected: recordings that should be there; none if
// nothing is known of them. The events are still to be read. Throws io_error for a folder that cannot be read.
joined_results gather_results(const std::vector<std::string>& folders, const std::vector<recording>& expected);

// Reads the events of one task's results into it and hands on each line, with the name of the recording as `source` and
// the snapshot's name beginning with `way`, which leads from the joined file to the results. A line that is no event
// makes a problem of the result and is handed on to nobody.
void join_events(joined_result& result, const std::string& way, const std::function<void(const std::string&)>& take);

}  // namespace orva_fire

#endif
