# Files for find_package(kolum) and pkg-config. Neither contains an absolute path, so that the
# prefix can be moved.
include(CMakePackageConfigHelpers)

set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/kolum)
install(EXPORT kolumTargets NAMESPACE kolum:: DESTINATION ${cmake_folder} COMPONENT kolum)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kolumConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/kolumConfig.cmake INSTALL_DESTINATION ${cmake_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/kolumConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/kolumConfig.cmake
  ${PROJECT_BINARY_DIR}/package/kolumConfigVersion.cmake
  DESTINATION ${cmake_folder} COMPONENT kolum)

set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH KOLUM_PREFIX_FROM_PC /${pkgconfig_folder} /)
string(REGEX REPLACE "/$" "" KOLUM_PREFIX_FROM_PC "${KOLUM_PREFIX_FROM_PC}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/kolum.pc.in ${PROJECT_BINARY_DIR}/package/kolum.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/kolum.pc
  DESTINATION ${pkgconfig_folder} COMPONENT kolum)
