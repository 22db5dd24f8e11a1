// SPDX-License-Identifier: MIT
/// \file
/// The version of the headers, for hosts that build against more than one. CHANGELOG.md says what each
/// brought.

#pragma once

#define MODBUS_TCPIP_RTU_M_VERSION_MAJOR 1 ///< changes when hosts must be compiled again
#define MODBUS_TCPIP_RTU_M_VERSION_MINOR 0 ///< changes when something is added
#define MODBUS_TCPIP_RTU_M_VERSION_PATCH 0 ///< changes when something is mended

/// The three in one number, to compare with: 0x010203 is 1.2.3.
#define MODBUS_TCPIP_RTU_M_VERSION                                                                           \
    ((MODBUS_TCPIP_RTU_M_VERSION_MAJOR << 16) | (MODBUS_TCPIP_RTU_M_VERSION_MINOR << 8) |                    \
     MODBUS_TCPIP_RTU_M_VERSION_PATCH)
