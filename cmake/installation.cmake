# What `cmake --install` puts where. The tree holds no absolute path: it may be moved as a whole and used from there.
#   component runtime      the shared library
#   component development  header, static library, link name, CMake package, pkg-config file, manual page
#   component tools        the programs
#   component gstreamer    the plug-in for GStreamer
include(CMakePackageConfigHelpers)

add_library(orva_fd::orva_fd ALIAS orva_fd)
add_library(orva_fd::orva_fd_static ALIAS orva_fd_static)

install(TARGETS orva_fd orva_fd_static EXPORT orva_fd
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES include/ORVA_FireDetection.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# Libraries that a host in C must add to the static one, because its compiler does not know of C++.
set(ORVA_CXX_LIBRARIES ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER ORVA_CXX_LIBRARIES INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|c\\+\\+abi|m)$")
list(REMOVE_DUPLICATES ORVA_CXX_LIBRARIES)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/orva_fd)
configure_package_config_file(cmake/orva_fd-config.cmake.in orva_fd-config.cmake INSTALL_DESTINATION ${package_folder}
    NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(orva_fd-config-version.cmake COMPATIBILITY SameMajorVersion)
# A library on the stand-in chip serves tests only, and CMake exports no target that needs one which stays behind.
if(NOT ORVA_IVE STREQUAL STANDIN)
    install(EXPORT orva_fd NAMESPACE orva_fd:: FILE orva_fd-targets.cmake DESTINATION ${package_folder}
        COMPONENT development)
endif()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orva_fd-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/orva_fd-config-version.cmake
    DESTINATION ${package_folder} COMPONENT development)

# The pkg-config file finds the tree from where it lies itself.
file(RELATIVE_PATH ORVA_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ORVA_PREFIX_FROM_PC "${ORVA_PREFIX_FROM_PC}")
file(RELATIVE_PATH ORVA_LIBDIR_FROM_PREFIX ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH ORVA_INCLUDEDIR_FROM_PREFIX ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
list(TRANSFORM ORVA_CXX_LIBRARIES PREPEND -l OUTPUT_VARIABLE ORVA_CXX_FLAGS)
list(JOIN ORVA_CXX_FLAGS " " ORVA_CXX_FLAGS)
configure_file(cmake/orva_fd.pc.in orva_fd.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orva_fd.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
