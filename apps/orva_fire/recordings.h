// The recordings that many machines share: which there are, what their results are called, how long they are.
#ifndef ORVA_APPS_ORVA_FIRE_RECORDINGS_H
#define ORVA_APPS_ORVA_FIRE_RECORDINGS_H

#include <cstdint>
#include <string>
#include <vector>

namespace orva_fire {

struct recording {
    std::string path;  // as it is opened
    std::string name;  // below the base, with slashes; the folder with its results has it too
};

struct recording_search {
    std::vector<std::string> sources;  // files, and folders that are searched with all folders in them
    std::string list;                  // file with a path on each line; "-" is standard input; empty: none
    std::string base;     // folder below which names begin; empty: the folder, if one is given and nothing else,
                          // otherwise the current one
    std::string results;  // folder of results, which is passed over; empty: none
};

// Sorted by name, byte by byte; each once. In folders: files whose names end as those of videos do. Hidden ones are
// passed over, and so are folders with results. A file that was named is there even if it does not exist.
// Throws usage_error for a recording that does not lie below the base and for what is no file, io_error for a folder
// or a list that cannot be read.
std::vector<recording> find_recordings(const recording_search& search);

// Its length in microseconds as the container states it; for one that states none, as if it had been recorded with a
// megabit a second; 0 for what cannot be read. Nothing is decoded.
int64_t recording_length(const std::string& path);

// What a recording is compared by; size -1 if there is no such file.
struct file_state {
    int64_t size = -1;
    int64_t modified = 0;  // nanoseconds since 1970

    bool operator==(const file_state& other) const { return size == other.size && modified == other.modified; }
    bool operator!=(const file_state& other) const { return !(*this == other); }
};

file_state state_of(const std::string& path);

}  // namespace orva_fire

#endif
