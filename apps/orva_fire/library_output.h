// Keeps the detector's log lines away from the program's standard output. The library prints them to descriptor 1, so
// that descriptor is moved before the library is initialised; what was there stays reachable as own_output().
#ifndef ORVA_APPS_ORVA_FIRE_LIBRARY_OUTPUT_H
#define ORVA_APPS_ORVA_FIRE_LIBRARY_OUTPUT_H

#include <cstdint>
#include <string>

namespace orva_fire {

// A log file never grows beyond this by more than one frame's lines.
const int64_t k_library_log_limit = 16 * 1024 * 1024;

// Opens /dev/null, for reading, in place of standard descriptors that the program was started without. Otherwise the
// first files that are opened would take their numbers, and messages would go into them. To be called first of all.
void hold_standard_descriptors();

class library_output {
public:
    // log_path: file for the lines, created or emptied; empty to discard them. Throws io_error.
    explicit library_output(const std::string& log_path, int64_t limit = k_library_log_limit);

    // Puts descriptor 1 back.
    ~library_output();
    library_output(const library_output&) = delete;
    library_output& operator=(const library_output&) = delete;

    // The descriptor that was standard output; -1 if there is none to write to.
    int own_output() const;

    // While one of these lives the library's lines are discarded: channels that see pictures a second time have nothing
    // to add to the log.
    class pause {
    public:
        explicit pause(const library_output& output);
        ~pause();
        pause(const pause&) = delete;
        pause& operator=(const pause&) = delete;

    private:
        int m_log = -1;
    };

    // To be called after each frame: ends the log file once it has reached its limit.
    void check_limit();

private:
    const int64_t m_limit;
    int m_own = -1;
    bool m_logging = false;
};

}  // namespace orva_fire

#endif
