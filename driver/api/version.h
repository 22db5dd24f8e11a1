// SPDX-License-Identifier: MIT
/// \file
/// The version of the headers, for hosts that are built with several versions. CHANGELOG.md lists the changes
/// of each version.

#pragma once

#define MODBUS_TCPIP_RTU_M_VERSION_MAJOR 1 ///< changes when hosts must be compiled again
#define MODBUS_TCPIP_RTU_M_VERSION_MINOR 0 ///< changes when something is added
#define MODBUS_TCPIP_RTU_M_VERSION_PATCH 0 ///< changes when an error is corrected

/// The three numbers in one, for comparisons: 0x010203 is 1.2.3.
#define MODBUS_TCPIP_RTU_M_VERSION                                                                           \
    ((MODBUS_TCPIP_RTU_M_VERSION_MAJOR << 16) | (MODBUS_TCPIP_RTU_M_VERSION_MINOR << 8) |                    \
     MODBUS_TCPIP_RTU_M_VERSION_PATCH)
