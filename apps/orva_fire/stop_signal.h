// The wish to stop, from SIGINT or SIGTERM. Everything that waits looks at it a few times a second.
#ifndef ORVA_APPS_ORVA_FIRE_STOP_SIGNAL_H
#define ORVA_APPS_ORVA_FIRE_STOP_SIGNAL_H

namespace orva_fire {

// From now on the first SIGINT or SIGTERM only sets the wish; a second one ends the process at once.
void catch_stop_signals();

// True once a signal came, or request_stop was called.
bool stop_wanted();
void request_stop();

// For a next run in the same process.
void forget_stop();

}  // namespace orva_fire

#endif
