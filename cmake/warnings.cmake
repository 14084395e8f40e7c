# Every target of the project is compiled with these.
add_library(orva_warnings INTERFACE)
target_compile_options(orva_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(ORVA_WERROR)
    target_compile_options(orva_warnings INTERFACE -Werror)
endif()
# With sanitizers GCC sees paths through the standard library's own code on which nothing is set.
if(ORVA_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(orva_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
