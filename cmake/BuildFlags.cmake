# SPDX-License-Identifier: MIT
#
# What every target of this build is compiled and linked with.

# With neither a build type nor an -O of the caller's own there would be no optimisation at all.
get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT multi_config AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CXX_FLAGS MATCHES "-O")
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# Two builds of one source give the same binary, wherever they are made.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)

if(VORNJSONDB_WERROR)
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
endif()

if(VORNJSONDB_SANITIZE)
  list(JOIN VORNJSONDB_SANITIZE "," sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
