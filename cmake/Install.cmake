# Puts library, headers, a CMake package and a pkg-config file in their usual places.
include(CMakePackageConfigHelpers)

set(TANEK_VS_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tanek_vs)
install(TARGETS tanek_vs tanek_vs_qt EXPORT tanek_vsTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tanek_vs DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tanek_vsTargets NAMESPACE tanek_vs:: DESTINATION ${TANEK_VS_PACKAGE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tanek_vsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tanek_vsConfig.cmake INSTALL_DESTINATION ${TANEK_VS_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tanek_vsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tanek_vsConfig.cmake ${PROJECT_BINARY_DIR}/tanek_vsConfigVersion.cmake
  DESTINATION ${TANEK_VS_PACKAGE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/tanek_vs.pc.in ${PROJECT_BINARY_DIR}/tanek_vs.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tanek_vs.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
