// SPDX-License-Identifier: MIT
/// \file
/// How the host configures the driver, before the communication loop starts. None of these takes a
/// lock. The settings record must be handed over before any other call of the library.

#pragma once

#include "driver_object.h"
#include "export.h"
#include "records.h"

extern "C" {

/// Hands over the host's settings record and sets its cfgWord13 and cfgWord10 to 0. The record stays
/// the host's and must outlive its use: until the next call of SetComInfo, or the end of the process.
/// Every other call needs a record; null is the host's fault and is not guarded against.
MODBUS_API void SetComInfo(CommSettings *settings);

/// Registers both call-backs. A null call-back is skipped. Both run on the communication thread with
/// listMutex held: they must not call AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList,
/// SetRegisterData (which queues), ComCommunication or DataCom.
///
/// writeDone: an entry of the write queue or of the one-shot reads has left its queue. hostChannel is
/// CommSettings::hostChannel, hostId and hostItem are the entry's; outcome 1: served, and no further
/// entry of the same hostId and hostItem is queued; outcome 2: given up after its retries.
///
/// itemNotify: a write request was built, or a request was given up; hostId is that access's. The list
/// is empty, is the driver's, and is destroyed when the call returns; flag is always 1.
MODBUS_API void RegistCallBackFuncIntf(void (*writeDone)(int hostChannel, int hostId, int hostItem,
                                                         int outcome),
                                       void (*itemNotify)(QList<RW_VAR> *list, int hostId, int flag));

/// Keeps the host's three local areas in LB, LW and RWI.
MODBUS_API void FlashLocalRegister(int localBits, int localWords, int thirdArea);

/// Always 1: the driver has no background work to finish.
MODBUS_API int QueryFinishFlag();
}
