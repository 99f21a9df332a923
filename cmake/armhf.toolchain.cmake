# SPDX-License-Identifier: MIT
#
# Cross-builds for 32-bit ARM hard-float Linux with Debian's cross compiler; programs run under user-mode emulation.
# tools/armhf.sh fills the folder with the target's SQLite, JsonCpp and GoogleTest. The C and C++ libraries are the
# cross compiler's own, so this is a place to search and no CMAKE_SYSROOT.
get_filename_component(armhf_sysroot ${CMAKE_CURRENT_LIST_DIR}/../build/arm/sysroot ABSOLUTE)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(CMAKE_FIND_ROOT_PATH ${armhf_sysroot} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# On a device these libraries are where every program finds them.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/arm-linux-gnueabihf
  -E LD_LIBRARY_PATH=${armhf_sysroot}/usr/lib/arm-linux-gnueabihf)

# Where one target library needs another.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link=${armhf_sysroot}/usr/lib/arm-linux-gnueabihf)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,-rpath-link=${armhf_sysroot}/usr/lib/arm-linux-gnueabihf)

# GCC remarks on a change of the ARM ABI in its version 7, which concerns nothing that is built here.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
