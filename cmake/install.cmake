# What an installation holds: both libraries, the host platform, the public headers, the command,
# the CMake package and the pkg-config files.
include(CMakePackageConfigHelpers)

set(ORXSCAN_PUBLIC_HEADERS
    Platform/CameraPlatform.h Platform/Export.h
    FileScanner/AudioMetaData.h FileScanner/DataBaseMgr.h FileScanner/DcfFileInfoVector.h
    FileScanner/DirectoryScanner.h FileScanner/FileInfomation.h FileScanner/FileParser.h
    FileScanner/FileParserFramework.h FileScanner/FileParser_JPEG.h FileScanner/FileParser_MP4.h
    FileScanner/ImageMetaData.h FileScanner/MediaFileInfos.h FileScanner/MediaMetaData.h
    FileScanner/MediaRes.h FileScanner/MultimediaQueryMgr.h FileScanner/OwnedText.h
    FileScanner/VideoMetaData.h
    MediaReaders/exif_reader.h MediaReaders/mp4_reader.h
    OSAL/ORXAString.h OSAL/ORXCString.h OSAL/ORXFSHandler.h OSAL/ORXLog.h OSAL/ORXMemory.h
    OSAL/ORXUString.h OSAL/StringUtiltiy.h OSAL/UniqueValueGenerator.h
    UpnpUtil/upnp_file.h UpnpUtil/upnp_log.h UpnpUtil/upnp_string.h UpnpUtil/upnp_util.h)

foreach(header IN LISTS ORXSCAN_PUBLIC_HEADERS)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES SRC/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orxscan/${folder}
          COMPONENT devel)
endforeach()
install(FILES host/HostPlatform.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orxscan/host
        COMPONENT devel)

install(TARGETS orxscan orxscan_static orxscan_host EXPORT orxscanTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
install(EXPORT orxscanTargets NAMESPACE orxscan::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxscan COMPONENT devel)

configure_package_config_file(cmake/orxscanConfig.cmake.in orxscanConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxscan)
write_basic_package_version_file(orxscanConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orxscanConfig.cmake
              ${PROJECT_BINARY_DIR}/orxscanConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orxscan COMPONENT devel)

# The pkg-config files find the rest from where they lie, so that an installation can be moved.
file(RELATIVE_PATH ORXSCAN_PREFIX_FROM_PC /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" ORXSCAN_PREFIX_FROM_PC "${ORXSCAN_PREFIX_FROM_PC}")

foreach(file IN ITEMS orxscan.pc orxscan_host.pc)
  configure_file(cmake/${file}.in ${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT devel)
endforeach()

find_program(GZIP_PROGRAM gzip)
if(TARGET orxscan_command)
  install(TARGETS orxscan_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
  # Manuals are installed compressed, as distributions have them.
  set(page ${PROJECT_SOURCE_DIR}/tools/orxscan/orxscan.1)
  if(GZIP_PROGRAM)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
    execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${page}
                    OUTPUT_FILE ${PROJECT_BINARY_DIR}/orxscan.1.gz)
    set(page ${PROJECT_BINARY_DIR}/orxscan.1.gz)
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT command)
endif()

if(TARGET orxserve)
  install(TARGETS orxserve RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT server)
  set(page ${PROJECT_SOURCE_DIR}/server/orxserve.1)
  if(GZIP_PROGRAM)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
    execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${page}
                    OUTPUT_FILE ${PROJECT_BINARY_DIR}/orxserve.1.gz)
    set(page ${PROJECT_BINARY_DIR}/orxserve.1.gz)
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT server)
  install(FILES ${PROJECT_SOURCE_DIR}/server/orxserve.service DESTINATION lib/systemd/system
          COMPONENT server)
endif()
