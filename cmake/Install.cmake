# SPDX-License-Identifier: MIT
#
# Headers, libraries, pkg-config files and the one CMake package of both libraries. What is installed of one of them
# lies beside the other's, from the same build or from another.
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vornjsondb)
set(pc_libdir "\${exec_prefix}")
cmake_path(APPEND pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})

# vornjsondb_install_pc(NAME VERSION LIBS REQUIRES DESCRIPTION)
function(vornjsondb_install_pc pc_name pc_version pc_libs pc_requires pc_description)
  # The prefix is filled in while installing, because cmake --install may be given another one than this build was.
  set(pc_prefix @CMAKE_INSTALL_PREFIX@)
  set(pc_file ${CMAKE_CURRENT_BINARY_DIR}/${pc_name}.pc)
  configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/library.pc.in ${pc_file}.in @ONLY)
  install(CODE "configure_file(\"${pc_file}.in\" \"${pc_file}\" @ONLY)" COMPONENT development)
  install(FILES ${pc_file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

# vornjsondb_install_targets(COMPONENT TARGET...): the targets of a component of the CMake package. Other than those
# components, runtime and development are what a distribution splits into two packages.
function(vornjsondb_install_targets component)
  install(TARGETS ${ARGN} EXPORT vornjsondb-${component}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(EXPORT vornjsondb-${component} NAMESPACE vornjsondb:: FILE vornjsondb-${component}-targets.cmake
    DESTINATION ${cmake_package_dir} COMPONENT development)
endfunction()

set(sqlite_pc sqlite3)
set(find_modules FindJsonCpp.cmake)
if(VORNJSONDB_SQLCIPHER)
  set(sqlite_pc sqlcipher)
  list(APPEND find_modules FindSQLCipher.cmake)
endif()
list(TRANSFORM find_modules PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

if(VORNJSONDB_CONTRACT)
  vornjsondb_install_targets(contract vornjsondb vornjsondb_quiet)
  install(FILES ${PROJECT_SOURCE_DIR}/include/VornJsonDbApi.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  vornjsondb_install_pc(vornjsondb ${PROJECT_VERSION} -lvornjsondb "jsoncpp ${sqlite_pc}" "${PROJECT_DESCRIPTION}")
  vornjsondb_install_pc(vornjsondb-quiet ${PROJECT_VERSION}
    "-Wl,--undefined=blLogToStdout -lvornjsondb-quiet" vornjsondb
    "vornjsondb for programs that leave its two flags at false")
endif()
if(VORNJSONDB_TABLE)
  vornjsondb_install_targets(table vorntable)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorn
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  vornjsondb_install_pc(vorntable ${VORNJSONDB_TABLE_VERSION} -lvorntable "jsoncpp sqlite3 >= 3.38"
    "${PROJECT_DESCRIPTION}, with bound values and kept statements")
endif()
if(TARGET vornjsondb_cli)
  install(TARGETS vornjsondb_cli DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/src/cli/vornjsondb.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/src/cli/vornjsondb.bash RENAME vornjsondb
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vornjsondb-config.cmake.in vornjsondb-config.cmake
  INSTALL_DESTINATION ${cmake_package_dir} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(vornjsondb-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/vornjsondb-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/vornjsondb-config-version.cmake
  ${find_modules}
  DESTINATION ${cmake_package_dir} COMPONENT development)
