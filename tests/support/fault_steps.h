// Which of the things that can fail are made to fail: every 11th, or, with ORVA_FAULTS=all in the environment, each.
#ifndef ORVA_TESTS_SUPPORT_FAULT_STEPS_H
#define ORVA_TESTS_SUPPORT_FAULT_STEPS_H

#include <cstdlib>
#include <string>

namespace support {

inline long fault_step() {
    const char* wanted = std::getenv("ORVA_FAULTS");
    return wanted != nullptr && std::string(wanted) == "all" ? 1 : 11;
}

}  // namespace support

#endif
