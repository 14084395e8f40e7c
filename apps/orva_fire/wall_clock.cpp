#include "apps/orva_fire/wall_clock.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace orva_fire {
namespace {

// Rounds towards the past, also before 1970.
int64_t whole_seconds(int64_t milliseconds) {
    return (milliseconds - (milliseconds % 1000 + 1000) % 1000) / 1000;
}

std::string formatted(int64_t milliseconds, const char* format) {
    const auto seconds = static_cast<std::time_t>(whole_seconds(milliseconds));
    std::tm calendar = {};
    gmtime_r(&seconds, &calendar);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, format, &calendar));
}

}  // namespace

int64_t wall_clock_now() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::string rfc3339(int64_t milliseconds) {
    char fraction[16];
    const auto rest = static_cast<int>(milliseconds - whole_seconds(milliseconds) * 1000);
    std::snprintf(fraction, sizeof fraction, ".%03dZ", rest);
    return formatted(milliseconds, "%Y-%m-%dT%H:%M:%S") + fraction;
}

std::string file_time(int64_t milliseconds) {
    return formatted(milliseconds, "%Y%m%dT%H%M%SZ");
}

}  // namespace orva_fire
