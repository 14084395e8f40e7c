#include "tests/fakes/abi_records.h"

#define ABI_NAME(what) abi_cpp_##what
#include "tests/fakes/abi_records.inc"
