#include "apps/orva_fire/stop_signal.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace orva_fire {
namespace {

// Written by a signal handler, so it must be free of locks.
std::atomic<bool> g_stop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void note_stop(int) {
    g_stop = true;
}

}  // namespace

void catch_stop_signals() {
    struct sigaction action = {};
    action.sa_handler = note_stop;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: what waits is woken. Reset: who asks twice does not want to wait for files to be closed.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction old = {};
        // A program that was started with a signal ignored, as by nohup or a shell's background job, keeps it ignored.
        if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
        sigaction(signal, &action, nullptr);
    }
}

bool stop_wanted() {
    return g_stop;
}

void request_stop() {
    g_stop = true;
}

void forget_stop() {
    g_stop = false;
}

}  // namespace orva_fire
