# Every target of the project is compiled with these.
add_library(orva_warnings INTERFACE)
target_compile_options(orva_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(ORVA_WERROR)
    target_compile_options(orva_warnings INTERFACE -Werror)
endif()
