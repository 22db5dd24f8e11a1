// SPDX-License-Identifier: MIT
/// \file
/// Who decides whether a reply is accepted. Only its length and the kind of the request in flight
/// count: unit, function and transaction of the reply are not compared with the request. All three
/// belong to the communication thread; without a request in flight they accept nothing.

#pragma once

#include <QtCore/QByteArray>

#include "export.h"

/// Judges a reply of `length` bytes, 0 for none, and stores the data of an accepted read, under
/// imageMutex. Returns a status code. A caller with panel threads beside it holds listMutex.
MODBUS_API int DealDataOfLocalArea(QByteArray *reply, int length);

/// The same for a request of another link. Stores without imageMutex, deliberately: no other thread may use
/// the image meanwhile. Only requests with subIndex -1 are stored; all others are accepted with status 100,
/// and so is the second reply of a request.
MODBUS_API int DealDataOfRemoteArea(QByteArray *reply, int length);

/// What the request in flight wants done with its reply: 1 store it (a read), 2 nothing (a write), 0
/// it is neither. The reply itself is not looked at.
MODBUS_API int CheckGetData(QByteArray *reply, int length);
