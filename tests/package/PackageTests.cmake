# SPDX-License-Identifier: MIT
#
# What the library looks like from outside the tree: see consumer/check.sh and hosts/check.sh.

if(VORNJSONDB_SANITIZE)
  list(JOIN VORNJSONDB_SANITIZE "," sanitizers)
  set(sanitize_flag -fsanitize=${sanitizers})
endif()
get_target_property(library_type vornjsondb TYPE)
set(environment
  BUILD=${PROJECT_BINARY_DIR}
  CMAKE=${CMAKE_COMMAND}
  CMAKE_GENERATOR=${CMAKE_GENERATOR}
  CXX=${CMAKE_CXX_COMPILER}
  "CXXFLAGS=${CMAKE_CXX_FLAGS} ${sanitize_flag}"
  "EMULATOR=$<JOIN:${CMAKE_CROSSCOMPILING_EMULATOR}, >"
  KIND=${library_type}
  LIBDIR=${CMAKE_INSTALL_LIBDIR}
  NM=${CMAKE_NM}
  SANITIZE=${sanitizers}
  SOURCE=${PROJECT_SOURCE_DIR}
  TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE}
  VERSION=${PROJECT_VERSION})

# Arguments after the name: those of check.sh.
function(vornjsondb_add_package_test name)
  add_test(NAME package.${name} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/consumer/check.sh ${ARGN})
  set_tests_properties(package.${name} PROPERTIES LABELS package ENVIRONMENT "${environment}")
endfunction()

vornjsondb_add_package_test(layout layout)
if(library_type STREQUAL SHARED_LIBRARY)
  vornjsondb_add_package_test(symbols symbols)
endif()
vornjsondb_add_package_test(find_package find_package)
vornjsondb_add_package_test(find_package_without_that_of_jsoncpp find_package -DCMAKE_DISABLE_FIND_PACKAGE_jsoncpp=ON)

add_test(NAME package.hosts COMMAND ${CMAKE_CURRENT_LIST_DIR}/hosts/check.sh)
set_tests_properties(package.hosts PROPERTIES LABELS package ENVIRONMENT "${environment}")

if(NOT CMAKE_CROSSCOMPILING) # pkg-config would name this machine's libraries
  vornjsondb_add_package_test(pkg_config pkg_config)

  add_test(NAME package.plain_compile COMMAND ${CMAKE_CURRENT_LIST_DIR}/plain_compile.sh)
  set_tests_properties(package.plain_compile PROPERTIES LABELS package ENVIRONMENT CXX=${CMAKE_CXX_COMPILER})
endif()
