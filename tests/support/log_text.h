// The library's log lines as a user reads them, spelled out here once more so that tests can put traces together.
#ifndef ORVA_TESTS_SUPPORT_LOG_TEXT_H
#define ORVA_TESTS_SUPPORT_LOG_TEXT_H

#include <string>

namespace support {

inline std::string entered(const std::string& file, const std::string& function, int line) {
    return "[Fire Detection: " + file + ": " + function + "] " + std::to_string(line) + " entered \n";
}

inline std::string error_line(const std::string& file, const std::string& function, int line) {
    return "ERR. [Fire Detection: " + file + "::" + function + " : " + std::to_string(line) + "] \n";
}

// A lock, then an unlock, of a mutex that does not exist.
inline std::string wait_without_mutex() {
    return "WARN.[Fire Detection: Mutex::Wait : 79] \nmutex not create\n";
}
inline std::string release_without_mutex() {
    return "WARN.[Fire Detection: Mutex::Release : 115] \nmutex not create\n";
}
inline std::string both_without_mutex() {
    return wait_without_mutex() + release_without_mutex();
}

inline std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

}  // namespace support

#endif
