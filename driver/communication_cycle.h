// SPDX-License-Identifier: MIT
/// \file
/// What to send next. Writes go first, then one-shot reads, then the cyclic poll; after five writes or
/// one-shot reads in a row their queue waits for a cyclic read.

#pragma once

#include "export.h"
#include "records.h"

extern "C" {

/// The request to send now, or null when there is nothing to send. The same request is returned until
/// DataCom has retired it. The host sends `frameLength` bytes of `frame` and hands the reply, of
/// `replyLength` bytes, or the lack of one, to DataCom; for a `replyLength` of 0 it waits for nothing
/// and hands over length 0.
///
/// The record is the driver's, valid until the next call of DataCom. Call it from the communication
/// thread only. Takes listMutex, within it stationMutex and imageMutex, and calls itemNotify when it
/// has built a write.
MODBUS_API Protocol *ComCommunication();
}
