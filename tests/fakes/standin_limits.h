// What the stand-in's engine takes. Each check returns 0, or the code with which the chip refuses the job.
#ifndef ORVA_TESTS_FAKES_STANDIN_LIMITS_H
#define ORVA_TESTS_FAKES_STANDIN_LIMITS_H

#include "tests/fakes/standin.h"
#include "tests/fakes/standin_memory.h"

namespace standin {

// Checks images, data, control and flag of a recorded job.
HI_S32 refusal_of(const record& job, memory_map& memory);

}  // namespace standin

#endif
