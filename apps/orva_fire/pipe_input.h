// A pipe or terminal as input of the FFmpeg libraries. Their own would wait in a read from which a signal that comes a
// moment too early wakes nobody; this one looks a few times a second whether the program shall stop.
#ifndef ORVA_APPS_ORVA_FIRE_PIPE_INPUT_H
#define ORVA_APPS_ORVA_FIRE_PIPE_INPUT_H

#include <memory>

#include "apps/orva_fire/input_address.h"

namespace orva_fire {

// descriptor: stays open and belongs to the caller. name: for messages. One stream can be read from it, once.
input_address pipe_address(int descriptor, const std::string& name);

}  // namespace orva_fire

#endif
