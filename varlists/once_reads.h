// SPDX-License-Identifier: MIT
/// \file
/// The queue of one-shot reads. Callable from any thread, but not from a call-back; takes listMutex.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

extern "C" {

/// Queues one read of var's area, addressText and dataLength (bits in areas 0 to 3, else registers), cut
/// into requests of at most CommSettings::writeBlockSize registers or bytes of bits. Pieces that the
/// same hostId and hostItem has queued already, and pieces for a full queue (1,024), are left out.
/// Returns the number of queued reads afterwards, or 0 for an address text that gives a negative
/// address; var is then untouched. Otherwise var is rewritten: it holds the last piece's request.
///
/// mode 1 appends var as it stands: a finished request, with no conversion, merging or limit.
MODBUS_API int AddListOnceReadVar(RW_VAR *var, int mode);
}
