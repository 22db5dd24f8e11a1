# SPDX-License-Identifier: MIT
# Hardening of release builds: the program stops after a stack or buffer overflow, and its table of calls into
# other libraries is read-only. Builds with sanitizers are not hardened, because the sanitizers find more.
if(MODBUS_SANITIZE)
  return()
endif()

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX) # position-independent programs need an option of the linker too

set(hardening -fstack-protector-strong)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  list(APPEND hardening -fstack-clash-protection -fcf-protection)
endif()
# The C library checks the sizes of buffers in optimised code only. A packager may set another level.
if(NOT "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_COMPILER_ARG1}" MATCHES "_FORTIFY_SOURCE")
  # Level 3 needs a compiler that knows the sizes of dynamic objects. Other compilers warn and use level 2.
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
  check_cxx_source_compiles("#include <cstdio>\nint main() { return 0; }" MODBUS_FORTIFY_3)
  unset(CMAKE_REQUIRED_FLAGS)
  list(APPEND hardening -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${MODBUS_FORTIFY_3}>,3,2>)
endif()

set(released $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
target_compile_options(modbus_tcpip_rtu_m_flags INTERFACE "$<${released}:${hardening}>")
target_link_options(modbus_tcpip_rtu_m_flags INTERFACE "$<${released}:-Wl,-z,relro,-z,now>")
