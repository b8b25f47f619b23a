# What another project needs: the three libraries and the plug-in kit with their public headers, found by
# find_package(ZuControl) and by pkg-config, and the host program with its plug-ins. The installed tree may be moved: its parts find each other.
include(CMakePackageConfigHelpers)
include(cmake/InstallCheck.cmake)

set(ZU_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zucontrol)
set(ZU_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZuControl)

# Every header of the libraries is public and installed, but for these headers and folders. Only the libraries' own sources
# and the tests include a private header; public headers use nlohmann/json and the standard library alone.
set(ZU_PRIVATE_HEADERS
    Platform/ZuApi/FormatText.h
    Platform/ZuApi/JsonTextSerializer.h
    Platform/ZuApi/JsonTextWriter.h
    Platform/ZuPlugin/ElfText.h
    Platform/ZuRest/DocumentSinks.h
    Platform/ZuTls/OpenSsl.h
    Platform/ZuTls/PeerCheck.h
    Platform/ZuTls/TicketKeys.h
    Plugins/Common/AccessList.h
    Plugins/Common/AccessRules.h
    Plugins/Common/RefusalLog.h
    Plugins/Common/RoleTable.h
    Plugins/Common/TcpClients.h
    Plugins/Common/TcpConnection.h
    Plugins/Common/TcpListener.h
    Plugins/Common/TlsSession.h
    ZuControl/Control/HardwareResult.h
    ZuControl/Control/StateDocuments.h
    ZuControl/ControlProtocol/KnownLayout.h
    ZuControl/Persistence
    ZuControl/Plc
    ZuControl/Protocol
)
# Classes of the private folders that are members of public classes.
set(ZU_PUBLIC_HEADERS_OF_PRIVATE_FOLDERS
    ZuControl/Persistence/PersistControl.h
    ZuControl/Protocol/ControlDir.h
)

set(ZU_LIBRARIES ZuApi ZuPlatform ZuControl)
set(ZU_PLUGINS AsciiTcp ModbusTcp)
if(ZU_BUILD_SPARKPLUG)
    list(APPEND ZU_PLUGINS SparkplugMqtt)
endif()

# Plug-ins and hosts ask for libZuControl.so.1: within a major version the interface only grows.
set_target_properties(${ZU_LIBRARIES} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
)

# Installed targets have one search path, for the build tree and the installed tree. With two paths CMake would edit the file
# at the installation and, in the build tree, end the path with a colon: the loader takes the empty place behind it for the
# working directory.
function(zu_find_libraries_in folders)
    set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH "${folders}" BUILD_WITH_INSTALL_RPATH ON)
endfunction()

zu_find_libraries_in("$ORIGIN" ${ZU_LIBRARIES})
zu_find_libraries_in("$ORIGIN/..;$ORIGIN/../.." ${ZU_PLUGINS})

install(TARGETS ${ZU_LIBRARIES} PluginCommon EXPORT ZuControlTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${ZU_INCLUDE_DIR}
)
if(ZU_BUILD_HOST)
    zu_find_libraries_in("$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}" zucontrol-host)
    install(TARGETS zucontrol-host)
endif()
if(ZU_BUILD_CTL)
    install(TARGETS zucontrolctl)
endif()
install(TARGETS ${ZU_PLUGINS} LIBRARY DESTINATION ${ZU_PLUGIN_DIR})

foreach(header IN LISTS ZU_PRIVATE_HEADERS)
    list(APPEND exclusions PATTERN ${header} EXCLUDE)
endforeach()
install(DIRECTORY ZuControl ZuApi Platform/ DESTINATION ${ZU_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h" ${exclusions})
install(DIRECTORY Plugins/Common DESTINATION ${ZU_INCLUDE_DIR}/Plugins FILES_MATCHING PATTERN "*.h" ${exclusions})
foreach(header IN LISTS ZU_PUBLIC_HEADERS_OF_PRIVATE_FOLDERS)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION ${ZU_INCLUDE_DIR}/${folder})
endforeach()

install(EXPORT ZuControlTargets NAMESPACE ZuControl:: DESTINATION ${ZU_PACKAGE_DIR})
configure_package_config_file(cmake/ZuControlConfig.cmake.in ${PROJECT_BINARY_DIR}/ZuControlConfig.cmake
    INSTALL_DESTINATION ${ZU_PACKAGE_DIR}
)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZuControlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZuControlConfig.cmake ${PROJECT_BINARY_DIR}/ZuControlConfigVersion.cmake
    DESTINATION ${ZU_PACKAGE_DIR}
)

file(RELATIVE_PATH ZU_PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package zucontrol zucontrol-plugin-kit)
    configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
