// SPDX-License-Identifier: MIT
/// \file
/// Where the data of a good read reply goes. The request in flight says what the reply holds; without
/// one nothing is stored. Bytes that the reply lacks leave the image as it was. Each takes no lock: the
/// caller is the communication thread and holds listMutex and, except for remote replies, imageMutex.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/export.h"

/// Stores the reply in the image arrays (multiStation 0) or in the per-station records, and completes
/// the write-back of a bit-in-register write. A per-station store leaves the value of the record that
/// it touched last with the length of the whole data, zeros behind the register; readers look at the
/// first two bytes only. A store that touched none does that to the first record of the list: a broadcast
/// read, which brings no data, empties it. No reply stores more than one whole table.
MODBUS_API void SaveToLocalDataErea(QByteArray *reply);

/// Stores registers and, for the read half of a bit-in-register write, completes the write-back.
MODBUS_API void SpecialRegisterSave(QByteArray *reply, unsigned short *regs);

/// Stores whole bytes of bits, from byte startAddress / 8 on.
MODBUS_API void SaveBitToUC(QByteArray *reply, unsigned char *bits);

/// Stores registers, from register startAddress on; the reply holds each high byte first.
MODBUS_API void SaveWordToUS(QByteArray *reply, unsigned short *regs);
