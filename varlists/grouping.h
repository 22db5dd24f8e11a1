// SPDX-License-Identifier: MIT
/// \file
/// Where neighbours are grouped into one request: the steps of a poll list's rebuild as a host may take
/// them on finished records. ReCreatReadVarList takes the same steps on runs, ahead of the lock, and calls
/// none of these. The two merges append to readList; their caller holds listMutex.

#pragma once

#include <QtCore/QList>

#include "../driver/export.h"
#include "../driver/records.h"

/// Appends var to list, whole or, when length exceeds limit, in pieces of at most limit (below 1: no
/// limit). After cutting, var holds the last piece's startAddress and dataLength.
MODBUS_API void WhetherGroup(int length, int limit, RW_VAR *var, QList<RW_VAR> *list);

/// Sorts by startAddress, ascending; records of equal address keep their order. n log n.
MODBUS_API void Bubble_Sort(QList<RW_VAR> *list);

/// Merges sorted register accesses into requests of at most `limit` registers (below 1: only what lies
/// inside a neighbour), bridging gaps of any size. `count` is the number of requests in readList so far;
/// returns it with the new ones added.
MODBUS_API int WordVarReCreat(QList<RW_VAR> *sorted, int limit, int count);

/// The same for bits. Requests start at a multiple of 8 and count bytes; the limit is checked before
/// the rounding to bytes, so a request may exceed it by one byte.
MODBUS_API int BitVarReCreat(QList<RW_VAR> *sorted, int limitBits, int count);
