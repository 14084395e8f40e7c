#include "tests/fakes/abi_records.h"

#define ABI_NAME(what) abi_c_##what
#include "tests/fakes/abi_records.inc"
