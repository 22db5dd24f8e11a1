// SPDX-License-Identifier: MIT
/// \file
/// From address text to address. Pure functions: no state, no lock, any thread.

#pragma once

#include <QtCore/QString>

#include "../driver/export.h"

/// Areas 2 and 3 take "register.bit" and give register * 16 + bit; without a point the result is -1,
/// the only error. Every other area takes a decimal number. Text that is no number counts as 0, and no
/// range is checked: bit 16 is bit 0 of the next register, negative numbers stay negative.
MODBUS_API int StringAddressToInt(int area, QString addressText);

namespace varlists {

/// StringAddressToInt without a copy of the text.
int addressOf(int area, const QString &text);

} // namespace varlists

extern "C" {

/// StringAddressToInt for hosts.
MODBUS_API int PLCAddressChangeIntef(int area, QString addressText);
}
