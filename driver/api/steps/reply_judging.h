// SPDX-License-Identifier: MIT
/// \file
/// Decides whether a reply is accepted. Only its length and the kind of the request in flight count: unit,
/// function and transaction of the reply are not compared with the request. For the communication thread.
/// Without a request in flight no reply is accepted.

#pragma once

#include <QtCore/QByteArray>

#include "../export.h"

/// \addtogroup Steps
/// @{

/// Judges a reply of `length` bytes (0: no reply), and stores the data of an accepted read under imageMutex.
/// Returns a StatusCode. For the read half of a bit-in-register write the caller holds listMutex when other
/// threads use the driver.
MODBUS_TCPIP_RTU_M_API int DealDataOfLocalArea(QByteArray *reply, int length);

/// The same for a request of another link. Only the reply to a request with subIndex -1 is stored. Storing
/// takes no imageMutex on purpose: no other thread may use the image meanwhile. An accepted reply gives
/// StatusDone when it is stored and is the first reply of its access, else StatusRemoteAccepted.
MODBUS_TCPIP_RTU_M_API int DealDataOfRemoteArea(QByteArray *reply, int length);

/// Returns what to do with the reply to the request in flight: 1 for a read (store it), 2 for a write
/// (nothing), 0 for neither. Does not use the arguments.
MODBUS_TCPIP_RTU_M_API int CheckGetData(QByteArray *reply, int length);

/// @}
