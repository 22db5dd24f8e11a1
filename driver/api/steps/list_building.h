// SPDX-License-Identifier: MIT
/// \file
/// The steps from a host's variables to a poll list, for hosts that apply them to finished records.
/// ReCreatReadVarList follows the same rules, but works on smaller records of its own and does not call the
/// last four of these functions.

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// The area that a read request for this area reads: 2 and 6 give 4, 3 and 7 give 5. Any other value gives
/// itself. Any thread.
MODBUS_TCPIP_RTU_M_API int getPlcReg(int area);

/// The same as PLCAddressChangeIntef. Any thread.
MODBUS_TCPIP_RTU_M_API int StringAddressToInt(int area, QString addressText);

/// Appends var to list. When length is above limit, it appends blocks of at most limit instead (a limit below
/// 1 means one block). After splitting, var holds the last block's startAddress and dataLength. No lock.
MODBUS_TCPIP_RTU_M_API void WhetherGroup(int length, int limit, RW_VAR *var, QList<RW_VAR> *list);

/// Sorts by startAddress, ascending. Records of equal address keep their order. Time n log n. No lock.
MODBUS_TCPIP_RTU_M_API void Bubble_Sort(QList<RW_VAR> *list);

/// Merges sorted register accesses into requests of at most `limit` registers and appends these to readList.
/// Gaps between two accesses may have any size. With a limit below 1 an access is merged only when the
/// request before it contains it. A single longer record makes a longer request. `count` is the number of
/// requests in readList so far; returns it plus the number of new ones. The caller holds listMutex.
MODBUS_TCPIP_RTU_M_API int WordVarReCreat(QList<RW_VAR> *sorted, int limit, int count);

/// The same for bits. Requests start at a multiple of 8, and their dataLength counts bytes. The limit is
/// checked before rounding to bytes, so a request may exceed it by one byte.
MODBUS_TCPIP_RTU_M_API int BitVarReCreat(QList<RW_VAR> *sorted, int limitBits, int count);

/// @}
