// SPDX-License-Identifier: MIT
/// \file
/// Modbus exception codes in words. Pure; any thread.

#pragma once

#include <QtCore/QString>

/// The name of a Modbus exception, such as "illegal data address".
QString exceptionName(int code);
