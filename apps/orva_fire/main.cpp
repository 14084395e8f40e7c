// orva-fire: finds fire in a video.
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

#include "apps/orva_fire/commands.h"
#include "apps/orva_fire/error.h"
#include "apps/orva_fire/library_output.h"
#include "apps/orva_fire/stop_signal.h"

int main(int argc, char** argv) {
    using namespace orva_fire;
    hold_standard_descriptors();
    // A reader that goes away must end in a message and a finished video, not in silence.
    std::signal(SIGPIPE, SIG_IGN);
    catch_stop_signals();
    try {
        return run_command(argc, argv);
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
