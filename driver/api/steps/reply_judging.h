// SPDX-License-Identifier: MIT
/// \file
/// Whether a reply is accepted. Only its length and the kind of the request in flight matter: unit, function
/// and transaction of the reply are not compared with the request. For the communication thread. Without a
/// request in flight nothing is accepted.

#pragma once

#include <QtCore/QByteArray>

#include "../export.h"

/// \addtogroup Steps
/// @{

/// Judges a reply of `length` bytes, 0 for none, and stores the data of an accepted read, under imageMutex.
/// Returns a StatusCode. For the read half of a bit-in-register write the caller holds listMutex when there are
/// panel threads.
MODBUS_TCPIP_RTU_M_API int DealDataOfLocalArea(QByteArray *reply, int length);

/// The same for a request of another link. Only the reply to a request with subIndex -1 is stored, without
/// imageMutex, deliberately: no other thread may use the image meanwhile. Every other reply is accepted with
/// StatusRemoteAccepted, and so is the second reply of a request.
MODBUS_TCPIP_RTU_M_API int DealDataOfRemoteArea(QByteArray *reply, int length);

/// What the request in flight wants done with its reply: 1 store it (a read), 2 nothing (a write), 0 it is
/// neither. The reply itself is not looked at.
MODBUS_TCPIP_RTU_M_API int CheckGetData(QByteArray *reply, int length);

/// @}
