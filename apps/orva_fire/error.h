// What can go wrong in the programs, as exceptions that main turns into a line on standard error and an exit code.
#ifndef ORVA_APPS_ORVA_FIRE_ERROR_H
#define ORVA_APPS_ORVA_FIRE_ERROR_H

#include <stdexcept>
#include <string>

namespace orva_fire {

// Exit codes of the programs.
enum exit_code {
    k_exit_nothing = 0,  // the whole input was read and nothing was reported
    k_exit_usage = 2,    // the command line asks for something impossible
    k_exit_io = 3,       // input or output failed; what was written up to there is kept
    k_exit_fire = 10     // the whole input was read and fire was reported
};

// The user asked for something that cannot be done with this input.
class usage_error : public std::runtime_error {
public:
    explicit usage_error(const std::string& text) : std::runtime_error(text) {}
};

// A file, a stream or the detector failed. The text names it and says what to do where that is known.
class io_error : public std::runtime_error {
public:
    explicit io_error(const std::string& text) : std::runtime_error(text) {}
};

// A camera does not want this user. Asking again would not help, and may lock the user out.
class refused_error : public io_error {
public:
    explicit refused_error(const std::string& text) : io_error(text) {}
};

}  // namespace orva_fire

#endif
