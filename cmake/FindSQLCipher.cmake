# SPDX-License-Identifier: MIT
#
# Gives the target SQLCipher::SQLCipher and, in SQLCipher_VERSION, the release of SQLite that it is made of. Installed
# beside vornjsondb's CMake package, whose users need the same target.
find_path(SQLCipher_INCLUDE_DIR sqlcipher/sqlite3.h)
find_library(SQLCipher_LIBRARY sqlcipher)
mark_as_advanced(SQLCipher_INCLUDE_DIR SQLCipher_LIBRARY)
if(SQLCipher_INCLUDE_DIR)
  file(STRINGS ${SQLCipher_INCLUDE_DIR}/sqlcipher/sqlite3.h SQLCipher_VERSION REGEX "^#define SQLITE_VERSION +\"")
  string(REGEX REPLACE ".*\"([^\"]+)\".*" "\\1" SQLCipher_VERSION "${SQLCipher_VERSION}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SQLCipher REQUIRED_VARS SQLCipher_LIBRARY SQLCipher_INCLUDE_DIR
  VERSION_VAR SQLCipher_VERSION)
if(SQLCipher_FOUND AND NOT TARGET SQLCipher::SQLCipher)
  add_library(SQLCipher::SQLCipher UNKNOWN IMPORTED)
  set_target_properties(SQLCipher::SQLCipher PROPERTIES
    IMPORTED_LOCATION "${SQLCipher_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${SQLCipher_INCLUDE_DIR}/sqlcipher")
endif()
