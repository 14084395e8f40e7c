# 32-bit ARM, soft-float call convention, no FPU, no unaligned word access: the ARM926EJ-S class. Debian's cross
# compiler; tests run in qemu as that very processor, so that a newer instruction ends them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(orva_triplet arm-linux-gnueabi)
set(orva_cpu_flags "-march=armv5te -mfloat-abi=soft -mno-unaligned-access")
set(orva_emulator qemu-arm -cpu arm926)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
