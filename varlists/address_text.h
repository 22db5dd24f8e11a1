// SPDX-License-Identifier: MIT
/// \file
/// From address text to address, for the driver itself. Pure function: no state, no lock, any thread.

#pragma once

#include <QtCore/QString>

namespace modbus_driver {

/// PLCAddressChangeIntef without a copy of the text.
int addressOf(int area, const QString &text);

} // namespace modbus_driver
