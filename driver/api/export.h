// SPDX-License-Identifier: MIT
/// \file
/// Marks what the library exports. Everything else has hidden visibility.

#pragma once

#include <QtCore/qglobal.h>

#if defined(MODBUS_TCPIP_RTU_M_BUILDING)
#define MODBUS_TCPIP_RTU_M_API Q_DECL_EXPORT ///< the declaration is in the dynamic symbol table
#else
#define MODBUS_TCPIP_RTU_M_API Q_DECL_IMPORT ///< the declaration is in the dynamic symbol table
#endif
