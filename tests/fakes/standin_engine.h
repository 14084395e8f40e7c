// What the stand-in's engine does with the bytes in memory when a job comes to run.
#ifndef ORVA_TESTS_FAKES_STANDIN_ENGINE_H
#define ORVA_TESTS_FAKES_STANDIN_ENGINE_H

#include "tests/fakes/standin.h"
#include "tests/fakes/standin_memory.h"

namespace standin {

enum class job_end { done, undefined_result, memory_gone };

// Runs a job that was accepted.
job_end run(const record& job, memory_map& memory, HI_S8 label_status);

}  // namespace standin

#endif
