// SPDX-License-Identifier: MIT
/// \file
/// The driver's own compact frames, sent instead of Modbus requests while CommSettings::remoteMode is
/// nonzero. All fields high byte first, each keeping the low bits that fit:
///
///     0    frame length    3    linkId          7-10  startAddress    17-20   aux
///     1    hostId          4    station         11-12 dataLength      21..    value bytes, writes only
///     2    rwFlag          5-6  area            13-16 subIndex        last    byte sum of all before
///
/// On the communication thread, listMutex held.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/export.h"
#include "../driver/records.h"

namespace varlists {
/// The frame that carries this access, followed by the given value bytes.
QByteArray remoteFrame(const RW_VAR &var, const QByteArray &value);
} // namespace varlists

/// Appends one transaction for areas 0 and 1. Nothing for any other area: only bit reads go out.
MODBUS_API void Remote_ReadVar(RW_VAR *var);

/// Appends one transaction for any area, then writes the value into the image (WriteDataToLocal, which
/// takes imageMutex) without waiting for the reply.
MODBUS_API void Remote_WriteVar(RW_VAR *var);
