# 64-bit ARM.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(orva_triplet aarch64-linux-gnu)
set(orva_cpu_flags "-march=armv8-a")
set(orva_emulator qemu-aarch64 -cpu cortex-a53)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
