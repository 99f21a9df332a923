# SPDX-License-Identifier: MIT
#
# What the libraries look like from outside the tree: see consumer/check.sh and hosts/check.sh.

if(VORNJSONDB_SANITIZE)
  list(JOIN VORNJSONDB_SANITIZE "," sanitizers)
  set(sanitize_flag -fsanitize=${sanitizers})
endif()
set(components "")
if(VORNJSONDB_CONTRACT)
  string(APPEND components " contract")
endif()
if(VORNJSONDB_TABLE)
  string(APPEND components " table")
endif()
set(environment
  BUILD=${PROJECT_BINARY_DIR}
  CLI=${VORNJSONDB_CLI}
  CMAKE=${CMAKE_COMMAND}
  CMAKE_GENERATOR=${CMAKE_GENERATOR}
  "COMPONENTS=${components}"
  CXX=${CMAKE_CXX_COMPILER}
  "CXXFLAGS=${CMAKE_CXX_FLAGS} ${sanitize_flag}"
  "EMULATOR=$<JOIN:${CMAKE_CROSSCOMPILING_EMULATOR}, >"
  KIND=${library_kind}
  LIBDIR=${CMAKE_INSTALL_LIBDIR}
  NM=${CMAKE_NM}
  SANITIZE=${sanitizers}
  SQLCIPHER=${VORNJSONDB_SQLCIPHER}
  SOURCE=${PROJECT_SOURCE_DIR}
  TABLE_VERSION=${VORNJSONDB_TABLE_VERSION}
  TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE}
  VERSION=${PROJECT_VERSION})

# vornjsondb_add_package_test(NAME SCRIPT ARGUMENT...): scripts are relative to this folder.
function(vornjsondb_add_package_test name script)
  add_test(NAME package.${name} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${script} ${ARGN})
  set_tests_properties(package.${name} PROPERTIES LABELS package ENVIRONMENT "${environment}")
endfunction()

vornjsondb_add_package_test(layout consumer/check.sh layout)
if(library_kind STREQUAL SHARED)
  vornjsondb_add_package_test(symbols consumer/check.sh symbols)
endif()
vornjsondb_add_package_test(find_package consumer/check.sh find_package)
vornjsondb_add_package_test(find_package_without_that_of_jsoncpp
  consumer/check.sh find_package -DCMAKE_DISABLE_FIND_PACKAGE_jsoncpp=ON)
vornjsondb_add_package_test(find_package_says_what_is_missing consumer/check.sh missing_component)
vornjsondb_add_package_test(hosts hosts/check.sh)
vornjsondb_add_package_test(old_sqlite consumer/check.sh old_sqlite)

if(NOT CMAKE_CROSSCOMPILING) # pkg-config would name this machine's libraries
  vornjsondb_add_package_test(pkg_config consumer/check.sh pkg_config)
  vornjsondb_add_package_test(plain_compile plain_compile.sh)
endif()
