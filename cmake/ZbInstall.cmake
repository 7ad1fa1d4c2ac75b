# `cmake --install` puts the shared library (with its SONAME and version), the public header
# under include/zbhalcontroller/, a CMake package (find_package(zbhalcontroller), target
# zbhalcontroller::zbhalcontroller) and a pkg-config file (zbhalcontroller.pc).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(zbhalcontroller PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  # The installed library keeps finding Debian's liblog, which is not on the loader's path.
  INSTALL_RPATH_USE_LINK_PATH ON)
target_include_directories(zbhalcontroller INTERFACE
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS zbhalcontroller EXPORT zbhalcontrollerTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/zbhalcontroller/zb_api.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zbhalcontroller)

set(ZB_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zbhalcontroller)
install(EXPORT zbhalcontrollerTargets NAMESPACE zbhalcontroller:: DESTINATION ${ZB_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zbhalcontrollerConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zbhalcontrollerConfig.cmake INSTALL_DESTINATION ${ZB_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zbhalcontrollerConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zbhalcontrollerConfig.cmake
              ${PROJECT_BINARY_DIR}/zbhalcontrollerConfigVersion.cmake
        DESTINATION ${ZB_CMAKE_DIR})

# Both files name paths relative to themselves, so the installed tree can be moved.
file(RELATIVE_PATH ZB_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/zbhalcontroller.pc.in
               ${PROJECT_BINARY_DIR}/zbhalcontroller.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zbhalcontroller.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
