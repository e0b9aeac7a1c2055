# Debian packages, one a component: liborxscan1, liborxscan-dev, orxscan and orxserve.  scripts/package makes
# them; "cpack" in a build folder does as well.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orxscan)
set(CPACK_PACKAGE_VENDOR "orxscan developers")
set(ORXSCAN_MAINTAINER "orxscan developers <developers@orxscan.invalid>" CACHE STRING
    "Whom the Debian packages name as their maintainer: Name <address>")
set(CPACK_PACKAGE_CONTACT "${ORXSCAN_MAINTAINER}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package's is the first line of its description
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL runtime devel)
if(TARGET orxscan_command)
  list(APPEND CPACK_COMPONENTS_ALL command)
endif()
if(TARGET orxserve)
  list(APPEND CPACK_COMPONENTS_ALL server)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)  # of the packaging; the version is that of the sources
set(package_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(runtime_package liborxscan${PROJECT_VERSION_MAJOR})
set(devel_package liborxscan-dev)
set(command_package orxscan)
set(server_package orxserve)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "media indexing for DLNA servers - shared library
Records the pictures, films and sounds of a memory card in an SQLite database,
with their metadata and DLNA profiles.  The program that loads the library
supplies the functions of its platform.")

if(CMAKE_LIBRARY_ARCHITECTURE AND CMAKE_INSTALL_LIBDIR MATCHES "/${CMAKE_LIBRARY_ARCHITECTURE}$")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
endif()

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME ${devel_package})
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS "${runtime_package} (= ${package_version}), libsqlite3-dev")
set(CPACK_COMPONENT_DEVEL_DESCRIPTION "media indexing for DLNA servers - development files
Headers, static libraries, the platform functions of a Linux PC, the CMake
package and the pkg-config files.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME ${command_package})
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "media indexing for DLNA servers - command
Scans folders and memory cards into a media database, and shows, queries and
checks what it holds.")

set(CPACK_DEBIAN_SERVER_PACKAGE_NAME ${server_package})
set(CPACK_DEBIAN_SERVER_PACKAGE_SECTION net)
set(CPACK_COMPONENT_SERVER_DESCRIPTION "media indexing for DLNA servers - media server
Serves a folder of pictures, films and sounds, or a camera's card, to
televisions and players on the network (DLNA), and to browsers.")

# The dynamic linker's cache is renewed when the library comes and goes.
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)

# Every package carries the copyright, the changelog of the sources and, in the form that Debian's
# tools read, that of the packaging.
file(WRITE ${PROJECT_BINARY_DIR}/debian/copyright "Copyright 2026 the orxscan developers\n")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md changed "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/debian/changelog.Debian
     "orxscan (${package_version}) UNRELEASED; urgency=medium

  * Version ${PROJECT_VERSION}; what has changed is in changelog.gz.

 -- ${ORXSCAN_MAINTAINER}  ${changed}
")
find_program(GZIP_PROGRAM gzip)
if(GZIP_PROGRAM)
  foreach(text IN ITEMS ${PROJECT_SOURCE_DIR}/CHANGELOG.md
                        ${PROJECT_BINARY_DIR}/debian/changelog.Debian)
    get_filename_component(name ${text} NAME)
    string(REPLACE CHANGELOG.md changelog name ${name})
    execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${text}
                    OUTPUT_FILE ${PROJECT_BINARY_DIR}/debian/${name}.gz)
  endforeach()
endif()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/debian/copyright ${PROJECT_BINARY_DIR}/debian/changelog.gz
                ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package} COMPONENT ${component}
          OPTIONAL)
endforeach()

include(CPack)
