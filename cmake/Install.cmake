# SPDX-License-Identifier: MIT
#
# Header, library, pkg-config file and CMake package.
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vornjsondb)

# The runtime and development components are what a distribution splits into two packages.
install(TARGETS vornjsondb vornjsondb_quiet EXPORT vornjsondb
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/include/VornJsonDbApi.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

install(EXPORT vornjsondb NAMESPACE vornjsondb:: FILE vornjsondb-targets.cmake
  DESTINATION ${cmake_package_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vornjsondb-config.cmake.in vornjsondb-config.cmake
  INSTALL_DESTINATION ${cmake_package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(vornjsondb-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/vornjsondb-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/vornjsondb-config-version.cmake
  ${CMAKE_CURRENT_LIST_DIR}/FindJsonCpp.cmake
  ${CMAKE_CURRENT_LIST_DIR}/vornjsondb-quiet.cpp
  DESTINATION ${cmake_package_dir} COMPONENT development)

# The prefix is filled in while installing, because cmake --install may be given another one than this build was.
set(pc_libdir "\${exec_prefix}")
cmake_path(APPEND pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
set(pc_prefix @CMAKE_INSTALL_PREFIX@)
set(pc_file ${CMAKE_CURRENT_BINARY_DIR}/vornjsondb.pc)
configure_file(${CMAKE_CURRENT_LIST_DIR}/vornjsondb.pc.in ${pc_file}.in @ONLY)
install(CODE "configure_file(\"${pc_file}.in\" \"${pc_file}\" @ONLY)" COMPONENT development)
install(FILES ${pc_file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
