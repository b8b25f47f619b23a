# What another project needs: the three libraries with their headers, found by find_package(ZuControl) and by pkg-config, and
# the host program with its plug-ins. Wherever the installed tree is moved, its parts find each other.
include(CMakePackageConfigHelpers)
include(cmake/InstallCheck.cmake)

set(ZU_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zucontrol)
set(ZU_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZuControl)
set(ZU_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/zucontrol/plugins)

set(ZU_LIBRARIES ZuApi ZuPlatform ZuControl)
set(ZU_PLUGINS AsciiTcp ModbusTcp)

set_target_properties(${ZU_LIBRARIES} PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(${ZU_PLUGINS} PROPERTIES INSTALL_RPATH "$ORIGIN/../..")

install(TARGETS ${ZU_LIBRARIES} EXPORT ZuControlTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${ZU_INCLUDE_DIR}
)
if(ZU_BUILD_HOST)
    set_target_properties(zucontrol-host PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS zucontrol-host)
endif()
install(TARGETS ${ZU_PLUGINS} LIBRARY DESTINATION ${ZU_PLUGIN_DIR})
install(DIRECTORY ZuControl ZuApi Platform/ DESTINATION ${ZU_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")

install(EXPORT ZuControlTargets NAMESPACE ZuControl:: DESTINATION ${ZU_PACKAGE_DIR})
configure_package_config_file(cmake/ZuControlConfig.cmake.in ${PROJECT_BINARY_DIR}/ZuControlConfig.cmake
    INSTALL_DESTINATION ${ZU_PACKAGE_DIR}
)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZuControlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZuControlConfig.cmake ${PROJECT_BINARY_DIR}/ZuControlConfigVersion.cmake
    DESTINATION ${ZU_PACKAGE_DIR}
)

file(RELATIVE_PATH ZU_PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/zucontrol.pc.in ${PROJECT_BINARY_DIR}/zucontrol.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zucontrol.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
