# Flags for what is shipped. They harden a program against its own mistakes, and leave no trace of the folders in which it
# was built, so that the same sources give the same bytes anywhere. Off by default: sanitizers bring their own, firmware has
# its tool chain's, and the benchmarks' counts are kept without them.
option(ORVA_SHIP "Compile for shipping: hardened, and the same bytes in any folder" OFF)
if(NOT ORVA_SHIP)
    return()
endif()
if(ORVA_SANITIZE OR NOT CMAKE_BUILD_TYPE STREQUAL Release)
    message(FATAL_ERROR "ORVA_SHIP needs CMAKE_BUILD_TYPE=Release and no sanitizer")
endif()

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported()  # programs are linked as position-independent ones, which the flag alone does not do
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
# Installing takes a path into the build folder out of a file, but its trace stays in the build id.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)
