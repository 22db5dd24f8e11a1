# SPDX-License-Identifier: MIT
# The 32-bit ARM panel without a floating-point unit (ARMv5); tests run under qemu.
set(CMAKE_SYSTEM_PROCESSOR arm)
# No notes about arguments that older compilers passed in another way.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(modbus_arch armel)
set(modbus_libraries arm-linux-gnueabi)
set(modbus_compiler arm-linux-gnueabi-)
set(modbus_emulator "qemu-arm;-L;@MODBUS_SYSROOT@")
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
