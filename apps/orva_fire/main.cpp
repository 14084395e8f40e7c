// orva-fire: finds fire in a video.
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "apps/orva_fire/detect.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/options.h"

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv) {
    using namespace orva_fire;
    // A reader that goes away must end in a message and a finished video, not in silence.
    std::signal(SIGPIPE, SIG_IGN);
    // The program says itself what is wrong with a file, once and in its own words.
    av_log_set_level(AV_LOG_QUIET);
    try {
        const command wanted = parse_command_line(argc, argv);
        return wanted.detect ? run_detect(*wanted.detect) : wanted.exit_code;
    } catch (const usage_error& error) {
        std::fprintf(stderr, "orva-fire: %s\n", error.what());
        return k_exit_usage;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "orva-fire: out of memory\n");
        return k_exit_io;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orva-fire: %s\n", error.what());
        return k_exit_io;
    }
}
