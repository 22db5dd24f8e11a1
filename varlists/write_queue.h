// SPDX-License-Identifier: MIT
/// \file
/// The queue of writes. Callable from any thread, but not from a call-back; takes listMutex.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

namespace varlists {
/// A queue that holds this many entries takes no further one, except through mode 1.
enum { queueLimit = 1024 };
} // namespace varlists

extern "C" {

/// Queues a copy of var and returns the number of queued writes afterwards, which does not tell whether
/// the write was appended, merged or dropped. A queued write with the same station, area, startAddress
/// and dataLength is overwritten in its place, but never the head: it may be on its way. With 1,024
/// writes queued and none to merge with, the write is dropped. mode 1 appends without merging or limit.
MODBUS_API int AddListWriteVar(RW_VAR *var, int mode);
}
