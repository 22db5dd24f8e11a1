# SPDX-License-Identifier: MIT
# Installs the library, the public headers, a CMake package and a pkg-config file. The last two use paths
# relative to their own folder, so the installed tree may be moved.
include(CMakePackageConfigHelpers)

set(modbus_headers ${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME})
target_include_directories(modbus_tcpip_rtu_m INTERFACE $<INSTALL_INTERFACE:${modbus_headers}>)
target_compile_features(modbus_tcpip_rtu_m INTERFACE cxx_std_11)
install(TARGETS modbus_tcpip_rtu_m EXPORT ${PROJECT_NAME}Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev)

# The public headers, relative to driver/. A host includes the first; each of them can be included alone.
set(modbus_public_headers
  modbus_tcpip_rtu_m.h
  api/codes.h
  api/export.h
  api/host_calls.h
  api/records.h
  api/version.h
  api/steps/checksums.h
  api/steps/driver_object.h
  api/steps/image_access.h
  api/steps/list_building.h
  api/steps/reply_judging.h
  api/steps/request_builders.h)
foreach(header IN LISTS modbus_public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES driver/${header} DESTINATION ${modbus_headers}/${folder} COMPONENT dev)
endforeach()
list(TRANSFORM modbus_public_headers PREPEND driver/ OUTPUT_VARIABLE modbus_lines)
string(REPLACE ";" "\n" modbus_lines "${modbus_lines}")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/public-headers.txt "${modbus_lines}\n") # for scripts/docs and scripts/check-packages

set(modbus_package ${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME})
configure_package_config_file(cmake/config.cmake.in ${PROJECT_NAME}Config.cmake
  INSTALL_DESTINATION ${modbus_package})
write_basic_package_version_file(${PROJECT_NAME}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT ${PROJECT_NAME}Targets NAMESPACE ${PROJECT_NAME}:: DESTINATION ${modbus_package} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake
  DESTINATION ${modbus_package} COMPONENT dev)

# An installation in /usr is part of a system. For a cross compiler such a system is in another folder, and
# pkg-config adds the path of that folder. So the file must have the absolute path. Any other installation may
# be moved.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(modbus_pc_prefix /usr)
else()
  file(RELATIVE_PATH modbus_pc_prefix
    ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" modbus_pc_prefix "\${pcfiledir}/${modbus_pc_prefix}")
endif()
configure_file(cmake/driver.pc.in ${PROJECT_NAME}.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(modbus_top_level AND MODBUS_BUILD_TOOLS)
  file(GLOB modbus_man_pages CONFIGURE_DEPENDS docs/man/*.1)
  install(FILES ${modbus_man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
