# Debian packages by CPack: one for each component that is installed. To be included last.
# A further component needs one call of debian_package() here and its install rules with COMPONENT.
if(NOT ORVA_DEBIAN_PACKAGES)
    return()
endif()
if(NOT ORVA_SHIP OR NOT CMAKE_INSTALL_PREFIX STREQUAL /usr OR NOT SCDOC)
    message(FATAL_ERROR "ORVA_DEBIAN_PACKAGES needs ORVA_SHIP=ON, CMAKE_INSTALL_PREFIX=/usr and scdoc")
endif()
set(ORVA_MAINTAINER "The orva_fd authors <orva-fd@example.org>" CACHE STRING "Whom the packages name as maintainer")

# The time of everything in the packages: what the environment says, as in other builds of Debian's, or that of the changelog.
set(packages_time $ENV{SOURCE_DATE_EPOCH})
if(NOT packages_time)
    file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md packages_time %s UTC)
endif()

# Debian's changelog, made of the project's own.
set(debian_folder ${PROJECT_SOURCE_DIR}/packaging/debian)
set(documents ${PROJECT_BINARY_DIR}/debian)
file(MAKE_DIRECTORY ${documents})
execute_process(
    COMMAND ${PROJECT_SOURCE_DIR}/packaging/debian-changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${ORVA_MAINTAINER}
        ${packages_time}
    OUTPUT_FILE ${documents}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
configure_file(CHANGELOG.md ${documents}/changelog COPYONLY)
execute_process(COMMAND gzip -9nf changelog changelog.Debian WORKING_DIRECTORY ${documents} COMMAND_ERROR_IS_FATAL ANY)

# debian_package(COMPONENT NAME SECTION DESCRIPTION [COPYRIGHT file] [DEPENDS text] [CONTROL file...]): a package of what
# is installed with COMPONENT. DESCRIPTION is a line, then sentences; COPYRIGHT a file of packaging/debian; CONTROL
# files for the package's own use.
macro(debian_package component name section description)
    cmake_parse_arguments(package "" "COPYRIGHT;DEPENDS" "CONTROL" ${ARGN})
    if(NOT package_COPYRIGHT)
        set(package_COPYRIGHT copyright)
    endif()
    install(FILES ${debian_folder}/${package_COPYRIGHT} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} RENAME copyright
        COMPONENT ${component})
    install(FILES ${documents}/changelog.gz ${documents}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
    string(TOUPPER ${component} COMPONENT)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION ${description})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_DEPENDS ${package_DEPENDS})
    set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA ${package_CONTROL})
endmacro()

set(CPACK_COMPONENTS_ALL)
debian_package(runtime liborva-fd${PROJECT_VERSION_MAJOR} libs
"fire detection in the pictures of fixed cameras
The library answers each NV21 frame with up to ten boxes where fire is seen:
what moves, has the colour of flame, is brighter than its surround, stays in
place and flickers. It needs no accelerator and starts no threads; a frame of
352 x 288 pixels takes some tens of microseconds on a server core."
    CONTROL ${debian_folder}/runtime/symbols ${debian_folder}/runtime/triggers)
debian_package(development liborva-fd-dev libdevel
"fire detection in the pictures of fixed cameras (development)
The library answers each NV21 frame with up to ten boxes where fire is seen.
This package holds the header, the static library, the manual page, and the
files with which CMake and pkg-config find them."
    DEPENDS "liborva-fd${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}-1)")
if(ORVA_APPS)
    debian_package(tools orva-fire video
"finds fire in videos and camera pictures
The program orva-fire looks for flames in the pictures of a camera that stands
still and leaves a video with a box around every fire, a list of events and
snapshots. The program flame-clip makes a clip of a fire to try it on."
        COPYRIGHT copyright.tools)
    install(FILES examples/systemd/orva-fire@.service DESTINATION lib/systemd/system COMPONENT tools)
    install(FILES examples/systemd/camera.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orva-fire/examples COMPONENT tools)
endif()

if(ORVA_GST)
    debian_package(gstreamer gstreamer1.0-orvafire video
"fire detection in the pictures of fixed cameras (GStreamer plug-in)
The element orvafire passes the pictures of a pipeline on, puts a box around
every fire on them as metas, and posts messages when a report starts and ends.
It shares the library with an application that uses it as well."
        COPYRIGHT copyright.gstreamer
        DEPENDS "liborva-fd${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})")
    # The plug-in's own library is in another of these packages, where the tool that reads dependencies does not look.
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orva-fd)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT ${ORVA_MAINTAINER})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
