// SPDX-License-Identifier: MIT
/// \file
/// How screens read values.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "../driver/export.h"

extern "C" {

/// Copies `count` values out of the image, as the last stored replies and host writes left them; no
/// station is asked, and a value that was never read is 0. `area` and `addressText` say where
/// (varlists/areas.h, StringAddressToInt); `count` is in bits (areas 0 to 3) or registers (4 to 7, two
/// for each 32-bit value). `station` matters only while CommSettings::multiStation is nonzero.
///
/// `out` gets one byte (0 or 1) a bit, two bytes a register low byte first, four bytes a 32-bit value
/// least significant byte first; it grows as needed and keeps its further bytes. A single register of
/// areas 6 and 7 gives the low word, or nothing while values are kept per station.
///
/// Returns 0 for an address text that gives a negative address (out is then untouched), else 1, also
/// for an area that does not exist. Any thread; takes imageMutex. While values are kept per station no
/// reply of another link (RW_VAR::linkId) may be stored meanwhile: that takes no lock.
MODBUS_API int GetRegisterData(int ignored, int area, QString addressText, int station, QByteArray &out,
                               int count);
}
