// The four shapes of a log line. File word, function word and line number are vocabulary that users grep for, not
// places in the source: they stay what they are when code moves, so never __FILE__ or __LINE__. Lines go to standard
// output, unconditionally. Any thread; printf locks the stream for one line at a time.
#ifndef ORVA_FD_IMGPROC_LOG_H
#define ORVA_FD_IMGPROC_LOG_H

#include <cstdio>

namespace orva_fd {

// A failure on its way up to the host.
inline void log_entered(const char* file, const char* function, int line) {
    std::printf("[Fire Detection: %s: %s] %d entered \n", file, function, line);
}

// A rejected argument, or a failed vendor call, whose own line follows.
inline void log_error(const char* file, const char* function, int line) {
    std::printf("ERR. [Fire Detection: %s::%s : %d] \n", file, function, line);
}

inline void log_warning(const char* file, const char* function, int line, const char* text) {
    std::printf("WARN.[Fire Detection: %s::%s : %d] \n", file, function, line);
    std::puts(text);
}

inline void log_information(const char* file, const char* function, int line, const char* text) {
    std::printf("INFO.[Fire Detection: %s::%s: %d] \n", file, function, line);
    std::puts(text);
}

}  // namespace orva_fd

#endif
