// SPDX-License-Identifier: MIT
/// \file
/// What the library shows to the dynamic linker. Everything else has hidden visibility.

#pragma once

#include <QtCore/qglobal.h>

#if defined(MODBUS_BUILDING_DRIVER)
#define MODBUS_API Q_DECL_EXPORT ///< on a declaration: part of the library's dynamic symbol table
#else
#define MODBUS_API Q_DECL_IMPORT ///< on a declaration: part of the library's dynamic symbol table
#endif
