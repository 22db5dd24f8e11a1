# SPDX-License-Identifier: MIT
# The 32-bit x86 panel. Tests run without an emulator. The loader from the unpacked packages starts them, so
# no 32-bit library is installed.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(modbus_arch i386)
set(modbus_libraries i386-linux-gnu)
set(modbus_compiler i686-linux-gnu-)
set(modbus_emulator "@MODBUS_SYSROOT@/lib/ld-linux.so.2;--library-path;@modbus_folder@")
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
