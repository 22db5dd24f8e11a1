# SPDX-License-Identifier: MIT
# What an installed driver consists of: the library, the headers that the chief header includes, a CMake package
# and a pkg-config file. Both find the rest by their own place, so the installed tree may be moved.
include(CMakePackageConfigHelpers)

set(modbus_headers ${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME})
target_include_directories(driver INTERFACE $<INSTALL_INTERFACE:${modbus_headers}/driver>)
target_compile_features(driver INTERFACE cxx_std_11)
install(TARGETS driver EXPORT ${PROJECT_NAME}Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev)

# A header is installed when the chief header leads to it; the others are nobody's business. They include one
# another by their place in the source tree, so the folders stay.
set(modbus_found driver/modbus_tcpip_rtu_m.h)
set(modbus_unread ${modbus_found})
while(modbus_unread)
  list(POP_FRONT modbus_unread header)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${modbus_headers}/${folder} COMPONENT dev)
  file(STRINGS ${header} lines REGEX "^#include \"")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^#include \"(.*)\".*" "${PROJECT_SOURCE_DIR}/${folder}/\\1" included ${line})
    get_filename_component(included ${included} ABSOLUTE)
    file(RELATIVE_PATH included ${PROJECT_SOURCE_DIR} ${included})
    if(NOT included IN_LIST modbus_found)
      list(APPEND modbus_found ${included})
      list(APPEND modbus_unread ${included})
    endif()
  endforeach()
endwhile()
string(REPLACE ";" "\n" modbus_lines "${modbus_found}")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/public-headers.txt "${modbus_lines}\n") # for scripts/docs

set(modbus_package ${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME})
configure_package_config_file(cmake/config.cmake.in ${PROJECT_NAME}Config.cmake
  INSTALL_DESTINATION ${modbus_package})
write_basic_package_version_file(${PROJECT_NAME}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT ${PROJECT_NAME}Targets NAMESPACE ${PROJECT_NAME}:: DESTINATION ${modbus_package} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake
  DESTINATION ${modbus_package} COMPONENT dev)

file(RELATIVE_PATH modbus_prefix_from_pc
  ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" modbus_prefix_from_pc ${modbus_prefix_from_pc})
configure_file(cmake/driver.pc.in ${PROJECT_NAME}.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(MODBUS_BUILD_TOOLS)
  file(GLOB modbus_man_pages CONFIGURE_DEPENDS docs/man/*.1)
  install(FILES ${modbus_man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
