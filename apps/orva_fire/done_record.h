// What a finished task leaves beside its results, by which later runs see that there is nothing to be done.
#ifndef ORVA_APPS_ORVA_FIRE_DONE_RECORD_H
#define ORVA_APPS_ORVA_FIRE_DONE_RECORD_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/orva_fire/recordings.h"

namespace orva_fire {

// The file that makes a folder one with results of a task.
extern const char k_done_name[];

struct done_record {
    std::string name;  // of the recording, see recordings.h
    file_state source;
    std::string settings;  // digest of all that decides about the results
    std::string version;   // of the program
    std::string error;     // empty: the recording was read to its end
    int64_t frames = 0;
    double seconds = 0;    // of video that were looked at
    int events = 0;        // of fire
    double first = 0;      // second of the first report; 0 if there is none
    double took = 0;       // seconds of work
    std::string finished;  // RFC 3339

    bool failed() const { return !error.empty(); }
};

// True if the same settings and version have looked at the same file to its end.
bool is_done(const done_record& record, const file_state& source, const std::string& settings);

// Writes the record into a folder. Throws io_error.
void write_done(const std::string& folder, const done_record& record);

// Nothing if the folder holds no record, or none that this version understands: it has to be done again.
std::optional<done_record> read_done(const std::string& folder);

// 64 hexadecimal digits (SHA-256) of a text.
std::string digest_of(const std::string& text);

}  // namespace orva_fire

#endif
