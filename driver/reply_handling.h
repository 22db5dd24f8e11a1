// SPDX-License-Identifier: MIT
/// \file
/// What a reply, or the lack of one, does to the request in flight: store, retry, retire or give up.

#pragma once

#include <QtCore/QByteArray>

#include "export.h"
#include "records.h"

extern "C" {

/// Ends the exchange of the request in flight. `reply` holds the bytes received, from the first of the
/// MBAP header on, and `length` their number; 0 (reply may then be null) says that none came, and is
/// right for a broadcast.
///
/// Returns the driver's result record, always the same one: which access was served, and in `status`
/// 1 or 100 for success, 0 when the request will be sent again, else the error code with which it was
/// given up (status_codes.h). `data` is always empty. With nothing in flight the status is 1.
///
/// Call it from the communication thread only. Holds listMutex from judging to return, imageMutex
/// within it while storing, and calls both call-backs.
MODBUS_API RW_VAR *DataCom(QByteArray *reply, int length);
}
