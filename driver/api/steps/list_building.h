// SPDX-License-Identifier: MIT
/// \file
/// The steps from a host's variables to a poll list, for hosts that take them on finished records.
/// ReCreatReadVarList gives the same results but works on records of its own: it calls none of the last four.

#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// The area that a read request for this area is sent on: 2 and 6 give 4, 3 and 7 give 5, any other value
/// itself. Any thread.
MODBUS_TCPIP_RTU_M_API int getPlcReg(int area);

/// The same as PLCAddressChangeIntef. Any thread.
MODBUS_TCPIP_RTU_M_API int StringAddressToInt(int area, QString addressText);

/// Appends var to list, whole or, when length exceeds limit, in blocks of at most limit (below 1: no
/// limit). After splitting, var holds the last block's startAddress and dataLength. No lock.
MODBUS_TCPIP_RTU_M_API void WhetherGroup(int length, int limit, RW_VAR *var, QList<RW_VAR> *list);

/// Sorts by startAddress, ascending; records of equal address keep their order. n log n. No lock.
MODBUS_TCPIP_RTU_M_API void Bubble_Sort(QList<RW_VAR> *list);

/// Merges sorted register accesses into requests of at most `limit` registers (below 1: only what lies
/// inside a neighbour), bridging gaps of any size, and appends them to readList. A single longer record
/// makes a longer request. `count` is the number of requests in readList so far; returns it with the new
/// ones added. The caller holds listMutex.
MODBUS_TCPIP_RTU_M_API int WordVarReCreat(QList<RW_VAR> *sorted, int limit, int count);

/// The same for bits. Requests start at a multiple of 8 and count bytes; the limit is checked before the
/// rounding to bytes, so a request may exceed it by one byte.
MODBUS_TCPIP_RTU_M_API int BitVarReCreat(QList<RW_VAR> *sorted, int limitBits, int count);

/// @}
