// SPDX-License-Identifier: MIT
/// \file
/// How screens write values.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "../driver/export.h"

extern "C" {

/// Writes `count` values: bits (areas 0 and 3) or registers (areas 5 and 7). `value` holds one byte a
/// bit, two bytes a register low byte first, four bytes a 32-bit value least significant byte first;
/// what it lacks counts as 0. `station` is used while CommSettings::multiStation is nonzero, else
/// defaultStation is. hostId and hostItem come back in the write-done call-back.
///
/// While CommSettings::writeMode is 2 the write is queued, each bit by itself, registers in pieces of
/// at most writeBlockSize, and reaches the image when its request is built, or at once while the last
/// exchange has failed. Otherwise it goes to the image only. One call queues no more than 65,544 bits or
/// 65,536 registers.
///
/// Returns 0 when the address text gives a negative address, the area cannot be written or nothing was
/// queued; 1 when the value went only to the image; otherwise the number of queued writes, as
/// AddListWriteVar gave it for the last piece. The bytes of `value` are copied. Any thread, but not from a
/// call-back; takes listMutex and imageMutex, one after the other. While values are kept per station no
/// reply of another link (RW_VAR::linkId) may be stored meanwhile: that takes no lock.
MODBUS_API int SetRegisterData(QString tagText, int area, QString addressText, int station, QByteArray &value,
                               int count, int hostId, int hostItem);
}
