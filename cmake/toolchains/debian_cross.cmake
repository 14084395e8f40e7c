# What the toolchain files share. Packages: g++-TRIPLET and qemu-user.
set(CMAKE_C_COMPILER ${orva_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${orva_triplet}-g++)
set(CMAKE_C_FLAGS_INIT "${orva_cpu_flags}")
set(CMAKE_CXX_FLAGS_INIT "${orva_cpu_flags} -Wno-psabi")  # the note on GCC 7's change concerns no interface of ours
set(CMAKE_CROSSCOMPILING_EMULATOR ${orva_emulator} -L /usr/${orva_triplet})
set(CMAKE_FIND_ROOT_PATH /usr/${orva_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages of the build's own, such as GoogleTest, come by prefix.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
