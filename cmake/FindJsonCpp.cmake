# SPDX-License-Identifier: MIT
#
# Gives the target JsonCpp::JsonCpp: one that exists already, that of JsonCpp's own CMake package under any of the names
# that its versions use, or the header and library found by themselves. Installed beside vornjsondb's CMake package,
# whose users need the same target.

# JsonCpp 1.9.5 and older ask for policies that CMake 4 has dropped; the minimum must hold for their package alone.
function(_jsoncpp_find_package)
  set(CMAKE_POLICY_VERSION_MINIMUM 3.5)
  find_package(jsoncpp CONFIG QUIET)
endfunction()
if(NOT TARGET JsonCpp::JsonCpp)
  _jsoncpp_find_package()
endif()

foreach(_jsoncpp_target IN ITEMS jsoncpp_lib jsoncpp_static)
  if(NOT TARGET JsonCpp::JsonCpp AND TARGET ${_jsoncpp_target})
    add_library(JsonCpp::JsonCpp INTERFACE IMPORTED)
    target_link_libraries(JsonCpp::JsonCpp INTERFACE ${_jsoncpp_target})
  endif()
endforeach()
unset(_jsoncpp_target)

include(FindPackageHandleStandardArgs)
if(TARGET JsonCpp::JsonCpp)
  set(JsonCpp_TARGET JsonCpp::JsonCpp)
  find_package_handle_standard_args(JsonCpp REQUIRED_VARS JsonCpp_TARGET)
else()
  find_path(JsonCpp_INCLUDE_DIR json/json.h PATH_SUFFIXES jsoncpp)
  find_library(JsonCpp_LIBRARY jsoncpp)
  mark_as_advanced(JsonCpp_INCLUDE_DIR JsonCpp_LIBRARY)
  find_package_handle_standard_args(JsonCpp REQUIRED_VARS JsonCpp_LIBRARY JsonCpp_INCLUDE_DIR)
  if(JsonCpp_FOUND)
    add_library(JsonCpp::JsonCpp UNKNOWN IMPORTED)
    set_target_properties(JsonCpp::JsonCpp PROPERTIES
      IMPORTED_LOCATION "${JsonCpp_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${JsonCpp_INCLUDE_DIR}")
  endif()
endif()
