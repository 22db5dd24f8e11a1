// SPDX-License-Identifier: MIT
/// \file
/// Converts an address text to an address, for use inside the driver. Pure function: no state, no lock, any
/// thread.

#pragma once

#include <QtCore/QString>

namespace modbus_driver {

/// The same as PLCAddressChangeIntef, but does not copy the text.
int addressOf(int area, const QString &text);

} // namespace modbus_driver
