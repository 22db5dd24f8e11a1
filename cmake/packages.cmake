# SPDX-License-Identifier: MIT
# The Debian packages, made by scripts/package: library, headers, tools.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library dev tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "${MODBUS_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${MODBUS_SYSROOT}/usr/lib/arm-linux-gnueabihf)
endif()

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libmodbus-tcpip-rtu-m1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The driver, a shared library: a host asks it for the next request, sends it\n\
and hands the reply back.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libmodbus-tcpip-rtu-m-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libmodbus-tcpip-rtu-m1 (= ${PROJECT_VERSION}), qtbase5-dev (>= 5.9)")
set(CPACK_COMPONENT_DEV_DESCRIPTION "For building hosts: headers, CMake package and pkg-config file of\n\
libmodbus-tcpip-rtu-m1.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME modbus-tcpip-rtu-m-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libmodbus-tcpip-rtu-m1 (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "modbus-panel polls, reads and writes the variables of a Modbus TCP station\n\
through the driver; modbus-station simulates one.")

foreach(component IN ITEMS library dev tools)
  string(TOUPPER ${component} name)
  install(FILES LICENSE DESTINATION share/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME}
    RENAME copyright COMPONENT ${component})
endforeach()
include(CPack)
