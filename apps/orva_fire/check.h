// orva-fire check: is this machine fit, and for how many cameras?
#ifndef ORVA_APPS_ORVA_FIRE_CHECK_H
#define ORVA_APPS_ORVA_FIRE_CHECK_H

#include <string>

#include "apps/orva_fire/geometry.h"

namespace orva_fire {

// How many cameras a machine can look at.
struct camera_load {
    int64_t pictures = 0;
    double processor_seconds = 0;  // of all threads, for decoding, converting and detecting
};

// Cameras of so many pictures a second that `processors` sustain, rounded down.
int cameras_sustained(const camera_load& load, int processors, double rate);

// Prints versions, the way of processing, a test of the detector on a built-in scene, and how many cameras this machine
// sustains. Returns 0, or 3 if the built-in fire was not found.
int run_check();

}  // namespace orva_fire

#endif
