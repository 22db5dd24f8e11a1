# SPDX-License-Identifier: MIT
# Shared by the toolchain files in this folder: builds with one of Debian's cross compilers and the folder
# that
# scripts/sysroot makes. A toolchain file sets modbus_arch (Debian's name of the machine), modbus_libraries
# (the name of its library folder), modbus_compiler (the prefix of the compiler) and modbus_emulator (the
# command that runs programs).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_LIBRARY_ARCHITECTURE ${modbus_libraries})
set(CMAKE_C_COMPILER ${modbus_compiler}gcc)
set(CMAKE_CXX_COMPILER ${modbus_compiler}g++)

get_property(in_try_compile GLOBAL PROPERTY IN_TRY_COMPILE)
if(NOT in_try_compile)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../scripts/sysroot ${modbus_arch}
    OUTPUT_VARIABLE modbus_output RESULT_VARIABLE modbus_result OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(modbus_result)
    message(FATAL_ERROR "scripts/sysroot could not make the folder with the ${modbus_arch} packages")
  endif()
  set(MODBUS_SYSROOT ${modbus_output} CACHE PATH "Folder with the unpacked packages of the other machine" FORCE)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MODBUS_SYSROOT)

# CMAKE_SYSROOT is not set, because the cross compiler has its own headers and start-up files of the C
# library.
string(REGEX REPLACE "-$" "" modbus_compiler_root /usr/${modbus_compiler})
set(CMAKE_FIND_ROOT_PATH ${MODBUS_SYSROOT} ${modbus_compiler_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(modbus_folder ${MODBUS_SYSROOT}/usr/lib/${modbus_libraries})
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${modbus_folder}")
endforeach()

string(CONFIGURE "${modbus_emulator}" CMAKE_CROSSCOMPILING_EMULATOR @ONLY)
