# 32-bit ARM with NEON, hard-float call convention: Debian's armhf. Cannot be linked with the vendor's libraries, which
# use the soft-float convention; see docs/porting.md for NEON with that one.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(orva_triplet arm-linux-gnueabihf)
set(orva_cpu_flags "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(orva_emulator qemu-arm -cpu cortex-a7)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
