# SPDX-License-Identifier: MIT
# Builds for the 32-bit ARM panel with Debian's cross compiler and the folder that scripts/sysroot makes, and
# runs tests under qemu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# The compiler's notes on how older ones passed some arguments.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

get_property(in_try_compile GLOBAL PROPERTY IN_TRY_COMPILE)
if(NOT in_try_compile)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../scripts/sysroot
    OUTPUT_VARIABLE armhf_output RESULT_VARIABLE armhf_result OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(armhf_result)
    message(FATAL_ERROR "scripts/sysroot could not make the folder with the armhf packages")
  endif()
  set(ARMHF_ROOT ${armhf_output} CACHE PATH "Folder with the unpacked armhf packages" FORCE)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARMHF_ROOT)

# No CMAKE_SYSROOT: headers and start-up files of the C library are the cross compiler's own.
set(CMAKE_FIND_ROOT_PATH ${ARMHF_ROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${ARMHF_ROOT}/usr/lib/arm-linux-gnueabihf")
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${ARMHF_ROOT})
