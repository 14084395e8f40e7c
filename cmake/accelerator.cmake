# Which accelerator the library is built for:
#   OFF      none; every operation runs in software
#   STANDIN  the one of tests/fakes, which imitates the chip on any machine
#   SDK      the chip's; ORVA_SDK_INCLUDE and ORVA_SDK_LIB name the vendor's folders of headers and libraries
set(ORVA_IVE OFF CACHE STRING "Accelerator: OFF, STANDIN (imitated, for tests) or SDK (the vendor's)")
set_property(CACHE ORVA_IVE PROPERTY STRINGS OFF STANDIN SDK)
set(ORVA_SDK_INCLUDE "" CACHE PATH "Folder with the vendor's mpi_ive.h and mpi_sys.h (ORVA_IVE=SDK)")
set(ORVA_SDK_LIB "" CACHE PATH "Folder with the vendor's libive and libmpi (ORVA_IVE=SDK)")

if(NOT ORVA_IVE MATCHES "^(OFF|STANDIN|SDK)$")
    message(FATAL_ERROR "ORVA_IVE is '${ORVA_IVE}'; it must be OFF, STANDIN or SDK")
endif()

# The sources behind the seam, into `result`.
function(backend_sources result)
    if(ORVA_IVE STREQUAL OFF)
        read_sources(ORVA_FD_HEAP_SOURCES list)
    else()
        read_sources(ORVA_FD_IVE_SOURCES list)
    endif()
    set(${result} ${list} PARENT_SCOPE)
endfunction()

# The vendor's two libraries. Static ones must come in this order: libive needs libmpi. The shared ones name none of
# what they need, and libmpi wants the audio libraries, which a fire detector has no use for: a program that links them
# may leave those symbols open.
function(find_vendor_libraries)
    foreach(header mpi_ive.h mpi_sys.h)
        if(NOT EXISTS ${ORVA_SDK_INCLUDE}/${header})
            message(FATAL_ERROR "ORVA_SDK_INCLUDE: no ${header} in '${ORVA_SDK_INCLUDE}'")
        endif()
    endforeach()
    add_library(orva_vendor INTERFACE)
    foreach(name ive mpi)
        find_library(vendor_${name} NAMES ${name} PATHS ${ORVA_SDK_LIB} NO_DEFAULT_PATH NO_CACHE)
        if(NOT vendor_${name})
            message(FATAL_ERROR "ORVA_SDK_LIB: no lib${name}.so or lib${name}.a in '${ORVA_SDK_LIB}'")
        endif()
        target_link_libraries(orva_vendor INTERFACE ${vendor_${name}})
    endforeach()
    target_link_options(orva_vendor INTERFACE -Wl,--unresolved-symbols=ignore-in-shared-libs)
endfunction()

# The imitated chip. It takes the vendor's place at link time only.
function(add_standin)
    set(folder ${PROJECT_SOURCE_DIR}/tests/fakes)
    add_library(orva_standin SHARED
        ${folder}/standin.cpp
        ${folder}/standin_engine.cpp
        ${folder}/standin_limits.cpp
        ${folder}/standin_memory.cpp
        ${folder}/standin_trace.cpp)
    target_include_directories(orva_standin PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(orva_standin PRIVATE orva_warnings Threads::Threads)
    set_target_properties(orva_standin PROPERTIES VERSION 1 SOVERSION 1)
endfunction()

# Gives the targets of the library what the choice asks for. `objects` is compiled; `libraries` are linked.
function(use_accelerator objects)
    set(libraries ${ARGN})
    if(ORVA_IVE STREQUAL OFF)
        return()
    endif()
    target_compile_definitions(${objects} PRIVATE ORVA_IVE_ENABLED=1)
    if(ORVA_IVE STREQUAL SDK)
        find_vendor_libraries()
        target_compile_definitions(${objects} PRIVATE ORVA_IVE_VENDOR_HEADERS=1)
        target_include_directories(${objects} SYSTEM PRIVATE ${ORVA_SDK_INCLUDE})
        set(chip orva_vendor)
    else()
        add_standin()
        set(chip orva_standin)
    endif()
    foreach(library ${libraries})
        get_target_property(type ${library} TYPE)
        if(type STREQUAL STATIC_LIBRARY)
            target_link_libraries(${library} INTERFACE $<BUILD_INTERFACE:${chip}>)
        else()
            target_link_libraries(${library} PRIVATE $<BUILD_INTERFACE:${chip}>)
        endif()
    endforeach()
endfunction()
